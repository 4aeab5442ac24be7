// What Render computes: pixel radii and margins, the image aperture's cut-out,
// and defocused frames whose dots take the aperture's shape.
#include <numeric>

#include "render_fixture.h"

namespace {

using Render = RenderFixture;

TEST_F(Render, RadiiAreFractionsOfTheWidthWithAHalfPixelFloor)
{
    frames(720, 8);
    fx.radiusX.value = 0.1;  // 0.1 x 0.5 x 720 = 36 px; margin ceil(36) + 1
    render();
    EXPECT_EQ(fx.lastRadius1, 36.0f);
    EXPECT_EQ(fx.lastRadius2, 36.0f);
    EXPECT_EQ(fx.engine->padMargin, 37);
    fx.radiusX.value = 0.0;  // 0.5 px, drawn as 1.0; margin ceil(0.5) + 1
    render();
    EXPECT_EQ(fx.lastRadius1, 0.5f);
    EXPECT_EQ(fx.engine->padMargin, 2);
    // An ellipse takes RadiusY, also scaled by the width.
    fx.shape.value = SHAPE_ELLIPSE;
    fx.radiusY.value = 0.05;
    render();
    EXPECT_EQ(fx.lastRadius2, 18.0f);
}

TEST_F(Render, ImageApertureCutsAroundTheRoundedCentreBetweenThePsfRadiiInEitherOrder)
{
    frames(64, 48, true);
    // A ramp across the spread: 400 x column, whose top byte after the frame's
    // doubling is (800 x column) >> 8.
    for (int y = 0; y < 48; ++y)
        for (int x = 0; x < 64; ++x)
            dot(*spread, x, y, uint16_t(400 * x));
    fx.shape.value = SHAPE_IMAGE;
    fx.centre.x = 0.26;  // (int)(64 x 0.26 + 0.5) = 17
    fx.centre.y = 0.5;   // (int)(48 x 0.5 + 0.5) = 24
    fx.radiusPsf1.value = 0.2;
    fx.radiusPsf2.value = 0.1;
    render();
    // a = 0.1 x 64 x 0.5 = 3.2, b = 6.4: margin ceil(6.4) + 1.
    EXPECT_EQ(fx.engine->padMargin, 8);
    const std::vector<unsigned char> swapped(static_cast<unsigned char*>(fx.engine->psfImage->pixels),
                                             static_cast<unsigned char*>(fx.engine->psfImage->pixels) + 64 * 48);
    fx.radiusPsf1.value = 0.1;
    fx.radiusPsf2.value = 0.2;
    render();
    const auto* psf = static_cast<const unsigned char*>(fx.engine->psfImage->pixels);
    EXPECT_TRUE(std::equal(swapped.begin(), swapped.end(), psf));
    // Column 17 lands in the middle at full weight; column 22, 5 px out, lies
    // (5 - 3.2) / 3.2 into the fall-off.
    EXPECT_EQ(psf[24 * 64 + 32], (800 * 17) >> 8);
    EXPECT_EQ(psf[24 * 64 + 37], int(((800 * 22) >> 8) * (1.0 - 1.8 / 3.2)));
    // Equal radii: the softness becomes one pixel, margin ceil(3.2 + 1) + 1.
    fx.radiusPsf2.value = 0.1;
    render();
    EXPECT_EQ(fx.engine->padMargin, 6);
}

// Sum of channel 0 over the frame.
double total(const VZImage& frame)
{
    double sum = 0;
    for (int y = 0; y < frame.height; ++y)
        for (uint32_t x = 0; x < frame.width; ++x)
            sum += frame.rows[y][x * 4];
    return sum;
}

TEST_F(Render, DotsTakeTheShapeOfTheAperture)
{
    const int W = 128, H = 96;
    const int dots[][2] = {{32, 32}, {96, 64}};
    auto scene = [&] {
        frames(W, H, true);
        for (const auto& d : dots)
            dot(*in, d[0], d[1]);
    };
    // Circle of radius 0.1 x 64 = 12.8 px: lit inside, dark outside.
    scene();
    fx.radiusX.value = 0.2;
    render();
    for (const auto& d : dots)
        for (int angle = 0; angle < 360; angle += 30) {
            const double a = angle * 3.141592653589793 / 180.0;
            const int ix = d[0] + int(std::lround(11.0 * std::cos(a))), iy = d[1] + int(std::lround(11.0 * std::sin(a)));
            const int ox = d[0] + int(std::lround(14.5 * std::cos(a))), oy = d[1] + int(std::lround(14.5 * std::sin(a)));
            EXPECT_GT(at(*out, ix, iy), 40) << angle;
            EXPECT_LE(at(*out, ox, oy), 1) << angle;
        }
    // Emphasis 1 keeps the frame's light; 50 makes the dots outshine it.
    const double kept = total(*out), given = total(*in);
    EXPECT_NEAR(kept, given, given * 0.01);
    const uint16_t plain = at(*out, 32 + 6, 32);
    fx.brightEmphasis.value = 50.0;
    render();
    EXPECT_GT(at(*out, 32 + 6, 32), plain * 2);

    // Hexagon turned by 30 degrees: vertices on the y axis, flat sides left and
    // right. Circumradius 12.8, apothem 11.1: at 12 px a vertex is lit, a side not.
    fx.brightEmphasis.value = 1.0;
    fx.shape.value = SHAPE_POLYGON;
    fx.sides.value = 6;
    fx.rotation.value = 30.0;
    render();
    EXPECT_GT(at(*out, 32, 32 + 12), 20);
    EXPECT_LE(at(*out, 32 + 12, 32), 1);
    EXPECT_GT(at(*out, 32 + 10, 32), 40);

    // Image aperture: a bright 5 x 5 square in the spread frame around the centre
    // becomes a square around each dot.
    fx.shape.value = SHAPE_IMAGE;
    fx.radiusPsf1.value = fx.radiusPsf2.value = 0.2;
    for (int y = -2; y <= 2; ++y)
        for (int x = -2; x <= 2; ++x)
            dot(*spread, 64 + x, 48 + y);
    render();
    for (const auto& d : dots) {
        EXPECT_GT(at(*out, d[0] + 2, d[1] + 2), 1000);  // corner inside the square
        EXPECT_LE(at(*out, d[0] + 3, d[1]), 1);
        EXPECT_LE(at(*out, d[0], d[1] - 3), 1);
    }
}

TEST_F(Render, RefusedFrameSizeLeavesTheFrameAsItCameAndAlphaFollowsTheFlag)
{
    frames(64, 48);
    dot(*in, 20, 20);
    render();
    ASSERT_GT(at(*out, 21, 20), 0);
    // A radius far beyond every transform: the engine refuses, the output is the
    // input as it came, and nothing is written out of bounds.
    frames(96, 48);
    dot(*in, 20, 20);
    fx.radiusX.value = 400.0;
    render();
    EXPECT_EQ(at(*out, 20, 20), 32767);
    EXPECT_EQ(at(*out, 21, 20), 0);
    // With the alpha flag clear alpha is the input's, even where the engine
    // would have blurred it.
    fx.radiusX.value = 0.05;
    for (int y = 0; y < 48; ++y)
        for (int x = 0; x < 96; ++x)
            in->rows[y][x * 4 + 3] = uint16_t((x % 2) * 32767);
    render();
    EXPECT_NEAR(at(*out, 40, 20, 3), 16383, 2000);
    fx.alphaEnabled = 0;
    render();
    for (int x = 0; x < 96; ++x)
        ASSERT_EQ(at(*out, x, 20, 3), (x % 2) * 32767);
}

}  // namespace
