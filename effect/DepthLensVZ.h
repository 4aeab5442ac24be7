// DepthLensVZ: the circle of confusion of a depth-of-field render. A pixel at
// distance z, with the focus at distance zf, is blurred with the radius
// r(z) = r_inf x |z - zf| / z, at most maxRadius; r_inf is the radius of a
// point at infinity. The render works with the signed radius
// s(z) = r_inf x (z - zf) / z, negative in front of the focus and positive
// behind it, which grows with the distance: it orders the scene far to near
// as well as giving the blur.
#pragma once

#include <cstdint>

// How depth samples are read.
enum DepthKind : int32_t {
    // Distance from the camera in any unit; 0, negative, NaN and infinity
    // are at infinity.
    DEPTH_DISTANCE = 0,
    // Normalised depth from 0 to 1, proportional to 1 / distance (as a
    // disparity map): 1 is the nearest, 0 (and anything not above it) is at
    // infinity. The focus is given in the same scale.
    DEPTH_NORMALISED = 1,
};

class DepthLensVZ {
public:
    double radiusInfinity = 0.0;  // r_inf in pixels
    double focus = 1.0;           // zf, in the depth's unit or scale; above 0
    double maxRadius = 0.0;       // in pixels
    int32_t kind = DEPTH_DISTANCE;

    // The signed radius of a pixel of depth `depth`, limited to
    // -maxRadius..maxRadius.
    float SignedRadius(float depth) const;
    // Its blur radius, |SignedRadius|.
    float Radius(float depth) const;
};

// r_inf in pixels from a thin lens: f^2 / (N (zf - f)) on the sensor, with the
// focal length f and the sensor width in millimetres, the focus distance zf in
// depth units of `unitMillimetres` each, scaled by the frame's width in pixels
// over the sensor's width. 0 for a focus at or inside the focal length, or
// values that are not positive.
double lens_radius_at_infinity(double fStop, double focalLength, double sensorWidth, double focusDistance,
                               double unitMillimetres, int32_t frameWidth);
