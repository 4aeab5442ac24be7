// The bright-emphasis curve against the hyperbola and power worked out here;
// FftEngine::Run in every mode against a direct convolution, and the behaviours
// of its passes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <tuple>

#include "engine_test_support.h"
#include "generic/library/PluginVZ.h"
#include "vzlibs/fftlib/fft_modes.h"

using namespace enginetest;

namespace {

// The curve's exponent above e = 50: (min(e, 500) - 50) x 0.03 + 1.
double exponentFor(double e) { return e > 50.0 ? (std::min(e, 500.0) - 50.0) * 0.03 + 1.0 : 1.0; }

TEST(EmphasisCurve, IdentityUpTo1001ThenHyperbolaAndPowerWithItsExponentCappedAt500)
{
    for (double e : {0.0, 0.5, 1.0, 1.001})
        for (double x : {-0.5, 0.0, 0.3, 1.0, 2.0}) {
            EXPECT_EQ(emphasise(x, e), x);
            EXPECT_EQ(deemphasise(x, e), x);
        }
    EXPECT_EQ(emphasise(2.0, 1.002), 1.0);
    EXPECT_EQ(emphasise(-1.0, 1.002), 0.0);
    EXPECT_EQ(deemphasise(-1.0, 1.002), 0.0);
    EXPECT_TRUE(std::isnan(emphasise(std::nan(""), 4.0)));
    EXPECT_TRUE(std::isnan(deemphasise(std::nan(""), 4.0)));
    // Worked values: e = 2 maps 0.5 to 0.2; e = 60 has exponent 1.3, e = 500 and
    // beyond 14.5 (the hyperbola itself keeps the uncapped e).
    EXPECT_NEAR(emphasise(0.5, 2.0), 0.2, 1e-15);
    EXPECT_NEAR(deemphasise(0.2, 2.0), 0.5, 1e-15);
    for (double e : {1.002, 3.0, 10.0, 50.0, 50.5, 60.0, 333.0, 500.0, 800.0})
        for (double x : {0.0, 0.05, 0.3, 0.5, 0.77, 0.99, 1.0}) {
            const double a = 1.0 / e, d = e - a;
            const double want = std::pow((1.0 / ((1.0 - x) * d + a) - a) / d, exponentFor(e));
            EXPECT_NEAR(emphasise(x, e), want, 1e-14 * std::max(want, 1e-3)) << "x=" << x << " e=" << e;
            // The inverse: the root first, then the hyperbola's inverse.
            const double root = std::pow(x, 1.0 / exponentFor(e));
            EXPECT_NEAR(deemphasise(x, e), 1.0 - (1.0 / (root * d + a) - a) / d, 1e-13) << "x=" << x << " e=" << e;
        }
}

struct ConvolutionCase {
    int sampleType;
    uint32_t mask;
    float emphasis;
    bool alphaEmphasis;
};

// A case in one mode: every mode agrees with the direct convolution, the
// single-precision one within two steps. The emphasis curve is steep in the
// darkest tones and lifts the transforms' rounding there: the bounds hold up to
// an emphasis of about 60.
class EngineConvolution : public ::testing::TestWithParam<std::tuple<ConvolutionCase, uint32_t>> {
protected:
    void SetUp() override { unsetenv(FFT_MODE_VARIABLE); }
    SavedVariable savedMode{FFT_MODE_VARIABLE};
};

TEST_P(EngineConvolution, AgreesWithDirectConvolution)
{
    const auto [cc, mode] = GetParam();
    const bool withAlpha = (cc.mask & 8) != 0;
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
    std::mt19937 rng(1234u + unsigned(cc.sampleType * 100 + cc.mask * 10 + cc.emphasis));
    for (const Size& s : sizes) {
        Image frame(s.w, s.h, 4, cc.sampleType);
        randomise(frame, rng);
        Image psf(randomPsf(s.w, s.h, s.reach, rng)), out(image_clone(frame.rec));
        FftEngine engine(mode);
        PluginVZ context;  // the four-thread runner where it visits every row
        if (s.h % 4 == 0)
            engine.SetRowRunner(&context, PluginVZ::RunRows);
        ASSERT_TRUE(engine.PrepareKernel(psf.rec, uint32_t(s.reach) + 1) && engine.SetInput(frame.rec));
        EXPECT_TRUE(mode == FFT_MODE_FFTW || (engine.paddedWidth == s.W && engine.paddedHeight == s.H)) << s.w;
        engine.SetBrightEmphasis(cc.emphasis);
        engine.SetAlphaEmphasis(cc.alphaEmphasis);
        ASSERT_TRUE(engine.Run(out.rec, cc.mask)) << engine.GetStatus();
        const std::vector<double> want = directConvolution(frame, psf.rec, cc.emphasis, cc.alphaEmphasis, withAlpha);
        out.each([&](int x, int y, int c) {
            const double expected = c < 3 || withAlpha ? want[(size_t(y) * s.w + x) * 4 + c] : frame.get(x, y, 3);
            ASSERT_NEAR(double(out.get(x, y, c)), expected, mode == FFT_MODE_FAST_FLOAT ? 2.0 : 1.0)
                << s.w << "x" << s.h << " at " << x << "," << y << " channel " << c;
        });
    }
}

INSTANTIATE_TEST_SUITE_P(
    TypesMasksEmphasisModes, EngineConvolution,
    ::testing::Combine(::testing::Values(ConvolutionCase{0, 7, 0.0f, false}, ConvolutionCase{0, 15, 0.0f, false},
                                         ConvolutionCase{1, 7, 0.0f, false}, ConvolutionCase{1, 15, 0.0f, false},
                                         ConvolutionCase{0, 15, 8.0f, true}, ConvolutionCase{1, 7, 60.0f, false},
                                         ConvolutionCase{1, 15, 8.0f, true}, ConvolutionCase{1, 15, 3.0f, false},
                                         ConvolutionCase{0, 7, 60.0f, false}, ConvolutionCase{1, 15, 60.0f, true}),
                       ::testing::Values(FFT_MODE_FFTW, FFT_MODE_FAST, FFT_MODE_FAST_FLOAT)));

TEST(EngineIdentityKernel, CentredWhitePixelGivesBackAnEightBitGreyExactlyWithOrWithoutEmphasis)
{
    Image psf(dotPsf(16, 12)), grey(16, 12, 3, 0), out(16, 12, 3, 0);
    grey.fill(128);
    FftEngine engine;
    ASSERT_TRUE(engine.PrepareKernel(psf.rec, 2) && engine.SetInput(grey.rec));
    for (float e : {0.0f, 30.0f}) {
        engine.SetBrightEmphasis(e);
        ASSERT_TRUE(engine.Run(out.rec, 7));
        out.each([&](int x, int y, int c) { ASSERT_EQ(out.get(x, y, c), 128u) << e; });
    }
}

double lumaAt(const Image& img, int x, int y)
{
    return 0.299 * img.get(x, y, 0) + 0.587 * img.get(x, y, 1) + 0.114 * img.get(x, y, 2);
}

TEST(EngineBorder, FlatFrameDarkensTowardsTheEdgesWithoutRepeatedEdges)
{
    // A disc of radius 4. With border mode 1 the margin keeps what earlier runs
    // left, here the zeros of a fresh engine's planes: the flat frame darkens
    // towards its edges.
    const int w = 24, h = 16, reach = 4;
    Image psf(dotPsf(w, h)), frame(w, h, 4, 1);
    for (int dy = -reach; dy <= reach; ++dy)
        for (int dx = -reach; dx <= reach; ++dx)
            static_cast<uint8_t*>(psf.rec->pixels)[(h / 2 + dy) * w + w / 2 + dx] = dx * dx + dy * dy <= 16 ? 255 : 0;
    frame.each([&](int x, int y, int c) { frame.set(x, y, c, c == 3 ? 65535u : 40000u - 10000u * c); });
    FftEngine bare;
    Image dark(image_clone(frame.rec));
    ASSERT_TRUE(bare.SetBorderMode(1) && bare.PrepareKernel(psf.rec, reach + 1) && bare.SetInput(frame.rec) &&
                bare.Run(dark.rec, 7));
    const double centre = lumaAt(dark, w / 2, h / 2);
    EXPECT_NEAR(centre, lumaAt(frame, 0, 0), 1.0);
    EXPECT_LT(lumaAt(dark, 0, 0), lumaAt(dark, 2, 2));
    EXPECT_LT(lumaAt(dark, 2, 2), centre);
}

TEST(EngineSampleTypes, ThirtyTwoBitReadsLumaFromTheFirstPixelsBytesAndNarrowsAlpha)
{
    const int w = 8, h = 8;
    Image psf(dotPsf(w, h));
    FftEngine engine;
    ASSERT_TRUE(engine.PrepareKernel(psf.rec, 1));
    // All black but the first pixel of row 2, whose channel 0 holds the bytes
    // 0x10, 0x20, 0x30. Its luma fills the whole row; its chroma is read from the
    // 32-bit sample of that one pixel.
    Image frame(w, h, 4, 2);
    frame.fill(0);
    frame.set(0, 2, 0, 0x00302010u);
    frame.set(5, 6, 3, 0x12345678u);
    Image out(image_clone(frame.rec));
    ASSERT_TRUE(engine.SetInput(frame.rec) && engine.Run(out.rec, 15));
    const double k = std::ldexp(1.0, -32), m = 4294967295.0;
    const double luma = (0x30 * 0.114 + 0x20 * 0.587 + 0x10 * 0.299) * k, red = 0x00302010u * k;
    for (int x = 0; x < w; ++x) {
        const double A = x == 0 ? 0.5 * red : 0.0, B = x == 0 ? -0.213267 * red : 0.0;
        EXPECT_NEAR(out.get(x, 2, 0), std::clamp(1.402 * A + luma, 0.0, 1.0) * m, 2.0) << x;
        EXPECT_NEAR(out.get(x, 2, 1), std::clamp(luma * 0.996036 - A * 0.714136 - B * 0.277836, 0.0, 1.0) * m, 2.0);
        EXPECT_NEAR(out.get(x, 2, 2), std::clamp(B * 1.430612 + luma * 1.020408, 0.0, 1.0) * m, 2.0);
    }
    EXPECT_LE(out.get(3, 5, 0), 2u);
    EXPECT_NEAR(double(out.get(5, 6, 3)), 0x5678, 1.0);  // alpha keeps the low 16 bits of its integer

}

}  // namespace
