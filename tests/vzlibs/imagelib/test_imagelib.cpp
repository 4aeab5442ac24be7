// ImageRec creation limits, ownership and cloning.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "vzlibs/imagelib/imagelib.h"

namespace {

TEST(ImageCreate, SizeAndTypeLimits)
{
    EXPECT_EQ(image_create(0, 10, 1, 0, 1), nullptr);
    EXPECT_EQ(image_create(10, 0, 1, 0, 1), nullptr);
    EXPECT_EQ(image_create(65536, 1, 1, 0, 1), nullptr);
    EXPECT_EQ(image_create(1, 65536, 1, 0, 1), nullptr);
    EXPECT_EQ(image_create(10, 10, 1, 4, 1), nullptr);
    EXPECT_EQ(image_create(10, 10, 0, 0, 1), nullptr);  // zero bytes
    // 50000 x 50000 bytes wraps to a negative signed count.
    EXPECT_EQ(image_create(50000, 50000, 1, 0, 0), nullptr);

    ImageRec* wide = image_create(65535, 1, 1, 0, 1);
    ASSERT_NE(wide, nullptr);
    EXPECT_EQ(wide->width, 65535);
    EXPECT_EQ(wide->rowBytes, 65535u);
    EXPECT_DOUBLE_EQ(wide->aspect, 65535.0);
    EXPECT_EQ(image_free(wide), 0);

    // 40000 x 40000 is a valid (if large) count: only the header is taken here.
    ImageRec* big = image_create(40000, 40000, 1, 0, 0);
    ASSERT_NE(big, nullptr);
    EXPECT_EQ(big->pixels, nullptr);
    image_free(big);
}

TEST(ImageCreate, FieldsFollowTheSampleType)
{
    const uint16_t bytes[] = {1, 2, 4, 4};
    for (int type = 0; type < 4; ++type) {
        ImageRec* rec = image_create(7, 3, 4, type, 1);
        ASSERT_NE(rec, nullptr);
        EXPECT_EQ(rec->sampleBytes, bytes[type]);
        EXPECT_EQ(rec->pixelBytes, 4 * bytes[type]);
        EXPECT_EQ(rec->rowBytes, 7u * 4 * bytes[type]);
        EXPECT_EQ(rec->ownsPixels, 1);
        EXPECT_EQ(rec->regionSet, 0u);
        EXPECT_EQ(rec->reserved, 0);
        EXPECT_NEAR(rec->aspect, 7.0 / 3.0, 1e-15);
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
    EXPECT_EQ(image_free(header), 0);
    // The caller's block is still there to use (and to free by its owner).
    EXPECT_EQ(borrowed[15], 7);
}

class RowHookCount : public ::testing::Test {
protected:
    static void hook(void* context, ImageRowFunction function, int rowCount, void* arg)
    {
        ++*static_cast<int*>(context);
        // Split the work in two, as a host's pool might.
        function(arg, 0, rowCount / 2 - 1);
        function(arg, rowCount / 2, rowCount - 1);
    }
    void SetUp() override { image_set_row_hook(hook, &calls); }
    void TearDown() override { image_set_row_hook(nullptr, nullptr); }
    int calls = 0;
};

TEST_F(RowHookCount, LargeClonesGoThroughTheRowSeamSmallOnesDoNot)
{
    ImageRec* small = image_create(100, 100, 4, 1, 1);  // 80000 bytes
    ImageRec* large = image_create(512, 512, 4, 0, 1);  // exactly 1 MiB
    ASSERT_TRUE(small && large);
    for (ImageRec* rec : {small, large}) {
        auto* p = static_cast<uint8_t*>(rec->pixels);
        const size_t n = static_cast<size_t>(rec->rowBytes) * rec->height;
        for (size_t i = 0; i < n; ++i)
            p[i] = static_cast<uint8_t>(i * 31 + 7);
    }
    small->regionSet = 1;
    small->region[2] = 99;
    large->region[1] = 5;  // not copied: regionSet is 0

    ImageRec* smallCopy = image_clone(small);
    EXPECT_EQ(calls, 0);
    ImageRec* largeCopy = image_clone(large);
    EXPECT_EQ(calls, 1);
    ASSERT_TRUE(smallCopy && largeCopy);

    EXPECT_EQ(std::memcmp(smallCopy->pixels, small->pixels, 80000), 0);
    EXPECT_EQ(std::memcmp(largeCopy->pixels, large->pixels, 1048576), 0);
    EXPECT_NE(largeCopy->pixels, large->pixels);
    EXPECT_EQ(smallCopy->regionSet, 1u);
    EXPECT_EQ(smallCopy->region[2], 99u);
    EXPECT_EQ(largeCopy->region[1], 0u);

    EXPECT_EQ(image_clone(nullptr), nullptr);
    EXPECT_EQ(image_create_like(nullptr), nullptr);
    for (ImageRec* rec : {small, large, smallCopy, largeCopy})
        image_free(rec);
}

TEST(ImageRunRows, WithoutAHookOneCallCoversAllRows)
{
    struct Seen {
        int calls = 0, first = -1, last = -1;
    } seen;
    image_run_rows(
        [](void* arg, int first, int last) {
            auto* s = static_cast<Seen*>(arg);
            ++s->calls;
            s->first = first;
            s->last = last;
        },
        10, &seen);
    EXPECT_EQ(seen.calls, 1);
    EXPECT_EQ(seen.first, 0);
    EXPECT_EQ(seen.last, 9);
}

}  // namespace
