// FftEngine::BuildShapePsf: the aperture drawn around the centre of psfImage,
// its pad margin, the image's reuse, and refusals.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <utility>

#include "aperture_test_support.h"
#include "vzlibs/fftlib/FftEngine.h"

namespace {

class ShapePsf : public ::testing::Test {
protected:
    bool build(int shape, float r1, float r2, float rotation = 0.0f, int sides = 0, int w = 64, int h = 48)
    {
        return engine.BuildShapePsf(w, h, shape, r1, r2, rotation, sides);
    }
    std::vector<unsigned char> picture() const { return aperture_test::picture(engine.psfImage); }
    aperture_test::Extent measure() const { return aperture_test::measure(engine.psfImage); }

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
    ASSERT_TRUE(build(1, 10.0f, 5.0f));
    EXPECT_EQ(measure().width(), 20);
    EXPECT_NEAR(measure().height(), 10, 1);
    EXPECT_NEAR(measure().area, pi * 50.0, 1.5);
    // Turned by 90 degrees the radii swap.
    ASSERT_TRUE(build(1, 10.0f, 5.0f, 90.0f));
    EXPECT_NEAR(measure().width(), 10, 1);
    EXPECT_NEAR(measure().height(), 20, 1);
    // Pixels twice as wide as high: the circle is half as wide, as high as
    // before, and the margin stays that of the radius: ceil(12) + 1.
    ASSERT_TRUE(engine.SetPixelAspect(2.0f, 1.0f));
    ASSERT_TRUE(build(1, 12.0f, 12.0f));
    EXPECT_EQ(measure().width(), 12);
    EXPECT_NEAR(measure().height(), 24, 1);
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
            const int painted = sign > 0 ? below : above, clear = sign > 0 ? above : below;
            EXPECT_GT(aperture_test::at(engine.psfImage, x, painted), 127) << c.shape << " " << sign;
            EXPECT_EQ(aperture_test::at(engine.psfImage, x, clear), 0) << c.shape << " " << sign;
        }
}

TEST_F(ShapePsf, PolygonSidesAreLimitedToThreeAndFifty)
{
    ASSERT_TRUE(build(2, 16.0f, 16.0f, 0.0f, 3));
    const std::vector<unsigned char> triangle = picture();
    EXPECT_NEAR(measure().area, 3.0 * std::sqrt(3.0) / 4.0 * 256.0, 1.5);
    ASSERT_TRUE(build(2, 16.0f, 16.0f, 0.0f, 50));
    const std::vector<unsigned char> fifty = picture();
    for (int sides : {2, 0, -5, 51, INT_MAX}) {
        ASSERT_TRUE(build(2, 16.0f, 16.0f, 0.0f, sides));
        EXPECT_EQ(picture(), sides < 3 ? triangle : fifty) << sides;
    }
}

TEST_F(ShapePsf, StreakRunsOutFromTheCentreAndTheBarIsShiftedBackAlongXOnly)
{
    // Centre (32, 24); length 20, thickness 4.
    ASSERT_TRUE(build(3, 20.0f, 4.0f));
    aperture_test::Extent e = measure();
    EXPECT_EQ(std::make_pair(e.minX, e.maxX), std::make_pair(32, 51));
    EXPECT_EQ(std::make_pair(e.minY, e.maxY), std::make_pair(22, 25));
    ASSERT_TRUE(build(4, 20.0f, 4.0f));
    EXPECT_EQ(measure().minX, 22);
    EXPECT_EQ(measure().maxX, 41);

    // Rectangles turn the other way: at 90 degrees the streak runs up the image.
    ASSERT_TRUE(build(3, 20.0f, 4.0f, 90.0f));
    e = measure();
    EXPECT_EQ(std::make_pair(e.minX, e.maxX), std::make_pair(30, 33));
    EXPECT_EQ(std::make_pair(e.minY, e.maxY), std::make_pair(4, 23));
    // The bar's y shift uses the half thickness, not the length: one pixel down.
    ASSERT_TRUE(build(4, 20.0f, 4.0f, 90.0f));
    EXPECT_EQ(measure().minY, 5);
    EXPECT_EQ(measure().maxY, 24);

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
    EXPECT_EQ(engine.psfImage->width, 40);
    EXPECT_EQ(engine.psfImage->height, 30);
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
