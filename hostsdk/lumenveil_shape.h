// The Lumenveil effect's apertures, as its Shape property names them. The
// property holds the list index, 0 to 3; the effect's logic counts them from
// 1, the index plus one.
#pragma once

#include <cstdint>

// Shape as the effect's logic sees it: the property's list index plus one.
enum LumenveilShape : int32_t {
    SHAPE_CIRCLE = 1,
    SHAPE_ELLIPSE = 2,
    SHAPE_POLYGON = 3,
    SHAPE_IMAGE = 4,
};

// The Shape list's texts, in list order.
inline constexpr const char* kShapeNames[] = {"Circle", "Ellipse", "Polygon", "Image"};
inline constexpr int kShapeCount = 4;

// Whether the effect draws its viewer overlay (the cut-out's crosshair and
// circles) for `shape`: only the Image shape has a cut-out to place.
constexpr bool shapeDrawsOverlay(int32_t shape) { return shape == SHAPE_IMAGE; }

// The Shape property's value of a shape, and back.
constexpr int32_t shapePropertyValue(LumenveilShape shape) { return shape - 1; }
constexpr int32_t shapeOfProperty(int32_t value) { return value + 1; }
