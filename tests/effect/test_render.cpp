// Render: kernel rebuilds (counted by the engine's PrepareKernel calls), the
// image aperture's cut-out, the shape of the dots, refusals and alpha.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <memory>

#include "effect/Lumenveil.h"
#include "generic/library/VZImage.h"

namespace {

class Render : public ::testing::Test {
protected:
    void SetUp() override
    {
        fx.matchRadii.value = 1;
        fx.radiusX.value = fx.radiusY.value = 0.05;
        fx.sides.value = 6;
        fx.brightEmphasis.value = 1.0;
        fx.centre.x = fx.centre.y = 0.5;
    }
    // New black frames, alpha opaque: input, output and, if asked, spread.
    void frames(int w, int h, bool withSpread = false)
    {
        for (auto* frame : {&in, &out, &spread}) {
            *frame = std::make_unique<VZImage>(w, h, 0, nullptr, 0u);
            for (int y = 0; y < h; ++y)
                for (int i = 0; i < w * 4; ++i)
                    (*frame)->rows[y][i] = i % 4 == 3 ? 32767 : 0;
        }
        if (!withSpread)
            spread.reset();
    }
    static void dot(VZImage& frame, int x, int y, uint16_t level = 32767)
    {
        frame.rows[y][x * 4] = frame.rows[y][x * 4 + 1] = frame.rows[y][x * 4 + 2] = level;
    }
    void render()
    {
        fx.input.image = in.get(), fx.output.image = out.get(), fx.spread.image = spread.get();
        fx.Render();
    }
    // Renders and checks the running count of kernel builds.
    void expectBuilds(uint32_t count, const char* why) { render(); EXPECT_EQ(fx.engine->kernelsPrepared, count) << why; }
    uint16_t at(const VZImage& frame, int x, int y, int c = 0) const { return frame.rows[y][x * 4 + c]; }

    Lumenveil fx;
    std::unique_ptr<VZImage> in, out, spread;
};

TEST_F(Render, KernelIsRebuiltWhenAShapingValueMovesByTheToleranceFromTheLastFrame)
{
    // Each step changes one value, then renders; the count of builds after it.
    const std::tuple<const char*, std::function<void()>, uint32_t> steps[] = {
        {"first frame", [&] { frames(64, 48); }, 1},
        {"still", [] {}, 1},
        {"sides, even for a circle", [&] { fx.sides.value = 7; }, 2},
        {"width", [&] { frames(80, 48); }, 3},
        {"height", [&] { frames(80, 40); }, 4},
        {"shape", [&] { fx.shape.value = SHAPE_ELLIPSE; }, 5},
        {"RadiusY, read by an ellipse", [&] { fx.radiusY.value = 0.1; }, 6},
        {"polygon", [&] { fx.shape.value = SHAPE_POLYGON; }, 7},
        {"RadiusY, unread with Match Radii", [&] { fx.radiusY.value = 0.2; }, 7},
        {"match radii off", [&] { fx.matchRadii.value = 0; }, 8},
        {"RadiusY as RadiusX", [&] { fx.radiusY.value = 0.05; }, 9},
        {"match radii on, radii as they were", [&] { fx.matchRadii.value = 1; }, 9},
        {"pixel aspect x", [&] { out->pixelAspect[0] = 1.25; }, 10},
        {"pixel aspect y", [&] { out->pixelAspect[1] = 1.25; }, 11},
        {"a step of exactly 0.01", [&] { fx.rotation.value = 0.01; }, 12},
        {"a step of 0.009", [&] { fx.rotation.value = 0.019; }, 12}};
    for (const auto& [why, change, count] : steps) {
        change();
        expectBuilds(count, why);
    }
    // A drift of 0.009 a frame in rotation and radius (0.05 x 40 px) never rebuilds.
    for (int i = 1; i <= 20; ++i) {
        fx.rotation.value = 0.019 + 0.009 * i;
        fx.radiusX.value = (2.0 + 0.009 * i) / 40.0;
        expectBuilds(12, "drift");
    }
    EXPECT_NEAR(fx.lastRotation, 0.199, 1e-6);
    // A NaN counts as a change, and so does the step back from it.
    fx.rotation.value = std::nan("");
    render();
    fx.rotation.value = 0.199;
    expectBuilds(13, "after a NaN, which the engine refuses");
}

TEST_F(Render, ImageApertureIsCutAroundTheRoundedCentreOnEveryFrame)
{
    frames(64, 48, true);
    // Rows above 32 a ramp across the spread: 400 x column, whose top byte after
    // the frame's doubling is (800 x column) >> 8.
    for (int y = 0; y < 32; ++y)
        for (int x = 0; x < 64; ++x)
            dot(*spread, x, y, uint16_t(400 * x));
    fx.shape.value = SHAPE_IMAGE;
    fx.centre.x = 0.26;  // (int)(64 x 0.26 + 0.5) = 17
    fx.centre.y = 0.6;   // (int)(48 x 0.6 + 0.5) = 29
    fx.radiusPsf1.value = 0.2;
    fx.radiusPsf2.value = 0.1;
    render();
    // a = 0.1 x 64 x 0.5 = 3.2, b = 6.4: margin ceil(6.4) + 1.
    EXPECT_EQ(fx.engine->padMargin, 8);
    const auto* psf = static_cast<const unsigned char*>(fx.engine->psfImage->pixels);
    const std::vector<unsigned char> swapped(psf, psf + 64 * 48);
    std::swap(fx.radiusPsf1.value, fx.radiusPsf2.value);
    render();
    psf = static_cast<const unsigned char*>(fx.engine->psfImage->pixels);
    EXPECT_TRUE(std::equal(swapped.begin(), swapped.end(), psf));
    // Column 17 lands in the middle at full weight; column 22, 5 px out, lies
    // (5 - 3.2) / 3.2 into the fall-off. Row 31 is lit, row 32 dark.
    EXPECT_EQ(psf[24 * 64 + 32], (800 * 17) >> 8);
    EXPECT_EQ(psf[24 * 64 + 37], int(((800 * 22) >> 8) * (1.0 - 1.8 / 3.2)));
    EXPECT_EQ(psf[26 * 64 + 32], (800 * 17) >> 8);
    EXPECT_EQ(psf[27 * 64 + 32], 0);
    // Equal radii: the softness becomes one pixel, margin ceil(3.2 + 1) + 1.
    fx.radiusPsf2.value = 0.1;
    expectBuilds(3, "image shape, every frame");
    EXPECT_EQ(fx.engine->padMargin, 6);
    spread.reset();
    expectBuilds(3, "no spread record, no kernel");
}

TEST_F(Render, DotsTakeTheShapeOfTheAperture)
{
    const int dots[][2] = {{32, 32}, {96, 64}};
    frames(128, 96);
    for (const auto& d : dots)
        dot(*in, d[0], d[1]);
    // Circle of radius 0.1 x 64 = 12.8 px: lit inside, dark outside.
    fx.radiusX.value = 0.2;
    render();
    for (const auto& d : dots)
        for (int angle = 0; angle < 360; angle += 30) {
            const double c = std::cos(angle * M_PI / 180.0), s = std::sin(angle * M_PI / 180.0);
            EXPECT_GT(at(*out, d[0] + int(std::lround(11.0 * c)), d[1] + int(std::lround(11.0 * s))), 40) << angle;
            EXPECT_LE(at(*out, d[0] + int(std::lround(14.5 * c)), d[1] + int(std::lround(14.5 * s))), 1) << angle;
        }
    // Hexagon turned by 30 degrees: vertices on the y axis, flat sides left and
    // right. Circumradius 12.8, apothem 11.1: at 12 px a vertex is lit, a side not.
    fx.shape.value = SHAPE_POLYGON;
    fx.rotation.value = 30.0;
    render();
    EXPECT_GT(at(*out, 32, 32 + 12), 20);
    EXPECT_LE(at(*out, 32 + 12, 32), 1);
    EXPECT_GT(at(*out, 32 + 10, 32), 40);
    // A square unturned: a vertex on the x axis, (7, 7) beyond the side |x| + |y| = 12.8.
    fx.sides.value = 4;
    fx.rotation.value = 0.0;
    render();
    EXPECT_GT(at(*out, 32 + 12, 32), 20);
    EXPECT_LE(at(*out, 32 + 7, 32 + 7), 1);
}

TEST_F(Render, RefusedFrameSizeLeavesTheFrameAsItCameAndAlphaFollowsTheFlag)
{
    // A radius far beyond every transform: the engine refuses, the output is the
    // input as it came, and nothing is written out of bounds.
    frames(96, 48);
    dot(*in, 20, 20);
    fx.radiusX.value = 400.0;
    render();
    EXPECT_EQ(at(*out, 20, 20), 32767);
    EXPECT_EQ(at(*out, 21, 20), 0);
    // With the alpha flag set alpha is blurred; clear, it is the input's.
    fx.radiusX.value = 0.05;
    for (int y = 0; y < 48; ++y)
        for (int x = 0; x < 96; ++x)
            in->rows[y][x * 4 + 3] = uint16_t((x % 2) * 32767);
    render();
    EXPECT_GT(at(*out, 21, 20), 0);
    EXPECT_NEAR(at(*out, 40, 20, 3), 16383, 2000);
    fx.alphaEnabled = 0;
    render();
    for (int x = 0; x < 96; ++x)
        ASSERT_EQ(at(*out, x, 20, 3), (x % 2) * 32767);
}

TEST_F(Render, EmphasiseAlphaBlursAlphaThroughTheCurve)
{
    // One opaque pixel of alpha on a clear frame. Unemphasised, its blurred
    // alpha at the centre is the kernel's centre weight w; emphasised, the
    // curve keeps 0 and 1, so the blur gives w again and the inverse curve
    // of emphasis 50 turns it into 1 - (1 / (w d + a) - a) / d.
    frames(64, 48);
    for (int y = 0; y < 48; ++y)
        for (int x = 0; x < 64; ++x)
            in->rows[y][x * 4 + 3] = x == 32 && y == 24 ? 32767 : 0;
    fx.brightEmphasis.value = 50.0;
    render();
    const double w = at(*out, 32, 24, 3) / 32767.0;
    ASSERT_GT(w, 0.01);
    ASSERT_LT(w, 0.5);
    fx.emphasiseAlpha.value = 1;
    render();
    const double a = 1.0 / 50.0, d = 50.0 - a;
    EXPECT_NEAR(at(*out, 32, 24, 3), 32767.0 * (1.0 - (1.0 / (w * d + a) - a) / d), 8.0);
}

}  // namespace
