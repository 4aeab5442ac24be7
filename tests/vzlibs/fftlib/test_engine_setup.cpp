// FftEngine set-up: the size rule, refusals and their codes, plan reuse, setters.
#include <gtest/gtest.h>

#include <cmath>

#include "engine_test_support.h"

using namespace enginetest;

namespace {

ImageRec* centredDot(int w, int h)
{
    ImageRec* psf = blankPsf(w, h);
    static_cast<uint8_t*>(psf->pixels)[(h / 2) * w + w / 2] = 255;
    return psf;
}

TEST(EngineSizeRule, WorkedExamples)
{
    struct Case {
        int w, h;
        uint32_t margin;
        int S;
    } cases[] = {{720, 486, 5, 1024}, {720, 486, 20, 1024}, {1920, 1080, 5, 2048}, {1, 1, 1, 4}, {6, 2, 0, 8}};
    for (const Case& c : cases) {
        FftEngine engine;
        Image psf(centredDot(c.w, c.h));
        ASSERT_TRUE(engine.PrepareKernel(psf.rec, c.margin)) << c.w << "x" << c.h;
        EXPECT_EQ(engine.paddedWidth, c.S);
        EXPECT_EQ(engine.paddedHeight, c.S);
        EXPECT_EQ(engine.offsetX, (c.S - c.w) / 2);
        EXPECT_EQ(engine.offsetY, (c.S - c.h) / 2);
        EXPECT_EQ(engine.padMargin, static_cast<int>(c.margin));
    }
    EXPECT_EQ(FftEngine::nextPowerOfTwo(0), 1);
    int exponent = 0;
    EXPECT_EQ(FftEngine::nextPowerOfTwo(1025, &exponent), 2048);
    EXPECT_EQ(exponent, 11);
}

TEST(EngineSizeRule, SizesOutsideTwoTo8192AreRefusedAndTheOldStateStays)
{
    FftEngine engine;
    Image good(centredDot(8, 8));
    ASSERT_TRUE(engine.PrepareKernel(good.rec, 1));
    double* oldPlane = engine.kernelReal;

    Image one(centredDot(1, 1));
    EXPECT_FALSE(engine.PrepareKernel(one.rec, 0));  // S = 1
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_SIZE);
    EXPECT_EQ(engine.kernelSource, nullptr);
    EXPECT_EQ(engine.paddedWidth, 16);
    EXPECT_EQ(engine.kernelReal, oldPlane);
    // The PSF size is taken first of all, so a later SetInput compares against it.
    EXPECT_EQ(engine.psfWidth, 1);
    Image frame(8, 8, 3, 0);
    EXPECT_FALSE(engine.SetInput(frame.rec));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_INPUT_SIZE);

    Image wide(blankPsf(7000, 100));
    EXPECT_FALSE(engine.PrepareKernel(wide.rec, 600));  // 8200 -> 16384
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_SIZE);
    EXPECT_FALSE(engine.PrepareKernel(wide.rec, 0xFFFFFFFFu));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_SIZE);
}

TEST(EngineSizeRule, LargestTransformIsTaken)
{
    // 7000 + 2 * 596 = 8192 exactly: a 512 MiB plane.
    FftEngine engine;
    Image wide(blankPsf(7000, 100));
    static_cast<uint8_t*>(wide.rec->pixels)[50 * 7000 + 3500] = 255;
    ASSERT_TRUE(engine.PrepareKernel(wide.rec, 596));
    EXPECT_EQ(engine.paddedWidth, 8192);
}

TEST(EngineRefusals, EveryRefusalIsAStatusAndFalse)
{
    FftEngine engine;
    Image frame(16, 16, 4, 1);
    frame.fill(1000);
    Image out(image_clone(frame.rec));

    // Before any kernel.
    EXPECT_FALSE(engine.SetInput(frame.rec));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_INPUT_SIZE);
    EXPECT_FALSE(engine.Run(out.rec, 7));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_NOT_PREPARED);
    EXPECT_FALSE(engine.PrepareKernel(nullptr, 3));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_NOT_PREPARED);

    Image psf(centredDot(16, 16));
    ASSERT_TRUE(engine.PrepareKernel(psf.rec, 2));
    EXPECT_FALSE(engine.Run(out.rec, 7));  // no input yet
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_NOT_PREPARED);
    EXPECT_FALSE(engine.SetInput(nullptr));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_INPUT_SIZE);
    ASSERT_TRUE(engine.SetInput(frame.rec));

    Image otherType(16, 16, 4, 0), otherSize(16, 15, 4, 1), twoChannels(16, 16, 2, 1), threeChannels(16, 16, 3, 1);
    otherType.fill(9);
    EXPECT_FALSE(engine.Run(otherType.rec, 7));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_IMAGE_MISMATCH);
    EXPECT_EQ(otherType.get(3, 3, 0), 9u);
    EXPECT_FALSE(engine.Run(otherSize.rec, 7));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_IMAGE_MISMATCH);
    EXPECT_FALSE(engine.Run(nullptr, 7));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_IMAGE_MISMATCH);
    EXPECT_FALSE(engine.Run(twoChannels.rec, 7));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_CHANNELS);
    for (uint32_t mask : {3u, 8u, 5u, 0u}) {
        EXPECT_FALSE(engine.Run(out.rec, mask));
        EXPECT_EQ(engine.GetStatus(), FFT_ERR_CHANNELS);
    }
    // Another channel count is fine: three channels out of a four-channel frame.
    threeChannels.fill(0);
    EXPECT_TRUE(engine.Run(threeChannels.rec, 15));
    EXPECT_NEAR(static_cast<double>(threeChannels.get(4, 4, 0)), 1000.0, 1.0);

    EXPECT_FALSE(engine.SetBorderMode(0));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_ARGUMENT);
    EXPECT_FALSE(engine.SetBorderMode(3));
    EXPECT_EQ(engine.borderMode, 2);
}

TEST(EngineSetters, ClampsAndStoredValues)
{
    FftEngine engine;
    EXPECT_EQ(engine.mode, FFT_MODE_FFTW);
    FftEngine five(5);
    EXPECT_EQ(five.mode, FFT_MODE_FFTW);

    engine.SetBrightEmphasis(-1.0f);
    EXPECT_EQ(engine.brightEmphasis, 0.0f);
    engine.SetBrightEmphasis(500.5f);
    EXPECT_EQ(engine.brightEmphasis, 500.0f);
    engine.SetBrightEmphasis(12.5f);
    EXPECT_EQ(engine.brightEmphasis, 12.5f);
    engine.SetAlphaEmphasis(7);
    EXPECT_EQ(engine.emphasiseAlpha, 1);
    EXPECT_TRUE(engine.SetPixelAspect(2.0f, 0.5f));
    EXPECT_EQ(engine.pixelAspectX, 2.0f);
    EXPECT_GE(engine.processorCount, 1u);
}

TEST(EnginePlans, KeptWhileTheTransformSizeStays)
{
    FftEngine engine;
    Image psfA(centredDot(20, 12));
    ASSERT_TRUE(engine.PrepareKernel(psfA.rec, 2));
    EXPECT_EQ(engine.plansMade, 1u);
    Image frame(20, 12, 4, 1);
    frame.fill(30000);
    Image out(image_clone(frame.rec));
    ASSERT_TRUE(engine.SetInput(frame.rec));
    ASSERT_TRUE(engine.Run(out.rec, 15));
    EXPECT_EQ(engine.plansMade, 3u);
    fftw_plan kernelPlan = engine.kernelForwardPlan;
    double* luma = engine.lumaPlane;

    // New margin and new image size, same S = 32: no planner call at all.
    Image psfB(centredDot(18, 14));
    ASSERT_TRUE(engine.PrepareKernel(psfB.rec, 5));
    EXPECT_EQ(engine.paddedWidth, 32);
    Image frameB(18, 14, 4, 1);
    frameB.fill(30000);
    Image outB(image_clone(frameB.rec));
    ASSERT_TRUE(engine.SetInput(frameB.rec));
    ASSERT_TRUE(engine.Run(outB.rec, 15));
    EXPECT_EQ(engine.plansMade, 3u);
    EXPECT_EQ(engine.kernelForwardPlan, kernelPlan);
    EXPECT_EQ(engine.lumaPlane, luma);

    // A new S throws everything away and plans again.
    Image psfC(centredDot(40, 12));
    ASSERT_TRUE(engine.PrepareKernel(psfC.rec, 2));
    EXPECT_EQ(engine.paddedWidth, 64);
    EXPECT_EQ(engine.workForwardPlan, nullptr);
    EXPECT_EQ(engine.lumaPlane, nullptr);
    EXPECT_EQ(engine.plansMade, 4u);
}

TEST(EngineKernel, SecondPreparationAtTheSameSizeKeepsTheEarlierKernelsResidue)
{
    FftEngine engine;
    const int w = 16, h = 16;
    Image first(centredDot(w, h));
    ASSERT_TRUE(engine.PrepareKernel(first.rec, 4));
    const int S = engine.paddedWidth;
    ASSERT_EQ(S, 32);
    EXPECT_NEAR(engine.kernelReal[0], 1.0, 1e-12);

    // The new PSF is a dot one pixel right of the centre. The old kernel, now at
    // the plane's corner, adds 1 to the sum and rotates back to the middle.
    Image second(blankPsf(w, h));
    static_cast<uint8_t*>(second.rec->pixels)[(h / 2) * w + w / 2 + 1] = 255;
    ASSERT_TRUE(engine.PrepareKernel(second.rec, 4));
    EXPECT_NEAR(engine.kernelReal[1], 0.5, 1e-7);
    EXPECT_NEAR(engine.kernelReal[(S / 2) * S + S / 2], 0.5, 1e-7);

    // A fresh engine has no residue.
    FftEngine fresh;
    ASSERT_TRUE(fresh.PrepareKernel(second.rec, 4));
    EXPECT_NEAR(fresh.kernelReal[1], 1.0, 1e-7);
    EXPECT_EQ(fresh.kernelReal[(S / 2) * S + S / 2], 0.0);
}

TEST(EngineLifetime, AnEngineKeepsWorkingAfterAnotherIsTornDown)
{
    // Teardown ends with FFTW's thread clean-up, which is process-wide: the
    // surviving engine's plans must still run.
    Image psf(centredDot(16, 16));
    Image frame(16, 16, 4, 1);
    frame.fill(20000);
    Image out(image_clone(frame.rec));
    FftEngine survivor;
    ASSERT_TRUE(survivor.PrepareKernel(psf.rec, 2));
    ASSERT_TRUE(survivor.SetInput(frame.rec));
    ASSERT_TRUE(survivor.Run(out.rec, 15));
    {
        FftEngine other;
        ASSERT_TRUE(other.PrepareKernel(psf.rec, 2));
    }
    out.fill(0);
    ASSERT_TRUE(survivor.Run(out.rec, 15));
    EXPECT_NEAR(static_cast<double>(out.get(8, 8, 0)), 20000.0, 1.0);
    Image psfB(centredDot(16, 16));
    ASSERT_TRUE(survivor.PrepareKernel(psfB.rec, 2));
}

TEST(EngineKernel, OddSizesLandOneSampleLeftOfTheOrigin)
{
    FftEngine engine;
    Image psf(centredDot(7, 6));  // dot at column 3 of 7
    ASSERT_TRUE(engine.PrepareKernel(psf.rec, 0));
    const int S = engine.paddedWidth;
    ASSERT_EQ(S, 8);
    EXPECT_NEAR(engine.kernelReal[S - 1], 1.0, 1e-12);
}

}  // namespace
