#include "hostsdk/rgba_image.h"

#include <algorithm>
#include <cstddef>

RgbaImage::RgbaImage(int width, int height)
    : width(std::max(width, 0)), height(std::max(height, 0)),
      bytes(static_cast<std::size_t>(this->width) * this->height * CHANNELS, 0)
{
}

const uint8_t* RgbaImage::Pixel(int x, int y) const
{
    return bytes.data() + (static_cast<std::size_t>(y) * width + x) * CHANNELS;
}

uint8_t* RgbaImage::Pixel(int x, int y)
{
    return bytes.data() + (static_cast<std::size_t>(y) * width + x) * CHANNELS;
}

RgbaImage RgbaImage::FlippedRows() const
{
    RgbaImage flipped(width, height);
    const std::size_t rowBytes = static_cast<std::size_t>(width) * CHANNELS;
    for (int y = 0; y < height; ++y)
        std::copy_n(Pixel(0, y), rowBytes, flipped.Pixel(0, height - 1 - y));
    return flipped;
}
