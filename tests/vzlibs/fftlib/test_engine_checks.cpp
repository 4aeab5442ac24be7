// FftEngine's rules in every mode: the size rule, refusals and their codes,
// the planes, failed resources; then VZ_FFT_MODE, row runners and abort checks.
#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <tuple>

#include "engine_test_support.h"
#include "generic/library/PluginVZ.h"
#include "vzlibs/baselib/heap.h"
#include "tests/vzlibs/baselib/test_support.h"
#include "vzlibs/fftlib/fft_modes.h"

using namespace enginetest;

namespace {

// Engines are made in the mode asked for: VZ_FFT_MODE is put aside meanwhile.
class EngineModes : public ::testing::TestWithParam<uint32_t> {
protected:
    void SetUp() override
    {
        unsetenv(FFT_MODE_VARIABLE);
        std::mt19937 rng(9);
        randomise(smallFrame, rng);
        randomise(bigFrame, rng);
    }
    // A frame of the big size, taken by SetInput after a refused or failed
    // preparation for it, is refused by Run with nothing written.
    void expectBigFrameRefused(FftEngine& engine)
    {
        ASSERT_TRUE(engine.SetInput(bigFrame.rec));
        Image out(image_clone(bigFrame.rec));
        EXPECT_FALSE(engine.Run(out.rec, 15));
        EXPECT_EQ(engine.GetStatus(), FFT_ERR_NOT_PREPARED);
        EXPECT_TRUE(out.sameBytes(bigFrame));
    }
    // The kernel plane of the engine's precision.
    const void* kernelPlane(const FftEngine& e) const { return single ? (const void*)e.single.kernelReal : e.kernelReal; }
    SavedVariable savedMode{FFT_MODE_VARIABLE};
    const bool fast = GetParam() != FFT_MODE_FFTW, single = GetParam() == FFT_MODE_FAST_FLOAT;
    // An identity kernel: the odd width's pixel ceil(37 / 2) lands at the origin.
    Image smallPsf{dotPsf(37, 24, 1)}, smallFrame{37, 24, 4, 1};
    Image bigPsf{dotPsf(300, 200)}, bigFrame{300, 200, 4, 1};
};

TEST_P(EngineModes, SizeRuleWorkedExamplesAndARefusalKeepsThePlanes)
{
    // Mode 4: one power-of-two side S. Fast modes: each side the smallest at or
    // above image + 2 x margin with no prime factor above 7. Larger side 2..8192
    // in mode 4, 2..16384 in the fast modes.
    struct Case {
        int w, h;
        uint32_t margin;
        int S, W, H;  // 0: refused with status 1
    } cases[] = {
        {720, 486, 5, 1024, 735, 500},     // 730 .. 734 and 496 .. 499 have a factor above 7; 735 = 3 5 7^2, 500 = 2^2 5^3
        {1920, 1080, 30, 2048, 2000, 1152},  // 1980 = 2^2 3^2 5 11 ... 2000 = 2^4 5^3; 1140 ... 1152 = 2^7 3^2
        {1920, 1080, 97, 4096, 2160, 1280},  // 2114 ... 2160 = 2^4 3^3 5; 1274 ... 1280 = 2^8 5
        {7000, 100, 596, 8192, 8192, 1296},  // 8192 = 2^13, the largest side; 1292 ... 1296 = 2^4 3^4
        {1, 1, 0, 0, 0, 0},                  // the larger side below 2
        {1, 1, 1, 4, 3, 3},
        {7, 5, 0, 8, 7, 5},
        {7000, 100, 597, 0, 8232, 1296},  // 8194 above 8192 for mode 4; 8232 = 2^3 3 7^3 for the fast modes
        {16000, 4, 192, 0, 16384, 392},   // 16384 = 2^14, the fast modes' largest side; 388 ... 392 = 2^3 7^2
        {16000, 4, 193, 0, 0, 0},         // 16386 above 16384
        {7000, 100, 0xFFFFFFFFu, 0, 0, 0},
    };
    FftEngine engine(GetParam());
    int lastW = -1, lastH = -1;
    for (const Case& c : cases) {
        Image psf(dotPsf(c.w, c.h));
        const void* plane = kernelPlane(engine);
        const int W = fast ? c.W : c.S, H = fast ? c.H : c.S;
        ASSERT_EQ(engine.PrepareKernel(psf.rec, c.margin), W != 0) << c.w << "x" << c.h << "+" << c.margin;
        EXPECT_EQ(engine.psfWidth, c.w);  // taken before the size check
        if (W == 0) {
            EXPECT_EQ(engine.GetStatus(), FFT_ERR_SIZE);
            EXPECT_EQ(engine.kernelSource, nullptr);
            EXPECT_TRUE(engine.paddedWidth == lastW && engine.paddedHeight == lastH && kernelPlane(engine) == plane);
            continue;
        }
        EXPECT_EQ(engine.GetStatus(), FFT_OK);
        EXPECT_EQ(engine.paddedWidth, lastW = W);
        EXPECT_EQ(engine.paddedHeight, lastH = H);
        EXPECT_EQ(engine.offsetX, (W - c.w) / 2);
        EXPECT_EQ(engine.offsetY, (H - c.h) / 2);
    }
}

TEST_P(EngineModes, EveryRefusalIsAStatusAndFalseAndTouchesNothing)
{
    FftEngine engine(GetParam());
    Image out(image_clone(smallFrame.rec)), shorter(37, 23, 4, 1), otherType(37, 24, 4, 0), twoChannels(37, 24, 2, 1);
    auto expectStatus = [&engine](bool result, int status) {
        EXPECT_FALSE(result);
        EXPECT_EQ(engine.GetStatus(), status);
    };
    expectStatus(engine.SetInput(smallFrame.rec), FFT_ERR_INPUT_SIZE);  // before any kernel
    expectStatus(engine.Run(out.rec, 7), FFT_ERR_NOT_PREPARED);
    expectStatus(engine.PrepareKernel(nullptr, 3), FFT_ERR_NOT_PREPARED);
    ASSERT_TRUE(engine.PrepareKernel(smallPsf.rec, 4));
    for (ImageRec* bad : {static_cast<ImageRec*>(nullptr), bigFrame.rec, shorter.rec})
        expectStatus(engine.SetInput(bad), FFT_ERR_INPUT_SIZE);
    ASSERT_TRUE(engine.SetInput(smallFrame.rec));
    otherType.fill(9);
    for (ImageRec* bad : {otherType.rec, shorter.rec, static_cast<ImageRec*>(nullptr)})
        expectStatus(engine.Run(bad, 7), FFT_ERR_IMAGE_MISMATCH);
    EXPECT_EQ(otherType.get(3, 3, 0), 9u);
    expectStatus(engine.Run(twoChannels.rec, 7), FFT_ERR_CHANNELS);
    for (uint32_t mask : {3u, 8u, 0u})
        expectStatus(engine.Run(out.rec, mask), FFT_ERR_CHANNELS);
    EXPECT_TRUE(out.sameBytes(smallFrame));
    for (int mode : {0, 3})
        expectStatus(engine.SetBorderMode(mode), FFT_ERR_ARGUMENT);
    EXPECT_EQ(engine.borderMode, 2);
    engine.SetBrightEmphasis(-1.0f);
    EXPECT_EQ(engine.brightEmphasis, 0.0f);
    engine.SetBrightEmphasis(500.5f);
    EXPECT_EQ(engine.brightEmphasis, 500.0f);
    engine.SetBrightEmphasis(0.0f);
    // Another channel count is fine: a three-channel output of a four-channel frame.
    Image three(37, 24, 3, 1);
    EXPECT_TRUE(engine.Run(three.rec, 15));
    EXPECT_NEAR(double(three.get(4, 4, 0)), smallFrame.get(4, 4, 0), 1.0);

    // A size beyond every transform (300 + 2 x 8100 above 16384): the new size is not served.
    expectStatus(engine.PrepareKernel(bigPsf.rec, 8100), FFT_ERR_SIZE);
    expectBigFrameRefused(engine);
    expectStatus(engine.SetInput(smallFrame.rec), FFT_ERR_INPUT_SIZE);
    // A refused image PSF (float samples) changes nothing either.
    Image floats(300, 200, 1, IMAGE_F32);
    expectStatus(engine.BuildImagePsf(floats.rec, 10, 10, 3.0f, 1.0f), FFT_ERR_PSF_TYPE);
    expectBigFrameRefused(engine);
    // A good preparation puts everything right again.
    Image bigOut(image_clone(bigFrame.rec));
    EXPECT_TRUE(engine.PrepareKernel(bigPsf.rec, 4) && engine.SetInput(bigFrame.rec) && engine.Run(bigOut.rec, 15));
}

// NORMAL allocations fail while armed: the kernel's scratch row comes from there.
bool scratchFails = false;
void* failingMalloc(void*, uint32_t size) { return scratchFails ? nullptr : std::malloc(size); }
void* plainRealloc(void*, void* p, uint32_t size) { return std::realloc(p, size); }
char* plainStrdup(void*, const char* s) { return strdup(s); }
void plainFree(void*, void* p) { std::free(p); }

TEST_P(EngineModes, FailedResourcesTouchNothingAndLeaveTheSizeUnserved)
{
    // Each plane and plan failing in turn: PrepareKernel's two planes and plan at
    // a new size, then Run's workReal, workSpectrum, three kept planes and two
    // plans. Nothing is written, and the next call without the failure works.
    const std::pair<bool, FailureScript> failures[] = {  // (in Run, script)
        {false, {FFT_RESOURCE_PLANE, 1}}, {false, {FFT_RESOURCE_PLANE, 2}}, {false, {FFT_RESOURCE_PLAN, 1}},
        {true, {FFT_RESOURCE_PLANE, 1}},  {true, {FFT_RESOURCE_PLANE, 2}},  {true, {FFT_RESOURCE_PLANE, 3}},
        {true, {FFT_RESOURCE_PLANE, 4}},  {true, {FFT_RESOURCE_PLANE, 5}},  {true, {FFT_RESOURCE_PLAN, 1}},
        {true, {FFT_RESOURCE_PLAN, 2}}};
    for (auto [inRun, script] : failures) {
        FftEngine engine(GetParam());
        ASSERT_TRUE(engine.PrepareKernel(smallPsf.rec, 4) && engine.SetInput(smallFrame.rec));
        engine.SetFailureHook(&script, scriptedFailure);
        Image out(image_clone(smallFrame.rec));
        EXPECT_FALSE(inRun ? engine.Run(out.rec, 15) : engine.PrepareKernel(bigPsf.rec, 4)) << script.failAt;
        EXPECT_EQ(engine.GetStatus(), script.kind == FFT_RESOURCE_PLAN ? FFT_ERR_PLAN : FFT_ERR_MEMORY);
        engine.SetFailureHook(nullptr, nullptr);
        if (!inRun) {
            expectBigFrameRefused(engine);
            continue;
        }
        EXPECT_TRUE(out.sameBytes(smallFrame));
        EXPECT_TRUE(engine.Run(out.rec, 15));
    }
    // The scratch row failing while another kernel of the same size is prepared:
    // the kernel half made does not serve.
    FftEngine engine(GetParam());
    ASSERT_TRUE(engine.PrepareKernel(smallPsf.rec, 4));
    Image otherPsf(dotPsf(37, 24));
    const hm_normal_allocator hooks{1, nullptr, failingMalloc, plainRealloc, plainStrdup, plainFree};
    hm_set_allocators(&hooks, nullptr);
    hm_configure(1, 0, 0);
    scratchFails = true;
    const bool prepared = engine.PrepareKernel(otherPsf.rec, 4);
    scratchFails = false;
    hm_configure(0, 0, 0);
    hm_set_allocators(nullptr, nullptr);
    EXPECT_TRUE(!prepared && engine.GetStatus() == FFT_ERR_MEMORY);
    Image out(image_clone(smallFrame.rec));
    ASSERT_TRUE(engine.SetInput(smallFrame.rec));
    EXPECT_FALSE(engine.Run(out.rec, 15));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_NOT_PREPARED);
}

INSTANTIATE_TEST_SUITE_P(Modes, EngineModes, ::testing::Values(FFT_MODE_FFTW, FFT_MODE_FAST, FFT_MODE_FAST_FLOAT));

TEST(FastModeVariable, NamesTheModeOfAnEngineAskedForModeFourAndWarnsOnceForAnUnknownValue)
{
    SavedVariable restore{FFT_MODE_VARIABLE};
    // The value (null: unset), the mode, and the value as the one warning line
    // shows it (the log formats its text again); null: no line.
    const std::tuple<const char*, uint32_t, const char*> cases[] = {
        {nullptr, FFT_MODE_FFTW, nullptr},   {"", FFT_MODE_FFTW, nullptr},
        {"faithful", FFT_MODE_FFTW, nullptr}, {"fast", FFT_MODE_FAST, nullptr},
        {"fast-float", FFT_MODE_FAST_FLOAT, nullptr}, {"Fast", FFT_MODE_FFTW, "WARN"},
        {"50%s%n", FFT_MODE_FFTW, "\"50?s?n\""}};
    for (const auto& [value, mode, shown] : cases) {
        value ? setenv(FFT_MODE_VARIABLE, value, 1) : unsetenv(FFT_MODE_VARIABLE);
        LogCapture log;
        EXPECT_EQ(FftEngine().mode, mode) << (value ? value : "(unset)");
        const std::string text = log.take();
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), shown ? 1 : 0) << text;
        EXPECT_TRUE(!shown || text.find(shown) != std::string::npos) << text;
    }
    // Mode 5 is mode 4 and follows the variable too; a mode asked for by name does not.
    setenv(FFT_MODE_VARIABLE, "fast", 1);
    EXPECT_EQ(FftEngine(5).mode, FFT_MODE_FAST);
    EXPECT_EQ(FftEngine(FFT_MODE_FAST_FLOAT).mode, FFT_MODE_FAST_FLOAT);
}

std::atomic<int> abortPolls{0};
void* abortContextSeen = nullptr;
int stopAtOnce(void* context)
{
    abortContextSeen = context;
    ++abortPolls;
    return 1;
}

TEST(EngineRowJobs, RunnerDropsTheLastHeightModFourRowsAndAnAbortLeavesTheOutput)
{
    const int W = 8, H = 486;
    const uint32_t sentinel = 12345;
    Image psf(dotPsf(W, H, 1)), frame(W, H, 4, 1);
    frame.each([&](int x, int y, int c) { frame.set(x, y, c, uint32_t((x * 997 + y * 131 + c * 17) % 60000)); });
    PluginVZ context;
    // Rows of the output still holding the sentinel. The runner cuts a job in
    // four slices of count / 4 rows and drops the rest; with no runner or no
    // context the engine does every row itself.
    auto untouchedRows = [&](FftEngine& engine) {
        Image out(W, H, 4, 1);
        out.fill(sentinel);
        EXPECT_TRUE(engine.PrepareKernel(psf.rec, 2) && engine.SetInput(frame.rec) && engine.Run(out.rec, 15));
        std::vector<int> rows;
        for (int y = 0; y < H; ++y)
            if (out.get(0, y, 0) == sentinel && out.get(W - 1, y, 1) == sentinel)
                rows.push_back(y);
        return rows;
    };
    FftEngine runner, inlined, nullContext, stopped;
    runner.SetRowRunner(&context, PluginVZ::RunRows);
    EXPECT_EQ(untouchedRows(runner), (std::vector<int>{484, 485}));
    EXPECT_TRUE(untouchedRows(inlined).empty());
    nullContext.SetRowRunner(nullptr, PluginVZ::RunRows);
    EXPECT_TRUE(untouchedRows(nullContext).empty());
    // An abort check that says stop: nothing is written, Run still succeeds.
    int ignored = 0;
    stopped.SetRowRunner(&context, PluginVZ::RunRows);
    stopped.SetAbortCheck(&ignored, stopAtOnce);
    EXPECT_EQ(untouchedRows(stopped).size(), size_t(H));
    EXPECT_GT(abortPolls.load(), 0);
    EXPECT_EQ(abortContextSeen, &context);  // the runner's context, not the argument given with the check

    // A PSF shorter than four rows: the runner loads nothing, the sum is 0.
    Image shortPsf(dotPsf(W, 3));
    ASSERT_TRUE(runner.PrepareKernel(shortPsf.rec, 1));
    EXPECT_TRUE(std::isnan(runner.kernelReal[0]));
}

}  // namespace
