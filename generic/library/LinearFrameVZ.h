// LinearFrameVZ: a frame of scene-linear light, as the effect's scene-linear
// render works on it.
//
// Four floats a pixel, R G B A, colour premultiplied by alpha; values are light
// as it is, not limited to 0 to 1 (a street lamp may be 40). Rows lie top-down
// one after another with no gap, width x 4 floats each.
#pragma once

#include <cstddef>
#include <cstdint>

#include "vzlibs/fftlib/FftEngine.h"

inline constexpr int kLinearChannels = 4;

class LinearFrameVZ {
public:
    // A frame of width x height, its pixels uninitialised; `pixels` is null when
    // a size is below 1 or the block cannot be had.
    LinearFrameVZ(int32_t width, int32_t height);
    ~LinearFrameVZ();
    LinearFrameVZ(const LinearFrameVZ&) = delete;
    LinearFrameVZ& operator=(const LinearFrameVZ&) = delete;

    // Pixel count and the first float of row y.
    size_t PixelCount() const { return static_cast<size_t>(width) * static_cast<size_t>(height); }
    float* Row(int32_t y) const { return pixels + static_cast<size_t>(y) * width * kLinearChannels; }
    // Channel c (0 R, 1 G, 2 B, 3 A) as the engine's ConvolveFloat reads it.
    FftFloatChannel Channel(int c) const
    {
        return {pixels + c, kLinearChannels, static_cast<ptrdiff_t>(width) * kLinearChannels};
    }
    // Copies the pixels of `source`, a frame of the same size; false otherwise.
    bool CopyFrom(const LinearFrameVZ& source);

    int32_t width;
    int32_t height;
    float* pixels;
    double pixelAspect[2];  // x and y shape of a pixel, 1.0 and 1.0 until the caller sets them
};
