#include "generic/library/LumenveilInfo.h"

namespace {

// Hidden state per Shape, in the columns sides, rotation, radiusX, radiusY,
// matchRadii, centre, radiusPsf1, radiusPsf2. Polygon's radiusY follows Match
// Radii and is set apart.
struct ShapeVisibility {
    bool sides, rotation, radiusX, radiusY, matchRadii, centre, radiusPsf1, radiusPsf2;
};
constexpr ShapeVisibility kHiddenByShape[kShapeCount] = {
    {true, true, false, true, true, true, true, true},        // Circle
    {true, false, false, false, true, true, true, true},      // Ellipse
    {false, false, false, false, false, true, true, true},    // Polygon
    {true, true, true, true, true, false, false, false},      // Image
};

// Whether RadiusY is hidden for a shape code in 1..4.
bool radiusYHidden(int32_t shapeCode, int32_t matchOn)
{
    return shapeCode == SHAPE_POLYGON ? matchOn != 0 : kHiddenByShape[shapeCode - 1].radiusY;
}

}  // namespace

LumenveilInfo::LumenveilInfo()
    : controlList{&shape,           &matchRadii,       &radiusX, &radiusY,    &sides,      &rotation,
                  &brightEmphasis, &emphasiseAlpha, &extremePrecision, &centre, &radiusPsf1, &radiusPsf2}
{
    crosshair.controlA = &centre;
    innerCircle.controlA = innerCircle.controlB = &radiusPsf1;
    outerCircle.controlA = outerCircle.controlB = &radiusPsf2;
    for (int i = 0; i < 4; ++i) {
        crosshair.colour[i] = kOverlayWhite[i];
        innerCircle.colour[i] = outerCircle.colour[i] = kOverlayYellow[i];
    }
    crosshair.diagonals = 0;
    innerCircle.singleHandle = outerCircle.singleHandle = 1;
    innerCircle.dashed = 0;
    outerCircle.dashed = 1;
}

LumenveilInfo::~LumenveilInfo() = default;

void LumenveilInfo::currentShape(int32_t* shapeCode, int32_t* matchOn)
{
    shape.GetValue(-1.0, shapeCode);
    matchRadii.GetValue(-1.0, matchOn);
}

void LumenveilInfo::OnShapeChanged(ControlVZ*, double)
{
    int32_t shapeCode = 0, matchOn = 0;
    currentShape(&shapeCode, &matchOn);
    // A Shape outside the list changes nothing.
    if (shapeCode < 1 || shapeCode > kShapeCount)
        return;
    const ShapeVisibility& hide = kHiddenByShape[shapeCode - 1];
    sides.SetHidden(hide.sides);
    rotation.SetHidden(hide.rotation);
    radiusX.SetHidden(hide.radiusX);
    radiusY.SetHidden(radiusYHidden(shapeCode, matchOn));
    matchRadii.SetHidden(hide.matchRadii);
    centre.SetHidden(hide.centre);
    radiusPsf1.SetHidden(hide.radiusPsf1);
    radiusPsf2.SetHidden(hide.radiusPsf2);
}

void LumenveilInfo::OnMatchRadiiChanged(ControlVZ*, double)
{
    int32_t shapeCode = 0, matchOn = 0;
    currentShape(&shapeCode, &matchOn);
    if (shapeCode < 1 || shapeCode > kShapeCount)
        return;
    radiusY.SetHidden(radiusYHidden(shapeCode, matchOn));
}
