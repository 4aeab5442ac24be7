// VZImage: construction, ownership, the four-thread alpha copy, ImageRec bridges.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "generic/library/VZImage.h"

namespace {

constexpr uint16_t* kNoBlock = nullptr;

TEST(VZImageConstruction, OwnedFrameHasRowsAndDefaults)
{
    VZImage image(5u, 3, 0, kNoBlock, 42u);
    ASSERT_NE(image.pixels, nullptr);
    ASSERT_NE(image.rows, nullptr);
    EXPECT_EQ(image.ownsPixels, 1u);
    EXPECT_EQ(image.width, 5u);
    EXPECT_EQ(image.height, 3);
    for (int y = 0; y < 3; ++y)
        EXPECT_EQ(image.rows[y], image.pixels + y * 5 * 4);
    EXPECT_EQ(image.alphaSource, nullptr);
    EXPECT_EQ(image.extra, nullptr);
    EXPECT_EQ(image.userValue, 42u);
    EXPECT_DOUBLE_EQ(image.pixelAspect[0], 1.0);
    EXPECT_DOUBLE_EQ(image.pixelAspect[1], 1.0);
    EXPECT_DOUBLE_EQ(image.offset[0], 0.0);
    EXPECT_DOUBLE_EQ(image.offset[1], 0.0);
    EXPECT_FLOAT_EQ(image.scale, 144.0f);
    for (uint8_t b : image.description)
        EXPECT_EQ(b, 0);
    for (uint16_t s : image.reservedSamples)
        EXPECT_EQ(s, 0);
    // The whole block is writable through the row table (ASan checks the extent).
    for (int y = 0; y < 3; ++y)
        for (int i = 0; i < 20; ++i)
            image.rows[y][i] = static_cast<uint16_t>(y * 20 + i);
    EXPECT_EQ(image.pixels[59], 59);
}

struct ExtraProbe : VZImageExtra {
    explicit ExtraProbe(bool* flag) : deleted(flag) {}
    ~ExtraProbe() override { *deleted = true; }
    bool* deleted;
};

TEST(VZImageConstruction, BorrowedBlockOutlivesTheFrameAndExtraIsDeleted)
{
    std::vector<uint16_t> block(4 * 2 * 4, 7);
    bool extraDeleted = false;
    {
        VZImage image(4, 2, 0, block.data(), 0u);
        EXPECT_EQ(image.ownsPixels, 0u);
        EXPECT_EQ(image.pixels, block.data());
        EXPECT_EQ(image.rows[1], block.data() + 16);
        image.rows[1][3] = 1234;
        image.extra = new ExtraProbe(&extraDeleted);
    }
    EXPECT_TRUE(extraDeleted);
    // Had the frame freed the caller's block, ASan would report it here.
    EXPECT_EQ(block[19], 1234);
    EXPECT_EQ(block[0], 7);
}

TEST(VZImageConstruction, EmptyAndNegativeSizesBuildNoRows)
{
    VZImage noRows(8u, 0, 0, kNoBlock, 0u);
    EXPECT_EQ(noRows.rows, nullptr);
    EXPECT_EQ(noRows.height, 0);

    VZImage negativeWidth(-3, 2, 0, kNoBlock, 0u);
    EXPECT_EQ(negativeWidth.width, 0u);
    EXPECT_EQ(negativeWidth.pixels, nullptr);

    VZImage negativeHeight(4, -1, 0, kNoBlock, 0u);
    EXPECT_EQ(negativeHeight.rows, nullptr);
}

// Two frames of equal width: colour and alpha of the target known, source alpha
// distinct per row and column.
class CopyAlphaTest : public ::testing::Test {
protected:
    void make(int height)
    {
        target = std::make_unique<VZImage>(kWidth, height, 0, kNoBlock, 0u);
        source = std::make_unique<VZImage>(kWidth, height, 0, kNoBlock, 0u);
        for (int y = 0; y < height; ++y)
            for (uint32_t x = 0; x < kWidth; ++x) {
                uint16_t* t = target->rows[y] + 4 * x;
                uint16_t* s = source->rows[y] + 4 * x;
                t[0] = t[1] = t[2] = 100;
                t[3] = kOldAlpha;
                s[0] = s[1] = s[2] = 200;
                s[3] = sourceAlpha(y, x);
            }
    }
    static uint16_t sourceAlpha(int y, uint32_t x) { return static_cast<uint16_t>((y * 31 + x * 7) % 30000 + 1); }

    static constexpr uint32_t kWidth = 13;
    static constexpr uint16_t kOldAlpha = 32000;
    std::unique_ptr<VZImage> target, source;
};

TEST_F(CopyAlphaTest, CopiesAlphaOnlyAndLeavesTheRemainderRows)
{
    make(1081);
    ASSERT_TRUE(target->CopyAlphaFrom(source.get()));
    EXPECT_EQ(target->alphaSource, source.get());
    for (int y = 0; y < 1081; ++y)
        for (uint32_t x = 0; x < kWidth; ++x) {
            const uint16_t* t = target->rows[y] + 4 * x;
            ASSERT_EQ(t[0], 100);
            ASSERT_EQ(t[2], 100);
            // 1081 rows split in four slices of 270: row 1080 is never visited.
            ASSERT_EQ(t[3], y < 1080 ? sourceAlpha(y, x) : kOldAlpha) << "row " << y;
        }
}

TEST_F(CopyAlphaTest, FewerThanFourRowsAreLeftAlone)
{
    make(3);
    ASSERT_TRUE(target->CopyAlphaFrom(source.get()));
    for (int y = 0; y < 3; ++y)
        EXPECT_EQ(target->rows[y][3], kOldAlpha);
}

TEST_F(CopyAlphaTest, RefusesMismatchedSources)
{
    make(8);
    VZImage narrow(kWidth - 1, 8, 0, kNoBlock, 0u);
    VZImage shorter(kWidth, 7, 0, kNoBlock, 0u);
    EXPECT_FALSE(target->CopyAlphaFrom(nullptr));
    EXPECT_FALSE(target->CopyAlphaFrom(&narrow));
    EXPECT_FALSE(target->CopyAlphaFrom(&shorter));
    EXPECT_EQ(target->alphaSource, nullptr);
    EXPECT_EQ(target->rows[0][3], kOldAlpha);
}

// A 4-channel frame whose samples run through every 15-bit value.
std::unique_ptr<VZImage> rampFrame(uint32_t width, int height)
{
    auto image = std::make_unique<VZImage>(width, height, 0, kNoBlock, 0u);
    const size_t count = static_cast<size_t>(width) * height * 4;
    for (size_t i = 0; i < count; ++i)
        image->pixels[i] = static_cast<uint16_t>(i % 32768);
    return image;
}

TEST(VZImageToRecord, SixteenBitDoublesAndComesBack)
{
    auto image = rampFrame(128, 64);  // 32768 samples: each 15-bit value once
    ImageRec* record = image_from_vzimage(image.get());
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->sampleType, IMAGE_U16);
    EXPECT_EQ(record->channels, 4);
    const uint16_t* samples = static_cast<const uint16_t*>(record->pixels);
    EXPECT_EQ(samples[32767], 65534);  // white
    EXPECT_EQ(samples[1], 2);

    auto back = std::make_unique<VZImage>(128u, 64, 0, kNoBlock, 0u);
    ASSERT_TRUE(image_store_to_vzimage(record, back.get()));
    EXPECT_EQ(std::memcmp(back->pixels, image->pixels, 128 * 64 * 8), 0);
    image_free(record);
}

TEST(VZImageToRecord, FloatMapsFullScaleToOne)
{
    auto image = rampFrame(4, 2);
    image->pixels[5] = 32767;
    image->pixels[6] = 16384;
    ImageRec* record = image_create(4, 2, 4, IMAGE_F32, 1);
    ASSERT_TRUE(image_fill_from_vzimage(record, image.get()));
    const float* samples = static_cast<const float*>(record->pixels);
    EXPECT_EQ(samples[0], 0.0f);
    EXPECT_EQ(samples[5], 1.0f);
    EXPECT_NEAR(samples[6], 16384.0 / 32767.0, 1e-7);
    image_free(record);
}

TEST(VZImageToRecord, RefusalsChangeNothing)
{
    auto image = rampFrame(4, 2);
    EXPECT_EQ(image_from_vzimage(nullptr), nullptr);
    struct Case {
        int width, height, channels, type;
    };
    for (Case c : {Case{4, 2, 4, IMAGE_U8}, Case{4, 2, 4, IMAGE_I32}, Case{4, 2, 3, IMAGE_U16}, Case{5, 2, 4, IMAGE_U16},
                   Case{4, 3, 4, IMAGE_F32}}) {
        ImageRec* record = image_create(c.width, c.height, c.channels, c.type, 1);
        ASSERT_NE(record, nullptr);
        const size_t bytes = static_cast<size_t>(record->rowBytes) * record->height;
        std::memset(record->pixels, 0xA5, bytes);
        EXPECT_FALSE(image_fill_from_vzimage(record, image.get()));
        const uint8_t* raw = static_cast<const uint8_t*>(record->pixels);
        for (size_t i = 0; i < bytes; ++i)
            ASSERT_EQ(raw[i], 0xA5);
        image_free(record);
    }
}

TEST(RecordToVZImage, EightBitExpandsToFifteen)
{
    ImageRec* record = image_create(3, 1, 4, IMAGE_U8, 1);
    const uint8_t values[12] = {128, 255, 0, 1, 254, 127, 2, 64, 10, 20, 30, 40};
    std::memcpy(record->pixels, values, sizeof values);
    VZImage image(3u, 1, 0, kNoBlock, 0u);
    ASSERT_TRUE(image_store_to_vzimage(record, &image));
    EXPECT_EQ(image.rows[0][0], 16448);  // 16384 | 64
    EXPECT_EQ(image.rows[0][1], 32767);
    EXPECT_EQ(image.rows[0][2], 0);
    // The expansion is monotonic and spreads 0..255 over the full 15-bit range.
    for (int i = 0; i < 12; ++i)
        EXPECT_NEAR(image.rows[0][i], values[i] * 32767.0 / 255.0, 64.0) << i;
    image_free(record);
}

TEST(RecordToVZImage, ThreeChannelsGetOpaqueAlpha)
{
    ImageRec* bytes = image_create(2, 2, 3, IMAGE_U8, 1);
    ImageRec* words = image_create(2, 2, 3, IMAGE_U16, 1);
    for (int i = 0; i < 12; ++i) {
        static_cast<uint8_t*>(bytes->pixels)[i] = static_cast<uint8_t>(i * 20);
        static_cast<uint16_t*>(words->pixels)[i] = static_cast<uint16_t>(i * 5000);
    }
    VZImage fromBytes(2u, 2, 0, kNoBlock, 0u), fromWords(2u, 2, 0, kNoBlock, 0u);
    ASSERT_TRUE(image_store_to_vzimage(bytes, &fromBytes));
    ASSERT_TRUE(image_store_to_vzimage(words, &fromWords));
    for (int p = 0; p < 4; ++p) {
        for (int c = 0; c < 3; ++c) {
            const int i = p * 3 + c;
            const int v = i * 20;
            EXPECT_NEAR(fromBytes.pixels[p * 4 + c], v * 32767.0 / 255.0, 64.0);
            EXPECT_EQ(fromWords.pixels[p * 4 + c], i * 2500);
        }
        EXPECT_EQ(fromBytes.pixels[p * 4 + 3], 32767);
        EXPECT_EQ(fromWords.pixels[p * 4 + 3], 32767);
    }
    image_free(bytes);
    image_free(words);
}

TEST(RecordToVZImage, RefusalsChangeNothing)
{
    VZImage image(2u, 2, 0, kNoBlock, 0u);
    std::fill(image.pixels, image.pixels + 16, 777);
    struct Case {
        int width, height, channels, type;
    };
    for (Case c : {Case{2, 2, 4, IMAGE_F32}, Case{2, 2, 4, IMAGE_I32}, Case{2, 2, 2, IMAGE_U8}, Case{2, 2, 1, IMAGE_U16},
                   Case{3, 2, 4, IMAGE_U8}, Case{2, 1, 3, IMAGE_U16}}) {
        ImageRec* record = image_create(c.width, c.height, c.channels, c.type, 1);
        std::memset(record->pixels, 0, static_cast<size_t>(record->rowBytes) * record->height);
        EXPECT_FALSE(image_store_to_vzimage(record, &image));
        image_free(record);
    }
    EXPECT_FALSE(image_store_to_vzimage(nullptr, &image));
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(image.pixels[i], 777);
}

}  // namespace
