// Switching the heap's layers on from the environment, for any program.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "vzlibs/baselib/heap.h"

namespace {

TEST(HeapSwitchWords, TrackAndTraceCombineAndOtherWordsAreRefused)
{
    struct Case {
        const char* text;
        bool ok;
        int32_t enabled, debug, trace;
    };
    const Case cases[] = {
        {"track", true, 1, 1, 0},       {"trace", true, 1, 0, 1},     {"track,trace", true, 1, 1, 1},
        {" trace  track ", true, 1, 1, 1}, {"", true, 0, 0, 0},       {"tracks", false, 7, 7, 7},
        {"track,yes", false, 7, 7, 7},  {"1", false, 7, 7, 7},
    };
    for (const Case& c : cases) {
        int32_t enabled = 7, debug = 7, trace = 7;
        EXPECT_EQ(hm_parse_switches(c.text, &enabled, &debug, &trace), c.ok) << c.text;
        EXPECT_EQ(enabled, c.enabled) << c.text;
        EXPECT_EQ(debug, c.debug) << c.text;
        EXPECT_EQ(trace, c.trace) << c.text;
    }
    int32_t x = 0;
    EXPECT_FALSE(hm_parse_switches(nullptr, &x, &x, &x));
}

// Run by HeapStartUp below in a child process started with VZ_HEAP_DEBUG set; on
// its own it has nothing to check.
TEST(HeapStartUpChild, MakesABadFreeAndATracedFree)
{
    const char* marker = std::getenv("VZ_HEAP_TEST_CHILD");
    if (!marker)
        GTEST_SKIP() << "runs as the child of HeapStartUp";
    std::printf("switches %d %d %d\n", hm_enabled, hm_debug, hm_trace);
    std::fflush(stdout);
    int local = 0;
    if (hm_debug)  // only a tracked heap survives a bad free
        vz_free(&local, "child.cpp", 7);
    vz_free(vz_malloc(21, "child/maker.cpp", 5), "child.cpp", 8);
}

// Runs this test program again with VZ_HEAP_DEBUG set and reads what it says.
std::string runChild(const char* switches)
{
    // The shell of popen has its own /proc/self: name this program by its path.
    char self[4096];
    const ssize_t length = readlink("/proc/self/exe", self, sizeof self - 1);
    if (length <= 0)
        return "readlink failed";
    self[length] = '\0';
    const std::string command = std::string("VZ_HEAP_TEST_CHILD=1 VZ_HEAP_DEBUG='") + switches + "' '" + self +
                                "' --gtest_filter=HeapStartUpChild.* 2>&1";
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe)
        return "popen failed";
    std::string out;
    char buffer[512];
    size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0)
        out.append(buffer, n);
    pclose(pipe);
    return out;
}

TEST(HeapStartUp, EnvironmentSwitchesTrackingOnBeforeTheFirstAllocation)
{
    const std::string tracked = runChild("track,trace");
    EXPECT_NE(tracked.find("switches 1 1 1\n"), std::string::npos) << tracked;
    EXPECT_NE(tracked.find("ERROR: VZ-HM-DEBUG: vz_free("), std::string::npos) << tracked;
    EXPECT_NE(tracked.find("is not allocated! [child.cpp(7)]"), std::string::npos) << tracked;
    EXPECT_NE(tracked.find("at [child.cpp(8)].\n"), std::string::npos) << tracked;
    EXPECT_NE(tracked.find("Alloc at [child/maker.cpp(5)], size 21\n"), std::string::npos) << tracked;

    const std::string refused = runChild("verbose");
    EXPECT_NE(refused.find("VZ_HEAP_DEBUG=\"verbose\" not understood"), std::string::npos) << refused;
    EXPECT_NE(refused.find("switches 0 0 0\n"), std::string::npos) << refused;
    EXPECT_EQ(refused.find("VZ-HM-"), std::string::npos) << refused;
}

}  // namespace
