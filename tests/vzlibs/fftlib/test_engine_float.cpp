// FftEngine::ConvolveFloat against a direct convolution worked out here, with
// its edges, values beyond 0 to 1 and refusals; the highlight curve of scene-linear renders
// against its formula.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "engine_test_support.h"
#include "generic/library/PluginVZ.h"
#include "vzlibs/fftlib/fft_modes.h"
#include "vzlibs/fftlib/highlight.h"

using namespace enginetest;

namespace {

class FloatConvolution : public ::testing::TestWithParam<uint32_t> {
protected:
    void SetUp() override { unsetenv(FFT_MODE_VARIABLE); }
    SavedVariable savedMode{FFT_MODE_VARIABLE};
    // The bounds for values within 0 to 1: 1e-5 in double, 1e-3 in single precision.
    double bound() const { return GetParam() == FFT_MODE_FAST_FLOAT ? 1e-3 : 1e-5; }
    PluginVZ context;  // the four-thread runner, which drops a height's remainder in Run
};

TEST_P(FloatConvolution, InterleavedChannelsAgreeWithDirectConvolutionOnEveryRowAtBothEdges)
{
    std::mt19937 rng(77);
    std::uniform_real_distribution<float> unit(0.0f, 1.0f);
    for (const auto& [w, h] : {std::pair{37, 22}, std::pair{26, 15}}) {
        Image psf(randomPsf(w, h, 3, rng));
        FftEngine engine(GetParam());
        engine.SetRowRunner(&context, PluginVZ::RunRows);
        ASSERT_TRUE(engine.PrepareKernel(psf.rec, 4));
        std::vector<float> rgba(size_t(w) * h * 4), result(rgba.size(), -1.0f);
        // Channel 2 runs far above 1 and below 0: nothing is clamped.
        for (size_t i = 0; i < rgba.size(); ++i)
            rgba[i] = i % 4 == 2 ? 53.0f * unit(rng) - 3.0f : unit(rng);
        for (int c = 0; c < 4; ++c) {
            // Channel 3 is convolved in place, the others into a second frame.
            float* into = c == 3 ? rgba.data() + c : result.data() + c;
            std::vector<float> plane(size_t(w) * h);
            for (size_t i = 0; i < plane.size(); ++i)
                plane[i] = rgba[i * 4 + c];
            const FftEdge edge = c == 1 ? FFT_EDGE_ZERO : FFT_EDGE_REPEAT;
            ASSERT_TRUE(engine.ConvolveFloat({rgba.data() + c, 4, w * 4}, {into, 4, w * 4}, w, h, edge));
            const std::vector<double> want = directPlane(plane, w, h, psf.rec, edge == FFT_EDGE_REPEAT);
            for (size_t i = 0; i < plane.size(); ++i)
                ASSERT_NEAR(into[i * 4], want[i], (c == 2 ? 50.0 : 1.0) * bound()) << w << "x" << h << " channel " << c << " at " << i;
        }
    }
}

TEST_P(FloatConvolution, RefusesWithoutAKernelOfTheFramesSizeOrWithoutSamplesAndLeavesTheDestination)
{
    const int w = 16, h = 12;
    std::vector<float> source(size_t(w) * h, 1.0f), destination(source.size(), 7.0f);
    const FftFloatChannel in{source.data(), 1, w}, out{destination.data(), 1, w};
    FftEngine engine(GetParam());
    EXPECT_FALSE(engine.ConvolveFloat(in, out, w, h));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_NOT_PREPARED);
    Image psf(dotPsf(w, h));
    ASSERT_TRUE(engine.PrepareKernel(psf.rec, 1));
    EXPECT_FALSE(engine.ConvolveFloat(in, out, w, h - 1));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_NOT_PREPARED);
    EXPECT_FALSE(engine.ConvolveFloat({nullptr, 1, w}, out, w, h));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_ARGUMENT);
    EXPECT_FALSE(engine.ConvolveFloat(in, out, w, h, static_cast<FftEdge>(2)));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_ARGUMENT);
    for (float v : destination)
        ASSERT_EQ(v, 7.0f);
    ASSERT_TRUE(engine.ConvolveFloat(in, out, w, h));
    EXPECT_NEAR(destination[5 * w + 7], 1.0f, bound());
}

INSTANTIATE_TEST_SUITE_P(Modes, FloatConvolution, ::testing::Values(FFT_MODE_FFTW, FFT_MODE_FAST, FFT_MODE_FAST_FLOAT));

// f(x) = x + (e - 1)(x - t)^2 / (2t) above t, the identity below.
double curve(double x, double e, double t) { return x <= t ? x : x + (e - 1.0) * (x - t) * (x - t) / (2.0 * t); }

TEST(HighlightCurve, IdentityUpToTheThresholdThenTheParabolaAndExactlyInverted)
{
    for (double t : {0.25, 1.0, 4.0})
        for (double e : {1.5, 20.0, 100.0}) {
            for (double x : {-2.0, 0.0, 0.5 * t, t})
                EXPECT_EQ(highlight_curve(x, e, t), x);
            for (double x : {1.001 * t, 1.5 * t, 2.0 * t, 10.0 * t, 40.0}) {
                EXPECT_NEAR(highlight_curve(x, e, t), curve(x, e, t), 1e-12 * curve(x, e, t));
                EXPECT_NEAR(highlight_inverse(curve(x, e, t), e, t), x, 1e-12 * x);
            }
        }
    EXPECT_EQ(highlight_curve(40.0, 1.0, 1.0), 40.0);
    EXPECT_EQ(highlight_inverse(40.0, 1.0, 1.0), 40.0);
}

TEST(HighlightCurve, PixelsAboveTheThresholdTakeTheCurvesLuminanceAndKeepTheirHueAndAlpha)
{
    const double e = 10.0, t = 1.0;
    float pixels[] = {8.0f, 4.0f, 2.0f, 0.5f,  0.9f, 0.9f, 0.9f, 1.0f,  -1.0f, 3.0f, 0.0f, 1.0f};
    const float before[12] = {8.0f, 4.0f, 2.0f, 0.5f, 0.9f, 0.9f, 0.9f, 1.0f, -1.0f, 3.0f, 0.0f, 1.0f};
    highlight_emphasise_pixels(pixels, 3, e, t);
    auto luminance = [](const float* p) { return 0.2126 * p[0] + 0.7152 * p[1] + 0.0722 * p[2]; };
    for (int p : {0, 2}) {
        const double l = luminance(before + 4 * p), gain = curve(l, e, t) / l;
        for (int c = 0; c < 3; ++c)
            EXPECT_NEAR(pixels[4 * p + c], before[4 * p + c] * gain, 1e-5 * std::abs(before[4 * p + c] * gain));
        EXPECT_EQ(pixels[4 * p + 3], before[4 * p + 3]);
    }
    for (int c = 0; c < 4; ++c)
        EXPECT_EQ(pixels[4 + c], before[4 + c]);  // luminance 0.9: below the threshold
    highlight_deemphasise_pixels(pixels, 3, e, t);
    for (int i = 0; i < 12; ++i)
        EXPECT_NEAR(pixels[i], before[i], 1e-5 * std::max(1.0f, std::abs(before[i])));
}

}  // namespace
