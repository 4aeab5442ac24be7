// The heap: its hash and block tables, its three layers, its timer, its messages,
// the switches read from VZ_HEAP_DEBUG at start-up, and aligned blocks on top.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <memory>
#include <thread>
#include <vector>

#include "tests/vzlibs/baselib/test_support.h"
#include "vzlibs/baselib/aligned.h"

namespace {

void* address(uintptr_t a) { return reinterpret_cast<void*>(a); }

TEST(HeapHash, OneAtATimeOverThePointerBytesLeastSignificantFirst)
{
    // Worked by hand: 1 and a pointer above 32 bits.
    EXPECT_EQ(hm_hash(address(0x1)), 0x98ADB391u);
    EXPECT_EQ(hm_hash(address(0x7F0012345678)), 0xC9417A18u);
}

// Each test starts tracked, without hooks, with the log captured and with the
// NORMAL counters at zero.
class HeapTest : public ::testing::Test {
protected:
    HeapTest()
    {
        hm_init_info(&hm_normal_info);
        hm_info& n = hm_normal_info;
        n.chained = n.allocs = n.frees = n.currentBytes = n.peakBytes = 0;
    }
    // The NORMAL counters: chained, allocs, frees, currentBytes, peakBytes.
    static std::vector<uint32_t> counters()
    {
        const hm_info& n = hm_normal_info;
        return {n.chained, n.allocs, n.frees, n.currentBytes, n.peakBytes};
    }
    // The log since the last look, "(VZ LIB) ERROR: VZ-HM-DEBUG: " shown as "E " and
    // "(VZ LIB) INFO : VZ-HM-TRACE: " as "T ".
    std::string messages()
    {
        const std::string text = std::regex_replace(log.untimed(), std::regex("\\(VZ LIB\\) ERROR: VZ-HM-DEBUG: "), "E ");
        return std::regex_replace(text, std::regex("\\(VZ LIB\\) INFO : VZ-HM-TRACE: "), "T ");
    }
    HeapSwitches heap{1, 1, 0};
    LogCapture log;
};

TEST_F(HeapTest, NewestBlockHeadsItsBucketFreesRelinkTheChainAndCountersFollow)
{
    // Four addresses of bucket 0x2ABC whose hashes also have bit 14 set, so that a
    // narrower or wider mask would part them from it. Records never touch the memory they name.
    const hm_info_node& head = hm_normal_info.buckets[0x2ABC];
    ASSERT_EQ(head.pointer, nullptr);
    std::vector<void*> p;
    for (uintptr_t a = 0x10000; p.size() < 4; a += 16)
        if ((hm_hash(address(a)) & 0x7FFF) == 0x6ABC)
            p.push_back(address(a));
    const auto chain = [&] {  // the bucket's blocks, head first, by their index in p
        std::string out;
        for (const hm_info_node* n = head.pointer ? &head : nullptr; n; n = n->next)
            out += std::to_string(std::find(p.begin(), p.end(), n->pointer) - p.begin());
        return out;
    };
    // Block p[i] is entered with a size (from file "abc"[i], line = step), or freed (size 0).
    const struct { int i; uint32_t size; const char* chain; std::vector<uint32_t> counters; } steps[] = {
        {0, 100, "0", {0, 1, 0, 100, 100}}, {1, 20, "10", {1, 2, 0, 120, 120}}, {2, 3, "210", {2, 3, 0, 123, 123}},
        {1, 0, "20", {2, 3, 1, 103, 123}},  // the middle of the chain; the peak stays
        {2, 0, "0", {2, 3, 2, 100, 123}},   // the head: the older block moves up
        {1, 22, "10", {3, 4, 2, 122, 123}}, {2, 10, "210", {4, 5, 2, 132, 132}}};  // below the peak, then a new one
    for (int step = 0; step < 7; ++step) {
        const auto& s = steps[step];
        if (s.size)
            hm_record_alloc(&hm_normal_info, p[s.i], s.size, std::string(1, "abc"[s.i]).c_str(), step);
        else
            hm_record_free(&hm_normal_info, p[s.i]);
        EXPECT_EQ(chain(), s.chain) << step;
        EXPECT_EQ(counters(), s.counters) << step;
    }
    EXPECT_EQ(record(&hm_normal_info, p[0]) + record(&hm_normal_info, p[1]) + record(&hm_normal_info, p[2]),
              "100 a(0)22 b(5)10 c(6)");
    EXPECT_EQ(record(&hm_normal_info, p[3]) + record(&hm_image_info, p[0]), "");  // misses set size 0

    // Misses in an occupied bucket, an empty one and the other table change nothing.
    ASSERT_EQ(hm_normal_info.buckets[hm_hash(address(8)) & 0x3FFF].pointer, nullptr);
    for (const auto& [info, q] : {std::pair(&hm_normal_info, p[3]), {&hm_normal_info, address(8)}, {&hm_image_info, p[0]}})
        hm_record_free(info, q);
    EXPECT_EQ(counters(), steps[6].counters);
    EXPECT_EQ(messages(), format("E Attempt to free %p - Not allocated in NORMAL!\nE Attempt to free %p - Not allocated "
                                 "in NORMAL!\nE Attempt to free %p - Not allocated in IMAGE!\n", p[3], address(8), p[0]));
    for (void* q : {p[2], p[1], p[0]})
        hm_record_free(&hm_normal_info, q);
    EXPECT_EQ(head.size + head.line + head.file[0] + (head.pointer != nullptr), 0);  // the whole head is cleared
    EXPECT_EQ(counters(), (std::vector<uint32_t>{4, 5, 5, 0, 132}));
}

TEST_F(HeapTest, RecordsKeepTheLast47CharactersOfThePathAndReallocMovesThem)
{
    const std::string path47 = std::string(41, 'x') + "/b.cpp";
    for (const std::string& path : {path47.substr(1), path47, "Z" + path47, "0123456789ABC" + path47}) {
        void* block = vz_malloc(8, path.c_str(), 9);
        EXPECT_EQ(record(&hm_normal_info, block), "8 " + (path.size() < 47 ? path : path47) + "(9)");
        vz_free(block, "f.cpp", 1);
    }
    char* empty = vz_strdup("", "dup.cpp", 2);
    char* p = static_cast<char*>(vz_realloc(nullptr, 16, "re.cpp", 1));  // allocates, no message
    EXPECT_EQ(record(&hm_normal_info, empty) + record(&hm_normal_info, p), "1 dup.cpp(2)16 re.cpp(1)");
    std::strcpy(p, "kept");
    char* q = static_cast<char*>(vz_realloc(p, 4096, "re.cpp", 2));
    EXPECT_EQ(record(&hm_normal_info, q) + q, "4096 re.cpp(2)kept");
    const std::vector<uint32_t> c = counters();
    EXPECT_EQ(std::vector(c.begin() + 1, c.end()), (std::vector<uint32_t>{7, 5, 4097, 4097}));  // chained aside
    vz_free(empty, "f.cpp", 2);

    // Each refusal of the tracked layer: its message, and nothing touched.
    int local = 0;
    void* image = vz_image_malloc(64, "img.cpp", 5);
    const std::vector<uint32_t> c1 = counters();
    const void* refused[] = {vz_realloc(q, 0, "m.cpp", 1), vz_realloc(&local, 8, "m.cpp", 2), vz_malloc(0, "m.cpp", 3),
                             vz_strdup(nullptr, "m.cpp", 4), vz_image_malloc(0, "m.cpp", 5)};
    EXPECT_EQ(std::count(refused, refused + 5, nullptr), 5);
    vz_free(nullptr, "m.cpp", 6);
    vz_free(image, "m.cpp", 7);  // a block of the other kind
    vz_image_free(nullptr, "m.cpp", 8);
    vz_image_free(q, "m.cpp", 9);
    EXPECT_EQ(messages(), format("E vz_realloc( size=0 ) attempted! [m.cpp(1)]\n"
                                 "E vz_realloc(%p,8) attempted - but %p is not allocated!  [m.cpp(2)]\n"
                                 "E vz_malloc( size=0 ) attempted! [m.cpp(3)]\nE vz_strdup( NULL ) attempted! [m.cpp(4)]\n"
                                 "E vz_image_malloc( size=0 ) attempted! [m.cpp(5)]\nE vz_free( NULL ) attempted! [m.cpp(6)]\n"
                                 "E vz_free(%p) attempted - but %p is not allocated! [m.cpp(7)]\n"
                                 "E vz_image_free( NULL ) attempted! [m.cpp(8)]\n"
                                 "E vz_image_free(%p) attempted - but %p is not allocated! [m.cpp(9)]\n",
                                 &local, &local, image, image, q, q));
    EXPECT_EQ(counters(), c1);
    EXPECT_EQ(record(&hm_normal_info, q) + record(&hm_image_info, image) + q, "4096 re.cpp(2)64 img.cpp(5)kept");
    vz_image_free(image, "f.cpp", 1);
    vz_free(q, "f.cpp", 2);
    EXPECT_EQ(log.take(), "");
}

// Allocator hooks that count their calls in the int given as their context.
int& calls(void* context) { return *static_cast<int*>(context); }

TEST_F(HeapTest, TraceLinesOfEachLayer)
{
    int normalCalls = 0, imageCalls = 0;
    const hm_normal_allocator normal{1, &normalCalls,
                                     [](void* c, uint32_t n) { return ++calls(c), std::malloc(n); },
                                     [](void* c, void* p, uint32_t n) { return ++calls(c), std::realloc(p, n); },
                                     [](void* c, const char* s) { return ++calls(c), strdup(s); },
                                     [](void* c, void* p) { ++calls(c), std::free(p); }};
    const hm_image_allocator image{1, &imageCalls, normal.malloc, nullptr, normal.free};

    // Hooked: all traced save vz_malloc and vz_realloc at line 0; frees have no point.
    hm_set_allocators(&normal, &image);
    hm_configure(1, 0, 1);
    const char* source = "s";
    void* a = vz_malloc(24, "t.cpp", 12);
    void* quiet = vz_realloc(vz_malloc(0, "t.cpp", 0), 16, "t.cpp", 0);  // size 0 goes to the hook
    void* b = vz_realloc(a, 48, "t.cpp", 13);
    char* s = vz_strdup(source, "t.cpp", 0);
    void* i = vz_image_malloc(16, "t.cpp", 0);
    vz_free(b, "t.cpp", 14);
    vz_free(quiet, "t.cpp", 0);
    vz_free(s, "t.cpp", 15);
    vz_image_free(i, "t.cpp", 16);
    EXPECT_EQ(std::pair(normalCalls, imageCalls), std::pair(8, 2));
    EXPECT_EQ(messages(), format("T vz_malloc(24) ret (%p) at [t.cpp(12)]\nT vz_realloc(%p,48) ret (%p) at [t.cpp(13)]\n"
                                 "T vz_strdup(%p) ret (%p) at [t.cpp(0)]\nT vz_image_malloc(16) ret (%p) at [t.cpp(0)]\n"
                                 "T vz_free(%p) at [t.cpp(14)]\nT vz_free(%p) at [t.cpp(0)]\nT vz_free(%p) at [t.cpp(15)]\n"
                                 "T vz_image_free(%p) at [t.cpp(16)]\n", a, a, b, source, s, i, b, quiet, s, i));

    // Plain: no trace, no hook, and size 0 goes to malloc.
    hm_set_allocators(&normal, &image);
    hm_configure(0, 0, 1);
    normalCalls = imageCalls = 0;
    vz_free(a = vz_malloc(0, "p.cpp", 1), "p.cpp", 2);
    vz_image_free(vz_image_malloc(8, "p.cpp", 3), "p.cpp", 4);
    vz_free(vz_strdup("x", "p.cpp", 5), "p.cpp", 6);
    vz_free(nullptr, "p.cpp", 7);
    EXPECT_EQ(std::tuple(a != nullptr, normalCalls + imageCalls, log.take()), std::tuple(true, 0, ""));
}

// Hooks that sleep 20 ms, long enough for the millisecond timer.
void* slowMalloc(void*, uint32_t n) { return std::this_thread::sleep_for(std::chrono::milliseconds(20)), std::malloc(n); }
void slowFree(void*, void* p) { std::this_thread::sleep_for(std::chrono::milliseconds(20)), std::free(p); }

TEST_F(HeapTest, TimerOfBothKindsIsTheNormalOneAndRunsOnlyWhenTracked)
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    EXPECT_NEAR(hm_seconds(), static_cast<uint32_t>(now.tv_sec * 1000 + now.tv_nsec / 1000000) * 0.001, 0.05);
    const hm_normal_allocator normal{1, nullptr, slowMalloc, nullptr, nullptr, slowFree};
    const hm_image_allocator image{1, nullptr, slowMalloc, nullptr, slowFree};
    hm_set_allocators(&normal, &image);
    const double t0 = hm_normal_info.timeSpent;
    vz_image_free(vz_image_malloc(8, "slow.cpp", 1), "slow.cpp", 2);
    const double t1 = hm_normal_info.timeSpent;
    vz_free(vz_malloc(8, "slow.cpp", 3), "slow.cpp", 4);
    EXPECT_TRUE(t1 - t0 >= 0.035 && hm_normal_info.timeSpent - t1 >= 0.035) << t0 << " " << t1;
    EXPECT_EQ(hm_image_info.timeStart + hm_image_info.timeSpent, 0.0);
    hm_configure(1, 0, 0);  // hooked: not timed, and the timer counts only when tracked
    const double t2 = hm_normal_info.timeSpent, start = hm_normal_info.timeStart;
    vz_image_free(vz_image_malloc(8, "slow.cpp", 5), "slow.cpp", 6);
    hm_timer_start(&hm_normal_info);
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    hm_timer_stop(&hm_normal_info);
    EXPECT_EQ(std::pair(hm_normal_info.timeSpent, hm_normal_info.timeStart), std::pair(t2, start));
}

TEST_F(HeapTest, InternalErrorsAreReportedAndChangeNothing)
{
    auto stray = std::make_unique<hm_info>();  // too large for the stack
    std::strcpy(stray->name, "STRAY");
    hm_init_info(stray.get());
    void* block = vz_malloc(8, "kept.cpp", 1);
    hm_init_info(&hm_normal_info);  // once per kind: the table stays
    EXPECT_EQ(record(&hm_normal_info, block) + stray->name, "8 kept.cpp(1)STRAY");
    vz_free(block, "kept.cpp", 2);
    hm_mutex_init = 0;
    release_hm_mutex();  // nothing is released
    hm_mutex_init = 1;
    EXPECT_EQ(messages(), format("E INTERNAL ERROR: Asked to initialize unknown info at: %p.\n"
                                 "E INTERNAL ERROR: release_hm_mutex() found hm_mutex_init=0!\n", static_cast<void*>(stray.get())));
}

// The switches a VZ_HEAP_DEBUG text sets, as "edt", after "refused " if it is refused.
std::string parse(const char* text)
{
    int32_t enabled = 7, debug = 7, trace = 7;
    const bool ok = hm_parse_switches(text, &enabled, &debug, &trace);
    return (ok ? "" : "refused ") + std::to_string(enabled) + std::to_string(debug) + std::to_string(trace);
}

TEST(HeapStartUp, WordsCombineAndTheEnvironmentSetsTheSwitchesBeforeTheFirstAllocation)
{
    EXPECT_EQ(parse("track") + parse(" trace, track ") + parse("") + parse("tracks"), "110111000refused 777");
    // The child, a new start of this program, prints its switches, makes a bad free
    // (survived only when tracked) and a traced free.
    const auto child = [] {
        std::fprintf(stderr, "switches %d %d %d\n", hm_enabled, hm_debug, hm_trace);
        int local = 0;
        if (hm_debug)
            vz_free(&local, "child.cpp", 7);
        vz_free(vz_malloc(21, "child/maker.cpp", 5), "child.cpp", 8);
        std::exit(0);
    };
    const std::string style = GTEST_FLAG_GET(death_test_style);
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    setenv("VZ_HEAP_DEBUG", "track,trace", 1);
    EXPECT_EXIT(child(), ::testing::ExitedWithCode(0),
                "switches 1 1 1\n.*is not allocated! \\[child\\.cpp\\(7\\)\\]\n.*at \\[child\\.cpp\\(8\\)\\]\\.\n"
                ".*Alloc at \\[child/maker\\.cpp\\(5\\)\\], size 21\n");
    setenv("VZ_HEAP_DEBUG", "verbose", 1);
    EXPECT_EXIT(child(), ::testing::ExitedWithCode(0), "VZ_HEAP_DEBUG=\"verbose\" not understood.*switches 0 0 0\n");
    unsetenv("VZ_HEAP_DEBUG");
    GTEST_FLAG_SET(death_test_style, style);
}

// Heap hooks over an arena: they hand out arena + offset and note the size asked,
// the kind (their context: 1 NORMAL, 2 IMAGE) and the block given back.
alignas(65536) unsigned char arena[3 * 65536];
size_t offset;
uint32_t asked;
intptr_t kind;
void* freed;
void* arenaMalloc(void* k, uint32_t n) { return asked = n, kind = intptr_t(k), n > sizeof arena ? nullptr : arena + offset; }
void arenaFree(void* k, void* p) { freed = p, kind = intptr_t(k); }

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
        offset = c.offset;
        auto* block = static_cast<unsigned char*>(vz_aligned_malloc(1000, c.alignment, c.image));
        unsigned char* raw = arena + c.offset;
        EXPECT_EQ(asked, 1000 + (c.alignment < 4 ? page : c.alignment) + 8) << c.offset;
        EXPECT_EQ(kind, c.image ? 2 : 1);
        const uintptr_t base = reinterpret_cast<uintptr_t>(raw) + 8;
        const uint32_t distance = c.distance ? c.distance : static_cast<uint32_t>(8 + 24 - base % 24);
        uint32_t header[2];
        std::memcpy(header, block - 8, sizeof header);
        EXPECT_EQ(std::tuple(block - raw, header[0], header[1]), std::tuple(distance, 1000u, distance)) << c.offset;
        kind = 0;
        vz_aligned_free(block, c.image);
        EXPECT_EQ(std::pair(freed, kind), std::pair(static_cast<void*>(raw), intptr_t{c.image ? 2 : 1}));
    }
    // Sizes above 0x7FFFFFFF, and sums past 32 bits, are refused before any allocation.
    const struct { uint32_t size; int32_t alignment; uint32_t want; } limits[] = {
        {0x80000000u, -1, 0}, {0x7FFFFFFFu, -1, 0x7FFFFFFFu + page + 8}, {0x7FFFFFFFu, 0x7FFFFFFF, 0}};
    for (const auto& [size, alignment, want] : limits) {
        asked = 0;
        EXPECT_EQ(vz_aligned_malloc(size, alignment, false), nullptr);
        EXPECT_EQ(asked, want) << size;
    }
}

}  // namespace
