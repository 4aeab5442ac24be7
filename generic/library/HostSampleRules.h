// Sample rules of the host formats, one struct per sample depth, so that the
// conversion loops are specialised by depth at compile time.
//
// Every rule keeps its intermediate results in the width it names; "cut" is
// rounding toward zero. A float NaN passes every limit as the lower bound, so it
// comes out of a cut as 0.
#pragma once

#include <cstdint>
#include <cstring>

#include "hostsdk/image_format_geometry.h"

namespace host_samples {

// Samples are read and written through memcpy: host buffers need not be aligned.
template <class T>
inline T load(const uint8_t* at)
{
    T value;
    std::memcpy(&value, at, sizeof value);
    return value;
}

template <class T>
inline void store(uint8_t* at, T value)
{
    std::memcpy(at, &value, sizeof value);
}

// v limited to lo..hi; NaN gives lo.
inline float limit(float v, float lo, float hi)
{
    v = v > lo ? v : lo;
    return v < hi ? v : hi;
}

// Full scale of a frame sample (1.0, or opaque).
constexpr int32_t kFrameFull = 32767;

// A decoded colour value: limited to 0..32767 and cut, no 0.5 added.
inline uint16_t toFrameSample(float v)
{
    return static_cast<uint16_t>(static_cast<int32_t>(limit(v, 0.0f, static_cast<float>(kFrameFull))));
}

// 8-bit Cb Y Cr Y limits: luma in video range, chroma 16 to 240.
constexpr int32_t kVideoWhite = kHostVideoBlack + kHostVideoSpan;             // 235
constexpr int32_t kChromaLowest8 = kHostChromaZero - kHostChromaSpan / 2;     // 16
constexpr int32_t kChromaHighest8 = kHostChromaZero + kHostChromaSpan / 2;    // 240
// 2.14 chroma limits: -0.5 to 0.5.
constexpr int32_t kChromaHalf214 = kHostFixedOne / 2;                         // 8192

// 8-bit full range: v << 7 | v >> 1 there, s >> 7 back (narrowed to 8 bits).
struct Depth8 {
    using Sample = uint8_t;
    static constexpr float lumaOffset = static_cast<float>(kHostVideoBlack);
    static constexpr float chromaOffset = static_cast<float>(kHostChromaZero);

    static uint16_t decodeColour(Sample v) { return static_cast<uint16_t>((v << 7) | (v >> 1)); }
    static uint16_t decodeAlpha(Sample v) { return decodeColour(v); }
    static Sample encodeColour(uint16_t s) { return static_cast<Sample>(s >> 7); }
    static Sample encodeAlpha(uint16_t s) { return encodeColour(s); }

    // Rounded by adding 0.5 and cutting, then offset: Y 16..235, Cb and Cr 16..240.
    static Sample quantiseLuma(float y)
    {
        const int32_t v = static_cast<int32_t>(y + 0.5f) + kHostVideoBlack;
        return static_cast<Sample>(v < kHostVideoBlack ? kHostVideoBlack : (v > kVideoWhite ? kVideoWhite : v));
    }
    static Sample quantiseChroma(float c)
    {
        const int32_t v = static_cast<int32_t>(c + 0.5f) + kHostChromaZero;
        return static_cast<Sample>(v < kChromaLowest8 ? kChromaLowest8 : (v > kChromaHighest8 ? kChromaHighest8 : v));
    }
};

// 8-bit video range colour of the B G R A format. The 32-bit quotient is narrowed
// to signed 16 bits before the lower limit, so any v above 235 wraps negative and
// becomes 0: whiter-than-white input goes black.
inline uint16_t decodeVideoLevel(uint8_t v)
{
    const int32_t wide = ((static_cast<int32_t>(v) - kHostVideoBlack) * kFrameFull) / kHostVideoSpan;
    const int16_t narrow = static_cast<int16_t>(wide);
    return narrow < 0 ? 0 : static_cast<uint16_t>(narrow);
}

inline uint8_t encodeVideoLevel(uint16_t s)
{
    return static_cast<uint8_t>((static_cast<int32_t>(s) * kHostVideoSpan) / kFrameFull + kHostVideoBlack);
}

// Signed 2.14 fixed point: kHostFixedOne (16384) is 1.0.
struct Depth214 {
    using Sample = int16_t;
    static constexpr float lumaOffset = 0.0f;
    static constexpr float chromaOffset = 0.0f;

    static uint16_t decodeColour(Sample v)
    {
        const int32_t limited = v < 0 ? 0 : (v > kHostFixedOne ? kHostFixedOne : v);
        return static_cast<uint16_t>((limited * kFrameFull) / kHostFixedOne);
    }
    static uint16_t decodeAlpha(Sample v) { return decodeColour(v); }
    static Sample encodeColour(uint16_t s)
    {
        return static_cast<Sample>((static_cast<int32_t>(s) * kHostFixedOne) / kFrameFull);
    }
    static Sample encodeAlpha(uint16_t s) { return encodeColour(s); }

    // Rounded by adding 0.5 and cutting: Y 0..16384, Cb and Cr -8192..8192.
    static Sample quantiseLuma(float y)
    {
        const int32_t v = static_cast<int32_t>(y + 0.5f);
        return static_cast<Sample>(v < 0 ? 0 : (v > kHostFixedOne ? kHostFixedOne : v));
    }
    static Sample quantiseChroma(float c)
    {
        const int32_t v = static_cast<int32_t>(c + 0.5f);
        return static_cast<Sample>(v < -kChromaHalf214 ? -kChromaHalf214 : (v > kChromaHalf214 ? kChromaHalf214 : v));
    }
};

// 32-bit float, 0.0..1.0. Colour and alpha-plane samples round differently, in
// both directions; both rules are part of the formats.
struct DepthFloat {
    using Sample = float;
    static constexpr float lumaOffset = 0.0f;
    static constexpr float chromaOffset = 0.0f;

    static uint16_t decodeColour(Sample v)
    {
        return static_cast<uint16_t>(static_cast<int32_t>(limit(v, 0.0f, 1.0f) * 32767.5f));
    }
    // Single precision throughout: v x 32767 + 0.5, cut.
    static uint16_t decodeAlpha(Sample v)
    {
        return static_cast<uint16_t>(static_cast<int32_t>(limit(v, 0.0f, 1.0f) * 32767.0f + 0.5f));
    }
    static Sample encodeColour(uint16_t s) { return static_cast<Sample>(s / 32767.0); }
    // A 64-bit constant, the product stored in single precision.
    static Sample encodeAlpha(uint16_t s) { return static_cast<Sample>(s * 3.0518509447574615e-05); }

    // No rounding. Y is limited to 0..1; Cb and Cr only above, to 0.5.
    static Sample quantiseLuma(float y) { return limit(y, 0.0f, 1.0f); }
    static Sample quantiseChroma(float c) { return c < 0.5f ? c : 0.5f; }
};

}  // namespace host_samples
