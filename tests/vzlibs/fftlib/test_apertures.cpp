// Apertures. rasterise_polygon: exact coverage at the rim, full pixels inside,
// the row rules, refusal of what it cannot paint, clipping at its limit.
// FftEngine's PSF builders: BuildShapePsf draws the aperture around the centre
// of psfImage with its pad margin; BuildImagePsf cuts a soft-rimmed disc out of
// a picture and moves it to the middle. Refusals of both.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <memory>
#include <random>
#include <vector>

#include "engine_test_support.h"

namespace {

using enginetest::Extent;
using enginetest::Image;
using enginetest::makePolygon;
using enginetest::picture;
using Point = std::pair<double, double>;

// Area of a convex polygon within an axis-aligned box, in double: the box is
// clipped by each polygon edge's half-plane (the reverse of the rasteriser's
// order), so the two computations share no code.
double intersectionArea(const PolygonList& polygon, double left, double top, double right, double bottom)
{
    const int n = polygon.count;
    auto px = [&](int i) { return double(polygon.points[i % n][0]); };
    auto py = [&](int i) { return double(polygon.points[i % n][1]); };
    double orientation = 0.0;
    for (int i = 0; i < n; ++i)
        orientation += px(i) * py(i + 1) - px(i + 1) * py(i);
    std::vector<Point> region = {{left, top}, {right, top}, {right, bottom}, {left, bottom}}, kept;
    for (int i = 0; i < n; ++i, region.swap(kept), kept.clear()) {
        auto side = [&](const Point& p) {
            return std::copysign(1.0, orientation) *
                   ((px(i + 1) - px(i)) * (p.second - py(i)) - (py(i + 1) - py(i)) * (p.first - px(i)));
        };
        for (size_t k = 0; k < region.size(); ++k) {
            const Point a = region[k], b = region[(k + 1) % region.size()];
            const double sa = side(a), sb = side(b);
            if (sa >= 0.0)
                kept.push_back(a);
            if ((sa >= 0.0) != (sb >= 0.0)) {
                const double t = sa / (sa - sb);
                kept.push_back({a.first + (b.first - a.first) * t, a.second + (b.second - a.second) * t});
            }
        }
    }
    double area = 0.0;
    for (size_t k = 0; k < region.size(); ++k)
        area += region[k].first * region[(k + 1) % region.size()].second -
                region[(k + 1) % region.size()].first * region[k].second;
    return std::fabs(area) * 0.5;
}

class RasterisePolygon : public ::testing::Test {
protected:
    void TearDown() override { image_free(image); }
    void fill(unsigned char value) { std::fill_n(static_cast<unsigned char*>(image->pixels), 40 * 30, value); }
    int at(int x, int y) const { return enginetest::at(image, x, y); }

    ImageRec* image = image_create(40, 30, 1, IMAGE_U8, 1);
};

TEST_F(RasterisePolygon, RandomConvexPolygonsMatchExactCoverage)
{
    std::mt19937 random(20240611);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    const double pi = std::acos(-1.0);
    for (int trial = 0; trial < 300; ++trial) {
        // Points on a turned ellipse at sorted angles, convex by construction,
        // in either winding from any start; centres range beyond every edge.
        const double cx = -12.0 + unit(random) * 64.0, cy = -12.0 + unit(random) * 54.0;
        const double rx = 0.3 + unit(random) * 24.0, ry = 0.3 + unit(random) * 24.0, turn = unit(random) * pi;
        std::vector<double> angles(3 + int(unit(random) * 48.0));
        for (double& a : angles)
            a = unit(random) * 2.0 * pi;
        std::sort(angles.begin(), angles.end());
        angles.erase(std::unique(angles.begin(), angles.end(), [](double a, double b) { return b - a < 0.02; }),
                     angles.end());
        if (angles.size() < 3)
            continue;
        std::rotate(angles.begin(), angles.begin() + trial % angles.size(), angles.end());
        if (trial % 2)
            std::reverse(angles.begin(), angles.end());
        PolygonList polygon{};
        float minX = 1e9f, maxX = -1e9f, minY = 1e9f, maxY = -1e9f;
        for (double a : angles) {
            const double ex = std::cos(a) * rx, ey = std::sin(a) * ry;
            const float x = float(cx + std::cos(turn) * ex - std::sin(turn) * ey);
            const float y = float(cy + std::sin(turn) * ex + std::cos(turn) * ey);
            polygon.points[polygon.count][0] = x;
            polygon.points[polygon.count++][1] = y;
            minX = std::min(minX, x), maxX = std::max(maxX, x), minY = std::min(minY, y), maxY = std::max(maxY, y);
        }
        fill(0);
        rasterise_polygon(image, &polygon);

        const bool inOnePixel = maxX <= std::floor(minX) + 1.0f && maxY <= std::floor(minY) + 1.0f;
        for (int y = 0; y < 30; ++y)
            for (int x = 0; x < 40; ++x) {
                const bool thePixel = inOnePixel && x == int(std::floor(minX)) && y == int(std::floor(minY));
                const double expected = thePixel ? 255.0 : 255.0 * intersectionArea(polygon, x, y, x + 1, y + 1);
                ASSERT_NEAR(at(x, y), expected, 1.0) << "trial " << trial << " pixel " << x << "," << y;
            }
    }
}

TEST_F(RasterisePolygon, RowAndRimRules)
{
    // A top vertex on a whole number y starts on row y, not the row above.
    fill(7);
    const PolygonList triangle = makePolygon({{10.5, 3.0}, {16.0, 12.0}, {5.0, 12.0}});
    rasterise_polygon(image, &triangle);
    for (int x = 0; x < 40; ++x)
        ASSERT_EQ(at(x, 2), 7) << x;
    EXPECT_GT(at(10, 3), 7);

    // Coverage rounds half up: half a pixel stores 128, a quarter 64.
    fill(0);
    const PolygonList rectangle = makePolygon({{2, 1}, {4.5, 1}, {4.5, 3.5}, {2, 3.5}});
    rasterise_polygon(image, &rectangle);
    EXPECT_EQ(at(4, 2), 128);
    EXPECT_EQ(at(2, 3), 128);
    EXPECT_EQ(at(4, 3), 64);

    // A polygon wholly inside one pixel paints that pixel whole, and no other.
    fill(0);
    const PolygonList tiny = makePolygon({{5.2, 4.1}, {5.6, 4.3}, {5.3, 4.8}});
    rasterise_polygon(image, &tiny);
    EXPECT_EQ(at(5, 4), 255);
    EXPECT_EQ(enginetest::measure(image).count, 1);
}

TEST_F(RasterisePolygon, PaintsNothingItCannotScan)
{
    // No image, too few or too many vertices, coordinates that are not numbers
    // or lie beyond the scan's exact range: the call returns, painting nothing.
    const PolygonList square = makePolygon({{2, 2}, {8, 2}, {8, 8}, {2, 8}});
    rasterise_polygon(nullptr, &square);
    fill(7);
    PolygonList tooFew = makePolygon({{2, 2}, {8, 8}}), tooMany = square, notANumber = square, farAway = square;
    tooMany.count = POLYGON_MAX_VERTICES + 1;
    notANumber.points[2][1] = std::nanf("");
    farAway.points[2][1] = 3.0e7f;
    for (const PolygonList* bad : {&tooFew, &tooMany, &notANumber, &farAway})
        rasterise_polygon(image, bad);
    EXPECT_EQ(picture(image), std::vector<unsigned char>(40 * 30, 7));
}

TEST(PolygonClip, APlaneStepNeverOverrunsTheList)
{
    // A zigzag crossing the plane at every edge would need far more room.
    PolygonClip zigzag{}, out{};
    for (int i = 0; i < POLYGON_CLIP_VERTICES; ++i) {
        zigzag.points[i][0] = (i % 2) ? 1.0f : -1.0f;
        zigzag.points[i][1] = float(i);
    }
    zigzag.count = POLYGON_CLIP_VERTICES;
    clip_polygon_to_plane(&zigzag, &out, 0, 1.0f, 0.0f);
    EXPECT_EQ(out.count, POLYGON_CLIP_VERTICES);
}

class PsfBuilders : public ::testing::Test {
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

    // Channel 0 is `value` (at (dotX, dotY) only when a dot is given, 0
    // elsewhere); the other channels are 250.
    ImageRec* source(int w, int h, uint32_t value, int type = IMAGE_U8, int channels = 1, int dotX = -1, int dotY = -1)
    {
        Image& image = *sources.emplace_back(std::make_unique<Image>(w, h, channels, type));
        image.each([&](int x, int y, int c) {
            image.set(x, y, c, c ? 250u : dotX < 0 || (x == dotX && y == dotY) ? value : 0u);
        });
        return image.rec;
    }
    int at(int x, int y) const { return enginetest::at(engine.psfImage, x, y); }

    const double pi = std::acos(-1.0);
    FftEngine engine;
    std::vector<std::unique_ptr<Image>> sources;
};

TEST_F(PsfBuilders, ShapeRadiiAndPixelAspectShapeTheEllipse)
{
    // Radii below 1 draw radius 1 but keep their margin.
    ASSERT_TRUE(build(1, 0.2f, 0.3f));
    EXPECT_EQ(engine.padMargin, 2);
    const std::vector<unsigned char> clamped = picture();
    ASSERT_TRUE(build(1, 1.0f, 1.0f));
    EXPECT_EQ(picture(), clamped);
    EXPECT_NEAR(measure().area, pi, 0.05);
    // Centre (32, 24); the ellipse is a 50-gon: 25 sin(2 pi / 50) x 10 x 5 of area.
    expectBox(1, 10.0f, 5.0f, 0.0f, {22, 41, 19, 28}, 1);
    EXPECT_NEAR(measure().area, 25.0 * std::sin(2.0 * pi / 50.0) * 50.0, 0.1);
    // Pixels twice as wide as high: the circle is half as wide, as high as
    // before, and the margin stays that of the radius: ceil(12) + 1.
    ASSERT_TRUE(engine.SetPixelAspect(2.0f, 1.0f));
    expectBox(1, 12.0f, 12.0f, 0.0f, {26, 37, 12, 35}, 1);
    EXPECT_EQ(std::pair(measure().width(), engine.padMargin), std::pair(12, 13));
    ASSERT_TRUE(engine.SetPixelAspect(1.0f, 0.5f));
    ASSERT_TRUE(build(1, 12.0f, 12.0f));
    EXPECT_EQ(std::pair(measure().height(), engine.padMargin), std::pair(48, 13));
}

TEST_F(PsfBuilders, ShapePositiveRotationTurnsFromXTowardsY)
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
            EXPECT_GT(at(x, sign > 0 ? below : above), 127) << c.shape << " " << sign;
            EXPECT_EQ(at(x, sign > 0 ? above : below), 0) << c.shape << " " << sign;
        }
}

TEST_F(PsfBuilders, ShapePolygonSidesAreLimitedToThreeAndFifty)
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

TEST_F(PsfBuilders, ShapeStreakRunsOutFromTheCentreAndTheBarIsShiftedBackAlongXOnly)
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

TEST_F(PsfBuilders, BadArgumentsAreRefused)
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
    EXPECT_FALSE(engine.BuildImagePsf(nullptr, 20, 15, 5.0f, 2.0f));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_NOT_PREPARED);
    EXPECT_FALSE(engine.BuildImagePsf(source(40, 30, 200), 20, 15, std::nanf(""), 2.0f));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_ARGUMENT);
}

TEST_F(PsfBuilders, ImageWeightFallsLinearlyOverTheSoftnessAndTheMarginIsTheReachPlusOne)
{
    // Radius 0: a cone, full only at the centre, zero at distance 20.
    ASSERT_TRUE(engine.BuildImagePsf(source(40, 40, 200), 20, 20, 0.0f, 20.0f));
    EXPECT_EQ(engine.padMargin, 21);
    const int cone[][3] = {{20, 20, 200}, {30, 20, 100}, {20, 15, 150}, {23, 24, 150}, {0, 20, 0}};
    for (const auto& p : cone)
        EXPECT_EQ(at(p[0], p[1]), p[2]) << p[0] << "," << p[1];
    // Softness below 1 counts as 1; the weighted sample is truncated.
    ASSERT_TRUE(engine.BuildImagePsf(source(40, 40, 200), 20, 20, 5.0f, 0.0f));
    EXPECT_EQ(engine.padMargin, 7);
    EXPECT_EQ(at(25, 20), 200);
    EXPECT_EQ(at(24, 24), int(200.0 * (6.0 - std::sqrt(32.0))));
    EXPECT_EQ(at(26, 20), 0);
}

TEST_F(PsfBuilders, ImageCutOutsWithoutStructureBecomeTheSinglePixel)
{
    // A disc wholly outside the source (at centres that would overflow an int),
    // a black source, and a uniform one filling the disc.
    const struct { uint32_t value; int x, y; float radius; } flatCases[] = {
        {180, INT32_MIN, INT32_MAX, 10.0f}, {0, 20, 15, 10.0f}, {90, 20, 15, 60.0f}};
    for (const auto& c : flatCases) {
        ASSERT_TRUE(engine.BuildImagePsf(source(40, 30, c.value), c.x, c.y, c.radius, 5.0f));
        EXPECT_EQ(at(20, 15), 255) << c.value;
        EXPECT_EQ(measure().count, 1) << c.value;
    }
}

TEST_F(PsfBuilders, ImageReadsTheTopByteOfChannelZeroAroundTheLowerMiddle)
{
    // Width 5, height 4: the centre (1, 3) lands on (2, 2).
    const struct { uint32_t value; int type, channels, top; } cases[] = {
        {90u, IMAGE_U8, 3, 90}, {0xAB12u, IMAGE_U16, 4, 0xAB}, {0xCD123456u, IMAGE_I32, 1, 0xCD}};
    for (const auto& c : cases) {
        ASSERT_TRUE(engine.BuildImagePsf(source(5, 4, c.value, c.type, c.channels, 1, 3), 1, 3, 50.0f, 1.0f));
        EXPECT_EQ(at(2, 2), c.top);
        EXPECT_EQ(measure().count, 1);
    }
}

}  // namespace
