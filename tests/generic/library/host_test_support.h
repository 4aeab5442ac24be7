// Shared set-up of the host pixel format tests: buffer shapes written out from
// the format definitions (not the library's tables) and one-call conversions.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

#include "generic/library/HostPixelFormat.h"

namespace host_test {

using Frame = std::unique_ptr<VZImage>;

struct Shape {
    int samplesPerPixel;  // colour plane: 4 for R G B A, 2 for Cb Y / Cr Y
    int sampleBytes;
    bool alphaPlane, bottomUp;
    size_t pixelBytes() const { return static_cast<size_t>(samplesPerPixel) * sampleBytes; }
    size_t bufferBytes(int w, int h) const { return static_cast<size_t>(w) * h * (pixelBytes() + alphaPlane * sampleBytes); }
};

// Codes 1, 2, 7, 12 are R G B A; 3..6 are 8-bit pairs, 8..11 2.14, 13..16 float;
// 5, 6, 10, 11, 15, 16 carry an alpha plane; only code 1 is top-down.
inline Shape shapeOf(int code)
{
    const bool rgba = code == 1 || code == 2 || code == 7 || code == 12;
    const bool alpha = code == 5 || code == 6 || code == 10 || code == 11 || code == 15 || code == 16;
    return {rgba ? 4 : 2, code <= 6 ? 1 : (code <= 11 ? 2 : 4), alpha, code != 1};
}

// Bytes that are valid samples of every depth (all below 0x40: 2.14 and float
// samples come out small and positive).
inline std::vector<uint8_t> patternBuffer(size_t bytes)
{
    std::vector<uint8_t> buffer(bytes);
    for (size_t i = 0; i < bytes; ++i)
        buffer[i] = static_cast<uint8_t>((i * 37 + 11) % 61);
    return buffer;
}

inline Frame decode(const void* buffer, int bw, int bh, int rw, int rh, int rx, int ry, int code, uint32_t flags = 0)
{
    return Frame(hostToVzImage(buffer, bw, bh, rw, rh, rx, ry, code, flags));
}

inline Frame decodeRow(const void* buffer, int width, int code) { return decode(buffer, width, 1, width, 1, 0, 0, code); }

// A one-row frame of `samples` (four a pixel) encoded whole into a new buffer.
inline std::vector<uint8_t> encodeRow(const std::vector<uint16_t>& samples, int code)
{
    const int width = static_cast<int>(samples.size() / 4);
    VZImage frame(width, 1, 0, static_cast<uint16_t*>(nullptr), 0u);
    std::copy(samples.begin(), samples.end(), frame.pixels);
    std::vector<uint8_t> bytes(shapeOf(code).bufferBytes(width, 1));
    vzImageToHost(&frame, bytes.data(), width, 1, width, 1, 0, 0, code, 0);
    return bytes;
}

}  // namespace host_test
