// Row jobs: the four-thread split, the engine's use of a runner, abort checks.
#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <set>
#include <utility>

#include "engine_test_support.h"
#include "generic/library/PluginVZ.h"
#include "generic/library/RunFourThreads.h"

using namespace enginetest;

namespace {

struct SliceLog {
    std::mutex lock;
    std::set<std::pair<int, int>> slices;
    std::set<int> rows;
};

void recordSlice(void* object, int first, int last)
{
    auto* log = static_cast<SliceLog*>(object);
    std::lock_guard<std::mutex> guard(log->lock);
    log->slices.insert({first, last});
    for (int r = first; r <= last; ++r)
        log->rows.insert(r);
}

TEST(FourThreadSplit, SlicesAreCountOverFourAndTheRemainderIsDropped)
{
    SliceLog eight;
    RunFourThreads(&eight, recordSlice, 8);
    EXPECT_EQ(eight.slices, (std::set<std::pair<int, int>>{{0, 1}, {2, 3}, {4, 5}, {6, 7}}));

    SliceLog ten;
    RunFourThreads(&ten, recordSlice, 10);
    EXPECT_EQ(ten.slices, (std::set<std::pair<int, int>>{{0, 1}, {2, 3}, {4, 5}, {6, 7}}));
    EXPECT_EQ(ten.rows.count(8), 0u);
    EXPECT_EQ(ten.rows.count(9), 0u);

    SliceLog three;
    RunFourThreads(&three, recordSlice, 3);
    EXPECT_TRUE(three.rows.empty());
    EXPECT_EQ(three.slices.size(), 1u);  // four calls, each with first > last
    EXPECT_EQ(*three.slices.begin(), std::make_pair(0, -1));
}

// The rows of `out` that still hold the sentinel value.
std::set<int> untouchedRows(const Image& out, uint32_t sentinel)
{
    std::set<int> rows;
    for (int y = 0; y < out.rec->height; ++y)
        if (out.get(0, y, 0) == sentinel && out.get(out.rec->width - 1, y, 1) == sentinel)
            rows.insert(y);
    return rows;
}

class EngineRowJobs : public ::testing::Test {
protected:
    static constexpr int W = 8, H = 486;
    void SetUp() override
    {
        psf = std::make_unique<Image>(dotPsf(W, H));
        static_cast<uint8_t*>(psf->rec->pixels)[(H / 2) * W + W / 2 + 1] = 128;
        frame = std::make_unique<Image>(W, H, 4, 1);
        for (int y = 0; y < H; ++y)
            for (int x = 0; x < W; ++x)
                for (int c = 0; c < 4; ++c)
                    frame->set(x, y, c, static_cast<uint32_t>((x * 997 + y * 131 + c * 17) % 60000));
        out = std::make_unique<Image>(image_clone(frame->rec));
        out->fill(kSentinel);
    }
    static constexpr uint32_t kSentinel = 12345;
    std::unique_ptr<Image> psf, frame, out;
    PluginVZ context;  // the row runner's object
};

TEST_F(EngineRowJobs, FourThreadRunnerLeavesTheLastHeightModFourRows)
{
    FftEngine engine;
    engine.SetRowRunner(&context, PluginVZ::RunRows);
    ASSERT_TRUE(engine.PrepareKernel(psf->rec, 2));
    ASSERT_TRUE(engine.SetInput(frame->rec));
    ASSERT_TRUE(engine.Run(out->rec, 15));
    EXPECT_EQ(untouchedRows(*out, kSentinel), (std::set<int>{484, 485}));
}

TEST_F(EngineRowJobs, WithoutARunnerOrWithANullContextAllRowsAreDone)
{
    FftEngine inline_;
    ASSERT_TRUE(inline_.PrepareKernel(psf->rec, 2));
    ASSERT_TRUE(inline_.SetInput(frame->rec));
    ASSERT_TRUE(inline_.Run(out->rec, 15));
    EXPECT_TRUE(untouchedRows(*out, kSentinel).empty());

    out->fill(kSentinel);
    FftEngine nullContext;
    nullContext.SetRowRunner(nullptr, PluginVZ::RunRows);
    ASSERT_TRUE(nullContext.PrepareKernel(psf->rec, 2));
    ASSERT_TRUE(nullContext.SetInput(frame->rec));
    ASSERT_TRUE(nullContext.Run(out->rec, 15));
    EXPECT_TRUE(untouchedRows(*out, kSentinel).empty());
}

std::atomic<int> abortPolls{0};
void* abortContextSeen = nullptr;

int stopAtOnce(void* context)
{
    abortContextSeen = context;
    ++abortPolls;
    return 1;
}

TEST_F(EngineRowJobs, AbortThatSaysStopLeavesTheOutputAndRunStillSucceeds)
{
    FftEngine engine;
    ASSERT_TRUE(engine.PrepareKernel(psf->rec, 2));
    ASSERT_TRUE(engine.SetInput(frame->rec));
    engine.SetRowRunner(&context, PluginVZ::RunRows);
    int ignored = 0;
    engine.SetAbortCheck(&ignored, stopAtOnce);
    abortPolls = 0;
    EXPECT_TRUE(engine.Run(out->rec, 15));
    EXPECT_EQ(untouchedRows(*out, kSentinel).size(), static_cast<size_t>(H));
    EXPECT_GT(abortPolls.load(), 0);
    // The check gets the runner's context, not the argument given with it.
    EXPECT_EQ(abortContextSeen, &context);
}

TEST_F(EngineRowJobs, TooShortAPsfLoadsNothingAndTheKernelIsNaN)
{
    // Height 3 with the four-thread runner: no row is loaded, the sum is 0.
    Image shortPsf(dotPsf(W, 3));
    FftEngine engine;
    engine.SetRowRunner(&context, PluginVZ::RunRows);
    ASSERT_TRUE(engine.PrepareKernel(shortPsf.rec, 1));
    EXPECT_TRUE(std::isnan(engine.kernelReal[0]));
}

}  // namespace
