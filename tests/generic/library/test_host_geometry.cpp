// Where conversions read and write: row order, regions of interest, the alpha
// plane, odd widths of the pair formats, and the field passes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "generic/library/HostPixelFormat.h"

namespace {

using Frame = std::unique_ptr<VZImage>;

struct FormatShape {
    int code;
    int samplesPerPixel;  // in the colour plane
    int sampleBytes;
    bool alphaPlane;
    bool bottomUp;
};

// Independent of the library's tables: the layouts as the formats define them.
const FormatShape kShapes[] = {
    {1, 4, 1, false, false}, {2, 4, 1, false, true}, {3, 2, 1, false, true}, {5, 2, 1, true, true},
    {7, 4, 2, false, true},  {10, 2, 2, true, true}, {12, 4, 4, false, true}, {15, 2, 4, true, true},
    {16, 2, 4, true, true},
};

size_t bufferBytes(const FormatShape& f, int width, int height)
{
    return static_cast<size_t>(width) * height * (f.samplesPerPixel + (f.alphaPlane ? 1 : 0)) * f.sampleBytes;
}

// Deterministic bytes that are valid samples of every depth (small positive
// values for 2.14 and float, since every byte is below 0x40).
std::vector<uint8_t> patternBuffer(size_t bytes)
{
    std::vector<uint8_t> buffer(bytes);
    for (size_t i = 0; i < bytes; ++i)
        buffer[i] = static_cast<uint8_t>((i * 37 + 11) % 61);
    return buffer;
}

Frame decode(const std::vector<uint8_t>& buffer, int bw, int bh, int rw, int rh, int rx, int ry, int code,
             uint32_t flags = 0)
{
    return Frame(hostToVzImage(buffer.data(), bw, bh, rw, rh, rx, ry, code, flags));
}

bool samePixel(const VZImage& a, int ax, int ay, const VZImage& b, int bx, int by)
{
    return std::memcmp(a.rows[ay] + 4 * ax, b.rows[by] + 4 * bx, 8) == 0;
}

TEST(HostRowOrder, BottomUpFormatsLandRightSideUp)
{
    // The first row in memory is white, the rest black. Top-down code 1 puts it at
    // the top of the frame; bottom-up code 12 at the bottom.
    const int w = 3, h = 4;
    std::vector<uint8_t> rgba8(w * h * 4, 0);
    std::fill(rgba8.begin(), rgba8.begin() + w * 4, 255);
    std::vector<float> rgbaF(w * h * 4, 0.0f);
    std::fill(rgbaF.begin(), rgbaF.begin() + w * 4, 1.0f);
    Frame topDown(hostToVzImage(rgba8.data(), w, h, w, h, 0, 0, 1, 0));
    Frame bottomUp(hostToVzImage(rgbaF.data(), w, h, w, h, 0, 0, 12, 0));
    for (int y = 0; y < h; ++y) {
        EXPECT_EQ(topDown->rows[y][0], y == 0 ? 32767 : 0) << y;
        EXPECT_EQ(bottomUp->rows[y][0], y == h - 1 ? 32767 : 0) << y;
    }
}

TEST(HostRegion, RegionFromTheMiddleMatchesTheWholeFrame)
{
    // For each layout: a region decoded from the middle of a larger buffer is the
    // same picture as that part of the whole buffer decoded at once.
    const int bw = 10, bh = 7, rw = 4, rh = 3, rx = 2, ry = 3;
    for (const FormatShape& f : kShapes) {
        const auto buffer = patternBuffer(bufferBytes(f, bw, bh));
        Frame whole = decode(buffer, bw, bh, bw, bh, 0, 0, f.code);
        Frame part = decode(buffer, bw, bh, rw, rh, rx, ry, f.code);
        ASSERT_NE(whole, nullptr);
        ASSERT_NE(part, nullptr);
        for (int y = 0; y < rh; ++y)
            for (int x = 0; x < rw; ++x)
                ASSERT_TRUE(samePixel(*part, x, y, *whole, rx + x, ry + y))
                    << "code " << f.code << " at " << x << "," << y;
    }
}

TEST(HostRegion, EncodingWritesOnlyTheRegion)
{
    const int bw = 10, bh = 7, rw = 4, rh = 3, rx = 2, ry = 3;
    for (const FormatShape& f : kShapes) {
        // A frame decoded from a pattern, so that it is valid for the format.
        const auto source = patternBuffer(bufferBytes(f, bw, bh));
        Frame frame = decode(source, bw, bh, rw, rh, rx, ry, f.code);
        std::vector<uint8_t> buffer(bufferBytes(f, bw, bh), 0xEE);
        vzImageToHost(frame.get(), buffer.data(), bw, bh, rw, rh, rx, ry, f.code, 0);

        // The same frame encoded into a buffer of just the region's size.
        std::vector<uint8_t> alone(bufferBytes(f, rw, rh), 0xEE);
        vzImageToHost(frame.get(), alone.data(), rw, rh, rw, rh, 0, 0, f.code, 0);

        // The bytes the region owns, computed from the layout, must hold what the
        // region-sized buffer holds at the same pixel; all others are untouched.
        std::vector<bool> inRegion(buffer.size(), false);
        const size_t pixelBytes = static_cast<size_t>(f.samplesPerPixel) * f.sampleBytes;
        const size_t alphaStart = static_cast<size_t>(bw) * bh * pixelBytes;
        const size_t aloneAlphaStart = static_cast<size_t>(rw) * rh * pixelBytes;
        for (int y = 0; y < rh; ++y) {
            const int row = f.bottomUp ? bh - 1 - ry - y : ry + y;
            const int aloneRow = f.bottomUp ? rh - 1 - y : y;
            for (int x = 0; x < rw; ++x) {
                const size_t pixel = static_cast<size_t>(row) * bw + rx + x;
                const size_t alonePixel = static_cast<size_t>(aloneRow) * rw + x;
                for (size_t b = 0; b < pixelBytes; ++b) {
                    inRegion[pixel * pixelBytes + b] = true;
                    ASSERT_EQ(buffer[pixel * pixelBytes + b], alone[alonePixel * pixelBytes + b]) << "code " << f.code;
                }
                for (int b = 0; f.alphaPlane && b < f.sampleBytes; ++b) {
                    inRegion[alphaStart + pixel * f.sampleBytes + b] = true;
                    ASSERT_EQ(buffer[alphaStart + pixel * f.sampleBytes + b],
                              alone[aloneAlphaStart + alonePixel * f.sampleBytes + b])
                        << "code " << f.code;
                }
            }
        }
        for (size_t i = 0; i < buffer.size(); ++i) {
            if (!inRegion[i]) {
                ASSERT_EQ(buffer[i], 0xEE) << "code " << f.code << " byte " << i;
            }
        }
        // The region-sized buffer was written everywhere.
        EXPECT_NE(std::count(alone.begin(), alone.end(), 0xEE), static_cast<long>(alone.size())) << f.code;
    }
}

TEST(HostRegion, AlphaPlaneFollowsTheRowsOfItsRegion)
{
    // 8-bit Cb Y Cr Y with alpha: give each buffer pixel an alpha from its row and
    // column and find them again in the region.
    const int bw = 6, bh = 5;
    std::vector<uint8_t> buffer(bw * bh * 3, 128);
    for (int row = 0; row < bh; ++row)
        for (int col = 0; col < bw; ++col)
            buffer[bw * bh * 2 + row * bw + col] = static_cast<uint8_t>(row * 50 + col);
    Frame part = decode(buffer, bw, bh, 2, 2, 3, 1, 5);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 2; ++x) {
            const int row = bh - 1 - 1 - y;  // bottom-up
            const int v = row * 50 + 3 + x;
            EXPECT_NEAR(part->rows[y][4 * x + 3], v * 32767.0 / 255.0, 64.0) << x << "," << y;
        }
}

TEST(HostOddWidth, PairFormatsDecodeEveryPixelAndNothingBeyond)
{
    // A region of odd width decodes as the same pixels of a region one wider,
    // and the frame block is exactly the region (ASan watches its end).
    for (int code : {3, 5, 10, 16}) {
        const FormatShape& f =
            *std::find_if(std::begin(kShapes), std::end(kShapes), [&](const FormatShape& s) { return s.code == code; });
        const int bw = 8, bh = 3;
        const auto buffer = patternBuffer(bufferBytes(f, bw, bh));
        Frame odd = decode(buffer, bw, bh, 5, bh, 0, 0, code);
        Frame even = decode(buffer, bw, bh, 6, bh, 0, 0, code);
        ASSERT_EQ(odd->width, 5u);
        for (int y = 0; y < bh; ++y)
            for (int x = 0; x < 5; ++x)
                ASSERT_TRUE(samePixel(*odd, x, y, *even, x, y)) << "code " << code << " at " << x << "," << y;
    }
}

TEST(HostOddWidth, RegionAtTheEndOfTheColourPlaneStaysInside)
{
    // Odd buffer width, region reaching the last pixel of the colour plane: the
    // exact-size buffer is not read past, and the even pixels match the region
    // one narrower.
    for (const FormatShape& f : kShapes) {
        if (f.samplesPerPixel != 2)
            continue;
        const int bw = 5, bh = 2;
        auto buffer = patternBuffer(bufferBytes(f, bw, bh));
        Frame odd = decode(buffer, bw, bh, 5, 2, 0, 0, f.code);
        Frame narrower = decode(buffer, bw, bh, 4, 2, 0, 0, f.code);
        ASSERT_NE(odd, nullptr);
        for (int y = 0; y < 2; ++y)
            for (int x = 0; x < 4; ++x)
                ASSERT_TRUE(samePixel(*odd, x, y, *narrower, x, y)) << "code " << f.code;
        // Encoding the odd region back stays inside the buffer too.
        vzImageToHost(odd.get(), buffer.data(), bw, bh, 5, 2, 0, 0, f.code, 0);
    }
}

TEST(HostOddWidth, EncodingLeavesThePixelAfterTheRegion)
{
    for (const FormatShape& f : kShapes) {
        if (f.samplesPerPixel != 2)
            continue;
        const int bw = 8, bh = 2;
        VZImage frame(3, bh, 0, static_cast<uint16_t*>(nullptr), 0u);
        std::fill(frame.pixels, frame.pixels + 3 * bh * 4, 20000);
        std::vector<uint8_t> buffer(bufferBytes(f, bw, bh), 0xEE);
        vzImageToHost(&frame, buffer.data(), bw, bh, 3, bh, 2, 0, f.code, 0);
        const size_t pixelBytes = 2 * static_cast<size_t>(f.sampleBytes);
        for (int row = 0; row < bh; ++row) {
            // Pixels 2..4 written (their first bytes at least), pixel 5 untouched.
            EXPECT_NE(buffer[(row * bw + 4) * pixelBytes + 1], 0xEE) << "code " << f.code;
            for (size_t b = 0; b < pixelBytes; ++b)
                EXPECT_EQ(buffer[(row * bw + 5) * pixelBytes + b], 0xEE) << "code " << f.code;
        }
    }
}

// Fields: a frame of 5 rows (odd count) whose rows are told apart by value.
class HostFieldTest : public ::testing::Test {
protected:
    static constexpr int kWidth = 3, kHeight = 5;

    void SetUp() override
    {
        rgba8.assign(kWidth * kHeight * 4, 0);
        for (int row = 0; row < kHeight; ++row)
            for (int i = 0; i < kWidth * 4; ++i)
                rgba8[row * kWidth * 4 + i] = static_cast<uint8_t>(40 * row + i + 1);
        rgba214.resize(rgba8.size());
        for (size_t i = 0; i < rgba8.size(); ++i)
            rgba214[i] = static_cast<int16_t>(rgba8[i] * 50);
    }

    // Checks that each row of `fielded` equals row `from[y]` of `plain`.
    static void expectRows(const VZImage& fielded, const VZImage& plain, const int (&from)[kHeight], int flags)
    {
        for (int y = 0; y < kHeight; ++y)
            EXPECT_EQ(std::memcmp(fielded.rows[y], plain.rows[from[y]], kWidth * 8), 0)
                << "flags " << flags << " row " << y;
    }

    std::vector<uint8_t> rgba8;
    std::vector<int16_t> rgba214;
};

TEST_F(HostFieldTest, DecodingDoublesTheChosenField)
{
    const int oddOnly[kHeight] = {1, 1, 3, 3, 4};  // last row, with no successor, keeps itself
    const int evenOnly[kHeight] = {0, 0, 2, 2, 4};
    const int both[kHeight] = {1, 1, 3, 3, 4};     // each pair holds the odd row
    // Top-down 8-bit and bottom-up 2.14: fields count rows of the frame.
    for (int code : {1, 7}) {
        const void* pixels = code == 1 ? static_cast<const void*>(rgba8.data()) : rgba214.data();
        Frame plain(hostToVzImage(pixels, kWidth, kHeight, kWidth, kHeight, 0, 0, code, 0));
        Frame odd(hostToVzImage(pixels, kWidth, kHeight, kWidth, kHeight, 0, 0, code, HOST_FIELD_ODD_ONLY));
        Frame even(hostToVzImage(pixels, kWidth, kHeight, kWidth, kHeight, 0, 0, code, HOST_FIELD_EVEN_ONLY));
        Frame all(hostToVzImage(pixels, kWidth, kHeight, kWidth, kHeight, 0, 0, code, 3));
        expectRows(*odd, *plain, oddOnly, 1);
        expectRows(*even, *plain, evenOnly, 2);
        expectRows(*all, *plain, both, 3);
    }
}

TEST_F(HostFieldTest, EncodingSkipsTheOtherField)
{
    Frame frame(hostToVzImage(rgba214.data(), kWidth, kHeight, kWidth, kHeight, 0, 0, 7, 0));
    for (uint32_t flags : {0u, 1u, 2u, 3u}) {
        std::vector<int16_t> top(rgba214.size(), -7);
        std::vector<uint8_t> bytes(rgba8.size(), 0xEE);
        vzImageToHost(frame.get(), top.data(), kWidth, kHeight, kWidth, kHeight, 0, 0, 7, flags);
        vzImageToHost(frame.get(), bytes.data(), kWidth, kHeight, kWidth, kHeight, 0, 0, 1, flags);
        for (int y = 0; y < kHeight; ++y) {
            const bool skipped = (y % 2 == 0 && (flags & 1)) || (y % 2 == 1 && (flags & 2));
            const int bottomUpRow = kHeight - 1 - y;
            const int16_t first214 = top[bottomUpRow * kWidth * 4];
            const uint8_t first8 = bytes[y * kWidth * 4];
            if (skipped) {
                EXPECT_EQ(first214, -7) << "flags " << flags << " row " << y;
                EXPECT_EQ(first8, 0xEE) << "flags " << flags << " row " << y;
            } else {
                // The row went back where it came from.
                EXPECT_NEAR(first214, rgba214[bottomUpRow * kWidth * 4], 1) << "flags " << flags << " row " << y;
                EXPECT_NE(first8, 0xEE) << "flags " << flags << " row " << y;
            }
        }
    }
}

}  // namespace
