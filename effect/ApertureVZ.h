// ApertureVZ: the parameter values that shape the kernel, and what they come
// to for a frame: the radii the engine's PSF builders are given, the blur's
// reach, and the transform that a frame with that reach needs in an engine
// mode. The render and anything that asks ahead (a host checking a frame
// before it renders it) work from this one rule.
#pragma once

#include <cstdint>

#include "hostsdk/lumenveil_shape.h"

// The transform a frame needs in one engine mode.
struct TransformVZ {
    float reach;          // the blur's reach in pixels
    uint32_t margin;      // kept on every side of the frame
    int64_t width;        // the transform's sides
    int64_t height;
    int64_t largestSide;  // the largest side the engine takes
    bool fits;            // whether the engine takes it
};

class ApertureVZ {
public:
    int32_t shape = SHAPE_CIRCLE;   // SHAPE_CIRCLE .. SHAPE_IMAGE
    bool matchRadii = true;
    double radiusX = 0.0;           // fractions of the frame width
    double radiusY = 0.0;
    double radiusPsf1 = 0.0;        // the Image cut-out's radii, fractions of the frame width
    double radiusPsf2 = 0.0;

    // Circle, Ellipse and Polygon: the pixel radii for a frame `width` wide,
    // RadiusX x 0.5 x width, and RadiusY the same way for an Ellipse and for a
    // Polygon without Match Radii, else the first again; each rounded to 32
    // bits once and then at least half a pixel. The frame height does not enter.
    void ShapeRadii(int32_t width, float* radius1, float* radius2) const;
    // Image: the cut-out's inner and outer radius in pixels (RadiusPSF1 and
    // RadiusPSF2 x 0.5 x width), the smaller first.
    void ImageRadii(int32_t width, float* inner, float* outer) const;
    // The blur's reach in pixels, as the engine's PSF builder counts it.
    float Reach(int32_t width) const;
    // The transform a width x height frame needs in engine `mode`, by the
    // engine's size rule.
    TransformVZ Transform(int32_t width, int32_t height, uint32_t mode) const;
};
