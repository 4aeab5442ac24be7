// Host format codes and the sample rules of each depth: edge values and round
// trips of every value.
#include <gtest/gtest.h>

#include <limits>

#include "hostsdk/image_formats.h"
#include "host_test_support.h"

namespace {

using namespace host_test;

TEST(HostFormatPick, NamesFifteenFormatsInOrderAndNeverSixteen)
{
    const GUID* const formats[16] = {
        &MFIF_RGBA_RAW_32,     &MFIF_BGRA_RAW_32_VIDEO, &MFIF_CbYCrY_16,        &MFIF_CbYCrY709_16,
        &MFIF_CbYCrYA_24,      &MFIF_CbYCrY709A_24,     &MFIF_RGBA_S2_14,       &MFIF_CbYCrY_S2_14,
        &MFIF_CbYCrY709_S2_14, &MFIF_CbYCrYA_S2_14,     &MFIF_CbYCrY709A_S2_14, &MFIF_RGBA_FLOAT,
        &MFIF_CbYCrY_FLOAT,    &MFIF_CbYCrY709_FLOAT,   &MFIF_CbYCrYA_FLOAT,    &MFIF_CbYCrY709A_FLOAT,
    };
    for (int code = 1; code <= 15; ++code)
        EXPECT_EQ(pickHostFormat(*formats[code - 1]), code);
    EXPECT_EQ(pickHostFormat(*formats[15]), 0);
}

TEST(HostFormatArguments, BadArgumentsGiveNullAndWriteNothing)
{
    std::vector<uint8_t> buffer(8 * 4 * 16, 0x5A);
    const std::vector<uint8_t> untouched = buffer;
    VZImage frame(8, 4, 0, static_cast<uint16_t*>(nullptr), 0u);
    std::fill(frame.pixels, frame.pixels + 8 * 4 * 4, 1000);
    // roiWidth, roiHeight, roiX, roiY, code over an 8 x 4 buffer: bad codes, an
    // empty region, regions reaching outside.
    const int cases[][5] = {{8, 4, 0, 0, 0}, {8, 4, 0, 0, 17}, {8, 0, 0, 0, 1},
                            {8, 4, 1, 0, 1}, {8, 4, 0, 1, 3},  {4, 2, -1, 0, 12}};
    for (const auto& c : cases) {
        EXPECT_EQ(decode(buffer.data(), 8, 4, c[0], c[1], c[2], c[3], c[4]), nullptr) << c[4];
        vzImageToHost(&frame, buffer.data(), 8, 4, c[0], c[1], c[2], c[3], c[4], 0);
    }
    EXPECT_EQ(decode(nullptr, 8, 4, 8, 4, 0, 0, 1), nullptr);
    vzImageToHost(&frame, buffer.data(), 8, 4, 4, 4, 0, 0, 1, 0);  // frame is not the region's size
    EXPECT_EQ(buffer, untouched);
}

TEST(HostSampleEdges, EdgeValuesOfEachDepth)
{
    // Code 1: 255 is full scale, 128 stores as 16448. Code 2 (B G R A): R 235 is
    // full scale, G 236 wraps to black, B 16 is black, alpha is full range. 2.14:
    // 16384 is 1.0, above is limited, negative gives 0. Float: 1.0 gives 32767, not
    // 32768; above 1, below 0 and NaN are limited.
    const uint8_t rgba8[4] = {255, 128, 0, 255}, bgra8[4] = {16, 236, 235, 128};
    const int16_t fixed[4] = {16384, 20000, -1, -32768};
    const float floats[4] = {1.0f, 2.0f, -0.5f, std::numeric_limits<float>::quiet_NaN()};
    const struct { int code; const void* samples; int want[4]; } cases[] = {{1, rgba8, {32767, 16448, 0, 32767}},
        {2, bgra8, {32767, 0, 0, 16448}}, {7, fixed, {32767, 32767, 0, 0}}, {12, floats, {32767, 32767, 0, 0}}};
    for (const auto& c : cases) {
        Frame frame = decodeRow(c.samples, 1, c.code);
        for (int i = 0; i < 4; ++i)
            EXPECT_EQ(frame->pixels[i], c.want[i]) << "code " << c.code << " sample " << i;
    }
}

TEST(HostEightBit, LevelsComeBack)
{
    // Code 1 gives back every value. Code 2 cuts both ways: a legal level comes
    // back as itself or one below, black and white and the full-range alpha exactly.
    std::vector<uint8_t> all(256 * 4), legal;
    for (size_t i = 0; i < all.size(); ++i)
        all[i] = static_cast<uint8_t>(i / 4);
    Frame frame = decodeRow(all.data(), 256, 1);
    EXPECT_EQ(encodeRow(std::vector<uint16_t>(frame->pixels, frame->pixels + all.size()), 1), all);

    for (int v = 16; v <= 235; ++v)
        legal.insert(legal.end(), 4, static_cast<uint8_t>(v));
    frame = decodeRow(legal.data(), 220, 2);
    const auto back = encodeRow(std::vector<uint16_t>(frame->pixels, frame->pixels + legal.size()), 2);
    for (size_t i = 0; i < legal.size(); ++i)
        ASSERT_TRUE(back[i] == legal[i] || (i % 4 != 3 && back[i] + 1 == legal[i])) << i;
    EXPECT_EQ(back[0], 16);
    EXPECT_EQ(back[back.size() - 2], 235);
}

TEST(HostSampleRoundTrip, EveryFifteenBitValueComesBackWithinTheDepthsRounding)
{
    // R G B A 2.14 and the 2.14 alpha plane have half the frame's steps and cut
    // both ways: up to two steps lower. Float exact. The 8-bit plane keeps the top
    // 8 of 15 bits and refills the low 7 from the top: within 127 either way.
    const struct { int code, below, above; } cases[] = {{7, 2, 0}, {12, 0, 0}, {10, 2, 0}, {15, 0, 0}, {5, 127, 127}};
    std::vector<uint16_t> samples(4 * 32768);
    for (size_t i = 0; i < samples.size(); ++i)
        samples[i] = static_cast<uint16_t>(i / 4);
    for (const auto& c : cases) {
        Frame back = decodeRow(encodeRow(samples, c.code).data(), 32768, c.code);
        const int firstChannel = shapeOf(c.code).alphaPlane ? 3 : 0;
        for (int x = 0; x < 32768; ++x)
            for (int ch = firstChannel; ch < 4; ++ch) {
                const int v = back->pixels[4 * x + ch];
                ASSERT_TRUE(v <= x + c.above && v >= x - c.below) << "code " << c.code << " value " << x;
            }
        EXPECT_EQ(back->pixels[4 * 32767 + 3], 32767) << c.code;
    }
}

}  // namespace
