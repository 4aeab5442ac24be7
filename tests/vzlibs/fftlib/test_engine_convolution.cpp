// FftEngine::Run against a direct convolution, and the behaviours of its passes.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "engine_test_support.h"

using namespace enginetest;

namespace {

struct ConvolutionCase {
    int sampleType;
    uint32_t mask;
    float emphasis;
    bool alphaEmphasis;
};

class EngineConvolution : public ::testing::TestWithParam<ConvolutionCase> {};

TEST_P(EngineConvolution, AgreesWithDirectConvolutionWithinOneUnit)
{
    const ConvolutionCase cc = GetParam();
    const int w = 22, h = 14, reach = 3;
    const bool withAlpha = (cc.mask & 8) != 0;
    std::mt19937 rng(1234u + static_cast<unsigned>(cc.sampleType * 10 + cc.mask));
    for (int trial = 0; trial < 3; ++trial) {
        Image frame(w, h, 4, cc.sampleType);
        randomise(frame, rng);
        Image psf(randomPsf(w, h, reach, rng));
        Image out(image_clone(frame.rec));
        FftEngine engine;
        ASSERT_TRUE(engine.PrepareKernel(psf.rec, reach + 1));
        ASSERT_TRUE(engine.SetInput(frame.rec));
        engine.SetBrightEmphasis(cc.emphasis);
        engine.SetAlphaEmphasis(cc.alphaEmphasis);
        ASSERT_TRUE(engine.Run(out.rec, cc.mask)) << engine.GetStatus();

        const std::vector<double> want = directConvolution(frame, psf.rec, cc.emphasis, cc.alphaEmphasis, withAlpha);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                for (int c = 0; c < 4; ++c) {
                    const double expected = c < 3 || withAlpha ? want[(static_cast<size_t>(y) * w + x) * 4 + c]
                                                               : frame.get(x, y, 3);  // mask 7 leaves alpha
                    ASSERT_NEAR(static_cast<double>(out.get(x, y, c)), expected, 1.0)
                        << "trial " << trial << " at " << x << "," << y << " channel " << c;
                }
    }
}

INSTANTIATE_TEST_SUITE_P(TypesMasksEmphasis, EngineConvolution,
                         ::testing::Values(ConvolutionCase{0, 7, 0.0f, false}, ConvolutionCase{0, 15, 0.0f, false},
                                           ConvolutionCase{1, 7, 0.0f, false}, ConvolutionCase{1, 15, 0.0f, false},
                                           ConvolutionCase{0, 15, 8.0f, true}, ConvolutionCase{1, 7, 60.0f, false},
                                           ConvolutionCase{1, 15, 8.0f, true}, ConvolutionCase{1, 15, 3.0f, false}));

TEST(EngineIdentityKernel, CentredWhitePixelGivesBackTheFrame)
{
    const int w = 16, h = 12;
    Image psf(dotPsf(w, h));
    FftEngine engine;
    ASSERT_TRUE(engine.PrepareKernel(psf.rec, 2));
    std::mt19937 rng(7);
    // Up to moderate emphasis every value survives; far above it the darkest tones
    // fall below the transform's rounding.
    for (float e : {0.0f, 5.0f, 40.0f}) {
        Image frame(w, h, 4, 1);
        randomise(frame, rng);
        Image out(image_clone(frame.rec));
        out.fill(0);
        ASSERT_TRUE(engine.SetInput(frame.rec));
        engine.SetBrightEmphasis(e);
        engine.SetAlphaEmphasis(1);
        ASSERT_TRUE(engine.Run(out.rec, 15));
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                for (int c = 0; c < 4; ++c)
                    ASSERT_NEAR(static_cast<double>(out.get(x, y, c)), frame.get(x, y, c), 1.0) << "e=" << e;
    }
    // An 8-bit grey of 128 comes back as exactly 128, emphasis or not.
    Image grey(w, h, 3, 0);
    grey.fill(128);
    Image greyOut(image_clone(grey.rec));
    greyOut.fill(0);
    engine.SetBrightEmphasis(30.0f);
    ASSERT_TRUE(engine.SetInput(grey.rec));
    ASSERT_TRUE(engine.Run(greyOut.rec, 7));
    for (int c = 0; c < 3; ++c)
        EXPECT_EQ(greyOut.get(5, 5, c), 128u);
}

double lumaAt(const Image& img, int x, int y)
{
    return 0.299 * img.get(x, y, 0) + 0.587 * img.get(x, y, 1) + 0.114 * img.get(x, y, 2);
}

TEST(EngineBorder, FlatFrameStaysFlatWithRepeatedEdgesAndDarkensWithout)
{
    const int w = 24, h = 16, reach = 4;
    Image psf(blankPsf(w, h));
    for (int dy = -reach; dy <= reach; ++dy)
        for (int dx = -reach; dx <= reach; ++dx)
            if (dx * dx + dy * dy <= reach * reach)
                static_cast<uint8_t*>(psf.rec->pixels)[(h / 2 + dy) * w + w / 2 + dx] = 255;
    Image frame(w, h, 4, 1);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            for (int c = 0; c < 4; ++c)
                frame.set(x, y, c, c == 3 ? 65535u : 40000u - 10000u * c);

    FftEngine engine;
    ASSERT_TRUE(engine.PrepareKernel(psf.rec, reach + 1));
    ASSERT_TRUE(engine.SetInput(frame.rec));
    Image repeated(image_clone(frame.rec));
    ASSERT_TRUE(engine.Run(repeated.rec, 15));
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            for (int c = 0; c < 4; ++c)
                ASSERT_NEAR(static_cast<double>(repeated.get(x, y, c)), frame.get(x, y, c), 1.0) << x << "," << y;

    // A fresh engine: with border mode 1 the margin keeps what earlier runs left,
    // and here it should hold the zeros of new planes.
    FftEngine bare;
    ASSERT_TRUE(bare.SetBorderMode(1));
    ASSERT_TRUE(bare.PrepareKernel(psf.rec, reach + 1));
    ASSERT_TRUE(bare.SetInput(frame.rec));
    Image dark(image_clone(frame.rec));
    ASSERT_TRUE(bare.Run(dark.rec, 7));
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
    ASSERT_TRUE(engine.SetInput(frame.rec));
    ASSERT_TRUE(engine.Run(out.rec, 15));

    const double k = std::ldexp(1.0, -32), m = 4294967295.0;
    const double luma = (0x30 * 0.114 + 0x20 * 0.587 + 0x10 * 0.299) * k;
    const double red = 0x00302010u * k;
    for (int x = 0; x < w; ++x) {
        const double A = x == 0 ? 0.5 * red : 0.0, B = x == 0 ? -0.213267 * red : 0.0;
        EXPECT_NEAR(out.get(x, 2, 0), std::clamp(1.402 * A + luma, 0.0, 1.0) * m, 2.0) << x;
        EXPECT_NEAR(out.get(x, 2, 1), std::clamp(luma * 0.996036 - A * 0.714136 - B * 0.277836, 0.0, 1.0) * m, 2.0);
        EXPECT_NEAR(out.get(x, 2, 2), std::clamp(B * 1.430612 + luma * 1.020408, 0.0, 1.0) * m, 2.0);
    }
    EXPECT_LE(out.get(3, 5, 0), 2u);
    // Alpha keeps only the low 16 bits of its integer.
    EXPECT_NEAR(static_cast<double>(out.get(5, 6, 3)), 0x5678, 1.0);
}

TEST(EngineSampleTypes, FloatFramesPassEveryCheckAndAreLeftAlone)
{
    Image psf(dotPsf(8, 8, 1));
    FftEngine engine;
    ASSERT_TRUE(engine.PrepareKernel(psf.rec, 1));
    Image frame(8, 8, 4, 3), out(8, 8, 4, 3);
    auto* in = static_cast<float*>(frame.rec->pixels);
    auto* o = static_cast<float*>(out.rec->pixels);
    for (int i = 0; i < 8 * 8 * 4; ++i) {
        in[i] = static_cast<float>(i % 7) / 7.0f;
        o[i] = -1.0f;
    }
    ASSERT_TRUE(engine.SetInput(frame.rec));
    EXPECT_TRUE(engine.Run(out.rec, 15));
    for (int i = 0; i < 8 * 8 * 4; ++i)
        ASSERT_EQ(o[i], -1.0f);
}

}  // namespace

namespace {

// The colour weights are single-precision constants widened to double; the
// tolerances below are far tighter than the gap to the decimal values.
double single(double v) { return static_cast<double>(static_cast<float>(v)); }

TEST(EngineConstants, LoadWeightsAreSinglePrecisionInEveryPlane)
{
    const int w = 8, h = 8;  // margin 0: the frame fills the plane
    Image psf(dotPsf(w, h));
    FftEngine engine;
    ASSERT_TRUE(engine.PrepareKernel(psf.rec, 0));
    ASSERT_EQ(engine.paddedWidth, 8);
    Image frame(w, h, 4, 1);
    std::mt19937 rng(99);
    randomise(frame, rng);
    Image out(image_clone(frame.rec));
    ASSERT_TRUE(engine.SetInput(frame.rec));
    ASSERT_TRUE(engine.Run(out.rec, 15));
    const double k = 1.0 / 65535.0, scale = 1.0 / 64.0;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const double c0 = frame.get(x, y, 0) * k, c1 = frame.get(x, y, 1) * k, c2 = frame.get(x, y, 2) * k;
            const size_t i = size_t(y) * 8 + x;
            EXPECT_NEAR(engine.lumaPlane[i] * scale, c2 * single(0.114) + c1 * single(0.587) + c0 * single(0.299),
                        1e-13);
            EXPECT_NEAR(engine.chromaAPlane[i] * scale,
                        c0 * single(0.5) - c1 * single(0.418688) - c2 * single(0.081312) + 0.5, 1e-13);
            EXPECT_NEAR(engine.chromaBPlane[i] * scale,
                        c2 * single(0.617689) - (c1 * single(0.418688) + c0 * single(0.213267)) + 0.5, 1e-13);
        }
}

TEST(EngineConstants, StoreMatrixIsSinglePrecisionAtThirtyTwoBits)
{
    // Flat 32-bit frame: R = 2^31, B = 3 x 2^30, G = 0. The luma of 32-bit frames
    // comes from the low bytes of the first pixel, here all zero, so R and B
    // depend on the chroma terms alone, at 2^32 steps to 1.0.
    Image psf(dotPsf(8, 8));
    FftEngine engine;
    ASSERT_TRUE(engine.PrepareKernel(psf.rec, 0));
    Image frame(8, 8, 4, 2);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            frame.set(x, y, 0, 0x80000000u);
            frame.set(x, y, 1, 0u);
            frame.set(x, y, 2, 0xC0000000u);
        }
    Image out(image_clone(frame.rec));
    ASSERT_TRUE(engine.SetInput(frame.rec));
    ASSERT_TRUE(engine.Run(out.rec, 7));
    auto expected = [](bool singleConstants) {
        auto c = [singleConstants](double v) { return singleConstants ? single(v) : v; };
        const double k = std::ldexp(1.0, -32), r = 0x80000000u * k, b = 0xC0000000u * k;
        const double A = r * c(0.5) - b * c(0.081312);
        const double B = b * c(0.617689) - r * c(0.213267);
        const double m = 4294967295.0;
        return std::make_pair(std::floor(c(1.402) * A * m + 0.5), std::floor(B * c(1.430612) * m + 0.5));
    };
    const auto want = expected(true), decimal = expected(false);
    ASSERT_GT(std::abs(want.first - decimal.first), 8.0);  // the two sets of constants are told apart
    ASSERT_GT(std::abs(want.second - decimal.second), 8.0);
    EXPECT_NEAR(double(out.get(3, 3, 0)), want.first, 1.0);
    EXPECT_NEAR(double(out.get(3, 3, 2)), want.second, 1.0);
    EXPECT_EQ(out.get(3, 3, 1), 0u);  // green falls below 0 and is clamped
}

}  // namespace
