#include "tools/lumenveil/host_frame.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "tools/lumenveil/cli_error.h"

namespace {

float clamp01(float v) { return std::isnan(v) ? 0.0f : std::clamp(v, 0.0f, 1.0f); }

uint8_t fullRange8(float v) { return static_cast<uint8_t>(std::lround(clamp01(v) * 255.0f)); }

// Colour in video range: 16 is black, 235 white.
uint8_t videoRange8(float v) { return static_cast<uint8_t>(16 + std::lround(clamp01(v) * 219.0f)); }

// 2.14 fixed point: 16384 is 1.0; the effect reads 0 to 1.
int16_t fixed214(float v) { return static_cast<int16_t>(std::lround(clamp01(v) * 16384.0f)); }

// One pixel into / out of a buffer of the format's code, at byte `at`.
void storePixel(int32_t code, uint8_t* at, const float* p)
{
    switch (code) {
    case 1:
        for (int c = 0; c < 4; ++c)
            at[c] = fullRange8(p[c]);
        break;
    case 2:  // B G R A, colour in video range, alpha full range
        at[0] = videoRange8(p[2]);
        at[1] = videoRange8(p[1]);
        at[2] = videoRange8(p[0]);
        at[3] = fullRange8(p[3]);
        break;
    case 7:
        for (int c = 0; c < 4; ++c) {
            const int16_t s = fixed214(p[c]);
            std::memcpy(at + 2 * c, &s, 2);
        }
        break;
    case 12:
        for (int c = 0; c < 4; ++c) {
            const float s = clamp01(p[c]);
            std::memcpy(at + 4 * c, &s, 4);
        }
        break;
    }
}

void loadPixel(int32_t code, const uint8_t* at, float* p)
{
    switch (code) {
    case 1:
        for (int c = 0; c < 4; ++c)
            p[c] = at[c] / 255.0f;
        break;
    case 2:
        p[0] = (at[2] - 16) / 219.0f;
        p[1] = (at[1] - 16) / 219.0f;
        p[2] = (at[0] - 16) / 219.0f;
        p[3] = at[3] / 255.0f;
        break;
    case 7:
        for (int c = 0; c < 4; ++c) {
            int16_t s;
            std::memcpy(&s, at + 2 * c, 2);
            p[c] = s / 16384.0f;
        }
        break;
    case 12:
        std::memcpy(p, at, 16);
        break;
    }
}

size_t bytesPerPixel(const HostFormatGeometry& format)
{
    return static_cast<size_t>(format.samplesPerPixel) * format.sampleBytes;
}

}  // namespace

int32_t hostFrameRows(int32_t height, bool wholeRows) { return wholeRows ? (height + 3) / 4 * 4 : height; }

ComRef<MemoryImage> makeHostImage(const ImageFrame& frame, const HostFormatGeometry& format, int32_t rows)
{
    ComRef<MemoryImage> image(MemoryImage::Create(*format.guid, frame.width, rows));
    if (!image)
        throw Failure("no memory for a " + std::to_string(frame.width) + " x " + std::to_string(rows) + " frame");
    const size_t unit = bytesPerPixel(format);
    for (int32_t y = 0; y < rows; ++y) {
        const int32_t source = std::min(y, frame.height - 1);
        uint8_t* row = image->Data() + static_cast<size_t>(hostBufferRow(format.code, rows, y)) * frame.width * unit;
        for (int32_t x = 0; x < frame.width; ++x)
            storePixel(format.code, row + x * unit, frame.Pixel(x, source));
    }
    return image;
}

void readHostImage(MemoryImage* image, const HostFormatGeometry& format, int32_t rows, ImageFrame& frame)
{
    const size_t unit = bytesPerPixel(format);
    for (int32_t y = 0; y < frame.height; ++y) {
        const uint8_t* row =
            image->Data() + static_cast<size_t>(hostBufferRow(format.code, rows, y)) * frame.width * unit;
        for (int32_t x = 0; x < frame.width; ++x)
            loadPixel(format.code, row + x * unit, frame.Pixel(x, y));
    }
}
