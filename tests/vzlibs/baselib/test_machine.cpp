// Aligned blocks: the alignment rule, the header and the heap of each kind.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "tests/vzlibs/baselib/test_support.h"
#include "vzlibs/baselib/aligned.h"

namespace {

// Heap hooks that hand out a chosen address in an arena and note the request, the
// kind (their context: 1 NORMAL, 2 IMAGE) and the block given back.
struct Arena {
    alignas(65536) unsigned char bytes[3 * 65536];
    size_t offset;
    uint32_t asked;
    intptr_t kind;
    void* freed;
} arena;
void* arenaMalloc(void* kind, uint32_t size)
{
    arena.asked = size, arena.kind = reinterpret_cast<intptr_t>(kind);
    return size > sizeof arena.bytes ? nullptr : arena.bytes + arena.offset;
}
void arenaFree(void* kind, void* p) { arena.freed = p, arena.kind = reinterpret_cast<intptr_t>(kind); }

TEST(AlignedBlocks, MoveUpAWholeAlignmentFromTheRoundedDownAddressAndKeepAHeader)
{
    HeapSwitches heap(1, 0, 0);  // hooked
    const hm_normal_allocator normal{1, reinterpret_cast<void*>(1), arenaMalloc, nullptr, nullptr, arenaFree};
    const hm_image_allocator image{1, reinterpret_cast<void*>(2), arenaMalloc, nullptr, arenaFree};
    hm_set_allocators(&normal, &image);
    const uint32_t page = static_cast<uint32_t>(std::max(512L, sysconf(_SC_PAGESIZE)));
    // Raw offset in the arena, alignment, image, and the distance from the raw block
    // worked from the rule: (raw + 8) rounded down to the alignment, plus the alignment.
    const struct { size_t offset; int32_t alignment; bool image; uint32_t distance; } cases[] = {
        {0, -1, false, page}, {page - 8, -1, true, page + 8}, {16, 0, false, page - 16}, {100, 3, true, page - 100},
        {0, 4, false, 12},    {4, 16, true, 12},              {40, 24, false, 0}};  // 24: distance from the address
    for (const auto& c : cases) {
        arena.offset = c.offset;
        auto* block = static_cast<unsigned char*>(vz_aligned_malloc(1000, c.alignment, c.image));
        unsigned char* raw = arena.bytes + c.offset;
        EXPECT_EQ(arena.asked, 1000 + (c.alignment < 4 ? page : c.alignment) + 8) << c.offset;
        EXPECT_EQ(arena.kind, c.image ? 2 : 1);
        const uintptr_t base = reinterpret_cast<uintptr_t>(raw) + 8;
        const uint32_t distance = c.distance ? c.distance : static_cast<uint32_t>(8 + 24 - base % 24);
        EXPECT_EQ(block - raw, distance) << c.offset;
        uint32_t header[2];
        std::memcpy(header, block - 8, sizeof header);
        EXPECT_EQ(std::pair(header[0], header[1]), std::pair(1000u, distance));  // size, then distance
        arena.kind = 0;
        vz_aligned_free(block, c.image);
        EXPECT_EQ(arena.freed, raw);
        EXPECT_EQ(arena.kind, c.image ? 2 : 1);
    }
    // Sizes above 0x7FFFFFFF are refused before any allocation; 0x7FFFFFFF goes on.
    arena.asked = 0;
    EXPECT_EQ(vz_aligned_malloc(0x80000000u, -1, false), nullptr);
    EXPECT_EQ(arena.asked, 0u);
    EXPECT_EQ(vz_aligned_malloc(0x7FFFFFFFu, -1, false), nullptr);
    EXPECT_EQ(arena.asked, 0x7FFFFFFFu + page + 8);
    arena.asked = 0;
    EXPECT_EQ(vz_aligned_malloc(0x7FFFFFFFu, 0x7FFFFFFF, false), nullptr);  // a sum past 32 bits is refused
    EXPECT_EQ(arena.asked, 0u);
}

}  // namespace
