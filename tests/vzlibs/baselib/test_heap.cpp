// The heap's layers, its block tables and its messages.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "tests/vzlibs/baselib/log_capture.h"
#include "vzlibs/baselib/heap.h"
#include "vzlibs/baselib/heap_internal.h"

namespace {

using ::testing::HasSubstr;
using ::testing::Not;

std::string hex(const void* p)
{
    char text[32];
    std::snprintf(text, sizeof text, "%p", p);
    return text;
}

// A block's record in a table as "size path(line)", or "" if the table lacks it.
std::string record(hm_info* info, void* p)
{
    uint32_t size = 0;
    char file[HM_FILE_CHARS] = {};
    int line = 0;
    if (!hm_lookup(info, p, &size, file, &line))
        return "";
    return std::to_string(size) + " " + file + "(" + std::to_string(line) + ")";
}

// Switches and hooks are process-wide: each test starts tracked, without hooks
// and with the log captured, and gets them back at its end.
class HeapTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        hm_set_allocators(nullptr, nullptr);
        hm_configure(1, 1, 0);
    }
    void TearDown() override
    {
        hm_configure(saved[0], saved[1], saved[2]);
        hm_set_allocators(&savedNormal, &savedImage);
    }
    const int32_t saved[3] = {hm_enabled, hm_debug, hm_trace};
    const hm_normal_allocator savedNormal = hm_normal_hooks;
    const hm_image_allocator savedImage = hm_image_hooks;
    LogCapture log;
};

TEST_F(HeapTest, RecordsKeepTheLast47CharactersOfThePathAndThePeakStays)
{
    const std::string path47 = std::string(41, 'x') + "/b.cpp";  // 47 characters
    const uint32_t allocs = hm_normal_info.allocs, bytes = hm_normal_info.currentBytes;
    void* whole = vz_malloc(1u << 20, path47.c_str(), 77);
    void* cut = vz_malloc(8, ("Z" + path47).c_str(), 78);
    char* empty = vz_strdup("", "dup.cpp", 79);
    EXPECT_EQ(record(&hm_normal_info, whole), std::to_string(1u << 20) + " " + path47 + "(77)");
    EXPECT_EQ(record(&hm_normal_info, cut), "8 " + path47 + "(78)");  // the 'Z' is dropped
    EXPECT_EQ(record(&hm_normal_info, empty), "1 dup.cpp(79)");       // length plus one
    EXPECT_EQ(record(&hm_image_info, whole), "");
    EXPECT_EQ(hm_normal_info.allocs, allocs + 3);
    const uint32_t peak = hm_normal_info.peakBytes;
    EXPECT_GE(peak, bytes + (1u << 20) + 9);
    vz_free(whole, "free.cpp", 1);
    EXPECT_EQ(record(&hm_normal_info, whole), "");
    EXPECT_EQ(hm_normal_info.currentBytes, bytes + 9);
    EXPECT_EQ(hm_normal_info.peakBytes, peak);
    vz_free(cut, "free.cpp", 2);
    vz_free(empty, "free.cpp", 3);
    EXPECT_EQ(log.take(), "");
}

TEST_F(HeapTest, NewestBlockOfABucketSitsInTheHeadAndFreesRelinkTheChain)
{
    // Allocate until three live blocks share a bucket; the others go back.
    std::map<uint32_t, std::vector<void*>> byBucket;
    std::vector<void*> chain;  // oldest first
    for (int i = 1; i <= 50000 && chain.empty(); ++i) {
        void* p = vz_malloc(24, "bucket.cpp", i);
        std::vector<void*>& blocks = byBucket[hm_hash(p) & HM_BUCKET_MASK];
        blocks.push_back(p);
        if (blocks.size() == 3)
            chain.swap(blocks);
    }
    for (auto& [bucket, blocks] : byBucket)
        for (void* p : blocks)
            vz_free(p, "bucket.cpp", static_cast<int>(bucket));
    ASSERT_EQ(chain.size(), 3u) << "no three blocks in one bucket";

    const hm_info_node& head = hm_normal_info.buckets[hm_hash(chain[0]) & HM_BUCKET_MASK];
    ASSERT_TRUE(head.next && head.next->next);
    EXPECT_EQ(head.pointer, chain[2]);
    const uint32_t chained = hm_normal_info.chained;
    vz_free(chain[1], "bucket.cpp", 0);  // the middle of the chain
    EXPECT_EQ(head.next ? head.next->pointer : nullptr, chain[0]);
    vz_free(chain[2], "bucket.cpp", 0);  // the head: the oldest is promoted into it
    EXPECT_EQ(head.pointer, chain[0]);
    EXPECT_EQ(head.next, nullptr);
    EXPECT_THAT(record(&hm_normal_info, chain[0]), HasSubstr("24 bucket.cpp("));
    EXPECT_EQ(hm_normal_info.chained, chained);
    vz_free(chain[0], "bucket.cpp", 0);
    EXPECT_EQ(head.pointer, nullptr);
    EXPECT_EQ(log.take(), "");
}

TEST_F(HeapTest, BlockFreedAsTheOtherKindIsReportedAndKept)
{
    void* image = vz_image_malloc(64, "img.cpp", 5);
    void* normal = vz_malloc(32, "nrm.cpp", 6);
    vz_free(image, "wrong.cpp", 10);
    vz_image_free(normal, "wrong.cpp", 11);
    const std::string out = log.take();
    EXPECT_THAT(out, HasSubstr("ERROR: VZ-HM-DEBUG: vz_free(" + hex(image) + ") attempted - but " + hex(image) +
                               " is not allocated! [wrong.cpp(10)]\n"));
    EXPECT_THAT(out, HasSubstr("ERROR: VZ-HM-DEBUG: vz_image_free(" + hex(normal) + ") attempted - but " +
                               hex(normal) + " is not allocated! [wrong.cpp(11)]\n"));
    EXPECT_EQ(record(&hm_image_info, image), "64 img.cpp(5)");
    EXPECT_EQ(record(&hm_normal_info, normal), "32 nrm.cpp(6)");
    std::memset(image, 1, 64);  // still ours: a sanitizer build would see a real free
    vz_image_free(image, "right.cpp", 12);
    vz_free(normal, "right.cpp", 13);
    EXPECT_EQ(record(&hm_image_info, image) + record(&hm_normal_info, normal), "");
    EXPECT_EQ(log.take(), "");
}

TEST_F(HeapTest, ReallocOfNullAllocatesAndRefusalsAreReported)
{
    char* p = static_cast<char*>(vz_realloc(nullptr, 16, "re.cpp", 1));
    EXPECT_EQ(record(&hm_normal_info, p), "16 re.cpp(1)");
    std::strcpy(p, "kept");
    int local = 0;
    EXPECT_EQ(vz_realloc(p, 0, "re.cpp", 2), nullptr);  // unlike realloc, the block stays
    EXPECT_EQ(vz_realloc(&local, 8, "re.cpp", 3), nullptr);
    EXPECT_EQ(vz_malloc(0, "zero.cpp", 4), nullptr);
    EXPECT_EQ(vz_strdup(nullptr, "zero.cpp", 6), nullptr);
    vz_free(nullptr, "zero.cpp", 7);
    char* q = static_cast<char*>(vz_realloc(p, 4096, "re.cpp", 9));
    EXPECT_EQ(record(&hm_normal_info, q), "4096 re.cpp(9)");
    EXPECT_STREQ(q, "kept");
    vz_free(q, "re.cpp", 10);

    const std::string out = log.take();
    EXPECT_THAT(out, Not(HasSubstr("re.cpp(1)")));
    const std::string messages[] = {
        "vz_realloc( size=0 ) attempted! [re.cpp(2)]", "vz_malloc( size=0 ) attempted! [zero.cpp(4)]",
        "vz_realloc(" + hex(&local) + ",8) attempted - but " + hex(&local) + " is not allocated!  [re.cpp(3)]",
        "vz_strdup( NULL ) attempted! [zero.cpp(6)]", "vz_free( NULL ) attempted! [zero.cpp(7)]"};
    for (const std::string& message : messages)
        EXPECT_THAT(out, HasSubstr("ERROR: VZ-HM-DEBUG: " + message + "\n"));
}

TEST_F(HeapTest, TraceLinesForAllocationsAndTrackedFrees)
{
    hm_configure(1, 0, 1);  // trace only: allocations print, frees do not
    void* a = vz_malloc(24, "t.cpp", 12);
    void* silent = vz_malloc(8, "t.cpp", 0);  // line 0: no line for vz_malloc
    void* image = vz_image_malloc(48, "t.cpp", 0);
    const std::string out = log.take();
    EXPECT_THAT(out, HasSubstr("INFO : VZ-HM-TRACE: vz_malloc(24) ret (" + hex(a) + ") at [t.cpp(12)]\n"));
    EXPECT_THAT(out, HasSubstr("INFO : VZ-HM-TRACE: vz_image_malloc(48) ret (" + hex(image) + ") at [t.cpp(0)]\n"));
    EXPECT_THAT(out, Not(HasSubstr("vz_malloc(8)")));
    vz_free(a, "t.cpp", 20);
    vz_free(silent, "t.cpp", 21);
    vz_image_free(image, "t.cpp", 22);
    EXPECT_EQ(log.take(), "");

    hm_configure(1, 1, 1);  // tracked: a free names where its block was made
    void* p = vz_malloc(100, "made/here.cpp", 31);
    vz_free(p, "freed/there.cpp", 41);
    EXPECT_THAT(log.take(), HasSubstr("INFO : VZ-HM-TRACE: vz_free(" + hex(p) + ") at [freed/there.cpp(41)].\n(VZ LIB)"
                                      "                  :             Alloc at [made/here.cpp(31)], size 100\n"));
}

// Allocator hooks count their calls in the int given as their context.
int& calls(void* context) { return *static_cast<int*>(context); }

TEST_F(HeapTest, HooksServeTheHookedAndTrackedLayersButNotThePlainOne)
{
    int normalCalls = 0, imageCalls = 0;
    const hm_normal_allocator normal{1, &normalCalls,
                                     [](void* c, uint32_t n) { return ++calls(c), std::malloc(n); },
                                     [](void* c, void* p, uint32_t n) { return ++calls(c), std::realloc(p, n); },
                                     [](void* c, const char* s) { return ++calls(c), strdup(s); },
                                     [](void* c, void* p) { ++calls(c), std::free(p); }};
    const hm_image_allocator image{1, &imageCalls, normal.malloc, nullptr, normal.free};
    hm_set_allocators(&normal, &image);
    // Five NORMAL calls, two IMAGE calls and four blocks recorded when tracked.
    const auto round = [] {
        char* s = static_cast<char*>(vz_realloc(vz_strdup("hook", "h.cpp", 1), 64, "h.cpp", 2));
        EXPECT_STREQ(s, "hook");
        vz_free(s, "h.cpp", 3);
        vz_free(vz_malloc(8, "h.cpp", 4), "h.cpp", 5);
        vz_image_free(vz_image_malloc(16, "h.cpp", 6), "h.cpp", 7);
    };
    const uint32_t allocs = hm_normal_info.allocs + hm_image_info.allocs;
    hm_configure(0, 0, 0);
    round();
    EXPECT_EQ(normalCalls + imageCalls, 0);
    hm_configure(1, 0, 0);
    round();
    EXPECT_EQ(hm_normal_info.allocs + hm_image_info.allocs, allocs);
    hm_configure(1, 1, 0);
    round();
    EXPECT_EQ(normalCalls, 10);
    EXPECT_EQ(imageCalls, 4);
    EXPECT_EQ(hm_normal_info.allocs + hm_image_info.allocs, allocs + 4);
    EXPECT_EQ(log.take(), "");
}

}  // namespace
