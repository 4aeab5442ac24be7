// DepthSettingsVZ: the values of a depth-of-field render at one time, as the
// effect's depth properties give them, and the circle of confusion they come
// to for a frame.
#pragma once

#include <cstdint>

#include "effect/DepthLensVZ.h"

class DepthSettingsVZ {
public:
    double radiusInfinity = 0.02;  // r_inf as a fraction of the frame width (as RadiusX)
    bool useLens = false;          // r_inf from the lens values instead
    double fStop = 2.8;
    double focalLength = 50.0;     // millimetres
    double sensorWidth = 36.0;     // millimetres
    double depthUnit = 1000.0;     // millimetres in one unit of distance
    double focus = 1.0;            // in the depth's unit or scale
    double maxRadius = 0.05;       // a fraction of the frame width
    int32_t depthKind = DEPTH_DISTANCE;
    double layerSpacing = 1.0;     // 1: radii one pixel (5% beyond 20 pixels) apart

    // The circle of confusion of a frame `width` pixels wide: radii in pixels
    // (fractions x 0.5 x width, as the plain effect's radii), r_inf from the
    // lens when asked.
    DepthLensVZ Lens(int32_t width) const;
};
