// Samples of 0 to 1 as integers of a full scale (255, 65535, 16384), one rule
// for every conversion the tool makes: clamped to 0..1, scaled, rounded to
// nearest with halves up.
#pragma once

#include <cstdint>

// v limited to 0..1; NaN gives 0.
inline float clampUnit(float v) { return v > 0.0f ? (v < 1.0f ? v : 1.0f) : 0.0f; }

// The nearest integer to v >= 0, halves up (what lround gives there, in a
// form the compiler can vectorise).
inline int32_t roundHalfUp(float v)
{
    const int32_t whole = static_cast<int32_t>(v);
    return whole + (v - static_cast<float>(whole) >= 0.5f ? 1 : 0);
}
