// Polygon area and clipping: the cases the rasteriser's convex polygons on
// small images never reach.
#include <gtest/gtest.h>

#include "aperture_test_support.h"

namespace {

TEST(PolygonClip, AreaFarFromTheOriginKeepsFloatPrecision)
{
    const auto square = aperture_test::makePolygon<PolygonClip>(
        {{4000.25, 3000.5}, {4001.25, 3000.5}, {4001.25, 3001.5}, {4000.25, 3001.5}});
    EXPECT_NEAR(polygon_area(&square), 1.0f, 1e-4f);
}

TEST(PolygonClip, PlaneStepNeverOverrunsTheList)
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

}  // namespace
