// What a buffer of each of the sixteen host pixel formats looks like: the one
// place that knows a format's code, name, sample layout, alpha plane and row
// order. Images, the effect's conversions, tests and tools all read it.
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
