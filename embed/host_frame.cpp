#include "embed/host_frame.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <type_traits>
#include <vector>

#include "embed/errors.h"
#include "embed/unit_samples.h"

namespace {

// One sample of `sampleBytes` bytes; integer samples are rounded to nearest.
void putSample(uint8_t* at, int32_t sampleBytes, float v)
{
    if (sampleBytes == 1) {
        at[0] = static_cast<uint8_t>(std::lround(v));
    } else if (sampleBytes == 2) {
        const int16_t s = static_cast<int16_t>(std::lround(v));
        std::memcpy(at, &s, 2);
    } else {
        std::memcpy(at, &v, 4);
    }
}

float getSample(const uint8_t* at, int32_t sampleBytes)
{
    if (sampleBytes == 1)
        return at[0];
    float v;
    if (sampleBytes == 2) {
        int16_t s;
        std::memcpy(&s, at, 2);
        v = s;
    } else {
        std::memcpy(&v, at, 4);
    }
    return v;
}

// Rows converted in one go: a few hundred kilobytes at full HD, so that a
// chunk stays in cache between the host image and the file.
constexpr int32_t kChunkRows = 16;

// The host formats' scales as floats.
constexpr float kVideoBlack = static_cast<float>(kHostVideoBlack);
constexpr float kVideoSpan = static_cast<float>(kHostVideoSpan);
constexpr float kChromaZero = static_cast<float>(kHostChromaZero);
constexpr float kChromaSpan = static_cast<float>(kHostChromaSpan);
constexpr float kFixedOne = static_cast<float>(kHostFixedOne);

// Luma weights of red and blue in the two matrices; green has the rest.
struct LumaWeights {
    float red;
    float blue;
};
constexpr LumaWeights kBt601{0.299f, 0.114f};
constexpr LumaWeights kBt709{0.2126f, 0.0722f};

// Luma 0 to 1 and chroma -0.5 to 0.5 of one colour.
struct Yuv {
    float y, cb, cr;
};

Yuv toYuv(const float* rgb, LumaWeights k)
{
    const float r = clampUnit(rgb[0]), g = clampUnit(rgb[1]), b = clampUnit(rgb[2]);
    const float y = k.red * r + (1.0f - k.red - k.blue) * g + k.blue * b;
    return {y, (b - y) / (2.0f * (1.0f - k.blue)), (r - y) / (2.0f * (1.0f - k.red))};
}

void fromYuv(const Yuv& c, LumaWeights k, float* rgb)
{
    const float r = c.y + 2.0f * (1.0f - k.red) * c.cr;
    const float b = c.y + 2.0f * (1.0f - k.blue) * c.cb;
    const float g = (c.y - k.red * r - k.blue * b) / (1.0f - k.red - k.blue);
    rgb[0] = clampUnit(r);
    rgb[1] = clampUnit(g);
    rgb[2] = clampUnit(b);
}

// Sample values of luma and chroma at each depth: video range at 8 bits,
// kHostFixedOne for 1.0 in 2.14, as they are in float.
float lumaSample(float y, int32_t sampleBytes)
{
    return sampleBytes == 1 ? kVideoBlack + y * kVideoSpan : sampleBytes == 2 ? y * kFixedOne : y;
}
float chromaSample(float c, int32_t sampleBytes)
{
    return sampleBytes == 1 ? kChromaZero + c * kChromaSpan : sampleBytes == 2 ? c * kFixedOne : c;
}
float lumaOf(float s, int32_t sampleBytes)
{
    return sampleBytes == 1 ? (s - kVideoBlack) / kVideoSpan : sampleBytes == 2 ? s / kFixedOne : s;
}
float chromaOf(float s, int32_t sampleBytes)
{
    return sampleBytes == 1 ? (s - kChromaZero) / kChromaSpan : sampleBytes == 2 ? s / kFixedOne : s;
}

// `pixels` RGBA pixels of floats to samples of T (at the full scale of its
// size), and back.
template <typename T> void storeRgbaSamples(const float* from, int32_t pixels, uint8_t* to)
{
    const float full = hostFullScale(sizeof(T));
    for (int32_t i = 0; i < pixels * 4; ++i) {
        const float v = clampUnit(from[i]) * full;
        T sample;
        if constexpr (std::is_integral_v<T>)
            sample = static_cast<T>(roundHalfUp(v));
        else
            sample = v;
        std::memcpy(to + i * sizeof(T), &sample, sizeof(T));
    }
}

template <typename T> void loadRgbaSamples(const uint8_t* from, int32_t pixels, float* to)
{
    const float full = hostFullScale(sizeof(T));
    for (int32_t i = 0; i < pixels * 4; ++i) {
        T sample;
        std::memcpy(&sample, from + i * sizeof(T), sizeof(T));
        to[i] = static_cast<float>(sample) / full;
    }
}

// Where one format's samples of one buffer row lie.
struct RowAt {
    uint8_t* colour;
    uint8_t* alpha;  // null without an alpha plane
};

RowAt rowAt(uint8_t* data, const HostFormatGeometry& format, int32_t columns, int32_t rows, int32_t y)
{
    const size_t row = static_cast<size_t>(hostBufferRow(format.code, rows, y)) * columns;
    const size_t unit = static_cast<size_t>(format.samplesPerPixel) * format.sampleBytes;
    uint8_t* alpha = nullptr;
    if (format.alphaPlane)
        alpha = data + hostColourPlaneBytes(format.code, columns, rows) + row * format.sampleBytes;
    return {data + row * unit, alpha};
}

// One row of RGBA pixels (`at(x)` gives pixel x) into / out of a buffer row.
template <typename PixelAt>
void storeRow(const HostFormatGeometry& format, int32_t columns, RowAt to, PixelAt at, bool keepRange)
{
    const int32_t bytes = format.sampleBytes;
    if (format.pairs) {
        const LumaWeights k = format.matrix709 ? kBt709 : kBt601;
        for (int32_t x = 0; x < columns; x += 2) {
            const Yuv a = toYuv(at(x), k), b = toYuv(at(x + 1), k);
            uint8_t* pair = to.colour + static_cast<size_t>(x) * 2 * bytes;
            putSample(pair, bytes, chromaSample((a.cb + b.cb) / 2.0f, bytes));
            putSample(pair + bytes, bytes, lumaSample(a.y, bytes));
            putSample(pair + 2 * bytes, bytes, chromaSample((a.cr + b.cr) / 2.0f, bytes));
            putSample(pair + 3 * bytes, bytes, lumaSample(b.y, bytes));
        }
    } else if (!format.videoRange) {
        // R G B A samples in pixel order, the row's pixels side by side
        // (columns and width agree for these formats): one loop over them all.
        if (bytes == 1)
            storeRgbaSamples<uint8_t>(at(0), columns, to.colour);
        else if (bytes == 2)
            storeRgbaSamples<int16_t>(at(0), columns, to.colour);
        else if (keepRange)
            std::memcpy(to.colour, at(0), static_cast<size_t>(columns) * 4 * sizeof(float));
        else
            storeRgbaSamples<float>(at(0), columns, to.colour);
    } else {
        // Video B G R A at 8 bits: colour in video range, alpha full range.
        for (int32_t x = 0; x < columns; ++x) {
            const float* p = at(x);
            uint8_t* pixel = to.colour + static_cast<size_t>(x) * 4;
            for (int c = 0; c < 3; ++c)
                putSample(pixel + (2 - c), 1, kVideoBlack + clampUnit(p[c]) * kVideoSpan);
            putSample(pixel + 3, 1, clampUnit(p[3]) * hostFullScale(1));
        }
    }
    if (to.alpha)
        for (int32_t x = 0; x < columns; ++x)
            putSample(to.alpha + static_cast<size_t>(x) * bytes, bytes, clampUnit(at(x)[3]) * hostFullScale(bytes));
}

template <typename PixelAt>
void loadRow(const HostFormatGeometry& format, int32_t width, RowAt from, PixelAt at)
{
    const int32_t bytes = format.sampleBytes;
    if (format.pairs) {
        const LumaWeights k = format.matrix709 ? kBt709 : kBt601;
        for (int32_t x = 0; x < width; ++x) {
            const uint8_t* pair = from.colour + static_cast<size_t>(x / 2) * 4 * bytes;
            const Yuv c{lumaOf(getSample(pair + (x % 2 ? 3 : 1) * bytes, bytes), bytes),
                        chromaOf(getSample(pair, bytes), bytes), chromaOf(getSample(pair + 2 * bytes, bytes), bytes)};
            fromYuv(c, k, at(x));
        }
    } else if (!format.videoRange) {
        if (bytes == 1)
            loadRgbaSamples<uint8_t>(from.colour, width, at(0));
        else if (bytes == 2)
            loadRgbaSamples<int16_t>(from.colour, width, at(0));
        else
            loadRgbaSamples<float>(from.colour, width, at(0));
    } else {
        for (int32_t x = 0; x < width; ++x) {
            const uint8_t* pixel = from.colour + static_cast<size_t>(x) * 4;
            float* p = at(x);
            for (int c = 0; c < 3; ++c)
                p[c] = (getSample(pixel + (2 - c), 1) - kVideoBlack) / kVideoSpan;
            p[3] = getSample(pixel + 3, 1) / hostFullScale(1);
        }
    }
    if (from.alpha)
        for (int32_t x = 0; x < width; ++x)
            at(x)[3] = getSample(from.alpha + static_cast<size_t>(x) * bytes, bytes) / hostFullScale(bytes);
}

}  // namespace

int32_t hostFrameRows(int32_t height, bool wholeRows) { return wholeRows ? (height + 3) / 4 * 4 : height; }

int32_t hostFrameColumns(int32_t width, const HostFormatGeometry& format)
{
    return format.pairs ? (width + 1) / 2 * 2 : width;
}

const HostFormatGeometry& defaultHostFormat(bool eightBitSamples)
{
    return *hostFormatNamed(eightBitSamples ? "MFIF_RGBA_RAW_32" : "MFIF_RGBA_FLOAT");
}

bool hostFormatHasAlpha(const HostFormatGeometry& format) { return !format.pairs || format.alphaPlane; }

ComRef<MemoryImage> newHostImage(const HostFormatGeometry& format, int32_t width, int32_t rows)
{
    const int32_t columns = hostFrameColumns(width, format);
    ComRef<MemoryImage> image(MemoryImage::Create(*format.guid, columns, rows));
    if (!image)
        throw Failure("no memory for a " + std::to_string(columns) + " x " + std::to_string(rows) + " frame");
    return image;
}

void storeHostImage(MemoryImage* image, const HostFormatGeometry& format, int32_t width, int32_t height,
                    int32_t rows, const FrameRows& source, bool keepRange)
{
    const int32_t columns = hostFrameColumns(width, format);
    std::vector<float> chunk(static_cast<size_t>(kChunkRows) * width * 4);
    for (int32_t top = 0; top < height; top += kChunkRows) {
        const int32_t count = std::min(kChunkRows, height - top);
        source(top, count, chunk.data());
        for (int32_t y = top; y < top + count; ++y) {
            const float* row = &chunk[static_cast<size_t>(y - top) * width * 4];
            storeRow(
                format, columns, rowAt(image->Data(), format, columns, rows, y),
                [&](int32_t x) { return row + static_cast<size_t>(std::min(x, width - 1)) * 4; }, keepRange);
        }
    }
    // Rows below the frame repeat its last row.
    const RowAt last = rowAt(image->Data(), format, columns, rows, height - 1);
    const size_t colourBytes = static_cast<size_t>(columns) * format.samplesPerPixel * format.sampleBytes;
    for (int32_t y = height; y < rows; ++y) {
        const RowAt to = rowAt(image->Data(), format, columns, rows, y);
        std::memcpy(to.colour, last.colour, colourBytes);
        if (to.alpha)
            std::memcpy(to.alpha, last.alpha, static_cast<size_t>(columns) * format.sampleBytes);
    }
}

void loadHostImage(MemoryImage* image, const HostFormatGeometry& format, int32_t width, int32_t height,
                   int32_t rows, const FrameRows& sink)
{
    const int32_t columns = hostFrameColumns(width, format);
    const bool alpha = hostFormatHasAlpha(format);
    std::vector<float> chunk(static_cast<size_t>(kChunkRows) * width * 4);
    for (int32_t top = 0; top < height; top += kChunkRows) {
        const int32_t count = std::min(kChunkRows, height - top);
        for (int32_t y = top; y < top + count; ++y) {
            float* row = &chunk[static_cast<size_t>(y - top) * width * 4];
            loadRow(format, width, rowAt(image->Data(), format, columns, rows, y),
                    [&](int32_t x) { return row + static_cast<size_t>(x) * 4; });
            for (int32_t x = 0; x < width && !alpha; ++x)
                row[x * 4 + 3] = 1.0f;
        }
        sink(top, count, chunk.data());
    }
}
