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
    std::mt19937 rng(1234u + static_cast<unsigned>(cc.sampleType * 10 + cc.mask));
    const uint32_t top = static_cast<uint32_t>(maxOfType(cc.sampleType));
    std::uniform_int_distribution<uint32_t> sample(0, top);

    for (int trial = 0; trial < 3; ++trial) {
        Image frame(w, h, 4, cc.sampleType);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                for (int c = 0; c < 4; ++c)
                    frame.set(x, y, c, sample(rng));
        Image psf(randomPsf(w, h, reach, rng));
        Image out(image_clone(frame.rec));

        FftEngine engine;
        ASSERT_TRUE(engine.PrepareKernel(psf.rec, reach + 1));
        ASSERT_TRUE(engine.SetInput(frame.rec));
        engine.SetBrightEmphasis(cc.emphasis);
        engine.SetAlphaEmphasis(cc.alphaEmphasis);
        ASSERT_TRUE(engine.Run(out.rec, cc.mask)) << engine.GetStatus();

        const bool withAlpha = (cc.mask & 8) != 0;
        const std::vector<double> want = directConvolution(frame, psf.rec, cc.emphasis, cc.alphaEmphasis, withAlpha);
        double worst = 0;
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                for (int c = 0; c < 3; ++c)
                    worst = std::max(worst, std::fabs(out.get(x, y, c) - want[(static_cast<size_t>(y) * w + x) * 4 + c]));
                if (withAlpha)
                    worst = std::max(worst, std::fabs(out.get(x, y, 3) - want[(static_cast<size_t>(y) * w + x) * 4 + 3]));
                else
                    EXPECT_EQ(out.get(x, y, 3), frame.get(x, y, 3)) << "alpha must stay with mask 7";
            }
        EXPECT_LE(worst, 1.0) << "trial " << trial;
    }
}

INSTANTIATE_TEST_SUITE_P(TypesMasksEmphasis, EngineConvolution,
                         ::testing::Values(ConvolutionCase{0, 7, 0.0f, false}, ConvolutionCase{0, 15, 0.0f, false},
                                           ConvolutionCase{1, 7, 0.0f, false}, ConvolutionCase{1, 15, 0.0f, false},
                                           ConvolutionCase{0, 7, 8.0f, false}, ConvolutionCase{0, 15, 8.0f, true},
                                           ConvolutionCase{1, 7, 60.0f, false}, ConvolutionCase{1, 15, 8.0f, true},
                                           ConvolutionCase{1, 15, 3.0f, false}));

TEST(EngineIdentityKernel, CentredWhitePixelGivesBackTheFrame)
{
    const int w = 16, h = 12;
    Image psf(blankPsf(w, h));
    static_cast<uint8_t*>(psf.rec->pixels)[(h / 2) * w + w / 2] = 255;

    FftEngine engine;
    ASSERT_TRUE(engine.PrepareKernel(psf.rec, 2));
    const int S = engine.paddedWidth;
    EXPECT_EQ(S, 32);
    EXPECT_NEAR(engine.kernelReal[0], 1.0, 1e-12);
    double elsewhere = 0;
    for (int i = 1; i < S * S; ++i)
        elsewhere += std::fabs(engine.kernelReal[i]);
    EXPECT_EQ(elsewhere, 0.0);

    std::mt19937 rng(7);
    // Up to moderate emphasis every value survives; far above it the darkest
    // tones fall below the transform's rounding, which is why 200 is not here.
    for (float e : {0.0f, 5.0f, 40.0f}) {
        Image frame(w, h, 4, 1);
        std::uniform_int_distribution<uint32_t> sample(0, 65535);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                for (int c = 0; c < 4; ++c)
                    frame.set(x, y, c, sample(rng));
        Image out(image_clone(frame.rec));
        out.fill(0);
        ASSERT_TRUE(engine.SetInput(frame.rec));
        engine.SetBrightEmphasis(e);
        engine.SetAlphaEmphasis(1);
        ASSERT_TRUE(engine.Run(out.rec, 15));
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                for (int c = 0; c < 4; ++c)
                    ASSERT_NEAR(static_cast<double>(out.get(x, y, c)), frame.get(x, y, c), 1.0)
                        << "e=" << e << " at " << x << "," << y << " channel " << c;
    }

    // An 8-bit grey of 128 comes back as exactly 128.
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

// Luma of an output pixel, for comparing brightness.
double lumaAt(const Image& img, int x, int y)
{
    return 0.299 * img.get(x, y, 0) + 0.587 * img.get(x, y, 1) + 0.114 * img.get(x, y, 2);
}

TEST(EngineBorder, FlatFrameStaysFlatWithRepeatedEdgesAndDarkensWithout)
{
    const int w = 24, h = 16, reach = 4;
    Image psf(blankPsf(w, h));
    auto* p = static_cast<uint8_t*>(psf.rec->pixels);
    for (int dy = -reach; dy <= reach; ++dy)
        for (int dx = -reach; dx <= reach; ++dx)
            if (dx * dx + dy * dy <= reach * reach)
                p[(h / 2 + dy) * w + w / 2 + dx] = 255;

    Image frame(w, h, 4, 1);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            frame.set(x, y, 0, 40000);
            frame.set(x, y, 1, 30000);
            frame.set(x, y, 2, 20000);
            frame.set(x, y, 3, 65535);
        }

    FftEngine engine;
    ASSERT_TRUE(engine.PrepareKernel(psf.rec, reach + 1));
    ASSERT_TRUE(engine.SetInput(frame.rec));
    Image repeated(image_clone(frame.rec));
    ASSERT_TRUE(engine.Run(repeated.rec, 15));
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            for (int c = 0; c < 4; ++c)
                ASSERT_NEAR(static_cast<double>(repeated.get(x, y, c)), frame.get(x, y, c), 1.0) << x << "," << y;

    // A fresh engine: with border mode 1 the margin keeps whatever earlier runs
    // left in it, and here it should hold the zeros of a new plane.
    FftEngine bare;
    ASSERT_TRUE(bare.SetBorderMode(1));
    ASSERT_TRUE(bare.PrepareKernel(psf.rec, reach + 1));
    ASSERT_TRUE(bare.SetInput(frame.rec));
    Image dark(image_clone(frame.rec));
    ASSERT_TRUE(bare.Run(dark.rec, 7));
    const double centre = lumaAt(dark, w / 2, h / 2);
    EXPECT_NEAR(centre, lumaAt(frame, 0, 0), 1.0);
    EXPECT_LT(lumaAt(dark, 0, 0), centre - 5000.0);
    EXPECT_LT(lumaAt(dark, 0, 0), lumaAt(dark, 2, 2));
    EXPECT_LT(lumaAt(dark, 2, 2), centre);
}

TEST(EngineSampleTypes, ThirtyTwoBitLumaIsReadFromTheFirstPixelsBytes)
{
    const int w = 8, h = 8;
    Image psf(blankPsf(w, h));
    static_cast<uint8_t*>(psf.rec->pixels)[(h / 2) * w + w / 2] = 255;
    FftEngine engine;
    ASSERT_TRUE(engine.PrepareKernel(psf.rec, 1));

    // Every pixel is black but the first of row 2, whose channel 0 holds the
    // bytes 0x10, 0x20, 0x30 in its three low bytes.
    Image frame(w, h, 4, 2);
    frame.fill(0);
    frame.set(0, 2, 0, 0x00302010u);
    Image out(image_clone(frame.rec));
    ASSERT_TRUE(engine.SetInput(frame.rec));
    ASSERT_TRUE(engine.Run(out.rec, 15));

    // The luma read is (0x30 * 0.114 + 0x20 * 0.587 + 0x10 * 0.299) / 2^32 for the
    // whole of row 2, and 0 elsewhere; the chroma of the first pixel is read
    // properly from its 32-bit sample.
    const double k = std::ldexp(1.0, -32), m = 4294967295.0;
    const double lumaRead = (0x30 * 0.114 + 0x20 * 0.587 + 0x10 * 0.299) * k;
    const double r0 = 0x00302010u * k;
    const double A0 = 0.5 * r0, B0 = -0.213267 * r0;
    for (int x = 0; x < w; ++x) {
        const double A = x == 0 ? A0 : 0.0, B = x == 0 ? B0 : 0.0;
        const double R = std::clamp(1.402 * A + lumaRead, 0.0, 1.0) * m;
        const double G = std::clamp(lumaRead * 0.996036 - A * 0.714136 - B * 0.277836, 0.0, 1.0) * m;
        const double Bl = std::clamp(B * 1.430612 + lumaRead * 1.020408, 0.0, 1.0) * m;
        EXPECT_NEAR(out.get(x, 2, 0), R, 2.0) << x;
        EXPECT_NEAR(out.get(x, 2, 1), G, 2.0) << x;
        EXPECT_NEAR(out.get(x, 2, 2), Bl, 2.0) << x;
    }
    // Off the row, black stays black.
    EXPECT_LE(out.get(3, 5, 0), 2u);

    // Alpha of a 32-bit frame keeps only the low 16 bits of its integer.
    frame.fill(0);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            frame.set(x, y, 3, 0x12345678u);
    ASSERT_TRUE(engine.Run(out.rec, 15));
    EXPECT_NEAR(static_cast<double>(out.get(4, 4, 3)), 0x5678, 1.0);
}

TEST(EngineSampleTypes, FloatFramesPassEveryCheckAndAreLeftAlone)
{
    const int w = 8, h = 8;
    Image psf(blankPsf(w, h));
    static_cast<uint8_t*>(psf.rec->pixels)[(h / 2) * w + w / 2 + 1] = 255;
    FftEngine engine;
    ASSERT_TRUE(engine.PrepareKernel(psf.rec, 1));

    Image frame(w, h, 4, 3);
    for (int i = 0; i < w * h * 4; ++i)
        static_cast<float*>(frame.rec->pixels)[i] = static_cast<float>(i % 7) / 7.0f;
    Image out(image_clone(frame.rec));
    for (int i = 0; i < w * h * 4; ++i)
        static_cast<float*>(out.rec->pixels)[i] = -1.0f;
    ASSERT_TRUE(engine.SetInput(frame.rec));
    EXPECT_TRUE(engine.Run(out.rec, 15));
    for (int i = 0; i < w * h * 4; ++i)
        ASSERT_EQ(static_cast<float*>(out.rec->pixels)[i], -1.0f);
}

}  // namespace
