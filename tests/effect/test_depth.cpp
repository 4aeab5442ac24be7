// Lumenveil Depth: the circle of confusion, the depth layers, and the layered
// render against the plain effect and the rules of occlusion: no bleed of a
// defocused background over a sharp foreground, no fringe beside it, and a
// defocused foreground mixed over what lies behind it by its blurred coverage.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "effect/LumenveilDepth.h"
#include "generic/library/VZImage.h"

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

TEST(DepthLens, RadiusGrowsWithDistanceFromTheFocusOverDistanceOnBothSides)
{
    DepthLensVZ lens;
    lens.radiusInfinity = 12.0;
    lens.focus = 2.0;
    lens.maxRadius = 30.0;
    // r = r_inf x |z - zf| / z, negative in front of the focus.
    for (double z : {0.5, 1.0, 1.5, 2.0, 3.0, 8.0, 1e9}) {
        const double expected = 12.0 * (z - 2.0) / z;
        EXPECT_NEAR(lens.SignedRadius(static_cast<float>(z)), std::max(expected, -30.0), 1e-4) << z;
        EXPECT_NEAR(lens.Radius(static_cast<float>(z)), std::min(std::fabs(expected), 30.0), 1e-4) << z;
    }
    // 0, negative, NaN and infinity are at infinity.
    for (double z : {0.0, -3.0, std::nan(""), kInf})
        EXPECT_FLOAT_EQ(lens.SignedRadius(static_cast<float>(z)), 12.0f) << z;
    // Normalised depth stands for 1 / z: d = 0.25 with the focus at 0.5 is z = 4, zf = 2.
    lens.kind = DEPTH_NORMALISED;
    lens.focus = 0.5;
    EXPECT_NEAR(lens.SignedRadius(0.25f), 12.0 * (4.0 - 2.0) / 4.0, 1e-4);
    EXPECT_NEAR(lens.SignedRadius(1.0f), 12.0 * (1.0 - 2.0) / 1.0, 1e-4);
    EXPECT_FLOAT_EQ(lens.SignedRadius(0.0f), 12.0f);
}

TEST(DepthLens, ThinLensGivesTheRadiusAtInfinityOnTheSensorScaledToPixels)
{
    // f = 50 mm, N = 2.8, focus 3.2 m: f^2 / (N (zf - f)) on a 36 mm sensor, 1920 px wide.
    const double onSensor = 50.0 * 50.0 / (2.8 * (3200.0 - 50.0));
    EXPECT_NEAR(lens_radius_at_infinity(2.8, 50.0, 36.0, 3.2, 1000.0, 1920), onSensor / 36.0 * 1920.0, 1e-9);
    EXPECT_EQ(lens_radius_at_infinity(2.8, 50.0, 36.0, 0.04, 1000.0, 1920), 0.0);  // focus inside the focal length
}

TEST(DepthLayers, NeighboursDifferByAPixelThenAFewPerCentAndTwoDepthsAreExactLayers)
{
    std::vector<float> radii;
    for (int i = 0; i <= 600; ++i)
        radii.push_back(-30.0f + 0.1f * i);  // -30 .. 30
    DepthLayersVZ layers;
    layers.Plan(radii.data(), static_cast<int32_t>(radii.size()), 1, 1.0);
    ASSERT_GT(layers.Count(), 2);
    EXPECT_FLOAT_EQ(layers.SignedRadius(0), -30.0f);
    EXPECT_FLOAT_EQ(layers.SignedRadius(layers.Count() - 1), 30.0f);
    for (int k = 1; k < layers.Count(); ++k) {
        const double a = layers.SignedRadius(k - 1), b = layers.SignedRadius(k);
        const double r = std::max(std::fabs(a), std::fabs(b));
        EXPECT_LE(b - a, std::max(1.0, 0.05 * r) + 1e-4) << k;
    }
    for (size_t i = 0; i < radii.size(); ++i) {
        double sum = 0.0;
        for (int k = 0; k < layers.Count(); ++k)
            sum += layers.Weight(k, i);
        EXPECT_NEAR(sum, 1.0, 1e-6);
    }
    // A frame of two depths is two layers' worth of pixels at exactly those radii.
    const float two[] = {0.0f, 0.0f, 7.5f, 7.5f};
    layers.Plan(two, 4, 1, 1.0);
    EXPECT_EQ(layers.Weight(0, 0), 1.0f);
    EXPECT_EQ(layers.Weight(layers.Count() - 1, 2), 1.0f);
    EXPECT_FLOAT_EQ(layers.SignedRadius(layers.Count() - 1), 7.5f);
}

class DepthRender : public ::testing::Test {
protected:
    static constexpr int W = 96, H = 64;
    void SetUp() override
    {
        for (Lumenveil* fx : {static_cast<Lumenveil*>(&depthFx), &plain}) {
            fx->shape.value = SHAPE_CIRCLE;
            fx->matchRadii.value = 1;
            fx->sides.value = 6;
            fx->brightEmphasis.value = 1.0;
            fx->alphaEnabled = 1;
        }
        depthFx.depthSettings.focus = 1.0;
        depthFx.depthSettings.maxRadius = 0.3;
        in = frame([](int, int, int) { return 0; });
        out = frame([](int, int, int) { return 0; });
        depth.assign(W * H, 1.0f);
    }
    // A frame filled by value(x, y, channel), alpha opaque.
    template <typename F> static std::unique_ptr<VZImage> frame(F value)
    {
        auto image = std::make_unique<VZImage>(W, H, 0, nullptr, 0u);
        for (int y = 0; y < H; ++y)
            for (int x = 0; x < W; ++x)
                for (int c = 0; c < 4; ++c)
                    image->rows[y][x * 4 + c] = c == 3 ? 32767 : static_cast<uint16_t>(value(x, y, c));
        return image;
    }
    // Radius at infinity so that depth z (focus 1) has a blur of `radius` pixels.
    void blurAt(double z, double radius)
    {
        depthFx.depthSettings.radiusInfinity = radius / (std::fabs(z - 1.0) / z) / (0.5 * W);
    }
    void render(Lumenveil& fx, VZImage* target)
    {
        fx.input.image = in.get();
        fx.output.image = target;
        depthFx.depth = DepthSamplesVZ{depth.data(), W, H, W};
        fx.Render();
    }
    int at(const VZImage& image, int x, int y, int c = 0) const { return image.rows[y][x * 4 + c]; }

    LumenveilDepth depthFx;
    Lumenveil plain;
    std::unique_ptr<VZImage> in, out, mask;
    std::vector<float> depth;
};

TEST_F(DepthRender, ConstantDepthGivesThePlainEffectAtThatRadiusInEachEngine)
{
    in = frame([](int x, int y, int c) {
        const bool dot = (x % 17 == 5 && y % 13 == 4);
        return dot ? 32767 : (x * 211 + y * 97 + c * 4001) % 9000;
    });
    std::fill(depth.begin(), depth.end(), 4.0f);
    blurAt(4.0, 6.0);
    plain.radiusX.value = plain.radiusY.value = 6.0 / (0.5 * W);
    for (uint32_t mode : {FFT_MODE_FFTW, FFT_MODE_FAST_FLOAT}) {
        for (Lumenveil* fx : {static_cast<Lumenveil*>(&depthFx), &plain}) {
            fx->SelectEngine(mode);
            fx->brightEmphasis.value = 50.0;
        }
        auto expected = frame([](int, int, int) { return 0; });
        render(plain, expected.get());
        render(depthFx, out.get());
        ASSERT_EQ(depthFx.lastStatus, FFT_OK);
        int worst = 0;
        for (int y = 0; y < H; ++y)
            for (int i = 0; i < W * 4; ++i)
                worst = std::max(worst, std::abs(out->rows[y][i] - expected->rows[y][i]));
        EXPECT_LE(worst, 1) << "mode " << mode;
    }
}

// A rectangle in focus in front of a defocused flat field with bright points.
TEST_F(DepthRender, SharpForegroundTakesNoBleedAndTheBackgroundBesideItNoFringe)
{
    constexpr int x0 = 30, x1 = 60, y0 = 16, y1 = 48, grey = 9000;
    auto inRect = [](int x, int y) { return x >= x0 && x < x1 && y >= y0 && y < y1; };
    // Points close to the left edge (their blur would reach into the rectangle);
    // none within twice the radius of the right edge.
    in = frame([&](int x, int y, int c) {
        if (inRect(x, y))
            return c == 2 ? 20000 : 3000;
        return (x == x0 - 3 && y % 6 == 0) ? 32767 : grey;
    });
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x)
            depth[y * W + x] = inRect(x, y) ? 1.0f : 8.0f;
    blurAt(8.0, 7.0);
    depthFx.brightEmphasis.value = 50.0;
    render(depthFx, out.get());
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x)
            for (int c = 0; c < 3; ++c) {
                if (inRect(x, y)) {
                    ASSERT_NEAR(at(*out, x, y, c), at(*in, x, y, c), 1) << "bleed at " << x << ", " << y;
                } else if (x >= x1 && x < x1 + 8 && y >= y0 && y < y1) {
                    ASSERT_NEAR(at(*out, x, y, c), grey, 2) << "fringe at " << x << ", " << y;
                }
            }
}

// A defocused rectangle in front of a sharp pattern of stripes in focus.
TEST_F(DepthRender, DefocusedForegroundMixesOverTheSharpPatternByItsBlurredCoverage)
{
    constexpr int x0 = 40, fg = 30000, stripeA = 4000, stripeB = 12000;
    constexpr double radius = 6.0;
    auto inRect = [](int x, int) { return x >= x0; };
    auto stripe = [](int y) { return y % 2 == 0 ? stripeA : stripeB; };
    in = frame([&](int x, int y, int) { return inRect(x, y) ? fg : stripe(y); });
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x)
            depth[y * W + x] = inRect(x, y) ? 0.5f : 1.0f;
    blurAt(0.5, radius);
    render(depthFx, out.get());
    // The blurred coverage: the rectangle's mask through the aperture of that
    // radius (the plain effect, linear).
    std::swap(in, mask);
    in = frame([&](int x, int y, int) { return inRect(x, y) ? 32767 : 0; });
    plain.radiusX.value = plain.radiusY.value = radius / (0.5 * W);
    auto blurredMask = frame([](int, int, int) { return 0; });
    render(plain, blurredMask.get());
    const int y = H / 2;
    int across = 0;
    for (int x = x0 - 10; x < x0 + 10; ++x) {
        const double coverage = at(*blurredMask, x, y) / 32767.0;
        if (coverage <= 0.0 || coverage >= 1.0)
            continue;
        ++across;
        // Outside the rectangle the pattern is seen through its soft edge;
        // inside, the pattern it hid, completed from around it: the stripes' mean.
        const bool outside = x < x0;
        const double behind = outside ? stripe(y) : (stripeA + stripeB) / 2.0;
        const double expected = coverage * fg + (1.0 - coverage) * behind;
        EXPECT_NEAR(at(*out, x, y), expected, outside ? 8 : 0.015 * 32767) << x << " coverage " << coverage;
    }
    EXPECT_GE(across, 2 * static_cast<int>(radius) - 2);
}

TEST_F(DepthRender, AStillFrameKeepsItsKernelsAndBadDepthLeavesTheOutput)
{
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x)
            depth[y * W + x] = 1.0f + x / 8.0f;  // a ramp from the focus away
    blurAt(2.0, 4.0);
    render(depthFx, out.get());
    const uint64_t prepared = depthFx.kernels.Prepared();
    EXPECT_GT(prepared, 2u);
    render(depthFx, out.get());
    EXPECT_EQ(depthFx.kernels.Prepared(), prepared);
    // Depth of another size: nothing is rendered.
    auto untouched = frame([](int, int, int) { return 777; });
    depthFx.input.image = in.get();
    depthFx.output.image = untouched.get();
    depthFx.depth = DepthSamplesVZ{depth.data(), W - 1, H, W};
    depthFx.Render();
    EXPECT_EQ(at(*untouched, 5, 5), 777);
}

}  // namespace
