// Convex polygon rasteriser with exact area coverage at the edges.
//
// Coordinates are in pixels of the target: pixel (x, y) covers the unit square
// from x to x + 1 and from y to y + 1. All arithmetic is 32-bit float. Nothing
// here allocates or keeps state.
#pragma once

#include <cstdint>

#include "vzlibs/imagelib/imagelib.h"

// Places in a PolygonList: the most vertices a caller may pass.
constexpr int POLYGON_MAX_VERTICES = 50;
// Places in a PolygonClip. Each of the four box sides can add one vertex to a
// convex polygon (50 + 4); the rest is room for rounding at near-parallel edges.
constexpr int POLYGON_CLIP_VERTICES = 64;

// A polygon as passed in: `count` vertices, x then y of each, in order around it.
struct PolygonList {
    int32_t count;
    float points[POLYGON_MAX_VERTICES][2];
};

// The working copy that clipping writes: a PolygonList with room for the
// vertices that clipping adds.
struct PolygonClip {
    int32_t count;
    float points[POLYGON_CLIP_VERTICES][2];
};

// The clip box of one pixel: x, x + 1, y, y + 1.
struct PixelBox {
    float left;
    float right;
    float top;
    float bottom;
};

// Results of clip_polygon_to_box.
enum PolygonClipResult : int {
    POLYGON_CLIP_EMPTY = 0,   // nothing left; count set to 0
    POLYGON_CLIP_CUT = 1,     // the polygon now holds its part within the box
    POLYGON_CLIP_INSIDE = 2,  // wholly within the box, unchanged
};

// Paints a convex polygon into a one-channel 8-bit image: pixels that an edge
// touches get (int)(255 * coverage + 0.5), pixels between the edges 255. Every
// touched pixel is stored, never accumulated; untouched pixels keep their value,
// so the caller clears the image first. Does nothing for a null image, one that
// is not one channel of sample type 0, or a polygon it cannot scan (see source).
void rasterise_polygon(ImageRec* image, const PolygonList* polygon);

// The part of pixel (x, y) inside `polygon`, 0.0 to 1.0. A polygon wholly inside
// the pixel counts as covering all of it. `polygon` is not changed.
float pixel_coverage(const PolygonList* polygon, int x, int y);

// Clips `polygon` in place to `box`; returns a PolygonClipResult.
int clip_polygon_to_box(PolygonClip* polygon, const PixelBox* box);

// One Sutherland-Hodgman step: keeps the side where
// sign * coordinate[axis] - offset <= 0 (axis 0 is x, 1 is y). `output` must not
// be `input`. Never writes more than POLYGON_CLIP_VERTICES vertices.
void clip_polygon_to_plane(const PolygonClip* input, PolygonClip* output, int axis, float sign, float offset);

// The absolute area of a polygon.
float polygon_area(const PolygonClip* polygon);
float polygon_area(const PolygonList* polygon);
