// Where conversions read and write: row order, regions of interest, odd widths
// of the pair formats, and the field passes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "host_test_support.h"

namespace {

using namespace host_test;

constexpr int kBw = 10, kBh = 7, kRw = 4, kRh = 3, kRx = 2, kRy = 3;

bool samePixels(const VZImage& a, int ay, const VZImage& b, int bx, int by, int count)
{
    return std::memcmp(a.rows[ay], b.rows[by] + 4 * bx, 8 * static_cast<size_t>(count)) == 0;
}

TEST(HostRegion, RegionFromTheMiddleLandsRightSideUp)
{
    // Red tells the buffer rows apart: code 1 is top-down, code 12 bottom-up.
    std::vector<uint8_t> top(kBw * kBh * 4, 0);
    std::vector<float> bottom(kBw * kBh * 4, 0.0f);
    for (int i = 0; i < kBw * kBh; ++i) {
        top[4 * i] = static_cast<uint8_t>(30 * (i / kBw));
        bottom[4 * i] = static_cast<float>(i / kBw + 1) / 8.0f;
    }
    Frame fromTop = decode(top.data(), kBw, kBh, kRw, kRh, kRx, kRy, 1);
    Frame fromBottom = decode(bottom.data(), kBw, kBh, kRw, kRh, kRx, kRy, 12);
    for (int y = 0; y < kRh; ++y)
        for (int x = 0; x < kRw; ++x) {
            EXPECT_NEAR(fromTop->rows[y][4 * x], 30 * (kRy + y) * 32767.0 / 255.0, 64.0) << y;
            EXPECT_NEAR(fromBottom->rows[y][4 * x], (kBh - kRy - y) / 8.0 * 32767.0, 1.0) << y;
        }
    // Every code, alpha planes included: the region is that part of the whole.
    for (int code = 1; code <= 16; ++code) {
        const auto buffer = patternBuffer(shapeOf(code).bufferBytes(kBw, kBh));
        Frame whole = decode(buffer.data(), kBw, kBh, kBw, kBh, 0, 0, code);
        Frame part = decode(buffer.data(), kBw, kBh, kRw, kRh, kRx, kRy, code);
        ASSERT_TRUE(whole && part) << code;
        for (int y = 0; y < kRh; ++y)
            EXPECT_TRUE(samePixels(*part, y, *whole, kRx, kRy + y, kRw)) << "code " << code << " row " << y;
    }
}

TEST(HostRegion, EncodingWritesOnlyTheRegion)
{
    // Encoded into two buffers of different fillings, the bytes that agree are the
    // ones written: as many as a region-sized buffer holds, and the region decoded
    // from them is what the region-sized buffer gives.
    for (int code = 1; code <= 16; ++code) {
        const Shape f = shapeOf(code);
        const auto source = patternBuffer(f.bufferBytes(kBw, kBh));
        Frame frame = decode(source.data(), kBw, kBh, kRw, kRh, kRx, kRy, code);
        std::vector<uint8_t> a(source.size(), 0x11), b(source.size(), 0xEE), alone(f.bufferBytes(kRw, kRh));
        vzImageToHost(frame.get(), a.data(), kBw, kBh, kRw, kRh, kRx, kRy, code, 0);
        vzImageToHost(frame.get(), b.data(), kBw, kBh, kRw, kRh, kRx, kRy, code, 0);
        vzImageToHost(frame.get(), alone.data(), kRw, kRh, kRw, kRh, 0, 0, code, 0);
        size_t written = 0;
        for (size_t i = 0; i < a.size(); ++i)
            written += a[i] == b[i];
        EXPECT_EQ(written, alone.size()) << "code " << code;
        Frame fromA = decode(a.data(), kBw, kBh, kRw, kRh, kRx, kRy, code);
        Frame fromAlone = decode(alone.data(), kRw, kRh, kRw, kRh, 0, 0, code);
        for (int y = 0; y < kRh; ++y)
            EXPECT_TRUE(samePixels(*fromA, y, *fromAlone, 0, y, kRw)) << "code " << code << " row " << y;
    }
}

TEST(HostOddWidth, PairFormatsStayInsideTheRegion)
{
    for (int code : {3, 4, 5, 6, 8, 9, 10, 11, 13, 14, 15, 16}) {
        const Shape f = shapeOf(code);
        // Decoding an odd width gives the pixels of the even width around it, and
        // writes no further than the frame's block (ASan watches its end). With
        // the region at the end of an exact-size buffer, nothing is read past it.
        for (const int bw : {8, 5}) {
            const auto buffer = patternBuffer(f.bufferBytes(bw, 2));
            Frame odd = decode(buffer.data(), bw, 2, 5, 2, 0, 0, code);
            Frame even = decode(buffer.data(), bw, 2, bw == 8 ? 6 : 4, 2, 0, 0, code);
            ASSERT_TRUE(odd && even) << code;
            for (int y = 0; y < 2; ++y)
                EXPECT_TRUE(samePixels(*odd, y, *even, 0, y, bw == 8 ? 5 : 4)) << "code " << code << " width " << bw;
        }
        // Encoding pixels 2..4 of an 8-wide buffer writes pixel 4 but not pixel 5.
        VZImage frame(3, 2, 0, static_cast<uint16_t*>(nullptr), 0u);
        std::fill(frame.pixels, frame.pixels + 3 * 2 * 4, 20000);
        std::vector<uint8_t> buffer(f.bufferBytes(8, 2), 0xEE);
        vzImageToHost(&frame, buffer.data(), 8, 2, 3, 2, 2, 0, code, 0);
        const size_t pb = f.pixelBytes();
        for (int row = 0; row < 2; ++row) {
            EXPECT_NE(buffer[(row * 8 + 4) * pb + f.sampleBytes - 1], 0xEE) << "code " << code;
            for (size_t b = 0; b < pb; ++b)
                EXPECT_EQ(buffer[(row * 8 + 5) * pb + b], 0xEE) << "code " << code;
        }
    }
}

// Fields over frames of 5 rows (an odd count), top-down 8-bit and bottom-up 2.14:
// the flags count rows of the frame.
class HostFieldTest : public ::testing::Test {
protected:
    static constexpr int kW = 3, kH = 5;
    Frame decodeWith(int code, uint32_t flags) { return decode(buffer(code).data(), kW, kH, kW, kH, 0, 0, code, flags); }
    std::vector<uint8_t>& buffer(int code) { return code == 1 ? rgba8 : rgba214; }
    std::vector<uint8_t> rgba8 = patternBuffer(shapeOf(1).bufferBytes(kW, kH));
    std::vector<uint8_t> rgba214 = patternBuffer(shapeOf(7).bufferBytes(kW, kH));
};

TEST_F(HostFieldTest, DecodingDoublesTheChosenField)
{
    // Frame row each row is taken from, for flags 1, 2 and both; the last row has
    // no successor and keeps itself; with both flags each pair holds its odd row.
    const int from[4][kH] = {{0, 1, 2, 3, 4}, {1, 1, 3, 3, 4}, {0, 0, 2, 2, 4}, {1, 1, 3, 3, 4}};
    for (int code : {1, 7}) {
        Frame plain = decodeWith(code, 0);
        for (uint32_t flags : {1u, 2u, 3u}) {
            Frame fielded = decodeWith(code, flags);
            for (int y = 0; y < kH; ++y)
                EXPECT_TRUE(samePixels(*fielded, y, *plain, 0, from[flags][y], kW))
                    << "code " << code << " flags " << flags << " row " << y;
        }
    }
}

TEST_F(HostFieldTest, EncodingSkipsTheOtherField)
{
    for (int code : {1, 7}) {
        Frame frame = decodeWith(code, 0);
        const size_t rowBytes = kW * shapeOf(code).pixelBytes();
        for (uint32_t flags : {1u, 2u, 3u}) {
            std::vector<uint8_t> all(buffer(code).size(), 0xEE), out(all);
            vzImageToHost(frame.get(), all.data(), kW, kH, kW, kH, 0, 0, code, 0);
            vzImageToHost(frame.get(), out.data(), kW, kH, kW, kH, 0, 0, code, flags);
            for (int row = 0; row < kH; ++row) {
                const int y = code == 1 ? row : kH - 1 - row;
                const bool skipped = (y % 2 == 0 && (flags & 1)) || (y % 2 == 1 && (flags & 2));
                // A written row is what the plain encoding writes; a skipped one keeps the buffer's bytes.
                const auto first = out.begin() + row * rowBytes, last = first + rowBytes;
                EXPECT_TRUE(skipped ? std::count(first, last, 0xEE) == static_cast<long>(rowBytes)
                                    : std::equal(first, last, all.begin() + row * rowBytes))
                    << "code " << code << " flags " << flags << " row " << y;
            }
        }
    }
}

}  // namespace
