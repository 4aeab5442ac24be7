// rasterise_polygon: exact coverage at the rim, full pixels inside, the row and
// run rules, and refusal of what it cannot paint.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <random>
#include <utility>
#include <vector>

#include "vzlibs/fftlib/polygon.h"
#include "vzlibs/imagelib/imagelib.h"

namespace {

using Point = std::pair<double, double>;

// Area of a convex polygon intersected with the axis-aligned box, in double:
// the box is clipped by the half-plane of each polygon edge (the reverse of what
// the rasteriser does), so the two computations share no code or order.
double intersectionArea(const PolygonList& polygon, double left, double top, double right, double bottom)
{
    const int n = polygon.count;
    double signedArea = 0.0;
    for (int i = 0; i < n; ++i) {
        const int j = (i + 1) % n;
        signedArea += double(polygon.points[i][0]) * polygon.points[j][1] -
                      double(polygon.points[j][0]) * polygon.points[i][1];
    }
    const double orientation = signedArea > 0.0 ? 1.0 : -1.0;
    std::vector<Point> region = {{left, top}, {right, top}, {right, bottom}, {left, bottom}};
    for (int i = 0; i < n && !region.empty(); ++i) {
        const int j = (i + 1) % n;
        const double ax = polygon.points[i][0], ay = polygon.points[i][1];
        const double ex = polygon.points[j][0] - ax, ey = polygon.points[j][1] - ay;
        auto side = [&](const Point& p) { return orientation * (ex * (p.second - ay) - ey * (p.first - ax)); };
        std::vector<Point> kept;
        for (size_t k = 0; k < region.size(); ++k) {
            const Point& a = region[k];
            const Point& b = region[(k + 1) % region.size()];
            const double sa = side(a), sb = side(b);
            if (sa >= 0.0)
                kept.push_back(a);
            if ((sa >= 0.0) != (sb >= 0.0)) {
                const double t = sa / (sa - sb);
                kept.push_back({a.first + (b.first - a.first) * t, a.second + (b.second - a.second) * t});
            }
        }
        region.swap(kept);
    }
    double area = 0.0;
    for (size_t k = 0; k < region.size(); ++k) {
        const Point& a = region[k];
        const Point& b = region[(k + 1) % region.size()];
        area += a.first * b.second - b.first * a.second;
    }
    return std::fabs(area) * 0.5;
}

PolygonList makePolygon(std::initializer_list<Point> points)
{
    PolygonList polygon{};
    for (const Point& p : points) {
        polygon.points[polygon.count][0] = static_cast<float>(p.first);
        polygon.points[polygon.count][1] = static_cast<float>(p.second);
        ++polygon.count;
    }
    return polygon;
}

class RasterisePolygon : public ::testing::Test {
protected:
    void SetUp() override { makeImage(40, 30, 0); }
    void TearDown() override { image_free(image); }

    void makeImage(int w, int h, unsigned char background)
    {
        if (image)
            image_free(image);
        image = image_create(w, h, 1, IMAGE_U8, 1);
        ASSERT_NE(image, nullptr);
        fill(background);
    }
    void fill(unsigned char value)
    {
        std::fill_n(static_cast<unsigned char*>(image->pixels), size_t(image->rowBytes) * image->height, value);
    }
    int at(int x, int y) const { return static_cast<const unsigned char*>(image->pixels)[y * image->rowBytes + x]; }
    std::vector<unsigned char> snapshot() const
    {
        const unsigned char* p = static_cast<const unsigned char*>(image->pixels);
        return {p, p + size_t(image->rowBytes) * image->height};
    }

    ImageRec* image = nullptr;
};

TEST_F(RasterisePolygon, RandomConvexPolygonsMatchExactCoverage)
{
    std::mt19937 random(20240611);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    const double pi = std::acos(-1.0);
    for (int trial = 0; trial < 300; ++trial) {
        fill(0);
        // Points on a turned ellipse at sorted angles: convex by construction.
        // Centres range beyond every edge of the 40 x 30 image.
        const double cx = -12.0 + unit(random) * 64.0, cy = -12.0 + unit(random) * 54.0;
        const double rx = 0.3 + unit(random) * 24.0, ry = 0.3 + unit(random) * 24.0;
        const double turn = unit(random) * pi;
        const int wanted = 3 + int(unit(random) * 48.0);
        std::vector<double> angles(wanted);
        for (double& a : angles)
            a = unit(random) * 2.0 * pi;
        std::sort(angles.begin(), angles.end());
        angles.erase(std::unique(angles.begin(), angles.end(), [](double a, double b) { return b - a < 0.02; }),
                     angles.end());
        if (angles.size() < 3)
            continue;
        PolygonList polygon{};
        for (double a : angles) {
            const double ex = std::cos(a) * rx, ey = std::sin(a) * ry;
            polygon.points[polygon.count][0] = float(cx + std::cos(turn) * ex - std::sin(turn) * ey);
            polygon.points[polygon.count][1] = float(cy + std::sin(turn) * ex + std::cos(turn) * ey);
            ++polygon.count;
        }
        // Either winding, starting anywhere.
        if (trial % 2)
            std::reverse(&polygon.points[0], &polygon.points[polygon.count]);
        const PolygonList unturned = polygon;
        for (int i = 0; i < polygon.count; ++i) {
            polygon.points[i][0] = unturned.points[(i + trial) % polygon.count][0];
            polygon.points[i][1] = unturned.points[(i + trial) % polygon.count][1];
        }

        rasterise_polygon(image, &polygon);

        float minX = polygon.points[0][0], maxX = minX, minY = polygon.points[0][1], maxY = minY;
        for (int i = 1; i < polygon.count; ++i) {
            minX = std::min(minX, polygon.points[i][0]);
            maxX = std::max(maxX, polygon.points[i][0]);
            minY = std::min(minY, polygon.points[i][1]);
            maxY = std::max(maxY, polygon.points[i][1]);
        }
        const bool inOnePixel = maxX <= std::floor(minX) + 1.0f && maxY <= std::floor(minY) + 1.0f;

        double painted = 0.0;
        for (int y = 0; y < image->height; ++y) {
            for (int x = 0; x < image->width; ++x) {
                double expected = 255.0 * intersectionArea(polygon, x, y, x + 1, y + 1);
                if (inOnePixel && x == int(std::floor(minX)) && y == int(std::floor(minY)))
                    expected = 255.0;
                ASSERT_NEAR(at(x, y), expected, 1.0)
                    << "trial " << trial << " pixel " << x << "," << y << " vertices " << polygon.count;
                painted += at(x, y);
            }
        }
        if (!inOnePixel) {
            const double area = intersectionArea(polygon, 0, 0, image->width, image->height);
            EXPECT_NEAR(painted / 255.0, area, 0.01 + 0.002 * area) << "trial " << trial;
        }
    }
}

TEST_F(RasterisePolygon, WholeNumberRectangleFillsItsPixelsOnly)
{
    const PolygonList clockwise = makePolygon({{3, 2}, {9, 2}, {9, 7}, {3, 7}});
    const PolygonList anticlockwise = makePolygon({{3, 2}, {3, 7}, {9, 7}, {9, 2}});
    const PolygonList otherStart = makePolygon({{9, 7}, {3, 7}, {3, 2}, {9, 2}});

    rasterise_polygon(image, &clockwise);
    for (int y = 0; y < image->height; ++y)
        for (int x = 0; x < image->width; ++x)
            ASSERT_EQ(at(x, y), (x >= 3 && x < 9 && y >= 2 && y < 7) ? 255 : 0) << x << "," << y;
    const std::vector<unsigned char> first = snapshot();

    for (const PolygonList* other : {&anticlockwise, &otherStart}) {
        fill(0);
        rasterise_polygon(image, other);
        EXPECT_EQ(snapshot(), first);
    }

    // Only the pixels next to the rectangle may be visited (and stored as 0);
    // everything further away keeps its value.
    fill(7);
    rasterise_polygon(image, &clockwise);
    for (int y = 0; y < image->height; ++y)
        for (int x = 0; x < image->width; ++x) {
            if (x >= 3 && x < 9 && y >= 2 && y < 7)
                ASSERT_EQ(at(x, y), 255);
            else if (x < 2 || x > 9 || y < 1 || y > 7)
                ASSERT_EQ(at(x, y), 7) << x << "," << y;
            else
                ASSERT_TRUE(at(x, y) == 7 || at(x, y) == 0) << x << "," << y;
        }
}

TEST_F(RasterisePolygon, TopVertexOnWholeNumberStartsOnItsRow)
{
    fill(7);
    const PolygonList onWhole = makePolygon({{10.5, 3.0}, {16.0, 12.0}, {5.0, 12.0}});
    rasterise_polygon(image, &onWhole);
    for (int x = 0; x < image->width; ++x)
        ASSERT_EQ(at(x, 2), 7) << "row above the top vertex was visited at x " << x;
    EXPECT_GT(at(10, 3), 7);

    fill(7);
    const PolygonList below = makePolygon({{10.5, 3.25}, {16.0, 12.0}, {5.0, 12.0}});
    rasterise_polygon(image, &below);
    for (int x = 0; x < image->width; ++x)
        ASSERT_EQ(at(x, 2), 7);
    EXPECT_GT(at(10, 3), 7);
}

TEST_F(RasterisePolygon, CoverageRoundsHalfUp)
{
    // Column 4 is half covered, pixel (4, 3) a quarter.
    const PolygonList rectangle = makePolygon({{2, 1}, {4.5, 1}, {4.5, 3.5}, {2, 3.5}});
    rasterise_polygon(image, &rectangle);
    EXPECT_EQ(at(4, 1), 128);
    EXPECT_EQ(at(4, 2), 128);
    EXPECT_EQ(at(2, 3), 128);
    EXPECT_EQ(at(4, 3), 64);
    EXPECT_EQ(at(3, 2), 255);
    EXPECT_EQ(at(5, 2), 0);
}

TEST_F(RasterisePolygon, PolygonInsideOnePixelPaintsItWhole)
{
    fill(7);
    const PolygonList tiny = makePolygon({{5.2, 4.1}, {5.6, 4.3}, {5.3, 4.8}});
    rasterise_polygon(image, &tiny);
    EXPECT_EQ(at(5, 4), 255);
    int changed = 0;
    for (int y = 0; y < image->height; ++y)
        for (int x = 0; x < image->width; ++x)
            changed += at(x, y) != 7;
    EXPECT_EQ(changed, 1);
}

TEST_F(RasterisePolygon, PolygonBeyondEveryEdgeFillsTheImage)
{
    const PolygonList huge = makePolygon({{-50.5, -40.25}, {90.75, -40.5}, {90.25, 70.5}, {-50.25, 70.75}});
    rasterise_polygon(image, &huge);
    for (int y = 0; y < image->height; ++y)
        for (int x = 0; x < image->width; ++x)
            ASSERT_EQ(at(x, y), 255) << x << "," << y;

    fill(7);
    const PolygonList outside = makePolygon({{-20, -20}, {-5, -18}, {-8, -3}});
    rasterise_polygon(image, &outside);
    const PolygonList below = makePolygon({{10, 35}, {20, 31}, {15, 60}});
    rasterise_polygon(image, &below);
    EXPECT_EQ(snapshot(), std::vector<unsigned char>(size_t(image->rowBytes) * image->height, 7));
}

TEST_F(RasterisePolygon, RefusesWhatItCannotPaint)
{
    const PolygonList square = makePolygon({{2, 2}, {8, 2}, {8, 8}, {2, 8}});
    rasterise_polygon(nullptr, &square);

    ImageRec* wide = image_create(10, 10, 3, IMAGE_U8, 1);
    ImageRec* deep = image_create(10, 10, 1, IMAGE_U16, 1);
    ASSERT_NE(wide, nullptr);
    ASSERT_NE(deep, nullptr);
    std::fill_n(static_cast<unsigned char*>(wide->pixels), wide->rowBytes * 10u, 7);
    std::fill_n(static_cast<unsigned char*>(deep->pixels), deep->rowBytes * 10u, 7);
    rasterise_polygon(wide, &square);
    rasterise_polygon(deep, &square);
    EXPECT_TRUE(std::all_of(static_cast<unsigned char*>(wide->pixels),
                            static_cast<unsigned char*>(wide->pixels) + wide->rowBytes * 10u,
                            [](unsigned char v) { return v == 7; }));
    EXPECT_TRUE(std::all_of(static_cast<unsigned char*>(deep->pixels),
                            static_cast<unsigned char*>(deep->pixels) + deep->rowBytes * 10u,
                            [](unsigned char v) { return v == 7; }));
    image_free(wide);
    image_free(deep);

    // Too few or too many vertices, or coordinates that are not numbers or lie
    // beyond the scan's exact range: nothing is painted, and the call returns.
    fill(7);
    PolygonList tooFew = makePolygon({{2, 2}, {8, 8}});
    PolygonList tooMany = square;
    tooMany.count = POLYGON_MAX_VERTICES + 1;
    PolygonList notANumber = square;
    notANumber.points[2][1] = std::nanf("");
    PolygonList farAway = square;
    farAway.points[2][1] = 3.0e7f;
    for (const PolygonList* bad : {&tooFew, &tooMany, &notANumber, &farAway})
        rasterise_polygon(image, bad);
    EXPECT_EQ(snapshot(), std::vector<unsigned char>(size_t(image->rowBytes) * image->height, 7));
}

}  // namespace
