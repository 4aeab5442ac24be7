// The fast modes: their transform sizes, their agreement with mode 4, their
// refusals and what they allocate; and VZ_FFT_MODE, which picks them.
#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <tuple>

#include "engine_test_support.h"
#include "generic/library/PluginVZ.h"
#include "tests/vzlibs/baselib/test_support.h"
#include "vzlibs/fftlib/fft_mode_environment.h"

using namespace enginetest;

namespace {

constexpr uint32_t kFastModes[] = {FFT_MODE_FAST, FFT_MODE_FAST_FLOAT};

// Engines are made in the mode asked for: VZ_FFT_MODE is put aside meanwhile.
struct WithoutModeVariable {
    SavedVariable saved{FFT_MODE_VARIABLE};
    WithoutModeVariable() { unsetenv(FFT_MODE_VARIABLE); }
};

// The seven planes of one precision: five real planes, then the two spectra.
std::array<const void*, 7> planesOf(const FftEngine& e, bool single)
{
    const FftSinglePlanes& s = e.single;
    if (single)
        return {s.kernelReal, s.workReal, s.lumaPlane, s.chromaAPlane, s.chromaBPlane, s.kernelSpectrum, s.workSpectrum};
    return {e.kernelReal, e.workReal, e.lumaPlane, e.chromaAPlane, e.chromaBPlane, e.kernelSpectrum, e.workSpectrum};
}

TEST(FastModeSizes, EachSideIsTheSmallestOfFactorsTwoThreeFiveSevenAndOutOfRangeIsRefused)
{
    WithoutModeVariable noVariable;
    struct Case {
        int w, h;
        uint32_t margin;
        int W, H;  // 0: refused with status 1
    } cases[] = {
        // 1920 + 60 = 1980 = 2^2 3^2 5 11, and 1981 to 1999 each have a prime factor
        // above 7: 2000 = 2^4 5^3. 1080 + 60 = 1140 = 2^2 3 5 19 ... 1152 = 2^7 3^2.
        {1920, 1080, 30, 2000, 1152},
        // 2114 = 2 7 151 ... 2160 = 2^4 3^3 5; 1274 = 2 7^2 13 ... 1280 = 2^8 5.
        {1920, 1080, 97, 2160, 1280},
        // 7000 + 1192 = 8192 = 2^13, the largest side; 1292 = 2^2 17 19 ... 1296 = 2^4 3^4.
        {7000, 100, 596, 8192, 1296},
        {1, 1, 1, 3, 3},         // mode 4 would take 4 x 4
        {7, 5, 0, 7, 5},         // already fast sizes
        {1, 1, 0, 0, 0},         // the larger side below 2, as in mode 4
        {7000, 100, 597, 0, 0},  // 8194 above 8192
    };
    for (uint32_t mode : kFastModes)
        for (const Case& c : cases) {
            FftEngine engine(mode);
            Image psf(dotPsf(c.w, c.h));
            ASSERT_EQ(engine.PrepareKernel(psf.rec, c.margin), c.W != 0) << c.w << "x" << c.h << "+" << c.margin;
            EXPECT_EQ(engine.GetStatus(), c.W ? FFT_OK : FFT_ERR_SIZE);
            EXPECT_EQ(engine.paddedWidth, c.W ? c.W : -1);
            EXPECT_EQ(engine.paddedHeight, c.H ? c.H : -1);
            if (c.W) {
                EXPECT_EQ(engine.offsetX, (c.W - c.w) / 2);
                EXPECT_EQ(engine.offsetY, (c.H - c.h) / 2);
            }
        }
}

// Sample type, mask and emphasis; alpha emphasis goes with emphasis under mask
// 15, and 60 takes the curve's steepened branch.
class FastModeAgreement : public ::testing::TestWithParam<std::tuple<int, uint32_t, float>> {
    WithoutModeVariable noVariable;
};

TEST_P(FastModeAgreement, FastDoubleWithinOneStepAndFastSingleWithinTwoOfModeFour)
{
    const auto [type, mask, emphasis] = GetParam();
    // Frame, kernel reach (margin reach + 1) and the fast sides, worked by hand:
    // between them every factor 2, 3, 5 and 7, odd sides under odd and even
    // images, and an odd spectrum row count through the four-thread runner.
    struct Size {
        int w, h, reach, W, H;
    } sizes[] = {
        {37, 24, 3, 45, 32},  // 45 = 3^2 5, 32 = 2^5
        {41, 12, 3, 49, 20},  // 49 = 7^2, 20 = 2^2 5
        {33, 20, 2, 40, 27},  // 39 = 3 13 -> 40 = 2^3 5, 26 = 2 13 -> 27 = 3^3
        {17, 28, 3, 25, 36},  // 25 = 5^2, 36 = 2^2 3^2
        {26, 15, 2, 32, 21},  // 32 = 2^5, 21 = 3 7; odd height, rows inline
    };
    // Measured over these cases: at most 1 step in both fast modes. The emphasis
    // curve is steep in the darkest tones and lifts the transforms' rounding
    // there: the bounds hold up to an emphasis of about 100 (double) and 60
    // (single); from about 200 mode 4 differs from itself between two sizes.
    const double bound[] = {1.0, 2.0};
    std::mt19937 rng(4321u + static_cast<unsigned>(type * 100 + mask * 10 + emphasis));
    for (const Size& s : sizes) {
        Image frame(s.w, s.h, 4, type);
        randomise(frame, rng);
        Image psf(randomPsf(s.w, s.h, s.reach, rng));
        // One engine's output; the four-thread runner where it visits every row.
        auto convolve = [&](uint32_t mode) {
            FftEngine engine(mode);
            PluginVZ context;
            if (s.h % 4 == 0)
                engine.SetRowRunner(&context, PluginVZ::RunRows);
            ImageRec* out = image_clone(frame.rec);
            EXPECT_TRUE(engine.PrepareKernel(psf.rec, static_cast<uint32_t>(s.reach) + 1));
            EXPECT_TRUE(engine.SetInput(frame.rec));
            engine.SetBrightEmphasis(emphasis);
            engine.SetAlphaEmphasis(emphasis > 0.0f);
            EXPECT_TRUE(engine.Run(out, mask)) << engine.GetStatus();
            if (mode != FFT_MODE_FFTW) {
                EXPECT_EQ(engine.paddedWidth, s.W);
                EXPECT_EQ(engine.paddedHeight, s.H);
            }
            return out;
        };
        const Image faithful(convolve(FFT_MODE_FFTW));
        for (int m = 0; m < 2; ++m) {
            const Image fast(convolve(kFastModes[m]));
            double worst = 0.0;
            for (int y = 0; y < s.h; ++y)
                for (int x = 0; x < s.w; ++x)
                    for (int c = 0; c < 4; ++c)
                        worst = std::max(worst, std::fabs(double(fast.get(x, y, c)) - double(faithful.get(x, y, c))));
            EXPECT_LE(worst, bound[m]) << "mode " << kFastModes[m] << " on " << s.w << "x" << s.h;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(TypesMasksEmphasis, FastModeAgreement,
                         ::testing::Combine(::testing::Values(0, 1), ::testing::Values(7u, 15u),
                                            ::testing::Values(0.0f, 8.0f, 60.0f)));

// Refusals, failed resources and memory, in each fast mode. The small frame
// with margin 4 has sides 45 x 32.
class FastModeRefusals : public ::testing::TestWithParam<uint32_t> {
protected:
    void SetUp() override
    {
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
        EXPECT_EQ(std::memcmp(out.rec->pixels, bigFrame.rec->pixels, size_t(out.rec->rowBytes) * 200), 0);
    }
    WithoutModeVariable noVariable;
    const bool single = GetParam() == FFT_MODE_FAST_FLOAT;
    Image smallPsf{dotPsf(37, 24)}, smallFrame{37, 24, 4, 1};
    Image bigPsf{dotPsf(300, 200)}, bigFrame{300, 200, 4, 1};
};

TEST_P(FastModeRefusals, SizesFramesAndFailedResourcesRefusedAsInModeFour)
{
    FftEngine engine(GetParam());
    ASSERT_TRUE(engine.PrepareKernel(smallPsf.rec, 4));
    const auto planes = planesOf(engine, single);
    EXPECT_FALSE(engine.PrepareKernel(bigPsf.rec, 4000));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_SIZE);
    EXPECT_TRUE(engine.paddedWidth == 45 && engine.paddedHeight == 32 && planesOf(engine, single) == planes);
    expectBigFrameRefused(engine);

    ASSERT_TRUE(engine.PrepareKernel(smallPsf.rec, 4));
    EXPECT_FALSE(engine.SetInput(bigFrame.rec));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_INPUT_SIZE);
    ASSERT_TRUE(engine.SetInput(smallFrame.rec));
    Image otherSize(37, 23, 4, 1), twoChannels(37, 24, 2, 1);
    EXPECT_FALSE(engine.Run(otherSize.rec, 15));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_IMAGE_MISMATCH);
    EXPECT_FALSE(engine.Run(twoChannels.rec, 15));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_CHANNELS);

    // Each plane and plan failing in turn: PrepareKernel's two planes and plan at
    // a new size, then Run's workReal, workSpectrum, three kept planes and two
    // plans. Nothing is written, and the next call without the failure works.
    const std::pair<bool, FailureScript> failures[] = {  // (in Run, script)
        {false, {FFT_RESOURCE_PLANE, 1}}, {false, {FFT_RESOURCE_PLANE, 2}}, {false, {FFT_RESOURCE_PLAN, 1}},
        {true, {FFT_RESOURCE_PLANE, 1}},  {true, {FFT_RESOURCE_PLANE, 2}},  {true, {FFT_RESOURCE_PLANE, 3}},
        {true, {FFT_RESOURCE_PLANE, 4}},  {true, {FFT_RESOURCE_PLANE, 5}},  {true, {FFT_RESOURCE_PLAN, 1}},
        {true, {FFT_RESOURCE_PLAN, 2}}};
    for (auto [inRun, script] : failures) {
        FftEngine fresh(GetParam());
        ASSERT_TRUE(fresh.PrepareKernel(smallPsf.rec, 4));
        ASSERT_TRUE(fresh.SetInput(smallFrame.rec));
        fresh.SetFailureHook(&script, scriptedFailure);
        Image out(image_clone(smallFrame.rec));
        EXPECT_FALSE(inRun ? fresh.Run(out.rec, 15) : fresh.PrepareKernel(bigPsf.rec, 4)) << script.failAt;
        EXPECT_EQ(fresh.GetStatus(), script.kind == FFT_RESOURCE_PLAN ? FFT_ERR_PLAN : FFT_ERR_MEMORY);
        fresh.SetFailureHook(nullptr, nullptr);
        if (!inRun) {
            expectBigFrameRefused(fresh);
            continue;
        }
        EXPECT_EQ(std::memcmp(out.rec->pixels, smallFrame.rec->pixels, size_t(out.rec->rowBytes) * 24), 0);
        EXPECT_TRUE(fresh.Run(out.rec, 15));
    }
}

TEST_P(FastModeRefusals, PlanesAreOfTheModesSizeAndPrecisionOnly)
{
    FftEngine engine(GetParam());
    ASSERT_TRUE(engine.PrepareKernel(smallPsf.rec, 4));
    ASSERT_TRUE(engine.SetInput(smallFrame.rec));
    Image out(image_clone(smallFrame.rec));
    ASSERT_TRUE(engine.Run(out.rec, 15));
    // 45 x 32 samples a plane; 32 rows of 45 / 2 + 1 = 23 complex samples a
    // spectrum. FFTW's allocator rounds a block up by less than a page.
    const size_t sample = single ? sizeof(float) : sizeof(double);
    const auto planes = planesOf(engine, single);
    for (size_t i = 0; i < planes.size(); ++i) {
        const size_t bytes = i < 5 ? 45 * 32 * sample : 32 * 23 * 2 * sample;
        ASSERT_NE(planes[i], nullptr);
        EXPECT_GE(malloc_usable_size(const_cast<void*>(planes[i])), bytes) << i;
        EXPECT_LT(malloc_usable_size(const_cast<void*>(planes[i])), bytes + 4096) << i;
    }
    for (const void* other : planesOf(engine, !single))
        EXPECT_EQ(other, nullptr);
    EXPECT_TRUE(single ? !engine.kernelForwardPlan && !engine.workInversePlan
                       : !engine.single.kernelForwardPlan && !engine.single.workInversePlan);
}

INSTANTIATE_TEST_SUITE_P(FastModes, FastModeRefusals, ::testing::ValuesIn(kFastModes));

TEST(FastModeVariable, NamesTheModeOfAnEngineAskedForModeFourAndWarnsOnceForAnUnknownValue)
{
    WithoutModeVariable restore;
    struct Case {
        const char* value;  // null: unset
        uint32_t mode;
        const char* shown;  // the value as the warning line shows it; null: no line
    } cases[] = {{nullptr, FFT_MODE_FFTW, nullptr},   {"", FFT_MODE_FFTW, nullptr},
                 {"faithful", FFT_MODE_FFTW, nullptr}, {"fast", FFT_MODE_FAST, nullptr},
                 {"fast-float", FFT_MODE_FAST_FLOAT, nullptr}, {"Fast", FFT_MODE_FFTW, "\"Fast\""},
                 {"50%s%n", FFT_MODE_FFTW, "\"50?s?n\""}};  // the log formats its text again
    for (const Case& c : cases) {
        c.value ? setenv(FFT_MODE_VARIABLE, c.value, 1) : unsetenv(FFT_MODE_VARIABLE);
        LogCapture log;
        EXPECT_EQ(FftEngine().mode, c.mode) << (c.value ? c.value : "(unset)");
        const std::string text = log.take();
        if (!c.shown) {
            EXPECT_EQ(text, "");
            continue;
        }
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1) << text;
        EXPECT_NE(text.find("WARN"), std::string::npos) << text;
        EXPECT_NE(text.find(c.shown), std::string::npos) << text;
    }
    // Mode 5 is mode 4 and follows the variable too; a mode asked for by name does not.
    setenv(FFT_MODE_VARIABLE, "fast", 1);
    EXPECT_EQ(FftEngine(5).mode, FFT_MODE_FAST);
    EXPECT_EQ(FftEngine(FFT_MODE_FAST_FLOAT).mode, FFT_MODE_FAST_FLOAT);
    FftEngine chosen;
    Image psf(dotPsf(37, 24));
    ASSERT_TRUE(chosen.PrepareKernel(psf.rec, 4));
    EXPECT_TRUE(chosen.paddedWidth == 45 && chosen.paddedHeight == 32);
}

}  // namespace
