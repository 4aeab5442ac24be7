// FftEngine::BuildShapePsf: the aperture drawn into psfImage, its pad margin,
// the image's reuse, and refusals.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <vector>

#include "vzlibs/fftlib/FftEngine.h"

namespace {

struct Extent {
    int minX, maxX, minY, maxY;
    double area;  // sum of the pixels / 255
    int width() const { return maxX - minX + 1; }
    int height() const { return maxY - minY + 1; }
};

class ShapePsf : public ::testing::Test {
protected:
    static constexpr int kWidth = 64;
    static constexpr int kHeight = 48;

    bool build(int shape, float r1, float r2, float rotation = 0.0f, int sides = 0, int w = kWidth, int h = kHeight)
    {
        return engine.BuildShapePsf(w, h, shape, r1, r2, rotation, sides);
    }
    int at(int x, int y) const
    {
        return static_cast<const unsigned char*>(engine.psfImage->pixels)[y * engine.psfImage->rowBytes + x];
    }
    std::vector<unsigned char> picture() const
    {
        const unsigned char* p = static_cast<const unsigned char*>(engine.psfImage->pixels);
        return {p, p + size_t(engine.psfImage->rowBytes) * engine.psfImage->height};
    }
    Extent measure() const
    {
        Extent e = {INT_MAX, INT_MIN, INT_MAX, INT_MIN, 0.0};
        for (int y = 0; y < engine.psfImage->height; ++y)
            for (int x = 0; x < engine.psfImage->width; ++x)
                if (at(x, y)) {
                    e.minX = std::min(e.minX, x);
                    e.maxX = std::max(e.maxX, x);
                    e.minY = std::min(e.minY, y);
                    e.maxY = std::max(e.maxY, y);
                    e.area += at(x, y) / 255.0;
                }
        return e;
    }

    FftEngine engine;
};

TEST_F(ShapePsf, MarginComesFromTheUnclampedRadii)
{
    // Radii below 1 draw a circle of radius 1; the margin still comes from 0.3.
    ASSERT_TRUE(build(1, 0.2f, 0.3f));
    EXPECT_EQ(engine.padMargin, 2);
    EXPECT_EQ(engine.GetStatus(), FFT_OK);
    const std::vector<unsigned char> small = picture();
    ASSERT_TRUE(build(1, 1.0f, 1.0f));
    EXPECT_EQ(picture(), small);
    EXPECT_NEAR(measure().area, std::acos(-1.0), 0.05);
    // The circle of radius 1 sits on the image's centre, (32, 24).
    EXPECT_EQ(measure().minX, 31);
    EXPECT_EQ(measure().maxX, 32);

    ASSERT_TRUE(build(1, 1.5f, 0.5f));
    EXPECT_EQ(engine.padMargin, 3);
    ASSERT_TRUE(build(2, 0.5f, 1.5f, 0.0f, 6));
    EXPECT_EQ(engine.padMargin, 3);
    ASSERT_TRUE(build(1, 12.0f, 12.0f));
    EXPECT_EQ(engine.padMargin, 13);
}

TEST_F(ShapePsf, EllipseRadiiLieAlongXThenYAndTurnTowardsY)
{
    ASSERT_TRUE(build(1, 10.0f, 5.0f));
    Extent e = measure();
    EXPECT_EQ(e.width(), 20);
    EXPECT_NEAR(e.height(), 10, 1);
    EXPECT_NEAR(e.area, std::acos(-1.0) * 50.0, 1.5);

    ASSERT_TRUE(build(1, 10.0f, 5.0f, 90.0f));
    e = measure();
    EXPECT_NEAR(e.width(), 10, 1);
    EXPECT_NEAR(e.height(), 20, 1);

    // A thin ellipse turned by +45 degrees runs from upper left to lower right
    // in picture coordinates (y grows downwards).
    ASSERT_TRUE(build(1, 14.0f, 2.0f, 45.0f));
    EXPECT_EQ(at(32 + 7, 24 + 7), 255);
    EXPECT_EQ(at(32 - 8, 24 - 8), 255);
    EXPECT_EQ(at(32 + 7, 24 - 8), 0);
}

TEST_F(ShapePsf, PixelAspectDividesTheWidthAfterRotation)
{
    ASSERT_TRUE(engine.SetPixelAspect(2.0f, 1.0f));
    ASSERT_TRUE(build(1, 12.0f, 12.0f));
    Extent e = measure();
    EXPECT_EQ(e.width(), 12);
    EXPECT_NEAR(e.height(), 24, 1);
    EXPECT_EQ(engine.padMargin, 13);

    // Turned first, divided afterwards: the long axis ends up vertical at full
    // length, the short one horizontal at half.
    ASSERT_TRUE(build(1, 16.0f, 8.0f, 90.0f));
    e = measure();
    EXPECT_NEAR(e.width(), 8, 1);
    EXPECT_NEAR(e.height(), 32, 1);
}

TEST_F(ShapePsf, RegularPolygonSides)
{
    // Vertex 0 lies on +x: a triangle pointing right, with area 3 sqrt(3) / 4 r^2.
    ASSERT_TRUE(build(2, 16.0f, 16.0f, 0.0f, 3));
    const std::vector<unsigned char> triangle = picture();
    const Extent e = measure();
    EXPECT_NEAR(e.area, 3.0 * std::sqrt(3.0) / 4.0 * 256.0, 1.5);
    EXPECT_EQ(e.maxX, 32 + 15);
    EXPECT_EQ(e.minX, 32 - 8);
    for (int sides : {2, 1, 0, -5}) {
        ASSERT_TRUE(build(2, 16.0f, 16.0f, 0.0f, sides));
        EXPECT_EQ(picture(), triangle) << "sides " << sides;
    }

    ASSERT_TRUE(build(2, 16.0f, 16.0f, 0.0f, 6));
    EXPECT_NEAR(measure().area, 3.0 * std::sqrt(3.0) / 2.0 * 256.0, 1.5);

    // More sides than the list's 50 places are limited to 50.
    ASSERT_TRUE(build(2, 16.0f, 16.0f, 0.0f, 50));
    const std::vector<unsigned char> fifty = picture();
    for (int sides : {51, 1000, INT_MAX}) {
        ASSERT_TRUE(build(2, 16.0f, 16.0f, 0.0f, sides));
        EXPECT_EQ(picture(), fifty) << "sides " << sides;
    }
}

TEST_F(ShapePsf, StreakRunsOutwardAndBarIsShiftedBack)
{
    // Rotation 0: the streak runs from the centre towards +x, 4 thick.
    ASSERT_TRUE(build(3, 12.0f, 4.0f));
    Extent e = measure();
    EXPECT_EQ(e.minX, 32);
    EXPECT_EQ(e.maxX, 43);
    EXPECT_EQ(e.minY, 22);
    EXPECT_EQ(e.maxY, 25);
    EXPECT_NEAR(e.area, 48.0, 0.01);

    // Its turn goes the other way from the ellipse's: +90 points up (-y).
    ASSERT_TRUE(build(3, 12.0f, 4.0f, 90.0f));
    e = measure();
    EXPECT_EQ(e.minY, 12);
    EXPECT_EQ(e.maxY, 23);
    EXPECT_NEAR(e.width(), 4, 1);

    // The bar is moved back by half its length along x...
    ASSERT_TRUE(build(4, 12.0f, 4.0f));
    e = measure();
    EXPECT_EQ(e.minX, 26);
    EXPECT_EQ(e.maxX, 37);
    EXPECT_EQ(e.minY, 22);
    EXPECT_EQ(e.maxY, 25);

    // ...but along y only by half its half thickness: turned by 90 it spans
    // y from 24 + 1 - 12 to 24 + 1, not around the centre.
    ASSERT_TRUE(build(4, 12.0f, 4.0f, 90.0f));
    e = measure();
    EXPECT_EQ(e.minY, 13);
    EXPECT_EQ(e.maxY, 24);
}

TEST_F(ShapePsf, ImageIsReusedAtOneSizeAndReplacedAtAnother)
{
    ASSERT_TRUE(build(1, 20.0f, 20.0f));
    ImageRec* first = engine.psfImage;
    ASSERT_NE(first, nullptr);
    ASSERT_TRUE(build(1, 3.0f, 3.0f));
    EXPECT_EQ(engine.psfImage, first);
    const Extent e = measure();
    EXPECT_EQ(e.width(), 6);
    EXPECT_NEAR(e.area, std::acos(-1.0) * 9.0, 0.3);

    ASSERT_TRUE(build(1, 3.0f, 3.0f, 0.0f, 0, 40, 30));
    ASSERT_NE(engine.psfImage, nullptr);
    EXPECT_EQ(engine.psfImage->width, 40);
    EXPECT_EQ(engine.psfImage->height, 30);
    EXPECT_EQ(engine.psfWidth, 40);
    EXPECT_EQ(measure().minX, 20 - 3);
}

TEST_F(ShapePsf, OtherShapeCodesGiveAClearedImage)
{
    for (int shape : {0, 5, -1}) {
        ASSERT_TRUE(build(1, 10.0f, 10.0f));
        engine.BuildShapePsf(kWidth, kHeight, shape, 6.5f, 3.0f, 0.0f, 5);
        ASSERT_NE(engine.psfImage, nullptr);
        EXPECT_EQ(measure().area, 0.0) << "shape " << shape;
        EXPECT_EQ(engine.padMargin, 8);
        EXPECT_EQ(engine.psfWidth, kWidth);
    }
}

TEST_F(ShapePsf, BadArgumentsAreRefused)
{
    ASSERT_TRUE(build(1, 6.0f, 6.0f));
    const std::vector<unsigned char> before = picture();

    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    EXPECT_FALSE(build(1, nan, 6.0f));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_ARGUMENT);
    EXPECT_FALSE(build(2, 6.0f, 6.0f, inf, 5));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_ARGUMENT);
    ASSERT_TRUE(engine.SetPixelAspect(0.0f, 1.0f));
    EXPECT_FALSE(build(1, 6.0f, 6.0f));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_ARGUMENT);
    EXPECT_EQ(picture(), before);
    ASSERT_TRUE(engine.SetPixelAspect(1.0f, 1.0f));

    // A reach beyond every transform size is PrepareKernel's size error, even
    // where the margin would not fit an int.
    EXPECT_FALSE(build(1, 5000.0f, 6.0f));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_SIZE);
    EXPECT_FALSE(build(1, 3.0e12f, 6.0f));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_SIZE);

    // No image of that size can be made.
    EXPECT_FALSE(build(1, 6.0f, 6.0f, 0.0f, 0, 0, 48));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_MEMORY);
    EXPECT_EQ(engine.psfImage, nullptr);
    EXPECT_FALSE(build(1, 6.0f, 6.0f, 0.0f, 0, 70000, 48));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_MEMORY);

    ASSERT_TRUE(build(1, 6.0f, 6.0f));
    EXPECT_EQ(picture(), before);
}

}  // namespace
