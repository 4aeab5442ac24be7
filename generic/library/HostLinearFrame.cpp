#include "generic/library/HostLinearFrame.h"

#include <cmath>
#include <cstring>

#include "generic/library/HostBufferLayout.h"
#include "generic/library/HostPixelFormat.h"
#include "hostsdk/image_format_geometry.h"
#include "hostsdk/image_formats.h"

namespace {

// The layout of the region, or false when the bridge does not take it.
bool linearLayout(const void* pixels, const LinearFrameVZ* frame, int32_t bufferWidth, int32_t bufferHeight,
                  int32_t roiWidth, int32_t roiHeight, int32_t roiX, int32_t roiY, int32_t code,
                  HostBufferLayout* layout)
{
    return pixels && frame && frame->pixels && code == hostLinearFormatCode() && frame->width == roiWidth &&
           frame->height == roiHeight &&
           hostBufferLayout(code, bufferWidth, bufferHeight, roiWidth, roiHeight, roiX, roiY, layout);
}

// The frame row whose samples row y takes under the field flags: flag 1 gives
// an even row the next one (the last row keeps itself), flag 2 gives an odd row
// the previous one. Rows are replaced top to bottom, as in hostToVzImage.
int32_t fieldSourceRow(int32_t y, int32_t height, uint32_t fieldFlags)
{
    if ((y & 1) == 0 && (fieldFlags & HOST_FIELD_ODD_ONLY))
        return y + 1 < height ? y + 1 : height - 1;
    if ((y & 1) == 1 && (fieldFlags & HOST_FIELD_EVEN_ONLY))
        return y - 1;
    return y;
}

// A row written back: flag 1 skips even rows, flag 2 odd ones.
bool skippedRow(int32_t y, uint32_t fieldFlags)
{
    return (y & 1) == 0 ? (fieldFlags & HOST_FIELD_ODD_ONLY) != 0 : (fieldFlags & HOST_FIELD_EVEN_ONLY) != 0;
}

}  // namespace

int32_t hostLinearFormatCode() { return hostFormatCodeOf(MFIF_RGBA_FLOAT); }

int64_t hostToLinearFrame(const void* pixels, int32_t bufferWidth, int32_t bufferHeight, int32_t roiWidth,
                          int32_t roiHeight, int32_t roiX, int32_t roiY, int32_t code, uint32_t fieldFlags,
                          LinearFrameVZ* frame)
{
    HostBufferLayout layout;
    if (!linearLayout(pixels, frame, bufferWidth, bufferHeight, roiWidth, roiHeight, roiX, roiY, code, &layout))
        return -1;
    const uint8_t* buffer = static_cast<const uint8_t*>(pixels);
    const size_t rowFloats = static_cast<size_t>(roiWidth) * kLinearChannels;
    int64_t replaced = 0;
    for (int32_t y = 0; y < roiHeight; ++y) {
        float* row = frame->Row(y);
        std::memcpy(row, buffer + layout.colourOffset(y), rowFloats * sizeof(float));
        for (size_t i = 0; i < rowFloats; ++i)
            if (!std::isfinite(row[i])) {
                row[i] = 0.0f;
                ++replaced;
            }
    }
    for (int32_t y = 0; y < roiHeight; ++y)
        if (const int32_t from = fieldSourceRow(y, roiHeight, fieldFlags); from != y)
            std::memcpy(frame->Row(y), frame->Row(from), rowFloats * sizeof(float));
    return replaced;
}

bool linearFrameToHost(const LinearFrameVZ* frame, void* pixels, int32_t bufferWidth, int32_t bufferHeight,
                       int32_t roiWidth, int32_t roiHeight, int32_t roiX, int32_t roiY, int32_t code,
                       uint32_t fieldFlags)
{
    HostBufferLayout layout;
    if (!linearLayout(pixels, frame, bufferWidth, bufferHeight, roiWidth, roiHeight, roiX, roiY, code, &layout))
        return false;
    uint8_t* buffer = static_cast<uint8_t*>(pixels);
    const size_t rowBytes = static_cast<size_t>(roiWidth) * kLinearChannels * sizeof(float);
    for (int32_t y = 0; y < roiHeight; ++y)
        if (!skippedRow(y, fieldFlags))
            std::memcpy(buffer + layout.colourOffset(y), frame->Row(y), rowBytes);
    return true;
}
