// Host format codes: identifier matching, the tables' internal consistency, and
// refusal of bad arguments.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "generic/library/HostFormatTables.h"
#include "generic/library/HostPixelFormat.h"
#include "hostsdk/image_formats.h"

namespace {

const GUID* const kAllFormats[16] = {
    &MFIF_RGBA_RAW_32,     &MFIF_BGRA_RAW_32_VIDEO, &MFIF_CbYCrY_16,        &MFIF_CbYCrY709_16,
    &MFIF_CbYCrYA_24,      &MFIF_CbYCrY709A_24,     &MFIF_RGBA_S2_14,       &MFIF_CbYCrY_S2_14,
    &MFIF_CbYCrY709_S2_14, &MFIF_CbYCrYA_S2_14,     &MFIF_CbYCrY709A_S2_14, &MFIF_RGBA_FLOAT,
    &MFIF_CbYCrY_FLOAT,    &MFIF_CbYCrY709_FLOAT,   &MFIF_CbYCrYA_FLOAT,    &MFIF_CbYCrY709A_FLOAT,
};

TEST(HostFormatPick, NamesFifteenFormatsInOrderAndNeverSixteen)
{
    for (int code = 1; code <= 15; ++code)
        EXPECT_EQ(pickHostFormat(*kAllFormats[code - 1]), code);
    EXPECT_EQ(pickHostFormat(MFIF_CbYCrY709A_FLOAT), 0);
    EXPECT_EQ(pickHostFormat(GUID{}), 0);
    // All sixteen identifiers are distinct.
    for (int a = 0; a < 16; ++a)
        for (int b = a + 1; b < 16; ++b)
            EXPECT_FALSE(guidEqual(*kAllFormats[a], *kAllFormats[b])) << a << " " << b;
}

TEST(HostFormatPick, GuidEqualComparesEveryByte)
{
    const GUID base = MFIF_RGBA_FLOAT;
    GUID copy = base;
    EXPECT_TRUE(guidEqual(base, copy));
    for (size_t i = 0; i < sizeof(GUID); ++i) {
        GUID changed = base;
        reinterpret_cast<uint8_t*>(&changed)[i] ^= 0x01;
        EXPECT_FALSE(guidEqual(base, changed)) << "byte " << i;
        EXPECT_EQ(pickHostFormat(changed), 0) << "byte " << i;
    }
}

TEST(HostFormatTables, DecodeUndoesEncodeForEveryFamily)
{
    // Decode (Y Cb Cr -> R G B) times encode (R G B -> Y Cb Cr) is the identity, to
    // the precision of the single-precision constants.
    for (int family = 1; family <= 6; ++family) {
        const float* d = hostDecodeMatrix[family];
        const float* e = hostEncodeMatrix[family];
        for (int row = 0; row < 3; ++row)
            for (int col = 0; col < 3; ++col) {
                double sum = 0.0;
                for (int k = 0; k < 3; ++k)
                    sum += static_cast<double>(d[row * 3 + k]) * e[k * 3 + col];
                EXPECT_NEAR(sum, row == col ? 1.0 : 0.0, 2e-5) << "family " << family << " " << row << col;
            }
    }
}

TEST(HostFormatTables, LayoutColumnsAgreeWithTheFamilies)
{
    for (int code = 1; code <= 16; ++code) {
        const int family = hostColourFamily[code];
        const bool pair = hostSamplesPerPixel[code] == 2;
        EXPECT_EQ(pair, family != 0) << code;
        EXPECT_EQ(hostSamplesPerPixel[code] == 4, !pair) << code;
        if (pair) {  // families 1-2 are 8-bit, 3-4 2.14, 5-6 float
            EXPECT_EQ(hostSampleBytes[code], family <= 2 ? 1 : (family <= 4 ? 2 : 4)) << code;
        }
        if (hostAlphaPlane[code]) {
            EXPECT_TRUE(pair) << code;
        }
        EXPECT_EQ(hostBottomUp[code], code == 1 ? 0 : 1) << code;
    }
}

TEST(HostFormatArguments, BadArgumentsGiveNullAndWriteNothing)
{
    std::vector<uint8_t> buffer(8 * 4 * 16, 0x5A);
    const std::vector<uint8_t> untouched = buffer;
    struct Case {
        int bufferWidth, bufferHeight, roiWidth, roiHeight, roiX, roiY, code;
    };
    const Case cases[] = {
        {8, 4, 8, 4, 0, 0, 0},   {8, 4, 8, 4, 0, 0, 17}, {8, 4, 8, 4, 0, 0, -1}, {8, 4, 0, 4, 0, 0, 1},
        {8, 4, 8, 0, 0, 0, 1},   {8, 4, 8, 4, 1, 0, 1},  {8, 4, 8, 4, 0, 1, 1},  {8, 4, 4, 2, -1, 0, 1},
        {8, 4, 4, 2, 0, -1, 12}, {0, 4, 1, 1, 0, 0, 1},  {8, 4, 9, 4, 0, 0, 3},  {8, 4, 2, 2, 7, 0, 16},
    };
    VZImage frame(8, 4, 0, static_cast<uint16_t*>(nullptr), 0u);
    std::fill(frame.pixels, frame.pixels + 8 * 4 * 4, 1000);
    for (const Case& c : cases) {
        EXPECT_EQ(hostToVzImage(buffer.data(), c.bufferWidth, c.bufferHeight, c.roiWidth, c.roiHeight, c.roiX, c.roiY,
                                c.code, 0),
                  nullptr);
        vzImageToHost(&frame, buffer.data(), c.bufferWidth, c.bufferHeight, c.roiWidth, c.roiHeight, c.roiX, c.roiY,
                      c.code, 0);
    }
    EXPECT_EQ(hostToVzImage(nullptr, 8, 4, 8, 4, 0, 0, 1, 0), nullptr);
    vzImageToHost(nullptr, buffer.data(), 8, 4, 8, 4, 0, 0, 1, 0);
    vzImageToHost(&frame, nullptr, 8, 4, 8, 4, 0, 0, 1, 0);
    // A frame of another size than the region is refused.
    vzImageToHost(&frame, buffer.data(), 8, 4, 4, 4, 0, 0, 1, 0);
    vzImageToHost(&frame, buffer.data(), 8, 4, 8, 3, 0, 0, 1, 0);
    EXPECT_EQ(buffer, untouched);
}

TEST(HostFormatArguments, EveryCodeDecodesAndEncodesAWholeBuffer)
{
    // Each code's full buffer (colour plane plus alpha plane) is exactly as large as
    // its layout says; ASan reports any access outside it.
    for (int code = 1; code <= 16; ++code) {
        const int width = 6, height = 3;
        const size_t bytes = static_cast<size_t>(width) * height *
                             (hostSamplesPerPixel[code] + hostAlphaPlane[code]) * hostSampleBytes[code];
        std::vector<uint8_t> buffer(bytes, 0);
        std::unique_ptr<VZImage> image(hostToVzImage(buffer.data(), width, height, width, height, 0, 0, code, 0));
        ASSERT_NE(image, nullptr) << code;
        EXPECT_EQ(image->width, 6u);
        EXPECT_EQ(image->height, 3);
        EXPECT_EQ(image->ownsPixels, 1u);
        std::fill(image->pixels, image->pixels + width * height * 4, 32767);
        vzImageToHost(image.get(), buffer.data(), width, height, width, height, 0, 0, code, 0);
        std::unique_ptr<VZImage> back(hostToVzImage(buffer.data(), width, height, width, height, 0, 0, code, 0));
        // White with opaque alpha survives every format to within a few steps.
        for (int i = 0; i < width * height * 4; ++i)
            ASSERT_NEAR(back->pixels[i], 32767, 160) << "code " << code << " sample " << i;
    }
}

}  // namespace
