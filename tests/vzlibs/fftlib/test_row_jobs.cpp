// Row jobs: the engine's use of a runner and of abort checks.
#include <gtest/gtest.h>

#include <atomic>
#include <set>

#include "engine_test_support.h"
#include "generic/library/PluginVZ.h"

using namespace enginetest;

namespace {

std::atomic<int> abortPolls{0};
void* abortContextSeen = nullptr;
int stopAtOnce(void* context)
{
    abortContextSeen = context;
    ++abortPolls;
    return 1;
}

class EngineRowJobs : public ::testing::Test {
protected:
    static constexpr int W = 8, H = 486;
    static constexpr uint32_t kSentinel = 12345;
    void SetUp() override
    {
        static_cast<uint8_t*>(psf.rec->pixels)[(H / 2) * W + W / 2 + 1] = 128;
        frame.each([&](int x, int y, int c) { frame.set(x, y, c, uint32_t((x * 997 + y * 131 + c * 17) % 60000)); });
    }
    // Rows of the output of `engine` that still hold the sentinel.
    std::set<int> untouchedRows(FftEngine& engine)
    {
        Image out(W, H, 4, 1);
        out.fill(kSentinel);
        EXPECT_TRUE(engine.PrepareKernel(psf.rec, 2) && engine.SetInput(frame.rec) && engine.Run(out.rec, 15));
        std::set<int> rows;
        for (int y = 0; y < H; ++y)
            if (out.get(0, y, 0) == kSentinel && out.get(W - 1, y, 1) == kSentinel)
                rows.insert(y);
        return rows;
    }
    Image psf{dotPsf(W, H)}, frame{W, H, 4, 1};
    PluginVZ context;  // the row runner's object
};

TEST_F(EngineRowJobs, FourThreadRunnerLeavesTheLastHeightModFourRowsAndNoRunnerOrContextDoesAll)
{
    // The runner cuts a job in four slices of count / 4 rows and drops the rest.
    FftEngine runner, inlined, nullContext;
    runner.SetRowRunner(&context, PluginVZ::RunRows);
    EXPECT_EQ(untouchedRows(runner), (std::set<int>{484, 485}));
    EXPECT_TRUE(untouchedRows(inlined).empty());
    nullContext.SetRowRunner(nullptr, PluginVZ::RunRows);
    EXPECT_TRUE(untouchedRows(nullContext).empty());
}

TEST_F(EngineRowJobs, AbortThatSaysStopLeavesTheOutputAndRunStillSucceeds)
{
    FftEngine engine;
    ASSERT_TRUE(engine.PrepareKernel(psf.rec, 2));
    engine.SetRowRunner(&context, PluginVZ::RunRows);
    int ignored = 0;
    engine.SetAbortCheck(&ignored, stopAtOnce);
    abortPolls = 0;
    Image out(W, H, 4, 1);
    out.fill(kSentinel);
    ASSERT_TRUE(engine.SetInput(frame.rec));
    EXPECT_TRUE(engine.Run(out.rec, 15));
    EXPECT_EQ(std::count(static_cast<uint16_t*>(out.rec->pixels), static_cast<uint16_t*>(out.rec->pixels) + W * H * 4, kSentinel), W * H * 4);
    EXPECT_GT(abortPolls.load(), 0);
    EXPECT_EQ(abortContextSeen, &context);  // the runner's context, not the argument given with the check

    // A PSF shorter than four rows: the runner loads nothing, the sum is 0.
    Image shortPsf(dotPsf(W, 3));
    FftEngine shortRows;
    shortRows.SetRowRunner(&context, PluginVZ::RunRows);
    ASSERT_TRUE(shortRows.PrepareKernel(shortPsf.rec, 1));
    EXPECT_TRUE(std::isnan(shortRows.kernelReal[0]));
}

}  // namespace
