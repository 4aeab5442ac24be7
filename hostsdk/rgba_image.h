// RgbaImage: 8-bit RGBA pixels, four bytes each, rows packed without gaps.
#pragma once

#include <cstdint>
#include <vector>

class RgbaImage {
public:
    static constexpr int CHANNELS = 4;

    RgbaImage() = default;
    // A width x height image of transparent black; negative sizes count as 0.
    RgbaImage(int width, int height);

    int Width() const { return width; }
    int Height() const { return height; }
    // All bytes, row 0 first, each pixel R, G, B, A.
    const std::vector<uint8_t>& Bytes() const { return bytes; }
    // The four bytes of pixel (x, y); x and y must lie inside the image.
    const uint8_t* Pixel(int x, int y) const;
    uint8_t* Pixel(int x, int y);
    // A copy with the rows in reverse order.
    RgbaImage FlippedRows() const;

private:
    int width = 0;
    int height = 0;
    std::vector<uint8_t> bytes;
};
