// The heap's three layers, its block tables and its messages.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "vzlibs/baselib/heap.h"
#include "vzlibs/baselib/heap_internal.h"
#include "vzlibs/baselib/log.h"

namespace {

std::string hex(const void* p)
{
    char text[32];
    std::snprintf(text, sizeof text, "%p", p);
    return text;
}

// The counters of a table at one moment (the table itself is over a MiB).
struct Counters {
    uint32_t chained, allocs, frees, currentBytes, peakBytes;
    static Counters of(const hm_info& info)
    {
        return {info.chained, info.allocs, info.frees, info.currentBytes, info.peakBytes};
    }
};

// Switches, hooks and the log's stream are process-wide: each test starts from
// the plain layer with the log captured, and gets everything back at its end.
class HeapTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        savedSwitches[0] = hm_enabled;
        savedSwitches[1] = hm_debug;
        savedSwitches[2] = hm_trace;
        savedNormal = hm_normal_hooks;
        savedImage = hm_image_hooks;
        hm_configure(0, 0, 0);
        hm_set_allocators(nullptr, nullptr);
        LogChannel& ch = lib_log_channel();
        savedStream = ch.stream;
        savedLevel = ch.level;
        savedLast = ch.lastLevel;
        capture = std::tmpfile();
        ASSERT_NE(capture, nullptr);
        ch.stream = capture;
        ch.level = LOG_INFO;
    }
    void TearDown() override
    {
        hm_configure(savedSwitches[0], savedSwitches[1], savedSwitches[2]);
        hm_set_allocators(&savedNormal, &savedImage);
        LogChannel& ch = lib_log_channel();
        ch.stream = savedStream;
        ch.level = savedLevel;
        ch.lastLevel = savedLast;
        std::fclose(capture);
    }
    // The log's text since the last call.
    std::string take()
    {
        std::fflush(capture);
        const long end = std::ftell(capture);
        std::string out(static_cast<size_t>(end - consumed), '\0');
        std::fseek(capture, consumed, SEEK_SET);
        out.resize(std::fread(out.data(), 1, out.size(), capture));
        consumed = end;
        std::fseek(capture, 0, SEEK_END);
        return out;
    }
    static bool has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }
    static bool tracked(hm_info* info, void* p)
    {
        uint32_t size = 0;
        return hm_lookup(info, p, &size, nullptr, nullptr);
    }

    FILE* capture = nullptr;
    long consumed = 0;
    int32_t savedSwitches[3] = {};
    hm_normal_allocator savedNormal{};
    hm_image_allocator savedImage{};
    FILE* savedStream = nullptr;
    int32_t savedLevel = 0, savedLast = 0;
};

// ---- Plain layer ----------------------------------------------------------

TEST_F(HeapTest, PlainLayerForwardsAndSaysNothing)
{
    const uint32_t allocsBefore = hm_normal_info.allocs;
    void* zero = vz_malloc(0, "plain.cpp", 1);  // as malloc(0): null or a freeable block
    vz_free(zero, "plain.cpp", 2);
    vz_free(nullptr, "plain.cpp", 3);
    char* copy = vz_strdup("abc", "plain.cpp", 4);
    ASSERT_NE(copy, nullptr);
    EXPECT_STREQ(copy, "abc");
    copy = static_cast<char*>(vz_realloc(copy, 100, "plain.cpp", 5));
    ASSERT_NE(copy, nullptr);
    EXPECT_STREQ(copy, "abc");
    vz_free(copy, "plain.cpp", 6);
    EXPECT_EQ(vz_strdup(nullptr, "plain.cpp", 7), nullptr);  // refused rather than crashed on
    vz_image_free(vz_image_malloc(64, "plain.cpp", 8), "plain.cpp", 9);
    EXPECT_EQ(take(), "");
    EXPECT_EQ(hm_normal_info.allocs, allocsBefore);
}

// ---- Tracked layer: tables --------------------------------------------------

TEST_F(HeapTest, TrackedBlockIsRecordedWithSizePathAndLineUntilFreed)
{
    hm_configure(1, 1, 0);
    const Counters before = Counters::of(hm_normal_info);
    void* p = vz_malloc(40, "src/maker.cpp", 77);
    ASSERT_NE(p, nullptr);
    uint32_t size = 0;
    char file[HM_FILE_CHARS] = {};
    int line = 0;
    ASSERT_TRUE(hm_lookup(&hm_normal_info, p, &size, file, &line));
    EXPECT_EQ(size, 40u);
    EXPECT_STREQ(file, "src/maker.cpp");
    EXPECT_EQ(line, 77);
    EXPECT_EQ(hm_normal_info.allocs, before.allocs + 1);
    EXPECT_EQ(hm_normal_info.currentBytes, before.currentBytes + 40);
    EXPECT_FALSE(tracked(&hm_image_info, p));

    vz_free(p, "src/user.cpp", 80);
    EXPECT_FALSE(hm_lookup(&hm_normal_info, p, &size, nullptr, nullptr));
    EXPECT_EQ(size, 0u);
    EXPECT_EQ(hm_normal_info.frees, before.frees + 1);
    EXPECT_EQ(hm_normal_info.currentBytes, before.currentBytes);
    EXPECT_STREQ(hm_normal_info.name, "NORMAL");
    EXPECT_EQ(take(), "");
}

TEST_F(HeapTest, NewerBlockOfABucketSitsInTheHeadAndFreeingItPromotesTheOlder)
{
    hm_configure(1, 1, 0);
    // Allocate until two live blocks share a bucket; keep those two.
    std::map<uint32_t, void*> byBucket;
    std::vector<void*> spare;
    void* older = nullptr;
    void* newer = nullptr;
    for (int i = 0; i < 20000 && !newer; ++i) {
        void* p = vz_malloc(24, "bucket.cpp", 100 + i);
        ASSERT_NE(p, nullptr);
        const uint32_t bucket = hm_hash(p) & HM_BUCKET_MASK;
        auto found = byBucket.find(bucket);
        if (found != byBucket.end()) {
            older = found->second;
            newer = p;
            byBucket.erase(found);
        } else {
            byBucket[bucket] = p;
        }
    }
    for (auto& entry : byBucket)
        vz_free(entry.second, "bucket.cpp", 1);
    ASSERT_NE(newer, nullptr) << "no two blocks in one bucket";

    const hm_info_node& head = hm_normal_info.buckets[hm_hash(newer) & HM_BUCKET_MASK];
    EXPECT_EQ(head.pointer, newer);
    ASSERT_NE(head.next, nullptr);
    EXPECT_EQ(head.next->pointer, older);

    const uint32_t chained = hm_normal_info.chained;
    const uint32_t frees = hm_normal_info.frees;
    const uint32_t bytes = hm_normal_info.currentBytes;
    vz_free(newer, "bucket.cpp", 2);
    EXPECT_EQ(head.pointer, older);  // promoted into the head
    EXPECT_EQ(head.next, nullptr);
    EXPECT_EQ(hm_normal_info.chained, chained);
    EXPECT_EQ(hm_normal_info.frees, frees + 1);
    EXPECT_EQ(hm_normal_info.currentBytes, bytes - 24);
    uint32_t size = 0;
    int line = 0;
    ASSERT_TRUE(hm_lookup(&hm_normal_info, older, &size, nullptr, &line));
    EXPECT_EQ(size, 24u);
    EXPECT_GE(line, 100);
    vz_free(older, "bucket.cpp", 3);
    EXPECT_EQ(head.pointer, nullptr);
    EXPECT_EQ(take(), "");
}

TEST_F(HeapTest, RecordsInTheMiddleOfAChainAreUnlinked)
{
    // Three made-up addresses of one bucket, far from any real block; the table
    // does not care whether they were allocated.
    std::vector<void*> same;
    const uint32_t wanted = hm_hash(reinterpret_cast<void*>(0x7f0000000010u)) & HM_BUCKET_MASK;
    for (uintptr_t a = 0x7f0000000010u; same.size() < 3; a += 16)
        if ((hm_hash(reinterpret_cast<void*>(a)) & HM_BUCKET_MASK) == wanted)
            same.push_back(reinterpret_cast<void*>(a));
    get_hm_mutex();
    const Counters before = Counters::of(hm_normal_info);
    for (size_t i = 0; i < 3; ++i)
        hm_record_alloc(&hm_normal_info, same[i], 10 * static_cast<uint32_t>(i + 1), "chain.cpp", 1);
    EXPECT_EQ(hm_normal_info.chained, before.chained + 2);
    EXPECT_GE(hm_normal_info.peakBytes, before.currentBytes + 60);

    hm_record_free(&hm_normal_info, same[1]);  // middle of the chain
    EXPECT_TRUE(tracked(&hm_normal_info, same[0]));
    EXPECT_FALSE(tracked(&hm_normal_info, same[1]));
    EXPECT_TRUE(tracked(&hm_normal_info, same[2]));
    EXPECT_EQ(hm_normal_info.currentBytes, before.currentBytes + 40);

    hm_record_free(&hm_normal_info, same[1]);  // not there any more
    EXPECT_EQ(hm_normal_info.frees, before.frees + 1);
    hm_record_free(&hm_normal_info, same[0]);  // end of the chain
    hm_record_free(&hm_normal_info, same[2]);  // head, chain now empty
    EXPECT_EQ(hm_normal_info.currentBytes, before.currentBytes);
    EXPECT_EQ(hm_normal_info.frees, before.frees + 3);
    release_hm_mutex();
    const std::string out = take();
    EXPECT_TRUE(has(out, "ERROR: VZ-HM-DEBUG: Attempt to free " + hex(same[1]) + " - Not allocated in NORMAL!\n"))
        << out;
}

TEST_F(HeapTest, BlockGivenBackThroughTheOtherFamilyIsReportedAndKept)
{
    hm_configure(1, 1, 0);
    void* image = vz_image_malloc(64, "img.cpp", 5);
    void* normal = vz_malloc(32, "nrm.cpp", 6);
    ASSERT_TRUE(image && normal);
    const uint32_t frees = hm_image_info.frees;

    vz_free(image, "wrong.cpp", 10);
    vz_image_free(normal, "wrong.cpp", 11);
    const std::string out = take();
    EXPECT_TRUE(has(out, "ERROR: VZ-HM-DEBUG: vz_free(" + hex(image) + ") attempted - but " + hex(image) +
                             " is not allocated! [wrong.cpp(10)]\n"))
        << out;
    EXPECT_TRUE(has(out, "ERROR: VZ-HM-DEBUG: vz_image_free(" + hex(normal) + ") attempted - but " + hex(normal) +
                             " is not allocated! [wrong.cpp(11)]\n"))
        << out;
    EXPECT_TRUE(tracked(&hm_image_info, image));
    EXPECT_TRUE(tracked(&hm_normal_info, normal));
    EXPECT_EQ(hm_image_info.frees, frees);
    std::memset(image, 1, 64);  // still ours: not handed to the allocator
    std::memset(normal, 1, 32);

    vz_image_free(image, "right.cpp", 12);
    vz_free(normal, "right.cpp", 13);
    EXPECT_FALSE(tracked(&hm_image_info, image));
    EXPECT_FALSE(tracked(&hm_normal_info, normal));
    EXPECT_STREQ(hm_image_info.name, "IMAGE");

    // A pointer the heap never gave out is reported and left alone.
    int local = 0;
    vz_free(&local, "stack.cpp", 14);
    EXPECT_TRUE(has(take(), "vz_free(" + hex(&local) + ") attempted"));
}

TEST_F(HeapTest, PathKeepsItsLast47Characters)
{
    hm_configure(1, 1, 0);
    const std::string path47 = "a/" + std::string(39, 'x') + "/b.cpp";
    const std::string path48 = "Z" + path47;
    ASSERT_EQ(path47.size(), 47u);
    void* a = vz_malloc(8, path47.c_str(), 1);
    void* b = vz_malloc(8, path48.c_str(), 2);
    uint32_t size = 0;
    char file[HM_FILE_CHARS];
    ASSERT_TRUE(hm_lookup(&hm_normal_info, a, &size, file, nullptr));
    EXPECT_EQ(std::string(file), path47);
    ASSERT_TRUE(hm_lookup(&hm_normal_info, b, &size, file, nullptr));
    EXPECT_EQ(std::string(file), path47);  // the leading 'Z' is the one dropped
    vz_free(a, "f", 1);
    vz_free(b, "f", 2);
}

TEST_F(HeapTest, PeakStaysWhenCurrentFalls)
{
    hm_configure(1, 1, 0);
    const uint32_t base = hm_normal_info.currentBytes;
    void* big = vz_malloc(1u << 20, "peak.cpp", 1);
    ASSERT_NE(big, nullptr);
    const uint32_t peak = hm_normal_info.peakBytes;
    EXPECT_GE(peak, base + (1u << 20));
    vz_free(big, "peak.cpp", 2);
    void* small = vz_malloc(16, "peak.cpp", 3);
    EXPECT_EQ(hm_normal_info.currentBytes, base + 16);
    EXPECT_EQ(hm_normal_info.peakBytes, peak);
    vz_free(small, "peak.cpp", 4);
}

// ---- Tracked layer: realloc, strdup and refusals ------------------------------

TEST_F(HeapTest, TrackedReallocMovesTheRecordAndRefusesUnknownOrEmpty)
{
    hm_configure(1, 1, 0);
    char* p = static_cast<char*>(vz_realloc(nullptr, 16, "re.cpp", 1));  // allocates
    ASSERT_NE(p, nullptr);
    std::strcpy(p, "kept");
    EXPECT_TRUE(tracked(&hm_normal_info, p));

    EXPECT_EQ(vz_realloc(p, 0, "re.cpp", 2), nullptr);  // unchanged, unlike realloc
    EXPECT_TRUE(tracked(&hm_normal_info, p));
    EXPECT_STREQ(p, "kept");

    int local = 0;
    EXPECT_EQ(vz_realloc(&local, 8, "re.cpp", 3), nullptr);

    char* q = static_cast<char*>(vz_realloc(p, 4096, "re.cpp", 4));
    ASSERT_NE(q, nullptr);
    EXPECT_STREQ(q, "kept");
    uint32_t size = 0;
    int line = 0;
    ASSERT_TRUE(hm_lookup(&hm_normal_info, q, &size, nullptr, &line));
    EXPECT_EQ(size, 4096u);
    EXPECT_EQ(line, 4);
    if (q != p) {
        EXPECT_FALSE(tracked(&hm_normal_info, p));
    }
    vz_free(q, "re.cpp", 5);

    const std::string out = take();
    EXPECT_TRUE(has(out, "ERROR: VZ-HM-DEBUG: vz_realloc( size=0 ) attempted! [re.cpp(2)]\n")) << out;
    EXPECT_TRUE(has(out, "ERROR: VZ-HM-DEBUG: vz_realloc(" + hex(&local) + ",8) attempted - but " + hex(&local) +
                             " is not allocated!  [re.cpp(3)]\n"))
        << out;
    EXPECT_FALSE(has(out, "re.cpp(1)"));  // a null pointer is no unknown block
}

TEST_F(HeapTest, TrackedStrdupRecordsLengthPlusOne)
{
    hm_configure(1, 1, 0);
    char* empty = vz_strdup("", "dup.cpp", 1);
    char* word = vz_strdup("lens", "dup.cpp", 2);
    ASSERT_TRUE(empty && word);
    uint32_t size = 0;
    ASSERT_TRUE(hm_lookup(&hm_normal_info, empty, &size, nullptr, nullptr));
    EXPECT_EQ(size, 1u);
    ASSERT_TRUE(hm_lookup(&hm_normal_info, word, &size, nullptr, nullptr));
    EXPECT_EQ(size, 5u);
    EXPECT_STREQ(word, "lens");
    vz_free(empty, "dup.cpp", 3);
    vz_free(word, "dup.cpp", 4);
    EXPECT_EQ(take(), "");
}

TEST_F(HeapTest, TrackedRefusalsPrintTheirMessages)
{
    hm_configure(1, 1, 0);
    const uint32_t allocs = hm_normal_info.allocs;
    EXPECT_EQ(vz_malloc(0, "zero.cpp", 1), nullptr);
    EXPECT_EQ(vz_image_malloc(0, "zero.cpp", 2), nullptr);
    EXPECT_EQ(vz_strdup(nullptr, "zero.cpp", 3), nullptr);
    vz_free(nullptr, "zero.cpp", 4);
    vz_image_free(nullptr, "zero.cpp", 5);
    EXPECT_EQ(hm_normal_info.allocs, allocs);
    const std::string out = take();
    for (const char* message : {"ERROR: VZ-HM-DEBUG: vz_malloc( size=0 ) attempted! [zero.cpp(1)]\n",
                                "ERROR: VZ-HM-DEBUG: vz_image_malloc( size=0 ) attempted! [zero.cpp(2)]\n",
                                "ERROR: VZ-HM-DEBUG: vz_strdup( NULL ) attempted! [zero.cpp(3)]\n",
                                "ERROR: VZ-HM-DEBUG: vz_free( NULL ) attempted! [zero.cpp(4)]\n",
                                "ERROR: VZ-HM-DEBUG: vz_image_free( NULL ) attempted! [zero.cpp(5)]\n"})
        EXPECT_TRUE(has(out, message)) << message << "\n" << out;
}

// ---- Trace lines -------------------------------------------------------------

TEST_F(HeapTest, TraceOnlyRunPrintsAllocationsButNotFrees)
{
    hm_configure(1, 0, 1);
    void* a = vz_malloc(24, "t.cpp", 12);
    void* silent = vz_malloc(8, "t.cpp", 0);  // line 0: no line for vz_malloc
    void* grown = vz_realloc(silent, 32, "t.cpp", 0);
    void* image = vz_image_malloc(48, "t.cpp", 0);  // line 0 still prints here
    char* copy = vz_strdup("x", "t.cpp", 0);
    std::string out = take();
    EXPECT_TRUE(has(out, "INFO : VZ-HM-TRACE: vz_malloc(24) ret (" + hex(a) + ") at [t.cpp(12)]\n")) << out;
    EXPECT_TRUE(has(out, "INFO : VZ-HM-TRACE: vz_image_malloc(48) ret (" + hex(image) + ") at [t.cpp(0)]\n")) << out;
    EXPECT_TRUE(has(out, "VZ-HM-TRACE: vz_strdup(")) << out;
    EXPECT_TRUE(has(out, "ret (" + hex(copy) + ") at [t.cpp(0)]\n")) << out;
    EXPECT_FALSE(has(out, "vz_malloc(8)"));
    EXPECT_FALSE(has(out, "vz_realloc"));

    vz_free(a, "t.cpp", 20);
    vz_free(grown, "t.cpp", 21);
    vz_free(copy, "t.cpp", 22);
    vz_image_free(image, "t.cpp", 23);
    EXPECT_EQ(take(), "");
}

TEST_F(HeapTest, TrackedTraceNamesWhoMadeTheFreedBlock)
{
    hm_configure(1, 1, 1);
    void* p = vz_malloc(100, "made/here.cpp", 31);
    void* q = vz_realloc(nullptr, 12, "made/here.cpp", 32);
    void* image = vz_image_malloc(7, "made/here.cpp", 33);
    take();
    vz_free(p, "freed/there.cpp", 41);
    vz_free(q, "freed/there.cpp", 42);
    vz_image_free(image, "freed/there.cpp", 43);
    const std::string out = take();
    EXPECT_TRUE(has(out, "INFO : VZ-HM-TRACE: vz_free(" + hex(p) + ") at [freed/there.cpp(41)].\n"
                         "(VZ LIB)                  :             Alloc at [made/here.cpp(31)], size 100\n"))
        << out;
    EXPECT_TRUE(has(out, "Alloc at [made/here.cpp(32)], size 12\n")) << out;
    EXPECT_TRUE(has(out, "INFO : VZ-HM-TRACE: vz_image_free(" + hex(image) + ") at [freed/there.cpp(43)].\n"
                         "(VZ LIB)                  :             Alloc at [made/here.cpp(33)], size 7\n"))
        << out;
}

// ---- Hooks --------------------------------------------------------------------

struct HookCounts {
    int mallocs = 0, reallocs = 0, strdups = 0, frees = 0, imageMallocs = 0, imageReallocs = 0, imageFrees = 0;
    int sleepMs = 0;
};

void* countMalloc(void* c, uint32_t size)
{
    ++static_cast<HookCounts*>(c)->mallocs;
    return std::malloc(size);
}
void* countRealloc(void* c, void* p, uint32_t size)
{
    ++static_cast<HookCounts*>(c)->reallocs;
    return std::realloc(p, size);
}
char* countStrdup(void* c, const char* s)
{
    ++static_cast<HookCounts*>(c)->strdups;
    return strdup(s);
}
void countFree(void* c, void* p)
{
    ++static_cast<HookCounts*>(c)->frees;
    std::free(p);
}
void* countImageMalloc(void* c, uint32_t size)
{
    auto* counts = static_cast<HookCounts*>(c);
    ++counts->imageMallocs;
    std::this_thread::sleep_for(std::chrono::milliseconds(counts->sleepMs));
    return std::malloc(size);
}
void* countImageRealloc(void* c, void* p, uint32_t size)
{
    ++static_cast<HookCounts*>(c)->imageReallocs;
    return std::realloc(p, size);
}
void countImageFree(void* c, void* p)
{
    ++static_cast<HookCounts*>(c)->imageFrees;
    std::free(p);
}

class HeapHookTest : public HeapTest {
protected:
    void SetUp() override
    {
        HeapTest::SetUp();
        const hm_normal_allocator normal{1, &counts, countMalloc, countRealloc, countStrdup, countFree};
        const hm_image_allocator image{1, &counts, countImageMalloc, countImageRealloc, countImageFree};
        hm_set_allocators(&normal, &image);
    }
    HookCounts counts;
};

TEST_F(HeapHookTest, SwitchesOffIgnoreTheHooks)
{
    vz_free(vz_malloc(8, "h.cpp", 1), "h.cpp", 2);
    vz_image_free(vz_image_malloc(8, "h.cpp", 3), "h.cpp", 4);
    EXPECT_EQ(counts.mallocs + counts.frees + counts.imageMallocs + counts.imageFrees, 0);
}

TEST_F(HeapHookTest, HookedLayerCallsTheHooksAndTracesFreesWithoutAPoint)
{
    hm_configure(1, 0, 1);
    void* a = vz_malloc(8, "h.cpp", 1);
    a = vz_realloc(a, 64, "h.cpp", 2);
    char* s = vz_strdup("hook", "h.cpp", 3);
    void* image = vz_image_malloc(16, "h.cpp", 4);
    vz_free(a, "h.cpp", 5);
    vz_free(s, "h.cpp", 6);
    vz_image_free(image, "h.cpp", 7);
    EXPECT_EQ(counts.mallocs, 1);
    EXPECT_EQ(counts.reallocs, 1);
    EXPECT_EQ(counts.strdups, 1);
    EXPECT_EQ(counts.frees, 2);
    EXPECT_EQ(counts.imageMallocs, 1);
    EXPECT_EQ(counts.imageFrees, 1);
    const std::string out = take();
    EXPECT_TRUE(has(out, "INFO : VZ-HM-TRACE: vz_free(" + hex(a) + ") at [h.cpp(5)]\n")) << out;
    EXPECT_TRUE(has(out, "INFO : VZ-HM-TRACE: vz_image_free(" + hex(image) + ") at [h.cpp(7)]\n")) << out;
    EXPECT_TRUE(has(out, "INFO : VZ-HM-TRACE: vz_realloc(")) << out;
    EXPECT_FALSE(has(out, "].\n"));
    EXPECT_FALSE(has(out, "Alloc at"));
}

TEST_F(HeapHookTest, TrackedLayerRecordsHookBlocksAndTimesBothKindsOnTheNormalInfo)
{
    hm_configure(1, 1, 0);
    counts.sleepMs = 30;
    const double normalBefore = hm_normal_info.timeSpent;
    const double imageBefore = hm_image_info.timeSpent;
    void* image = vz_image_malloc(16, "h.cpp", 1);
    char* s = vz_strdup("abc", "h.cpp", 2);
    ASSERT_TRUE(image && s);
    EXPECT_TRUE(tracked(&hm_image_info, image));
    EXPECT_TRUE(tracked(&hm_normal_info, s));
    vz_image_free(image, "h.cpp", 3);
    vz_free(s, "h.cpp", 4);
    EXPECT_EQ(counts.imageMallocs, 1);
    EXPECT_EQ(counts.imageFrees, 1);
    EXPECT_EQ(counts.strdups, 1);
    EXPECT_EQ(counts.frees, 1);
    EXPECT_EQ(counts.imageReallocs, 0);
    // The image hook slept 30 ms inside a timed operation, on the NORMAL timer.
    EXPECT_GE(hm_normal_info.timeSpent - normalBefore, 0.015);
    EXPECT_EQ(hm_image_info.timeSpent, imageBefore);
    EXPECT_EQ(take(), "");
}

// ---- Internals ------------------------------------------------------------------

TEST_F(HeapTest, HashIsOneAtATimeOverThePointerBytesLowFirst)
{
    // Jenkins' one-at-a-time hash as published, over a byte string.
    auto reference = [](const unsigned char* key, size_t length) {
        uint32_t h = 0;
        for (size_t i = 0; i < length; ++i) {
            h += key[i];
            h += h << 10;
            h ^= h >> 6;
        }
        h += h << 3;
        h ^= h >> 11;
        h += h << 15;
        return h;
    };
    const unsigned char a = 'a';
    ASSERT_EQ(reference(&a, 1), 0xca2e9442u);  // the published value for "a"
    for (uintptr_t value : {uintptr_t{0}, uintptr_t{0x12345678}, uintptr_t{0x7ffd12345670}, ~uintptr_t{0}}) {
        unsigned char bytes[sizeof value];
        for (size_t i = 0; i < sizeof value; ++i)
            bytes[i] = static_cast<unsigned char>(value >> (8 * i));
        EXPECT_EQ(hm_hash(reinterpret_cast<void*>(value)), reference(bytes, sizeof bytes)) << value;
    }
    // The high half of a 64-bit pointer takes part.
    EXPECT_NE(hm_hash(reinterpret_cast<void*>(0x7f0000001000u)), hm_hash(reinterpret_cast<void*>(0x7e0000001000u)));
}

TEST_F(HeapTest, UnknownInfoAndEarlyReleaseAreInternalErrors)
{
    auto stray = std::make_unique<hm_info>();
    std::memset(static_cast<void*>(stray.get()), 0x5A, sizeof(hm_info));
    hm_init_info(stray.get());
    EXPECT_EQ(static_cast<unsigned char>(stray->name[0]), 0x5A);
    EXPECT_EQ(stray->allocs, 0x5A5A5A5Au);

    const int32_t savedInit = hm_mutex_init;
    hm_mutex_init = 0;
    release_hm_mutex();  // nothing to release: reported, nothing done
    hm_mutex_init = savedInit;
    const std::string out = take();
    EXPECT_TRUE(has(out, "ERROR: VZ-HM-DEBUG: INTERNAL ERROR: Asked to initialize unknown info at: " +
                             hex(stray.get()) + ".\n"))
        << out;
    EXPECT_TRUE(has(out, "ERROR: VZ-HM-DEBUG: INTERNAL ERROR: release_hm_mutex() found hm_mutex_init=0!\n")) << out;
}

TEST_F(HeapTest, TrackedHeapStaysConsistentUnderThreads)
{
    hm_configure(1, 1, 0);
    const uint32_t bytes = hm_normal_info.currentBytes;
    const uint32_t allocs = hm_normal_info.allocs;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([] {
            for (int i = 0; i < 500; ++i) {
                void* p = vz_malloc(32, "threads.cpp", i + 1);
                void* q = vz_image_malloc(64, "threads.cpp", i + 1);
                vz_free(p, "threads.cpp", i + 1);
                vz_image_free(q, "threads.cpp", i + 1);
            }
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(hm_normal_info.currentBytes, bytes);
    EXPECT_EQ(hm_normal_info.allocs, allocs + 2000);
    EXPECT_EQ(take(), "");
}

}  // namespace
