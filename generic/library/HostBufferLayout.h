// Where the pixels of a region lie in a host buffer of a given format.
#pragma once

#include <cstddef>
#include <cstdint>

struct HostBufferLayout {
    int32_t code;
    int32_t family;            // colour family, 0 for RGB
    bool alphaPlane;
    bool bottomUp;
    int32_t sampleBytes;       // 1, 2 or 4
    int32_t bytesPerPixel;     // samples per pixel x sample bytes
    int32_t bufferWidth;       // also the stride in pixels
    int32_t bufferHeight;
    int32_t roiWidth;
    int32_t roiHeight;
    int32_t roiX;
    int32_t roiY;
    size_t colourPlaneBytes;   // bufferWidth x bufferHeight x bytesPerPixel; the alpha plane starts here

    // Buffer row of frame row y.
    size_t bufferRow(int32_t y) const
    {
        return static_cast<size_t>(bottomUp ? bufferHeight - 1 - roiY - y : roiY + y);
    }
    // Byte offset of the colour of pixel roiX in frame row y.
    size_t colourOffset(int32_t y) const
    {
        return (bufferRow(y) * static_cast<size_t>(bufferWidth) + static_cast<size_t>(roiX)) * bytesPerPixel;
    }
    // Byte offset of the alpha sample of pixel roiX in frame row y.
    size_t alphaOffset(int32_t y) const
    {
        return colourPlaneBytes +
               (bufferRow(y) * static_cast<size_t>(bufferWidth) + static_cast<size_t>(roiX)) * sampleBytes;
    }
    // For a pair format with an odd region width: whether the unit right after the
    // region's last pixel in frame row y (which carries that pixel's Cr) still lies
    // in the colour plane.
    bool unitAfterRowInColourPlane(int32_t y) const
    {
        return colourOffset(y) + static_cast<size_t>(roiWidth + 1) * bytesPerPixel <= colourPlaneBytes;
    }
};

// Fills `layout` for format `code` and the region; false when the code is not
// 1..16, a size is below 1, or the region does not lie inside the buffer.
bool hostBufferLayout(int32_t code, int32_t bufferWidth, int32_t bufferHeight, int32_t roiWidth, int32_t roiHeight,
                      int32_t roiX, int32_t roiY, HostBufferLayout* layout);
