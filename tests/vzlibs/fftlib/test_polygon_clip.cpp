// Polygon clipping, area and pixel coverage.
#include <gtest/gtest.h>

#include <initializer_list>
#include <utility>

#include "vzlibs/fftlib/polygon.h"

namespace {

template <typename List>
List makeList(std::initializer_list<std::pair<float, float>> points)
{
    List polygon{};
    for (const auto& p : points) {
        polygon.points[polygon.count][0] = p.first;
        polygon.points[polygon.count][1] = p.second;
        ++polygon.count;
    }
    return polygon;
}

template <typename List>
float areaOf(const List& polygon)
{
    return polygon_area(&polygon);
}

bool withinBox(const PolygonClip& polygon, const PixelBox& box)
{
    for (int i = 0; i < polygon.count; ++i) {
        const float x = polygon.points[i][0], y = polygon.points[i][1];
        if (x < box.left || x > box.right || y < box.top || y > box.bottom)
            return false;
    }
    return true;
}

TEST(PolygonArea, IsAbsoluteInEitherWinding)
{
    EXPECT_FLOAT_EQ(areaOf(makeList<PolygonList>({{0, 0}, {2, 0}, {2, 3}, {0, 3}})), 6.0f);
    EXPECT_FLOAT_EQ(areaOf(makeList<PolygonList>({{0, 0}, {0, 3}, {2, 3}, {2, 0}})), 6.0f);
    EXPECT_FLOAT_EQ(areaOf(makeList<PolygonClip>({{1, 1}, {5, 1}, {1, 4}})), 6.0f);
    // Far from the origin the sum is taken from the last vertex's y, so a unit
    // square there keeps its area to float precision.
    EXPECT_NEAR(areaOf(makeList<PolygonList>({{4000.25f, 3000.5f}, {4001.25f, 3000.5f}, {4001.25f, 3001.5f},
                                                     {4000.25f, 3001.5f}})),
                1.0f, 1e-4f);
    EXPECT_EQ(areaOf(makeList<PolygonClip>({})), 0.0f);
}

TEST(ClipPolygonToPlane, KeepsTheInnerSide)
{
    const PolygonClip square = makeList<PolygonClip>({{0, 0}, {2, 0}, {2, 2}, {0, 2}});
    PolygonClip out{};
    clip_polygon_to_plane(&square, &out, 0, 1.0f, 1.0f);  // x <= 1
    EXPECT_EQ(out.count, 4);
    EXPECT_FLOAT_EQ(polygon_area(&out), 2.0f);
    for (int i = 0; i < out.count; ++i)
        EXPECT_LE(out.points[i][0], 1.0f);

    clip_polygon_to_plane(&square, &out, 1, -1.0f, -1.5f);  // y >= 1.5
    EXPECT_FLOAT_EQ(polygon_area(&out), 1.0f);
    for (int i = 0; i < out.count; ++i)
        EXPECT_GE(out.points[i][1], 1.5f);

    // A corner cut adds one vertex to a convex polygon.
    const PolygonClip triangle = makeList<PolygonClip>({{0, 0}, {4, 0}, {0, 4}});
    clip_polygon_to_plane(&triangle, &out, 0, 1.0f, 1.0f);
    EXPECT_EQ(out.count, 4);
    EXPECT_FLOAT_EQ(polygon_area(&out), 3.5f);

    // A zigzag that crosses the plane at every edge would need far more room
    // than the list has; the step stops at the list's end instead of overrunning.
    PolygonClip zigzag{};
    for (int i = 0; i < POLYGON_CLIP_VERTICES; ++i) {
        zigzag.points[i][0] = (i % 2) ? 1.0f : -1.0f;
        zigzag.points[i][1] = float(i);
    }
    zigzag.count = POLYGON_CLIP_VERTICES;
    clip_polygon_to_plane(&zigzag, &out, 0, 1.0f, 0.0f);
    EXPECT_EQ(out.count, POLYGON_CLIP_VERTICES);
}

TEST(ClipPolygonToBox, ReportsInsideEmptyOrCut)
{
    const PixelBox box = {3.0f, 4.0f, 5.0f, 6.0f};

    // Vertices on the sides count as inside: the polygon is left as it is.
    PolygonClip inside = makeList<PolygonClip>({{3.0f, 5.0f}, {4.0f, 5.5f}, {3.5f, 6.0f}});
    const PolygonClip before = inside;
    EXPECT_EQ(clip_polygon_to_box(&inside, &box), POLYGON_CLIP_INSIDE);
    EXPECT_EQ(inside.count, before.count);
    EXPECT_EQ(inside.points[1][0], before.points[1][0]);

    // All vertices beyond one side.
    PolygonClip right = makeList<PolygonClip>({{4.5f, 0.0f}, {9.0f, 5.5f}, {4.1f, 9.0f}});
    EXPECT_EQ(clip_polygon_to_box(&right, &box), POLYGON_CLIP_EMPTY);
    EXPECT_EQ(right.count, 0);

    // Beyond no single side, yet clear of the box's corner: clipping empties it.
    PolygonClip corner = makeList<PolygonClip>({{2.4f, 5.5f}, {3.5f, 6.6f}, {2.0f, 7.0f}});
    EXPECT_EQ(clip_polygon_to_box(&corner, &box), POLYGON_CLIP_EMPTY);
    EXPECT_EQ(corner.count, 0);

    // Crossing every side: the box itself is what is left.
    PolygonClip cover = makeList<PolygonClip>({{0, 0}, {10, 0}, {10, 10}, {0, 10}});
    EXPECT_EQ(clip_polygon_to_box(&cover, &box), POLYGON_CLIP_CUT);
    EXPECT_TRUE(withinBox(cover, box));
    EXPECT_FLOAT_EQ(polygon_area(&cover), 1.0f);

    // A triangle reaching past the right and bottom sides: the box part is a
    // 0.8 square less a corner of legs 0.6 beyond x + y = 9.4.
    PolygonClip across = makeList<PolygonClip>({{3.2f, 5.2f}, {4.2f, 5.2f}, {3.2f, 6.2f}});
    EXPECT_EQ(clip_polygon_to_box(&across, &box), POLYGON_CLIP_CUT);
    EXPECT_TRUE(withinBox(across, box));
    EXPECT_NEAR(polygon_area(&across), 0.46f, 1e-5f);
}

TEST(PixelCoverage, GivesTheCoveredPartAndLeavesThePolygon)
{
    const PolygonList rectangle = makeList<PolygonList>({{1.0f, 1.0f}, {2.5f, 1.0f}, {2.5f, 3.0f}, {1.0f, 3.0f}});
    const PolygonList copy = rectangle;
    EXPECT_FLOAT_EQ(pixel_coverage(&rectangle, 2, 1), 0.5f);
    EXPECT_FLOAT_EQ(pixel_coverage(&rectangle, 1, 2), 1.0f);
    EXPECT_EQ(pixel_coverage(&rectangle, 3, 1), 0.0f);
    EXPECT_EQ(pixel_coverage(&rectangle, 0, 5), 0.0f);
    EXPECT_EQ(rectangle.count, copy.count);
    for (int i = 0; i < rectangle.count; ++i) {
        EXPECT_EQ(rectangle.points[i][0], copy.points[i][0]);
        EXPECT_EQ(rectangle.points[i][1], copy.points[i][1]);
    }

    // Wholly inside one pixel counts as all of it, however small.
    const PolygonList speck = makeList<PolygonList>({{7.4f, 2.4f}, {7.41f, 2.4f}, {7.4f, 2.41f}});
    EXPECT_EQ(pixel_coverage(&speck, 7, 2), 1.0f);
    EXPECT_EQ(pixel_coverage(&speck, 6, 2), 0.0f);
}

}  // namespace
