#include "effect/DepthSettingsVZ.h"

namespace {

double pixels(double fraction, int32_t width) { return fraction * 0.5 * width; }

}  // namespace

DepthLensVZ DepthSettingsVZ::Lens(int32_t width) const
{
    DepthLensVZ lens;
    lens.radiusInfinity = useLens ? lens_radius_at_infinity(fStop, focalLength, sensorWidth, focus, depthUnit, width)
                                  : pixels(radiusInfinity, width);
    lens.focus = focus;
    lens.maxRadius = pixels(maxRadius, width);
    lens.kind = depthKind;
    return lens;
}
