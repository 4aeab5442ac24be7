// Switching the heap's layers on from the environment (VZ_HEAP_DEBUG).
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "vzlibs/baselib/heap.h"

namespace {

// The switches a text sets, as "edt", after "refused " if it is refused.
std::string parse(const char* text)
{
    int32_t enabled = 7, debug = 7, trace = 7;
    const bool ok = hm_parse_switches(text, &enabled, &debug, &trace);
    return (ok ? "" : "refused ") + std::to_string(enabled) + std::to_string(debug) + std::to_string(trace);
}

TEST(HeapSwitches, WordsCombineAndTheEnvironmentSetsThemBeforeTheFirstAllocation)
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

}  // namespace
