// ImageRec: creation limits and fields, ownership, cloning and the row-job seam.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <vector>

#include "tests/vzlibs/baselib/test_support.h"
#include "vzlibs/imagelib/imagelib.h"

namespace {

TEST(ImageCreate, LimitsFieldsOfEachSampleTypeAndOwnershipOfThePixels)
{
    // width, height, channels, type, accepted. The byte count, w x h x c x 1, 2, 4
    // or 4, is taken in 32 bits and refused when it reads as a signed number below
    // 1: 1.6e9 bytes and 2^30 pass, 65535 x 32769 x 2 wraps past 2^32 to 65534.
    const int cases[][5] = {{0, 10, 1, 0, 0},        {65536, 1, 1, 0, 0},    {1, 65536, 1, 0, 0},
                            {-1, 1, 1, 0, 0},        {10, 10, 1, 4, 0},      {10, 10, 1, -1, 0},
                            {10, 10, 0, 0, 0},       {50000, 50000, 1, 0, 0}, {32768, 32768, 1, 1, 0},
                            {65535, 32769, 1, 0, 0}, {40000, 40000, 1, 0, 1}, {32768, 32768, 1, 0, 1},
                            {65535, 32769, 2, 0, 1}, {65535, 1, 1, 0, 1}};
    for (const auto& c : cases) {
        ImageRec* rec = image_create(c[0], c[1], c[2], c[3], 0);
        EXPECT_TRUE(rec ? c[4] && !rec->pixels : !c[4]) << c[0] << " x " << c[1] << " x " << c[2];
        image_free(rec);
    }
    HeapSwitches heap(1, 1, 0);  // tracked: a free of pixels the heap did not give is logged
    LogCapture log;
    for (int type = 0; type < 4; ++type) {
        const int bytes = type == 0 ? 1 : type == 1 ? 2 : 4;
        ImageRec* rec = image_create(3, 7, 5, type, 0x20003);  // the low 16 bits become ownsPixels
        ImageRec* like = image_create_like(rec);
        ASSERT_TRUE(rec && like && like->pixels != rec->pixels);
        EXPECT_EQ(std::vector<int>({rec->sampleType, rec->reserved, rec->ownsPixels, rec->sampleBytes, rec->pixelBytes,
                                    int(rec->rowBytes), like->channels, like->sampleType, like->ownsPixels}),
                  std::vector<int>({type, 0, 3, bytes, 5 * bytes, 15 * bytes, 5, type, 1}));
        EXPECT_EQ(rec->region[0] | rec->region[1] | rec->region[2] | rec->region[3] | rec->regionSet, 0u);
        EXPECT_EQ(rec->aspect, 3.0 / 7.0);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(rec->pixels) % sysconf(_SC_PAGESIZE), 0u);
        EXPECT_EQ(image_free(like) + image_free(rec), 0);
    }
    EXPECT_TRUE(image_create_like(nullptr) == nullptr && image_free(nullptr) == -1);
    // A header whose pixels the caller set keeps them: never handed to the heap.
    std::vector<uint8_t> borrowed(16, 7);
    ImageRec* header = image_create(4, 4, 1, IMAGE_U8, 0);
    header->pixels = borrowed.data();
    EXPECT_EQ(image_free(header), 0);
    EXPECT_EQ(log.take(), "");
}

// A row hook that counts its calls and runs the rows in two halves, each range inclusive.
void splitHook(void* calls, ImageRowFunction function, int rows, void* arg)
{
    ++*static_cast<int*>(calls);
    function(arg, 0, rows / 2 - 1);
    function(arg, rows / 2, rows - 1);
}

TEST(ImageClone, CopiesOfAMebibyteOrMoreGoThroughTheRowHookAndRegionsFollowRegionSet)
{
    // 1023 x 1025 bytes is one short of 1 MiB; 1024 x 1024 is 1 MiB. Without a
    // hook the library runs every row itself.
    for (const int width : {1023, 1024, -1024}) {
        int calls = 0;
        image_set_row_hook(width > 0 ? splitHook : nullptr, &calls);
        const bool large = std::abs(width) == 1024;
        const int height = large ? 1024 : 1025;
        ImageRec* source = image_create(std::abs(width), height, 1, IMAGE_U8, 1);
        for (int i = 0; i < std::abs(width) * height; ++i)
            static_cast<uint8_t*>(source->pixels)[i] = static_cast<uint8_t>(i * 31 + i / 4099);
        source->region[2] = 99;
        source->regionSet = large;
        ImageRec* copy = image_clone(source);
        image_set_row_hook(nullptr, nullptr);
        ASSERT_NE(copy, nullptr);
        EXPECT_EQ(calls, width == 1024 ? 1 : 0);
        EXPECT_EQ(std::memcmp(copy->pixels, source->pixels, size_t(std::abs(width)) * height), 0) << width;
        EXPECT_TRUE(copy->regionSet == source->regionSet && copy->region[2] == (large ? 99u : 0u));
        image_free(source);
        image_free(copy);
    }
    EXPECT_EQ(image_clone(nullptr), nullptr);
}

}  // namespace
