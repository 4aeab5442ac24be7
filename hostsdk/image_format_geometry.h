// What a buffer of each of the sixteen host pixel formats looks like: the one
// place that knows a format's code, name, sample layout, alpha plane, row
// order and sample scales. Images, the effect's conversions, tests and tools
// all read it.
//
// A buffer of width x height pixels has no row padding. Its colour plane holds
// samplesPerPixel samples of sampleBytes a pixel (pair formats keep Cb Y / Cr Y
// in two units for two pixels); a format with an alpha plane keeps it right
// behind the colour plane, one sample a pixel, rows in the same order. In a
// bottom-up format the first image row is the buffer's last row.
#pragma once

#include <cstddef>
#include <cstdint>

#include "hostsdk/guid.h"

// Sample scales. An R G B A or alpha-plane sample is 0 to its full scale: 255
// at 8 bits, kHostFixedOne at 16 bits (signed 2.14 fixed point), 1.0 in
// float. Cb Y Cr Y luma has the same scale, without offset, at 16 bits and in
// float, and chroma runs from minus half to half of it there.
inline constexpr int32_t kHostFull8 = 255;
inline constexpr int32_t kHostFixedOne = 16384;  // 1.0 in signed 2.14
// 8-bit video range: black at 16, white 219 steps higher (235); the colour of
// MFIF_BGRA_RAW_32_VIDEO and the luma of the 8-bit Cb Y Cr Y formats.
inline constexpr int32_t kHostVideoBlack = 16;
inline constexpr int32_t kHostVideoSpan = 219;
// 8-bit chroma: no colour at 128, and 224 steps from -0.5 to 0.5 (16 to 240).
inline constexpr int32_t kHostChromaZero = 128;
inline constexpr int32_t kHostChromaSpan = 224;

// The full scale of an R G B A or alpha sample of `sampleBytes` bytes, as a float.
constexpr float hostFullScale(int32_t sampleBytes)
{
    return sampleBytes == 1 ? static_cast<float>(kHostFull8)
           : sampleBytes == 2 ? static_cast<float>(kHostFixedOne)
                              : 1.0f;
}

struct HostFormatGeometry {
    int32_t code;             // 1..16
    const char* name;         // "MFIF_RGBA_RAW_32", ...
    const GUID* guid;
    int32_t samplesPerPixel;  // 4 (RGBA) or 2 (pairs)
    int32_t sampleBytes;      // 1, 2 or 4
    bool alphaPlane;
    bool bottomUp;
    bool pairs;               // Cb Y Cr Y
    bool matrix709;           // pairs in the high-definition (709) colour matrix, else 601
    bool videoRange;          // B G R A at 8 bits, colour in video range, alpha full range
};

inline constexpr int32_t kHostFormatCount = 16;

// The format of `code`, or null outside 1..16.
const HostFormatGeometry* hostFormatGeometry(int32_t code);
// The code of a format identifier, 1..16, or 0; all sixteen are recognised.
int32_t hostFormatCodeOf(const GUID& guid);
// The format named `name` (e.g. "MFIF_RGBA_FLOAT"), or null.
const HostFormatGeometry* hostFormatNamed(const char* name);
// Bytes of the colour plane, of the alpha plane (0 without one), and of the
// whole buffer of width x height pixels; 0 for an unknown code or a size below 1.
size_t hostColourPlaneBytes(int32_t code, int32_t width, int32_t height);
size_t hostAlphaPlaneBytes(int32_t code, int32_t width, int32_t height);
size_t hostBufferBytes(int32_t code, int32_t width, int32_t height);
// The buffer row that holds image row y of a buffer `height` rows high.
int32_t hostBufferRow(int32_t code, int32_t height, int32_t y);
