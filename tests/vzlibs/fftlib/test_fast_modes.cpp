// The fast modes: their transform sizes, their agreement with mode 4, their
// refusals and what they allocate; and VZ_FFT_MODE, which picks them.
#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <tuple>

#include "engine_test_support.h"
#include "generic/library/RunFourThreads.h"
#include "tests/vzlibs/baselib/log_capture.h"
#include "vzlibs/fftlib/fft_mode_environment.h"

using namespace enginetest;

namespace {

constexpr uint32_t kFastModes[] = {FFT_MODE_FAST, FFT_MODE_FAST_FLOAT};

// Engines are made in the mode asked for: VZ_FFT_MODE is put aside meanwhile.
struct WithoutModeVariable {
    SavedVariable saved{FFT_MODE_VARIABLE};
    WithoutModeVariable() { unsetenv(FFT_MODE_VARIABLE); }
};

// The kernel plane's sample i, whichever the precision.
double kernelSample(const FftEngine& engine, size_t i)
{
    return engine.mode == FFT_MODE_FAST_FLOAT ? engine.single.kernelReal[i] : engine.kernelReal[i];
}

class FastModeSizes : public ::testing::Test {
    WithoutModeVariable noVariable;
};

TEST_F(FastModeSizes, EachSideIsTheSmallestOfFactorsTwoThreeFiveSevenAndOutOfRangeIsRefused)
{
    struct Case {
        int w, h;
        uint32_t margin;
        int W, H;  // 0: refused with status 1
    } cases[] = {
        // 1920 + 60 = 1980 = 2^2 3^2 5 11, and 1981 to 1999 each have a prime
        // factor above 7: 2000 = 2^4 5^3. 1080 + 60 = 1140 = 2^2 3 5 19, and so
        // up to 1152 = 2^7 3^2.
        {1920, 1080, 30, 2000, 1152},
        // 1920 + 194 = 2114 = 2 7 151 ... 2160 = 2^4 3^3 5; 1080 + 194 = 1274 =
        // 2 7^2 13 ... 1280 = 2^8 5.
        {1920, 1080, 97, 2160, 1280},
        // 7000 + 1192 = 8192 = 2^13, the largest side; 100 + 1192 = 1292 =
        // 2^2 17 19 ... 1296 = 2^4 3^4.
        {7000, 100, 596, 8192, 1296},
        {1, 1, 1, 3, 3},  // 3 x 3 where mode 4 takes 4 x 4
        {7, 5, 0, 7, 5},  // no margin: both already fast sizes
        {1, 1, 0, 0, 0},  // the larger side below 2, as in mode 4
        {7000, 100, 597, 0, 0},  // 8194 above 8192
    };
    for (uint32_t mode : kFastModes)
        for (const Case& c : cases) {
            FftEngine engine(mode);
            Image psf(dotPsf(c.w, c.h));
            ASSERT_EQ(engine.PrepareKernel(psf.rec, c.margin), c.W != 0) << c.w << "x" << c.h << "+" << c.margin;
            if (c.W == 0) {
                EXPECT_EQ(engine.GetStatus(), FFT_ERR_SIZE);
                EXPECT_EQ(engine.paddedWidth, -1);
                continue;
            }
            EXPECT_EQ(engine.paddedWidth, c.W);
            EXPECT_EQ(engine.paddedHeight, c.H);
            EXPECT_EQ(engine.offsetX, (c.W - c.w) / 2);
            EXPECT_EQ(engine.offsetY, (c.H - c.h) / 2);
        }
}

TEST_F(FastModeSizes, KernelCentreLandsWhereModeFourPutsItOnOddSidesToo)
{
    // The centre pixel (w/2, h/2) goes to the origin for an even image, and one
    // sample left of (or above) it for an odd one, whatever the side.
    struct Case {
        int w, h, W, H;
    } cases[] = {{8, 6, 8, 6}, {7, 5, 7, 5}, {11, 13, 12, 14}};  // 12 = 2^2 3, 14 = 2 7
    for (uint32_t mode : kFastModes)
        for (const Case& c : cases) {
            FftEngine engine(mode);
            Image psf(dotPsf(c.w, c.h));
            ASSERT_TRUE(engine.PrepareKernel(psf.rec, 0));
            ASSERT_EQ(engine.paddedWidth, c.W);
            ASSERT_EQ(engine.paddedHeight, c.H);
            const int x = c.w % 2 ? c.W - 1 : 0, y = c.h % 2 ? c.H - 1 : 0;
            EXPECT_NEAR(kernelSample(engine, static_cast<size_t>(y) * c.W + x), 1.0, 1e-7) << c.w << "x" << c.h;
        }
}

// Sample type, mask and emphasis (alpha emphasis goes with it under mask 15);
// 60 takes the curve's steepened branch.
using AgreementCase = std::tuple<int, uint32_t, float>;

class FastModeAgreement : public ::testing::TestWithParam<AgreementCase> {
    WithoutModeVariable noVariable;
};

// Runs one engine of `mode` on the frame; the four-thread runner where the
// height lets it visit every row, inline otherwise.
Image convolve(uint32_t mode, const Image& frame, const Image& psf, uint32_t margin, uint32_t mask, float e,
               int* W, int* H)
{
    FftEngine engine(mode);
    int context = 1;
    if (frame.rec->height % 4 == 0)
        engine.SetRowRunner(&context, RunEngineJobOnFourThreads);
    Image out(image_clone(frame.rec));
    EXPECT_TRUE(engine.PrepareKernel(psf.rec, margin));
    EXPECT_TRUE(engine.SetInput(frame.rec));
    engine.SetBrightEmphasis(e);
    engine.SetAlphaEmphasis(e > 0.0f);
    EXPECT_TRUE(engine.Run(out.rec, mask)) << engine.GetStatus();
    *W = engine.paddedWidth;
    *H = engine.paddedHeight;
    return Image(image_clone(out.rec));
}

TEST_P(FastModeAgreement, FastDoubleWithinOneStepAndFastSingleWithinTwoOfModeFour)
{
    const auto [type, mask, emphasis] = GetParam();
    // Frame, kernel reach (margin reach + 1) and the fast sides, worked by hand:
    // between them every factor 2, 3, 5 and 7, odd sides under odd and even
    // images, and odd spectrum row counts through the four-thread runner.
    struct Size {
        int w, h, reach, W, H;
    } sizes[] = {
        {37, 24, 3, 45, 32},  // 45 = 3^2 5, 32 = 2^5
        {41, 12, 3, 49, 20},  // 49 = 7^2, 20 = 2^2 5
        {33, 20, 2, 40, 27},  // 39 = 3 13 -> 40 = 2^3 5, 26 = 2 13 -> 27 = 3^3
        {17, 28, 3, 25, 36},  // 25 = 5^2, 36 = 2^2 3^2
        {26, 15, 2, 32, 21},  // 32 = 2^5, 21 = 3 7; odd height, inline
    };
    // Measured over these cases: at most 1 step in both fast modes, the float
    // one more often. The emphasis curve is steep in the darkest tones and lifts
    // the transforms' rounding there: the bounds hold up to an emphasis of about
    // 100 (double) and 60 (single); from about 200 even mode 4 differs from
    // itself by many steps between two transform sizes.
    const double bound[] = {1.0, 2.0};
    std::mt19937 rng(4321u + static_cast<unsigned>(type * 100 + mask * 10) + static_cast<unsigned>(emphasis));
    for (const Size& s : sizes) {
        Image frame(s.w, s.h, 4, type);
        randomise(frame, rng);
        Image psf(randomPsf(s.w, s.h, s.reach, rng));
        const uint32_t margin = static_cast<uint32_t>(s.reach) + 1;
        int W = 0, H = 0;
        const Image faithful = convolve(FFT_MODE_FFTW, frame, psf, margin, mask, emphasis, &W, &H);
        for (int m = 0; m < 2; ++m) {
            const Image fast = convolve(kFastModes[m], frame, psf, margin, mask, emphasis, &W, &H);
            ASSERT_EQ(W, s.W);
            ASSERT_EQ(H, s.H);
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

// Refusals, failed resources and memory, in each fast mode.
class FastModeRefusals : public ::testing::TestWithParam<uint32_t> {
protected:
    static void pattern(Image& frame)
    {
        for (int y = 0; y < frame.rec->height; ++y)
            for (int x = 0; x < frame.rec->width; ++x)
                for (int c = 0; c < 4; ++c)
                    frame.set(x, y, c, static_cast<uint32_t>((x * 811 + y * 307 + c * 5003) % 65536));
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
    void SetUp() override
    {
        pattern(smallFrame);
        pattern(bigFrame);
    }
    WithoutModeVariable noVariable;
    Image smallPsf{dotPsf(37, 24)};  // margin 4: 45 x 32
    Image smallFrame{37, 24, 4, 1};
    Image bigPsf{dotPsf(300, 200)};
    Image bigFrame{300, 200, 4, 1};
};

TEST_P(FastModeRefusals, SizesAndMismatchedFramesAsInModeFour)
{
    FftEngine engine(GetParam());
    ASSERT_TRUE(engine.PrepareKernel(smallPsf.rec, 4));
    const void* plane = engine.mode == FFT_MODE_FAST ? static_cast<void*>(engine.kernelReal) : engine.single.kernelReal;
    EXPECT_FALSE(engine.PrepareKernel(bigPsf.rec, 4000));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_SIZE);
    EXPECT_EQ(engine.paddedWidth, 45);
    EXPECT_EQ(engine.paddedHeight, 32);
    EXPECT_EQ(engine.mode == FFT_MODE_FAST ? static_cast<void*>(engine.kernelReal) : engine.single.kernelReal, plane);
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
}

TEST_P(FastModeRefusals, FailedPlanesAndPlansLeaveNothingHalfDoneAndTheNextCallRecovers)
{
    // PrepareKernel at a new size: each of its two planes and its plan.
    for (FailureScript script : {FailureScript{FFT_RESOURCE_PLANE, 1}, FailureScript{FFT_RESOURCE_PLANE, 2},
                                 FailureScript{FFT_RESOURCE_PLAN, 1}}) {
        FftEngine engine(GetParam());
        ASSERT_TRUE(engine.PrepareKernel(smallPsf.rec, 4));
        engine.SetFailureHook(&script, scriptedFailure);
        EXPECT_FALSE(engine.PrepareKernel(bigPsf.rec, 4));
        EXPECT_EQ(engine.GetStatus(), script.kind == FFT_RESOURCE_PLAN ? FFT_ERR_PLAN : FFT_ERR_MEMORY);
        engine.SetFailureHook(nullptr, nullptr);
        expectBigFrameRefused(engine);
    }
    // Run: workReal, workSpectrum and the three kept planes; both plans.
    std::vector<FailureScript> scripts;
    for (int n = 1; n <= 5; ++n)
        scripts.push_back({FFT_RESOURCE_PLANE, n});
    scripts.push_back({FFT_RESOURCE_PLAN, 1});
    scripts.push_back({FFT_RESOURCE_PLAN, 2});
    for (FailureScript script : scripts) {
        FftEngine engine(GetParam());
        ASSERT_TRUE(engine.PrepareKernel(smallPsf.rec, 4));
        ASSERT_TRUE(engine.SetInput(smallFrame.rec));
        engine.SetFailureHook(&script, scriptedFailure);
        Image out(image_clone(smallFrame.rec));
        EXPECT_FALSE(engine.Run(out.rec, 15)) << script.kind << " " << script.failAt;
        EXPECT_EQ(engine.GetStatus(), script.kind == FFT_RESOURCE_PLAN ? FFT_ERR_PLAN : FFT_ERR_MEMORY);
        EXPECT_EQ(std::memcmp(out.rec->pixels, smallFrame.rec->pixels, size_t(out.rec->rowBytes) * 24), 0);
        engine.SetFailureHook(nullptr, nullptr);
        EXPECT_TRUE(engine.Run(out.rec, 15));
    }
}

TEST_P(FastModeRefusals, PlanesAreOfTheModesSizeAndPrecisionOnly)
{
    FftEngine engine(GetParam());
    ASSERT_TRUE(engine.PrepareKernel(smallPsf.rec, 4));
    ASSERT_TRUE(engine.SetInput(smallFrame.rec));
    Image out(image_clone(smallFrame.rec));
    ASSERT_TRUE(engine.Run(out.rec, 15));

    // 45 x 32 samples a plane, 32 rows of 45 / 2 + 1 = 23 complex samples a
    // spectrum. FFTW's allocator rounds a block up by less than a page.
    const bool single = GetParam() == FFT_MODE_FAST_FLOAT;
    const size_t sample = single ? sizeof(float) : sizeof(double);
    const size_t planeBytes = 45 * 32 * sample, spectrumBytes = 32 * 23 * 2 * sample;
    const FftSinglePlanes& s = engine.single;
    const void* planes[] = {single ? static_cast<const void*>(s.kernelReal) : engine.kernelReal,
                            single ? static_cast<const void*>(s.workReal) : engine.workReal,
                            single ? static_cast<const void*>(s.lumaPlane) : engine.lumaPlane,
                            single ? static_cast<const void*>(s.chromaAPlane) : engine.chromaAPlane,
                            single ? static_cast<const void*>(s.chromaBPlane) : engine.chromaBPlane};
    const void* spectra[] = {single ? static_cast<const void*>(s.kernelSpectrum) : engine.kernelSpectrum,
                             single ? static_cast<const void*>(s.workSpectrum) : engine.workSpectrum};
    for (const void* p : planes) {
        ASSERT_NE(p, nullptr);
        EXPECT_GE(malloc_usable_size(const_cast<void*>(p)), planeBytes);
        EXPECT_LT(malloc_usable_size(const_cast<void*>(p)), planeBytes + 4096);
    }
    for (const void* p : spectra) {
        ASSERT_NE(p, nullptr);
        EXPECT_GE(malloc_usable_size(const_cast<void*>(p)), spectrumBytes);
        EXPECT_LT(malloc_usable_size(const_cast<void*>(p)), spectrumBytes + 4096);
    }
    // Nothing of the other precision.
    if (single) {
        for (const void* p : {static_cast<const void*>(engine.kernelReal), static_cast<const void*>(engine.workReal),
                              static_cast<const void*>(engine.kernelSpectrum), static_cast<const void*>(engine.lumaPlane),
                              static_cast<const void*>(engine.kernelForwardPlan),
                              static_cast<const void*>(engine.workInversePlan)})
            EXPECT_EQ(p, nullptr);
    } else {
        for (const void* p : {static_cast<const void*>(s.kernelReal), static_cast<const void*>(s.workReal),
                              static_cast<const void*>(s.kernelSpectrum), static_cast<const void*>(s.lumaPlane),
                              static_cast<const void*>(s.kernelForwardPlan), static_cast<const void*>(s.workInversePlan)})
            EXPECT_EQ(p, nullptr);
    }
}

INSTANTIATE_TEST_SUITE_P(FastModes, FastModeRefusals, ::testing::ValuesIn(kFastModes));

TEST(FastModeVariable, NamesTheModeOfAnEngineAskedForModeFourAndWarnsOnceForAnUnknownValue)
{
    WithoutModeVariable restore;
    struct Case {
        const char* value;  // null: unset
        uint32_t mode;
        const char* warning;  // the value as the warning shows it; null: no line
    } cases[] = {
        {nullptr, FFT_MODE_FFTW, nullptr},           {"", FFT_MODE_FFTW, nullptr},
        {"faithful", FFT_MODE_FFTW, nullptr},        {"fast", FFT_MODE_FAST, nullptr},
        {"fast-float", FFT_MODE_FAST_FLOAT, nullptr}, {"Fast", FFT_MODE_FFTW, "\"Fast\""},
        {"50%s%n", FFT_MODE_FFTW, "\"50?s?n\""},
    };
    for (const Case& c : cases) {
        c.value ? setenv(FFT_MODE_VARIABLE, c.value, 1) : unsetenv(FFT_MODE_VARIABLE);
        LogCapture log;
        FftEngine engine;
        EXPECT_EQ(engine.mode, c.mode) << (c.value ? c.value : "(unset)");
        const std::string text = log.take();
        if (!c.warning) {
            EXPECT_EQ(text, "");
            continue;
        }
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1) << text;
        EXPECT_NE(text.find("WARN"), std::string::npos) << text;
        EXPECT_NE(text.find(c.warning), std::string::npos) << text;
    }
    // Mode 5 is mode 4 and follows the variable too; a mode asked for by name does not.
    setenv(FFT_MODE_VARIABLE, "fast", 1);
    EXPECT_EQ(FftEngine(5).mode, FFT_MODE_FAST);
    EXPECT_EQ(FftEngine(FFT_MODE_FAST_FLOAT).mode, FFT_MODE_FAST_FLOAT);
    FftEngine chosen;
    Image psf(dotPsf(37, 24));
    ASSERT_TRUE(chosen.PrepareKernel(psf.rec, 4));
    EXPECT_EQ(chosen.paddedWidth, 45);
    EXPECT_EQ(chosen.paddedHeight, 32);
}

}  // namespace
