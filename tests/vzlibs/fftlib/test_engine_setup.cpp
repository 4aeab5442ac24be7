// FftEngine set-up: the size rule, refusals and their codes, plan reuse, the
// kernel's residue.
#include <gtest/gtest.h>

#include "engine_test_support.h"

using namespace enginetest;

namespace {

TEST(EngineSizeRule, WorkedExamplesAndLimits)
{
    struct Case {
        int w, h;
        uint32_t margin;
        int S;  // 0: refused
    } cases[] = {{720, 486, 5, 1024}, {720, 486, 20, 1024}, {1920, 1080, 5, 2048}, {1, 1, 1, 4},
                 {1, 1, 0, 0},        {7000, 100, 600, 0},  {7000, 100, 0xFFFFFFFFu, 0}};
    for (const Case& c : cases) {
        FftEngine engine;
        Image psf(dotPsf(c.w, c.h));
        EXPECT_EQ(engine.PrepareKernel(psf.rec, c.margin), c.S != 0) << c.w << "x" << c.h << "+" << c.margin;
        if (c.S == 0) {
            EXPECT_EQ(engine.GetStatus(), FFT_ERR_SIZE);
            EXPECT_EQ(engine.kernelSource, nullptr);
            EXPECT_EQ(engine.psfWidth, c.w);  // taken before the size check
            continue;
        }
        EXPECT_EQ(engine.paddedWidth, c.S);
        EXPECT_EQ(engine.paddedHeight, c.S);
        EXPECT_EQ(engine.offsetX, (c.S - c.w) / 2);
        EXPECT_EQ(engine.offsetY, (c.S - c.h) / 2);
    }
}

TEST(EngineSizeRule, LargestTransformIsTakenAndARefusalKeepsTheOldPlanes)
{
    FftEngine engine;
    Image wide(dotPsf(7000, 100));
    ASSERT_TRUE(engine.PrepareKernel(wide.rec, 596));  // 7000 + 2 * 596 = 8192
    EXPECT_EQ(engine.paddedWidth, 8192);
    double* plane = engine.kernelReal;
    Image one(dotPsf(1, 1));
    EXPECT_FALSE(engine.PrepareKernel(one.rec, 0));
    EXPECT_EQ(engine.paddedWidth, 8192);
    EXPECT_EQ(engine.kernelReal, plane);
}

TEST(EngineRefusals, EveryRefusalIsAStatusAndFalseAndTouchesNothing)
{
    FftEngine engine;
    Image frame(16, 16, 4, 1);
    frame.fill(1000);
    Image out(image_clone(frame.rec));

    EXPECT_FALSE(engine.SetInput(frame.rec));  // before any kernel: compares with -1
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_INPUT_SIZE);
    EXPECT_FALSE(engine.Run(out.rec, 7));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_NOT_PREPARED);
    EXPECT_FALSE(engine.PrepareKernel(nullptr, 3));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_NOT_PREPARED);

    Image psf(dotPsf(16, 16));
    ASSERT_TRUE(engine.PrepareKernel(psf.rec, 2));
    EXPECT_FALSE(engine.SetInput(nullptr));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_INPUT_SIZE);
    ASSERT_TRUE(engine.SetInput(frame.rec));

    Image otherType(16, 16, 4, 0), otherSize(16, 15, 4, 1), twoChannels(16, 16, 2, 1);
    otherType.fill(9);
    for (ImageRec* bad : {otherType.rec, otherSize.rec, static_cast<ImageRec*>(nullptr)}) {
        EXPECT_FALSE(engine.Run(bad, 7));
        EXPECT_EQ(engine.GetStatus(), FFT_ERR_IMAGE_MISMATCH);
    }
    EXPECT_EQ(otherType.get(3, 3, 0), 9u);
    EXPECT_FALSE(engine.Run(twoChannels.rec, 7));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_CHANNELS);
    for (uint32_t mask : {3u, 8u, 0u}) {
        EXPECT_FALSE(engine.Run(out.rec, mask));
        EXPECT_EQ(engine.GetStatus(), FFT_ERR_CHANNELS);
    }
    EXPECT_FALSE(engine.SetBorderMode(0));
    EXPECT_FALSE(engine.SetBorderMode(3));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_ARGUMENT);
    EXPECT_EQ(engine.borderMode, 2);
    engine.SetBrightEmphasis(-1.0f);
    EXPECT_EQ(engine.brightEmphasis, 0.0f);
    engine.SetBrightEmphasis(500.5f);
    EXPECT_EQ(engine.brightEmphasis, 500.0f);

    // Another channel count is fine: a three-channel output of a four-channel frame.
    Image three(16, 16, 3, 1);
    three.fill(0);
    EXPECT_TRUE(engine.Run(three.rec, 15));
    EXPECT_NEAR(static_cast<double>(three.get(4, 4, 0)), 1000.0, 1.0);
}

TEST(EnginePlans, KeptWhileTheTransformSizeStays)
{
    FftEngine engine;
    auto prepareAndRun = [&engine](int w, int h, uint32_t margin) {
        Image psf(dotPsf(w, h));
        Image frame(w, h, 4, 1);
        frame.fill(30000);
        Image out(image_clone(frame.rec));
        ASSERT_TRUE(engine.PrepareKernel(psf.rec, margin));
        ASSERT_TRUE(engine.SetInput(frame.rec));
        ASSERT_TRUE(engine.Run(out.rec, 15));
    };
    prepareAndRun(20, 12, 2);
    EXPECT_EQ(engine.plansMade, 3u);
    const fftw_plan kernelPlan = engine.kernelForwardPlan;
    const double* luma = engine.lumaPlane;

    prepareAndRun(18, 14, 5);  // new margin and size, same S = 32: no planner call
    EXPECT_EQ(engine.paddedWidth, 32);
    EXPECT_EQ(engine.plansMade, 3u);
    EXPECT_EQ(engine.kernelForwardPlan, kernelPlan);
    EXPECT_EQ(engine.lumaPlane, luma);

    prepareAndRun(40, 12, 2);  // S = 64: everything made again
    EXPECT_EQ(engine.paddedWidth, 64);
    EXPECT_EQ(engine.plansMade, 6u);
}

TEST(EngineKernel, CentringAndTheResidueOfASecondPreparationAtTheSameSize)
{
    const int w = 16, h = 16;
    FftEngine engine;
    Image centred(dotPsf(w, h));
    ASSERT_TRUE(engine.PrepareKernel(centred.rec, 4));
    const int S = engine.paddedWidth;
    ASSERT_EQ(S, 32);
    EXPECT_NEAR(engine.kernelReal[0], 1.0, 1e-12);

    // A dot right of the centre. The old kernel, now at the plane's corner, adds 1
    // to the sum and rotates back to the middle of the plane.
    Image shifted(dotPsf(w, h, 1));
    ASSERT_TRUE(engine.PrepareKernel(shifted.rec, 4));
    EXPECT_NEAR(engine.kernelReal[1], 0.5, 1e-7);
    EXPECT_NEAR(engine.kernelReal[(S / 2) * S + S / 2], 0.5, 1e-7);

    FftEngine fresh;  // no residue on new planes
    ASSERT_TRUE(fresh.PrepareKernel(shifted.rec, 4));
    EXPECT_NEAR(fresh.kernelReal[1], 1.0, 1e-7);

    // An odd width puts the centre pixel one sample left of the origin.
    FftEngine odd;
    Image sevenWide(dotPsf(7, 6));
    ASSERT_TRUE(odd.PrepareKernel(sevenWide.rec, 0));
    ASSERT_EQ(odd.paddedWidth, 8);
    EXPECT_NEAR(odd.kernelReal[7], 1.0, 1e-12);
}

}  // namespace
