// VZImage: fields, ownership and the heap's bookkeeping of its blocks, the
// four-thread alpha copy, and the bridges to and from ImageRec.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <new>
#include <tuple>
#include <vector>

#include "generic/library/VZImage.h"
#include "tests/vzlibs/baselib/test_support.h"

namespace {

constexpr uint16_t* kNoBlock = nullptr;

struct ExtraProbe : VZImageExtra {
    explicit ExtraProbe(bool* flag) : deleted(flag) {}
    ~ExtraProbe() override { *deleted = true; }
    bool* deleted;
};

TEST(VZImageHeap, FieldsOwnershipAndTheSourceLinesOfTheBlocks)
{
    HeapSwitches heap(1, 1, 0);  // tracked
    alignas(VZImage) unsigned char storage[sizeof(VZImage)];
    std::memset(storage, 0xFF, sizeof storage);  // the fields below must be set by the constructor
    VZImage* owned = new (storage) VZImage(5u, 3, 99, kNoBlock, 42u);
    for (int y = 0; y < 3; ++y)
        EXPECT_EQ(owned->rows[y], owned->pixels + y * 5 * 4);
    EXPECT_EQ(std::tuple(owned->ownsPixels, owned->alphaSource, owned->width, owned->height, owned->scale,
                         owned->userValue, owned->extra),
              std::tuple(1u, nullptr, 5u, 3, 720.0f / 5, 42u, nullptr));
    EXPECT_EQ(record(&hm_image_info, owned->pixels), "120 generic/library/VZImage(177)");
    bool extraDeleted = false;
    owned->extra = new ExtraProbe(&extraDeleted);
    owned->~VZImage();
    EXPECT_TRUE(extraDeleted);

    // A caller's block is used in place and not owned.
    std::vector<uint16_t> block(4 * 2 * 4, 7);
    VZImage borrowed(4, 2, 0, block.data(), 0u);
    EXPECT_EQ(std::pair(borrowed.ownsPixels, borrowed.rows[1]), std::pair(0u, block.data() + 16));
}

TEST(VZImageCopyAlpha, CopiesAlphaOnlyAndLeavesTheRemainderRows)
{
    // Four slices of height / 4 rows: the last height mod 4 rows keep their alpha.
    // A taller source serves; a shorter one or one of another width is refused.
    for (const int height : {1081, 7, 3}) {
        const size_t count = size_t{13} * height * 4;
        VZImage target(13u, height, 0, kNoBlock, 0u), source(13u, height + 1, 0, kNoBlock, 0u);
        VZImage shorter(13u, height - 1, 0, kNoBlock, 0u), wider(14u, height, 0, kNoBlock, 0u);
        std::fill(target.pixels, target.pixels + count, 100);
        for (size_t i = 0; i < count + 13 * 4; ++i)
            source.pixels[i] = static_cast<uint16_t>(i % 30011 + 1);
        EXPECT_FALSE(target.CopyAlphaFrom(&shorter) || target.CopyAlphaFrom(&wider) || target.CopyAlphaFrom(nullptr));
        ASSERT_TRUE(target.CopyAlphaFrom(&source));
        EXPECT_EQ(target.alphaSource, &source);
        const size_t copied = size_t{13} * 4 * (height / 4 * 4);
        for (size_t i = 0; i < count; ++i)
            ASSERT_EQ(target.pixels[i], i % 4 == 3 && i < copied ? source.pixels[i] : 100) << height << ": " << i;
    }
}

TEST(VZImageRecords, FramesGoOutAsSixteenBitOrFloatRecords)
{
    VZImage image(128u, 64, 0, kNoBlock, 0u);  // 32768 samples: each 15-bit value once
    for (int i = 0; i < 32768; ++i)
        image.pixels[i] = static_cast<uint16_t>(i);
    ImageRec* record = image_from_vzimage(&image);
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(std::tuple(record->width, record->height, record->channels, record->sampleType),
              std::tuple(128, 64, 4, IMAGE_U16));
    const float oneStep = std::bit_cast<float>(0x38000100u);  // 1/32767
    ImageRec* floats = image_create(128, 64, 4, IMAGE_F32, 1);
    ASSERT_TRUE(image_fill_from_vzimage(floats, &image));
    for (int i = 0; i < 32768; ++i) {
        ASSERT_EQ(static_cast<const uint16_t*>(record->pixels)[i], 2 * i);
        ASSERT_EQ(static_cast<const float*>(floats->pixels)[i], static_cast<float>(i) * oneStep) << i;
    }
    image_free(floats);
    image_free(record);
}

TEST(VZImageRecords, EachBridgeTakesOnlyItsChannelsAndTypesAtTheFramesSize)
{
    // Fill: four channels of type 1 or 3. Store: three or four channels of type 0 or 1,
    // every record sample distinct; 16-bit s gives s >> 1, 8-bit v gives v << 7 | v >> 1,
    // three channels an opaque alpha. A refusal changes nothing.
    VZImage frame(64u, 2, 0, kNoBlock, 0u);
    for (const int width : {64, 63})
        for (int channels = 2; channels <= 5; ++channels)
            for (int type = 0; type <= 3; ++type) {
                ImageRec* rec = image_create(width, 2, channels, type, 1);
                std::memset(rec->pixels, 0x5A, rec->rowBytes * 2);
                std::fill(frame.pixels, frame.pixels + 64 * 2 * 4, 9);
                const bool filled = width == 64 && channels == 4 && type % 2 == 1;
                EXPECT_EQ(image_fill_from_vzimage(rec, &frame), filled) << width << channels << type;
                EXPECT_EQ(static_cast<uint8_t*>(rec->pixels)[rec->rowBytes * 2 - 1] == 0x5A, !filled);
                for (int i = 0; i < width * 2 * channels && type <= 1; ++i)
                    if (type)
                        static_cast<uint16_t*>(rec->pixels)[i] = static_cast<uint16_t>(65535 - 3 * i);
                    else
                        static_cast<uint8_t*>(rec->pixels)[i] = static_cast<uint8_t>(255 - i);
                const bool stored = width == 64 && (channels == 3 || channels == 4) && type <= 1;
                std::fill(frame.pixels, frame.pixels + 64 * 2 * 4, 7);
                EXPECT_EQ(image_store_to_vzimage(rec, &frame), stored) << width << channels << type;
                EXPECT_EQ(std::count(frame.pixels, frame.pixels + 64 * 2 * 4, 7) == 64 * 2 * 4, !stored);
                for (int p = 0; p < 128 && stored; ++p)
                    for (int c = 0; c < 4; ++c) {
                        const int i = p * channels + c, v = (255 - i) & 255;
                        const int want =
                            c == 3 && channels == 3 ? 32767 : type ? (65535 - 3 * i) >> 1 : v << 7 | v >> 1;
                        ASSERT_EQ(frame.rows[p / 64][4 * (p % 64) + c], want) << channels << " channels, type " << type;
                    }
                image_free(rec);
            }
}

}  // namespace
