#include "effect/DepthLensVZ.h"

#include <cmath>

float DepthLensVZ::SignedRadius(float depth) const
{
    // zf / z: 0 at infinity. Normalised depth d stands for 1 / z, so zf / z is
    // d / df there.
    double ratio = 0.0;
    if (kind == DEPTH_NORMALISED) {
        if (depth > 0.0f && std::isfinite(depth))
            ratio = depth / focus;
    } else if (depth > 0.0f && std::isfinite(depth)) {
        ratio = focus / depth;
    }
    const double s = radiusInfinity * (1.0 - ratio);
    if (!(s > -maxRadius))
        return static_cast<float>(-maxRadius);
    if (s > maxRadius)
        return static_cast<float>(maxRadius);
    return static_cast<float>(s);
}

float DepthLensVZ::Radius(float depth) const { return std::fabs(SignedRadius(depth)); }

double lens_radius_at_infinity(double fStop, double focalLength, double sensorWidth, double focusDistance,
                               double unitMillimetres, int32_t frameWidth)
{
    const double zf = focusDistance * unitMillimetres;
    if (!(fStop > 0.0 && focalLength > 0.0 && sensorWidth > 0.0 && zf > focalLength && frameWidth > 0))
        return 0.0;
    const double onSensor = focalLength * focalLength / (fStop * (zf - focalLength));
    return onSensor / sensorWidth * frameWidth;
}
