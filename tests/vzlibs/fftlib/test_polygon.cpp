// rasterise_polygon: exact coverage at the rim, full pixels inside, the row
// rules, and refusal of what it cannot paint; area and clipping at their limits.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "engine_test_support.h"

namespace {

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
        double painted = 0.0;
        for (int y = 0; y < 30; ++y)
            for (int x = 0; x < 40; ++x) {
                const bool thePixel = inOnePixel && x == int(std::floor(minX)) && y == int(std::floor(minY));
                const double expected = thePixel ? 255.0 : 255.0 * intersectionArea(polygon, x, y, x + 1, y + 1);
                ASSERT_NEAR(at(x, y), expected, 1.0) << "trial " << trial << " pixel " << x << "," << y;
                painted += at(x, y);
            }
        if (!inOnePixel) {
            const double area = intersectionArea(polygon, 0, 0, 40, 30);
            EXPECT_NEAR(painted / 255.0, area, 0.01 + 0.002 * area) << "trial " << trial;
        }
    }
}

TEST_F(RasterisePolygon, WholeNumberRectangleFillsItsPixelsOnlyInEitherWinding)
{
    const PolygonList clockwise = makePolygon({{3, 2}, {9, 2}, {9, 7}, {3, 7}});
    const PolygonList anticlockwise = makePolygon({{3, 2}, {3, 7}, {9, 7}, {9, 2}});
    // Only the pixels beside it may be visited (and stored as 0).
    for (const PolygonList* rectangle : {&clockwise, &anticlockwise}) {
        fill(7);
        rasterise_polygon(image, rectangle);
        for (int y = 0; y < 30; ++y)
            for (int x = 0; x < 40; ++x) {
                const bool inside = x >= 3 && x < 9 && y >= 2 && y < 7, beside = x >= 2 && x <= 9 && y >= 1 && y <= 7;
                ASSERT_TRUE(inside ? at(x, y) == 255 : at(x, y) == 7 || (beside && at(x, y) == 0)) << x << "," << y;
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

TEST(PolygonClip, AreaFarFromTheOriginKeepsFloatPrecisionAndAPlaneStepNeverOverrunsTheList)
{
    const auto square =
        makePolygon<PolygonClip>({{4000.25, 3000.5}, {4001.25, 3000.5}, {4001.25, 3001.5}, {4000.25, 3001.5}});
    EXPECT_NEAR(polygon_area(&square), 1.0f, 1e-4f);
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

}  // namespace
