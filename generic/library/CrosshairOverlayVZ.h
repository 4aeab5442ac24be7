// CrosshairOverlayVZ: the centre of the image aperture's cut-out, a crosshair
// with one handle; dragging it moves a PositionControlVZ.
#pragma once

#include "generic/library/OverlayVZ.h"

class CrosshairOverlayVZ : public OverlayControlVZ {
public:
    CrosshairOverlayVZ();
    // Draws the strokes and the handle at `position` and remembers the pixel.
    void Draw();
    void Mouse(int event, float x, float y) override;
    void Commit(int event, float x, float y) override;

    float position[2];       // fractions of the frame
    float pixelPosition[2];  // where the handle was drawn
    int32_t diagonals;       // non-zero adds four diagonal strokes
};
