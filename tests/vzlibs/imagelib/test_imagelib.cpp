// ImageRec creation limits, ownership and cloning.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "vzlibs/imagelib/imagelib.h"

namespace {

TEST(ImageCreate, LimitsAndFields)
{
    EXPECT_EQ(image_create(0, 10, 1, 0, 1), nullptr);
    EXPECT_EQ(image_create(65536, 1, 1, 0, 1), nullptr);
    EXPECT_EQ(image_create(1, 65536, 1, 0, 1), nullptr);
    EXPECT_EQ(image_create(10, 10, 1, 4, 1), nullptr);
    EXPECT_EQ(image_create(10, 10, 0, 0, 1), nullptr);
    EXPECT_EQ(image_create(50000, 50000, 1, 0, 0), nullptr);  // count wraps negative
    ImageRec* big = image_create(40000, 40000, 1, 0, 0);       // 1.6e9 bytes: a valid count
    ASSERT_NE(big, nullptr);
    image_free(big);

    const uint16_t bytes[] = {1, 2, 4, 4};
    for (int type = 0; type < 4; ++type) {
        ImageRec* rec = image_create(65535, 1, 3, type, 1);
        ASSERT_NE(rec, nullptr);
        EXPECT_EQ(rec->pixelBytes, 3 * bytes[type]);
        EXPECT_EQ(rec->rowBytes, 65535u * 3 * bytes[type]);
        EXPECT_DOUBLE_EQ(rec->aspect, 65535.0);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(rec->pixels) % 512u, 0u);
        image_free(rec);
    }
}

TEST(ImageFree, NullAndBorrowedPixels)
{
    EXPECT_EQ(image_free(nullptr), -1);
    std::vector<uint8_t> borrowed(16, 7);
    ImageRec* header = image_create(4, 4, 1, 0, 0);
    ASSERT_NE(header, nullptr);
    header->pixels = borrowed.data();
    EXPECT_EQ(image_free(header), 0);  // a bad free of the vector's block would trip ASan
    EXPECT_EQ(borrowed[15], 7);
}

TEST(ImageClone, LargeCopiesGoThroughTheRowHookAndRegionsFollowRegionSet)
{
    static int hookCalls = 0;
    image_set_row_hook(
        [](void*, ImageRowFunction function, int rows, void* arg) {
            ++hookCalls;
            function(arg, 0, rows / 2 - 1);  // split in two, as a host's pool might
            function(arg, rows / 2, rows - 1);
        },
        nullptr);
    ImageRec* small = image_create(100, 100, 4, 1, 1);  // 80000 bytes
    ImageRec* large = image_create(512, 512, 4, 0, 1);  // exactly 1 MiB
    for (ImageRec* rec : {small, large})
        for (size_t i = 0; i < static_cast<size_t>(rec->rowBytes) * rec->height; ++i)
            static_cast<uint8_t*>(rec->pixels)[i] = static_cast<uint8_t>(i * 31 + 7);
    small->regionSet = 1;
    small->region[2] = 99;
    large->region[1] = 5;  // not copied: regionSet is 0

    ImageRec* smallCopy = image_clone(small);
    EXPECT_EQ(hookCalls, 0);
    ImageRec* largeCopy = image_clone(large);
    EXPECT_EQ(hookCalls, 1);
    image_set_row_hook(nullptr, nullptr);

    EXPECT_EQ(std::memcmp(smallCopy->pixels, small->pixels, 80000), 0);
    EXPECT_EQ(std::memcmp(largeCopy->pixels, large->pixels, 1048576), 0);
    EXPECT_EQ(smallCopy->region[2], 99u);
    EXPECT_EQ(largeCopy->region[1], 0u);
    EXPECT_EQ(image_clone(nullptr), nullptr);
    for (ImageRec* rec : {small, large, smallCopy, largeCopy})
        image_free(rec);
}

}  // namespace
