// Machine queries and aligned blocks.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "vzlibs/baselib/aligned.h"
#include "vzlibs/baselib/machine.h"

namespace {

// The two header words before an aligned block: size asked for, distance back.
uint32_t headerWord(const void* block, int index)
{
    uint32_t word = 0;
    std::memcpy(&word, static_cast<const unsigned char*>(block) - 8 + 4 * index, sizeof word);
    return word;
}

TEST(AlignedBlocks, AlignmentRuleHeaderAndRefusals)
{
    ASSERT_GE(get_page_size(), 512);
    const uintptr_t page = static_cast<uintptr_t>(get_page_size());
    for (int32_t alignment : {-1, 0, 3}) {  // all mean "the page"
        void* block = vz_aligned_malloc(1000, alignment, alignment == 0);
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % page, 0u);
        EXPECT_EQ(headerWord(block, 0), 1000u);
        EXPECT_GT(headerWord(block, 1), 8u);
        std::memset(block, 0xAB, 1000);
        vz_aligned_free(block, alignment == 0);
    }
    // The heap's blocks are 8-aligned, so raw + 8 is already a multiple of 4 and
    // the rule still moves on by a whole step: raw + 12.
    void* four = vz_aligned_malloc(16, 4, false);
    ASSERT_NE(four, nullptr);
    EXPECT_EQ(headerWord(four, 1), 12u);
    vz_aligned_free(four, false);
    void* odd = vz_aligned_malloc(16, 24, false);  // not a power of two: used as given
    ASSERT_NE(odd, nullptr);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(odd) % 24u, 0u);
    vz_aligned_free(odd, false);

    EXPECT_EQ(vz_aligned_malloc(0x80000000u, -1, false), nullptr);
    EXPECT_EQ(vz_aligned_malloc(0x7FFFFFFFu, 0x7FFFFFFF, false), nullptr);  // the sum would wrap
}

}  // namespace
