#include "generic/library/LinearFrameVZ.h"

#include <cstring>
#include <limits>

#include "vzlibs/baselib/heap.h"

LinearFrameVZ::LinearFrameVZ(int32_t frameWidth, int32_t frameHeight)
    : width(frameWidth), height(frameHeight), pixels(nullptr), pixelAspect{1.0, 1.0}
{
    if (width < 1 || height < 1)
        return;
    const size_t bytes = PixelCount() * kLinearChannels * sizeof(float);
    // The library heap takes 32-bit sizes; a larger frame has no block.
    if (bytes / (kLinearChannels * sizeof(float)) != PixelCount() || bytes > std::numeric_limits<uint32_t>::max())
        return;
    pixels = static_cast<float*>(vz_image_malloc(static_cast<uint32_t>(bytes), __FILE__, __LINE__));
}

LinearFrameVZ::~LinearFrameVZ()
{
    if (pixels)
        vz_image_free(pixels, __FILE__, __LINE__);
}

bool LinearFrameVZ::CopyFrom(const LinearFrameVZ& source)
{
    if (!pixels || !source.pixels || source.width != width || source.height != height)
        return false;
    std::memcpy(pixels, source.pixels, PixelCount() * kLinearChannels * sizeof(float));
    return true;
}
