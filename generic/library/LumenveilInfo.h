// LumenveilInfo: the effect's parameter block for one frame: the image slots,
// the three overlay items and the parameter controls with their labels and
// page widget numbers. The host's properties are the truth; the values here
// are copies that the execute path fills before each render.
#pragma once

#include <cstdint>
#include <span>

#include "generic/library/CircleOverlayVZ.h"
#include "generic/library/ControlVZ.h"
#include "generic/library/CrosshairOverlayVZ.h"
#include "generic/library/ImageSlot.h"
#include "hostsdk/lumenveil_shape.h"

// First page widget of each control; the others follow it.
enum LumenveilControlId : uint32_t {
    ID_SHAPE = 12,
    ID_MATCH_RADII = 16,
    ID_RADIUS_X = 20,
    ID_RADIUS_Y = 24,
    ID_SIDES = 28,
    ID_ROTATION = 32,
    ID_BRIGHT_EMPHASIS = 36,
    ID_EMPHASISE_ALPHA = 40,
    ID_EXTREME_PRECISION = 44,
    ID_CENTRE = 48,  // 48, 49 for x and y, 50, 51 their second widgets
    ID_RADIUS_PSF1 = 56,
    ID_RADIUS_PSF2 = 60,
};

// Overlay colours, 0 to 65535 per channel: red, green, blue, alpha.
inline constexpr uint32_t kOverlayWhite[4] = {65535, 65535, 65535, 65535};
inline constexpr uint32_t kOverlayYellow[4] = {65535, 65535, 0, 65535};

class LumenveilInfo {
public:
    LumenveilInfo();
    virtual ~LumenveilInfo();

    // Applies the show/hide table for `Shape` (read with Match Radii through the
    // controls at the current time). `control` and `time` are not looked at.
    void OnShapeChanged(ControlVZ* control, double time);
    // Shows or hides RadiusY alone by Shape and Match Radii.
    void OnMatchRadiiChanged(ControlVZ* control, double time);

    // The twelve controls in the page's order.
    std::span<ControlVZ* const> controls() const { return controlList; }
    static constexpr int kControlCount = 12;

    InputImageSlot input;
    InputImageSlot spread;
    ImageSlot output;
    CrosshairOverlayVZ crosshair;
    CircleOverlayVZ innerCircle;
    CircleOverlayVZ outerCircle;
    ListControlVZ shape;
    CheckboxControlVZ matchRadii;
    SizeControlVZ radiusX;
    SizeControlVZ radiusY;
    IntegerControlVZ sides;
    FloatControlVZ rotation;
    FloatControlVZ brightEmphasis;
    CheckboxControlVZ emphasiseAlpha;
    CheckboxControlVZ extremePrecision;
    PositionControlVZ centre;
    SizeControlVZ radiusPsf1;
    SizeControlVZ radiusPsf2;

private:
    // Shape and Match Radii as the page shows them now.
    void currentShape(int32_t* shapeCode, int32_t* matchOn);
    ControlVZ* controlList[kControlCount];
};
