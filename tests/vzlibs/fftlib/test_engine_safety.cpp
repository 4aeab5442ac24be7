// FftEngine safety: a refused or failed call never lets a later one touch
// planes of another size, and several engines share the process.
#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <thread>
#include <vector>

#include "engine_test_support.h"
#include "vzlibs/baselib/heap.h"

using namespace enginetest;

namespace {

class EngineSafety : public ::testing::Test {
protected:
    // A frame with a little structure, so that a convolution changes it.
    static void pattern(Image& frame)
    {
        for (int y = 0; y < frame.rec->height; ++y)
            for (int x = 0; x < frame.rec->width; ++x)
                for (int c = 0; c < 4; ++c)
                    frame.set(x, y, c, static_cast<uint32_t>((x * 811 + y * 307 + c * 5003) % 65536));
    }
    // Prepares a small kernel and runs once, so that planes and plans of S = 64 exist.
    void prepareSmall()
    {
        ASSERT_TRUE(engine.PrepareKernel(smallPsf.rec, 4));
        ASSERT_EQ(engine.paddedWidth, 64);
        ASSERT_TRUE(engine.SetInput(smallFrame.rec));
        ASSERT_TRUE(engine.Run(smallOut.rec, 15));
    }
    // After a refused or failed preparation for the big size, a frame of that size
    // is taken by SetInput (it compares with the size recorded first) and Run must
    // refuse it without writing anything.
    void expectBigFrameRefused()
    {
        ASSERT_TRUE(engine.SetInput(bigFrame.rec));
        Image out(image_clone(bigFrame.rec));
        EXPECT_FALSE(engine.Run(out.rec, 15));
        EXPECT_EQ(engine.GetStatus(), FFT_ERR_NOT_PREPARED);
        for (int y = 0; y < out.rec->height; y += 7)
            ASSERT_EQ(out.get(y % out.rec->width, y, 0), bigFrame.get(y % out.rec->width, y, 0));
    }

    FftEngine engine;
    Image smallPsf{dotPsf(40, 30)};
    Image smallFrame{40, 30, 4, 1};
    Image smallOut{40, 30, 4, 1};
    Image bigPsf{dotPsf(300, 200)};
    Image bigFrame{300, 200, 4, 1};
    void SetUp() override
    {
        pattern(smallFrame);
        pattern(bigFrame);
    }
};

TEST_F(EngineSafety, RefusedSizeLeavesNoWayToOverrunTheOldPlanes)
{
    prepareSmall();
    // 300 + 2 x 4000 is beyond every transform: status 1, old planes of S = 64 stay.
    EXPECT_FALSE(engine.PrepareKernel(bigPsf.rec, 4000));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_SIZE);
    EXPECT_EQ(engine.paddedWidth, 64);
    expectBigFrameRefused();
    // The small frame no longer matches the recorded PSF size either.
    EXPECT_FALSE(engine.SetInput(smallFrame.rec));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_INPUT_SIZE);
    // A good preparation puts everything right again.
    ASSERT_TRUE(engine.PrepareKernel(bigPsf.rec, 4));
    ASSERT_TRUE(engine.SetInput(bigFrame.rec));
    Image out(image_clone(bigFrame.rec));
    EXPECT_TRUE(engine.Run(out.rec, 15));
}

TEST_F(EngineSafety, FailedAllocationsAndPlansInPrepareKernelLeaveRunRefusing)
{
    // Each of the kernel's two planes, and its plan, failing in turn at a new size.
    const FailureScript scripts[] = {{FFT_RESOURCE_PLANE, 1}, {FFT_RESOURCE_PLANE, 2}, {FFT_RESOURCE_PLAN, 1}};
    for (FailureScript script : scripts) {
        prepareSmall();
        engine.SetFailureHook(&script, scriptedFailure);
        EXPECT_FALSE(engine.PrepareKernel(bigPsf.rec, 4));
        EXPECT_EQ(engine.GetStatus(), script.kind == FFT_RESOURCE_PLAN ? FFT_ERR_PLAN : FFT_ERR_MEMORY);
        engine.SetFailureHook(nullptr, nullptr);
        expectBigFrameRefused();
    }
}

TEST_F(EngineSafety, FailedAllocationsAndPlansInRunTouchNothingAndTheNextRunRecovers)
{
    ASSERT_TRUE(engine.PrepareKernel(smallPsf.rec, 4));
    ASSERT_TRUE(engine.SetInput(smallFrame.rec));
    // Run's plane requests: workReal, workSpectrum, then the three kept planes;
    // its plans: forward and inverse.
    std::vector<FailureScript> scripts;
    for (int n = 1; n <= 5; ++n)
        scripts.push_back({FFT_RESOURCE_PLANE, n});
    scripts.push_back({FFT_RESOURCE_PLAN, 1});
    scripts.push_back({FFT_RESOURCE_PLAN, 2});
    for (FailureScript script : scripts) {
        FftEngine fresh;
        ASSERT_TRUE(fresh.PrepareKernel(smallPsf.rec, 4));
        ASSERT_TRUE(fresh.SetInput(smallFrame.rec));
        fresh.SetFailureHook(&script, scriptedFailure);
        Image out(image_clone(smallFrame.rec));
        EXPECT_FALSE(fresh.Run(out.rec, 15)) << script.kind << " " << script.failAt;
        EXPECT_EQ(fresh.GetStatus(), script.kind == FFT_RESOURCE_PLAN ? FFT_ERR_PLAN : FFT_ERR_MEMORY);
        EXPECT_EQ(std::memcmp(out.rec->pixels, smallFrame.rec->pixels, size_t(out.rec->rowBytes) * 30), 0);
        fresh.SetFailureHook(nullptr, nullptr);
        EXPECT_TRUE(fresh.Run(out.rec, 15));
    }
}

// NORMAL allocations fail while armed: the kernel's scratch row comes from there.
bool scratchFails = false;
void* failingMalloc(void*, uint32_t size) { return scratchFails ? nullptr : std::malloc(size); }
void* plainRealloc(void*, void* p, uint32_t size) { return std::realloc(p, size); }
char* plainStrdup(void*, const char* s) { return strdup(s); }
void plainFree(void*, void* p) { std::free(p); }

TEST_F(EngineSafety, ScratchFailureLeavesTheNewSizeUnserved)
{
    prepareSmall();
    Image samesizePsf(dotPsf(44, 28));  // same S = 64, another image size
    Image samesizeFrame(44, 28, 4, 1);
    pattern(samesizeFrame);
    const hm_normal_allocator hooks{1, nullptr, failingMalloc, plainRealloc, plainStrdup, plainFree};
    hm_set_allocators(&hooks, nullptr);
    hm_configure(1, 0, 0);
    scratchFails = true;
    const bool prepared = engine.PrepareKernel(samesizePsf.rec, 4);
    scratchFails = false;
    hm_configure(0, 0, 0);
    hm_set_allocators(nullptr, nullptr);
    EXPECT_FALSE(prepared);
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_MEMORY);
    ASSERT_TRUE(engine.SetInput(samesizeFrame.rec));
    Image out(image_clone(samesizeFrame.rec));
    EXPECT_FALSE(engine.Run(out.rec, 15));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_NOT_PREPARED);
}

TEST_F(EngineSafety, RefusedPsfBuildsKeepTheKernelThatServesTheOldSize)
{
    ASSERT_TRUE(engine.BuildShapePsf(40, 30, 1, 3.0f, 3.0f, 0.0f, 0));
    // A shape too large for any transform and an image PSF of float samples.
    EXPECT_FALSE(engine.BuildShapePsf(300, 200, 1, 5000.0f, 5000.0f, 0.0f, 0));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_SIZE);
    expectBigFrameRefused();
    Image floats(300, 200, 1, IMAGE_F32);
    EXPECT_FALSE(engine.BuildImagePsf(floats.rec, 10, 10, 3.0f, 1.0f));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_PSF_TYPE);
    expectBigFrameRefused();
}

// Prepares a random kernel for a w x h frame and runs it `frames` times.
std::vector<uint16_t> render(FftEngine& engine, int w, int h, unsigned seed, int frames)
{
    std::mt19937 rng(seed);
    Image psf(randomPsf(w, h, 5, rng));
    Image frame(w, h, 4, 1);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            for (int c = 0; c < 4; ++c)
                frame.set(x, y, c, rng() % 65536);
    Image out(image_clone(frame.rec));
    if (!engine.PrepareKernel(psf.rec, 6) || !engine.SetInput(frame.rec))
        return {};
    for (int i = 0; i < frames; ++i)
        if (!engine.Run(out.rec, 15))
            return {};
    const auto* p = static_cast<const uint16_t*>(out.rec->pixels);
    return {p, p + size_t(w) * h * 4};
}

TEST(EngineProcess, TwoEnginesOnTwoThreadsMatchOneEngineAlone)
{
    std::vector<uint16_t> aloneA, aloneB;
    {
        FftEngine a, b;
        aloneA = render(a, 90, 60, 1, 1);
        aloneB = render(b, 150, 40, 2, 1);
    }
    ASSERT_FALSE(aloneA.empty());
    ASSERT_FALSE(aloneB.empty());

    auto survivor = std::make_unique<FftEngine>();
    auto leaver = std::make_unique<FftEngine>();
    std::vector<uint16_t> gotA, gotB;
    std::thread ta([&] { gotA = render(*survivor, 90, 60, 1, 4); });
    std::thread tb([&] { gotB = render(*leaver, 150, 40, 2, 4); });
    ta.join();
    tb.join();
    EXPECT_EQ(gotA, aloneA);
    EXPECT_EQ(gotB, aloneB);

    // One goes while the other keeps running and planning new sizes (each size
    // change gives fresh planes, so no earlier kernel lingers in them).
    std::thread tc([&] { gotB = render(*survivor, 150, 40, 2, 2); });
    leaver.reset();
    tc.join();
    EXPECT_EQ(gotB, aloneB);
    EXPECT_EQ(render(*survivor, 90, 60, 1, 1), aloneA);
}

}  // namespace
