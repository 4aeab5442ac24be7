// VZImage: construction and ownership, the four-thread alpha copy, the ImageRec
// bridges.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "generic/library/VZImage.h"

namespace {

constexpr uint16_t* kNoBlock = nullptr;

struct ExtraProbe : VZImageExtra {
    explicit ExtraProbe(bool* flag) : deleted(flag) {}
    ~ExtraProbe() override { *deleted = true; }
    bool* deleted;
};

TEST(VZImageOwnership, OwnedBlockHasRowsBorrowedBlockOutlivesTheFrame)
{
    {
        VZImage owned(5u, 3, 0, kNoBlock, 42u);
        ASSERT_NE(owned.pixels, nullptr);
        EXPECT_EQ(owned.ownsPixels, 1u);
        for (int y = 0; y < 3; ++y)
            EXPECT_EQ(owned.rows[y], owned.pixels + y * 5 * 4);
        owned.rows[2][19] = 1;  // the block's last sample (ASan checks the extent)
    }
    std::vector<uint16_t> block(4 * 2 * 4, 7);
    bool extraDeleted = false;
    {
        VZImage borrowed(4, 2, 0, block.data(), 0u);
        EXPECT_EQ(borrowed.ownsPixels, 0u);
        EXPECT_EQ(borrowed.rows[1], block.data() + 16);
        borrowed.rows[1][3] = 1234;
        borrowed.extra = new ExtraProbe(&extraDeleted);
    }
    EXPECT_TRUE(extraDeleted);
    EXPECT_EQ(block[19], 1234);  // had the frame freed the block, ASan would report it here

    VZImage noRows(8u, 0, 0, kNoBlock, 0u);
    EXPECT_EQ(noRows.rows, nullptr);
    VZImage negativeWidth(-3, 2, 0, kNoBlock, 0u);
    EXPECT_EQ(negativeWidth.width, 0u);
    EXPECT_EQ(negativeWidth.pixels, nullptr);
}

TEST(VZImageCopyAlpha, CopiesAlphaOnlyAndLeavesTheRemainderRows)
{
    // 1081 rows split in four slices of 270: the last row keeps its alpha.
    const uint32_t width = 13;
    const int height = 1081;
    const size_t count = size_t{width} * height * 4;
    VZImage target(width, height, 0, kNoBlock, 0u), source(width, height, 0, kNoBlock, 0u);
    std::fill(target.pixels, target.pixels + count, 100);
    for (size_t i = 0; i < count; ++i)
        source.pixels[i] = static_cast<uint16_t>(i % 30011 + 1);
    VZImage narrow(width - 1, height, 0, kNoBlock, 0u), shorter(width, height - 1, 0, kNoBlock, 0u);
    EXPECT_FALSE(target.CopyAlphaFrom(nullptr));
    EXPECT_FALSE(target.CopyAlphaFrom(&narrow));
    EXPECT_FALSE(target.CopyAlphaFrom(&shorter));
    EXPECT_EQ(target.pixels[3], 100);

    ASSERT_TRUE(target.CopyAlphaFrom(&source));
    for (size_t i = 0; i < count; ++i)
        ASSERT_EQ(target.pixels[i], i % 4 == 3 && i < count - width * 4 ? source.pixels[i] : 100) << "sample " << i;
}

TEST(VZImageRecords, SixteenBitAndFloatOutEightBitAndThreeChannelsIn)
{
    VZImage image(128u, 64, 0, kNoBlock, 0u);  // 32768 samples: each 15-bit value once
    for (int i = 0; i < 32768; ++i)
        image.pixels[i] = static_cast<uint16_t>(i);
    ImageRec* record = image_from_vzimage(&image);
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(static_cast<const uint16_t*>(record->pixels)[32767], 65534);  // doubled
    VZImage back(128u, 64, 0, kNoBlock, 0u);
    ASSERT_TRUE(image_store_to_vzimage(record, &back));
    EXPECT_EQ(std::memcmp(back.pixels, image.pixels, 32768 * 2), 0);

    ImageRec* floats = image_create(128, 64, 4, IMAGE_F32, 1);
    ASSERT_TRUE(image_fill_from_vzimage(floats, &image));
    EXPECT_EQ(static_cast<const float*>(floats->pixels)[32767], 1.0f);
    image_free(floats);
    image_free(record);

    // Three 8-bit channels: 128 gives 16448, all spread over the 15-bit range with
    // 255 at full scale; alpha is opaque.
    ImageRec* bytes = image_create(2, 1, 3, IMAGE_U8, 1);
    const uint8_t values[6] = {255, 128, 0, 1, 254, 64};
    std::memcpy(bytes->pixels, values, sizeof values);
    VZImage small(2u, 1, 0, kNoBlock, 0u);
    ASSERT_TRUE(image_store_to_vzimage(bytes, &small));
    EXPECT_EQ(small.pixels[1], 16448);
    for (int i = 0; i < 8; ++i)
        EXPECT_NEAR(small.pixels[i], i % 4 == 3 ? 32767.0 : values[i / 4 * 3 + i % 4] * 32767.0 / 255.0, 64.0) << i;
    image_free(bytes);
}

}  // namespace
