// Pictures of one to four channels (grey, grey + alpha, RGB, RGBA) of 8-bit,
// 16-bit or float samples, to R G B A floats of 0 to 1 and back: one rule for
// every picture a host hands over, a file's rows and a caller's frame alike.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "embed/unit_samples.h"

// Full scale of an integer sample type; floats are taken as they are.
template <typename T> constexpr float fullScaleOf()
{
    return std::is_integral_v<T> ? float(std::numeric_limits<T>::max()) : 1.0f;
}

// `pixels` pixels of N samples of T to RGBA floats (1.0 full): grey is taken
// as R = G = B, no alpha is full alpha.
template <typename T, int N> void expandPixels(const T* s, size_t pixels, float* d)
{
    const float scale = 1.0f / fullScaleOf<T>();
    for (size_t i = 0; i < pixels; ++i, s += N, d += 4) {
        d[0] = s[0] * scale;
        d[1] = (N <= 2 ? s[0] : s[1]) * scale;
        d[2] = (N <= 2 ? s[0] : s[2]) * scale;
        d[3] = N == 2 ? s[1] * scale : N == 4 ? s[3] * scale : 1.0f;
    }
}

// The same for `n` channels, 1 to 4.
template <typename T> void expandPixels(const T* s, int n, size_t pixels, float* d)
{
    switch (n) {
    case 1: return expandPixels<T, 1>(s, pixels, d);
    case 2: return expandPixels<T, 2>(s, pixels, d);
    case 3: return expandPixels<T, 3>(s, pixels, d);
    default: return expandPixels<T, 4>(s, pixels, d);
    }
}

// `pixels` RGBA floats to N samples of T: integers limited to 0..1, scaled
// and rounded (unit_samples.h), floats as they are. Grey takes red, and
// grey + alpha takes alpha second.
template <typename T, int N> void packPixels(const float* s, size_t pixels, T* d)
{
    constexpr int kFrom[4] = {0, N == 2 ? 3 : 1, 2, 3};
    constexpr float full = fullScaleOf<T>();
    for (size_t i = 0; i < pixels; ++i, s += 4, d += N)
        for (int c = 0; c < N; ++c) {
            if constexpr (std::is_integral_v<T>)
                d[c] = static_cast<T>(roundHalfUp(clampUnit(s[kFrom[c]]) * full));
            else
                d[c] = s[kFrom[c]];
        }
}

template <typename T> void packPixels(const float* s, int n, size_t pixels, T* d)
{
    switch (n) {
    case 1: return packPixels<T, 1>(s, pixels, d);
    case 2: return packPixels<T, 2>(s, pixels, d);
    case 3: return packPixels<T, 3>(s, pixels, d);
    default: return packPixels<T, 4>(s, pixels, d);
    }
}
