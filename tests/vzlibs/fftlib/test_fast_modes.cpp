// The fast modes against mode 4, and VZ_FFT_MODE, which picks them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <tuple>

#include "engine_test_support.h"
#include "generic/library/PluginVZ.h"
#include "tests/vzlibs/baselib/test_support.h"
#include "vzlibs/fftlib/fft_mode_environment.h"

using namespace enginetest;

namespace {

// Sample type, mask and emphasis; alpha emphasis goes with emphasis under mask
// 15, and 60 takes the curve's steepened branch.
class FastModeAgreement : public ::testing::TestWithParam<std::tuple<int, uint32_t, float>> {
protected:
    void SetUp() override { unsetenv(FFT_MODE_VARIABLE); }
    SavedVariable savedMode{FFT_MODE_VARIABLE};
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
    // The emphasis curve is steep in the darkest tones and lifts the transforms'
    // rounding there: the bounds hold up to an emphasis of about 100 (double)
    // and 60 (single).
    const uint32_t modes[] = {FFT_MODE_FAST, FFT_MODE_FAST_FLOAT};
    const double bound[] = {1.0, 2.0};
    std::mt19937 rng(4321u + unsigned(type * 100 + mask * 10 + emphasis));
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
            EXPECT_TRUE(engine.PrepareKernel(psf.rec, uint32_t(s.reach) + 1) && engine.SetInput(frame.rec));
            engine.SetBrightEmphasis(emphasis);
            engine.SetAlphaEmphasis(emphasis > 0.0f);
            EXPECT_TRUE(engine.Run(out, mask)) << engine.GetStatus();
            EXPECT_TRUE(mode == FFT_MODE_FFTW || (engine.paddedWidth == s.W && engine.paddedHeight == s.H)) << s.w;
            return out;
        };
        const Image faithful(convolve(FFT_MODE_FFTW));
        for (int m = 0; m < 2; ++m) {
            const Image fast(convolve(modes[m]));
            double worst = 0.0;
            fast.each([&](int x, int y, int c) {
                worst = std::max(worst, std::fabs(double(fast.get(x, y, c)) - double(faithful.get(x, y, c))));
            });
            EXPECT_LE(worst, bound[m]) << "mode " << modes[m] << " on " << s.w << "x" << s.h;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(TypesMasksEmphasis, FastModeAgreement,
                         ::testing::Combine(::testing::Values(0, 1), ::testing::Values(7u, 15u),
                                            ::testing::Values(0.0f, 8.0f, 60.0f)));

TEST(FastModeVariable, NamesTheModeOfAnEngineAskedForModeFourAndWarnsOnceForAnUnknownValue)
{
    SavedVariable restore{FFT_MODE_VARIABLE};
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
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), c.shown ? 1 : 0) << text;
        if (c.shown) {
            EXPECT_NE(text.find("WARN"), std::string::npos) << text;
            EXPECT_NE(text.find(c.shown), std::string::npos) << text;
        }
    }
    // Mode 5 is mode 4 and follows the variable too; a mode asked for by name does not.
    setenv(FFT_MODE_VARIABLE, "fast", 1);
    EXPECT_EQ(FftEngine(5).mode, FFT_MODE_FAST);
    EXPECT_EQ(FftEngine(FFT_MODE_FAST_FLOAT).mode, FFT_MODE_FAST_FLOAT);
}

}  // namespace
