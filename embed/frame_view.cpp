#include "embed/frame_view.h"

#include <algorithm>
#include <cstring>

#include "embed/host_frame.h"
#include "embed/pixel_samples.h"

namespace {

const uint8_t* rowOf(const FrameView& f, int32_t y)
{
    return static_cast<const uint8_t*>(f.pixels) + y * f.rowBytes;
}
uint8_t* rowOf(FrameView& f, int32_t y) { return static_cast<uint8_t*>(f.pixels) + y * f.rowBytes; }

// Whether the frame's samples are the host format's own: 8-bit R G B A
// buffers take 8-bit samples as they are. Going through floats would give the
// same bytes (v / 255 scaled by 255 and rounded is v), at more cost.
bool bytesAsTheyAre(const HostFormatGeometry& format, const FrameView& f)
{
    return f.type == SampleType::U8 && !format.pairs && !format.videoRange && format.sampleBytes == 1;
}

// Row y of an 8-bit R G B A buffer `columns` wide.
uint8_t* bufferRow(MemoryImage* image, const HostFormatGeometry& format, int32_t columns, int32_t rows, int32_t y)
{
    return image->Data() + static_cast<size_t>(hostBufferRow(format.code, rows, y)) * columns * 4;
}

void storeBytes(MemoryImage* image, const HostFormatGeometry& format, int32_t rows, const FrameView& f)
{
    const int n = f.channels;
    for (int32_t y = 0; y < rows; ++y) {
        const uint8_t* s = rowOf(f, std::min(y, f.height - 1));
        uint8_t* d = bufferRow(image, format, f.width, rows, y);
        if (n == 4) {
            std::memcpy(d, s, static_cast<size_t>(f.width) * 4);
            continue;
        }
        for (int32_t x = 0; x < f.width; ++x, s += n, d += 4) {
            d[0] = s[0];
            d[1] = n <= 2 ? s[0] : s[1];
            d[2] = n <= 2 ? s[0] : s[2];
            d[3] = n == 2 ? s[1] : kHostFull8;
        }
    }
}

void loadBytes(MemoryImage* image, const HostFormatGeometry& format, int32_t rows, FrameView f)
{
    const int n = f.channels;
    for (int32_t y = 0; y < f.height; ++y) {
        const uint8_t* s = bufferRow(image, format, f.width, rows, y);
        uint8_t* d = rowOf(f, y);
        if (n == 4) {
            std::memcpy(d, s, static_cast<size_t>(f.width) * 4);
            continue;
        }
        // Grey takes red, and grey + alpha takes alpha second (pixel_samples.h).
        for (int32_t x = 0; x < f.width; ++x, s += 4, d += n) {
            d[0] = s[0];
            if (n == 2)
                d[1] = s[3];
            if (n == 3) {
                d[1] = s[1];
                d[2] = s[2];
            }
        }
    }
}

template <typename T> void expandRows(const FrameView& f, int32_t y, int32_t count, float* rgba)
{
    for (int32_t i = 0; i < count; ++i)
        expandPixels(reinterpret_cast<const T*>(rowOf(f, y + i)), f.channels, f.width,
                     rgba + static_cast<size_t>(i) * f.width * 4);
}

template <typename T> void packRows(const float* rgba, int32_t y, int32_t count, FrameView& f)
{
    for (int32_t i = 0; i < count; ++i)
        packPixels(rgba + static_cast<size_t>(i) * f.width * 4, f.channels, f.width,
                   reinterpret_cast<T*>(rowOf(f, y + i)));
}

}  // namespace

size_t sampleBytes(SampleType type) { return type == SampleType::U8 ? 1 : type == SampleType::U16 ? 2 : 4; }

std::string frameProblem(const FrameView& f, const std::string& what)
{
    if (!f.pixels)
        return what + " has no pixels";
    if (f.width < 1 || f.height < 1)
        return what + " is " + std::to_string(f.width) + " x " + std::to_string(f.height) + ": it needs a pixel";
    if (f.channels < 1 || f.channels > 4)
        return what + " has " + std::to_string(f.channels) +
               " channels; grey, grey + alpha, RGB and RGBA (1 to 4) are taken";
    const ptrdiff_t row = static_cast<ptrdiff_t>(f.width) * f.channels * sampleBytes(f.type);
    if (f.height > 1 && f.rowBytes < row && f.rowBytes > -row)
        return what + "'s rows are " + std::to_string(f.rowBytes) + " bytes apart, less than a row of " +
               std::to_string(row) + " bytes";
    return "";
}

void storeFrame(MemoryImage* image, const HostFormatGeometry& format, int32_t rows, const FrameView& f,
                bool keepRange)
{
    if (bytesAsTheyAre(format, f))
        return storeBytes(image, format, rows, f);
    storeHostImage(image, format, f.width, f.height, rows, [&](int32_t y, int32_t count, float* rgba) {
        if (f.type == SampleType::U8)
            expandRows<uint8_t>(f, y, count, rgba);
        else if (f.type == SampleType::U16)
            expandRows<uint16_t>(f, y, count, rgba);
        else
            expandRows<float>(f, y, count, rgba);
    }, keepRange);
}

void loadFrame(MemoryImage* image, const HostFormatGeometry& format, int32_t rows, const FrameView& frame)
{
    FrameView f = frame;
    if (bytesAsTheyAre(format, f))
        return loadBytes(image, format, rows, f);
    loadHostImage(image, format, f.width, f.height, rows, [&](int32_t y, int32_t count, float* rgba) {
        if (f.type == SampleType::U8)
            packRows<uint8_t>(rgba, y, count, f);
        else if (f.type == SampleType::U16)
            packRows<uint16_t>(rgba, y, count, f);
        else
            packRows<float>(rgba, y, count, f);
    });
}
