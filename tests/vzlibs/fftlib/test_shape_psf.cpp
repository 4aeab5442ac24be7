// FftEngine::BuildShapePsf: the aperture drawn around the centre of psfImage,
// its pad margin, the image's reuse, and refusals.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>

#include "engine_test_support.h"

namespace {

using enginetest::Extent;

class ShapePsf : public ::testing::Test {
protected:
    bool build(int shape, float r1, float r2, float rotation = 0.0f, int sides = 0, int w = 64, int h = 48)
    {
        return engine.BuildShapePsf(w, h, shape, r1, r2, rotation, sides);
    }
    std::vector<unsigned char> picture() const { return enginetest::picture(engine.psfImage); }
    Extent measure() const { return enginetest::measure(engine.psfImage); }
    // Builds and checks the painted box (minX, maxX, minY, maxY) within `slack`.
    void expectBox(int shape, float r1, float r2, float rotation, std::array<int, 4> box, int slack = 0)
    {
        ASSERT_TRUE(build(shape, r1, r2, rotation));
        const Extent e = measure();
        const int got[4] = {e.minX, e.maxX, e.minY, e.maxY};
        for (int i = 0; i < 4; ++i)
            EXPECT_NEAR(got[i], box[i], slack) << "shape " << shape << " rotation " << rotation << " side " << i;
    }

    const double pi = std::acos(-1.0);
    FftEngine engine;
};

TEST_F(ShapePsf, RadiiBelowOneDrawRadiusOneButKeepTheirMargin)
{
    ASSERT_TRUE(build(1, 0.2f, 0.3f));
    EXPECT_EQ(engine.padMargin, 2);
    const std::vector<unsigned char> clamped = picture();
    ASSERT_TRUE(build(1, 1.0f, 1.0f));
    EXPECT_EQ(picture(), clamped);
    EXPECT_NEAR(measure().area, pi, 0.05);
}

TEST_F(ShapePsf, RotationAndPixelAspectShapeTheEllipse)
{
    // Centre (32, 24). Turned by 90 degrees the radii swap.
    expectBox(1, 10.0f, 5.0f, 0.0f, {22, 41, 19, 28}, 1);
    EXPECT_NEAR(measure().area, pi * 50.0, 1.5);
    expectBox(1, 10.0f, 5.0f, 90.0f, {27, 36, 14, 33}, 1);
    // Pixels twice as wide as high: the circle is half as wide, as high as
    // before, and the margin stays that of the radius: ceil(12) + 1.
    ASSERT_TRUE(engine.SetPixelAspect(2.0f, 1.0f));
    expectBox(1, 12.0f, 12.0f, 0.0f, {26, 37, 12, 35}, 1);
    EXPECT_EQ(measure().width(), 12);
    EXPECT_EQ(engine.padMargin, 13);
    ASSERT_TRUE(engine.SetPixelAspect(1.0f, 0.5f));
    ASSERT_TRUE(build(1, 12.0f, 12.0f));
    EXPECT_NEAR(measure().height(), 48, 1);
    EXPECT_EQ(engine.padMargin, 13);
}

TEST_F(ShapePsf, PositiveRotationTurnsFromXTowardsY)
{
    // The point 9 px out along the turned x axis (and 2 px in from a triangle's
    // first vertex) is painted; its mirror across the centre row is not.
    const double A = 30.0 * pi / 180.0;
    struct Case {
        int shape, sides;
        float r1, r2;
        double reach;
    } cases[] = {{1, 0, 12.0f, 3.0f, 9.0}, {2, 3, 16.0f, 16.0f, 14.0}};
    for (const Case& c : cases)
        for (float sign : {1.0f, -1.0f}) {
            ASSERT_TRUE(build(c.shape, c.r1, c.r2, sign * 30.0f, c.sides));
            const int x = int(32.0 + c.reach * std::cos(A));
            const int below = int(24.0 + c.reach * std::sin(A)), above = int(24.0 - c.reach * std::sin(A));
            EXPECT_GT(enginetest::at(engine.psfImage, x, sign > 0 ? below : above), 127) << c.shape << " " << sign;
            EXPECT_EQ(enginetest::at(engine.psfImage, x, sign > 0 ? above : below), 0) << c.shape << " " << sign;
        }
}

TEST_F(ShapePsf, PolygonSidesAreLimitedToThreeAndFifty)
{
    // A regular n-gon of radius 16 has area n / 2 x 256 x sin(2 pi / n).
    auto area = [this](int n) { return n / 2.0 * 256.0 * std::sin(2.0 * pi / n); };
    ASSERT_TRUE(build(2, 16.0f, 16.0f, 0.0f, 3));
    const std::vector<unsigned char> triangle = picture();
    EXPECT_NEAR(measure().area, area(3), 1.5);
    ASSERT_TRUE(build(2, 16.0f, 16.0f, 0.0f, 50));
    const std::vector<unsigned char> fifty = picture();
    EXPECT_NEAR(measure().area, area(50), 1.5);
    for (int sides : {2, 0, -5, 51, INT_MAX}) {
        ASSERT_TRUE(build(2, 16.0f, 16.0f, 0.0f, sides));
        EXPECT_EQ(picture(), sides < 3 ? triangle : fifty) << sides;
    }
}

TEST_F(ShapePsf, StreakRunsOutFromTheCentreAndTheBarIsShiftedBackAlongXOnly)
{
    // Centre (32, 24); length 20, thickness 4. Rectangles turn the other way
    // than the round shapes: at 90 degrees the streak runs up the image. The
    // bar's y shift uses the half thickness, not the length: one pixel down.
    expectBox(3, 20.0f, 4.0f, 0.0f, {32, 51, 22, 25});
    expectBox(4, 20.0f, 4.0f, 0.0f, {22, 41, 22, 25});
    expectBox(3, 20.0f, 4.0f, 90.0f, {30, 33, 4, 23});
    expectBox(4, 20.0f, 4.0f, 90.0f, {30, 33, 5, 24});
    // An unknown shape code hands the cleared image on.
    ASSERT_TRUE(build(5, 20.0f, 4.0f));
    EXPECT_EQ(measure().count, 0);
}

TEST_F(ShapePsf, ImageIsClearedAtOneSizeAndReplacedAtAnother)
{
    ASSERT_TRUE(build(1, 20.0f, 20.0f));
    ImageRec* first = engine.psfImage;
    ASSERT_TRUE(build(1, 3.0f, 3.0f));
    EXPECT_EQ(engine.psfImage, first);
    EXPECT_EQ(measure().width(), 6);
    EXPECT_NEAR(measure().area, pi * 9.0, 0.3);
    ASSERT_TRUE(build(1, 3.0f, 3.0f, 0.0f, 0, 40, 30));
    EXPECT_TRUE(engine.psfImage->width == 40 && engine.psfImage->height == 30);
    EXPECT_EQ(measure().minX, 20 - 3);
}

TEST_F(ShapePsf, BadArgumentsAreRefused)
{
    ASSERT_TRUE(engine.SetPixelAspect(0.0f, 1.0f));  // an infinite width
    EXPECT_FALSE(build(1, 6.0f, 6.0f));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_ARGUMENT);
    ASSERT_TRUE(engine.SetPixelAspect(1.0f, 1.0f));
    // A reach beyond every transform size, even one whose margin would not fit
    // an int, is PrepareKernel's size error.
    EXPECT_FALSE(build(1, 3.0e12f, 6.0f));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_SIZE);
    EXPECT_FALSE(build(1, 6.0f, 6.0f, 0.0f, 0, 0, 48));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_MEMORY);
}

}  // namespace
