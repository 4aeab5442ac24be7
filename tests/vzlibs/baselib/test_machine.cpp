// Machine queries and aligned blocks.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "vzlibs/baselib/aligned.h"
#include "vzlibs/baselib/machine.h"

namespace {

uint32_t headerWord(const void* block, int index)
{
    uint32_t word = 0;
    std::memcpy(&word, static_cast<const unsigned char*>(block) - 8 + 4 * index, sizeof word);
    return word;
}

TEST(MachineQueries, CountsPageAndClockAreSane)
{
    EXPECT_GE(get_processor_count(), 1);
    EXPECT_GE(get_page_size(), 512);
    EXPECT_EQ(get_page_size(), get_page_size());
    const double a = get_time_seconds();
    const double b = get_time_seconds();
    EXPECT_GE(b, a);
}

TEST(AlignedBlocks, DefaultAlignmentIsThePageAndHeaderRecordsSizeAndDistance)
{
    const uintptr_t page = static_cast<uintptr_t>(get_page_size());
    for (int32_t alignment : {-1, 0, 3}) {
        void* block = vz_aligned_malloc(1000, alignment, false);
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % page, 0u);
        EXPECT_EQ(headerWord(block, 0), 1000u);
        const uint32_t distance = headerWord(block, 1);
        // Always at least one whole alignment past the header's room.
        EXPECT_GT(distance, 8u);
        EXPECT_LE(distance, page + 8u);
        std::memset(block, 0xAB, 1000);
        vz_aligned_free(block, false);
    }
    void* image = vz_aligned_malloc(64, -1, true);
    ASSERT_NE(image, nullptr);
    vz_aligned_free(image, true);
}

TEST(AlignedBlocks, AlignmentOfFourMovesOnByAWholeStep)
{
    // The system heap returns blocks aligned to at least 8, so raw + 8 is already
    // a multiple of 4 and the rule still moves on by 4: raw + 12.
    void* block = vz_aligned_malloc(16, 4, false);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(headerWord(block, 1), 12u);
    vz_aligned_free(block, false);

    // An alignment that is not a power of two is used as given.
    void* odd = vz_aligned_malloc(16, 24, false);
    ASSERT_NE(odd, nullptr);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(odd) % 24u, 0u);
    vz_aligned_free(odd, false);
}

TEST(AlignedBlocks, OversizeRequestsAreRefused)
{
    EXPECT_EQ(vz_aligned_malloc(0x80000000u, -1, false), nullptr);
    EXPECT_EQ(vz_aligned_malloc(0xFFFFFFFFu, -1, true), nullptr);
    // A sum that would wrap past 2^32 is refused rather than under-allocated.
    EXPECT_EQ(vz_aligned_malloc(0x7FFFFFFFu, 0x7FFFFFFF, false), nullptr);
}

}  // namespace
