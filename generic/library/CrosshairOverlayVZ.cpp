#include "generic/library/CrosshairOverlayVZ.h"

#include "generic/library/ControlVZ.h"
#include "generic/library/OverlayDrawing.h"
#include "generic/library/OverlayCommit.h"

CrosshairOverlayVZ::CrosshairOverlayVZ() : position{0.0f, 0.0f}, pixelPosition{0.0f, 0.0f}, diagonals(0) {}

void CrosshairOverlayVZ::Draw()
{
    DrawColour(colour[0], colour[1], colour[2], colour[3]);
    const float px = owner->imageWidth * position[0];
    const float py = owner->imageHeight * position[1];
    DrawCrosshair(px, py, diagonals != 0, kCrosshairInner / owner->zoom, kCrosshairOuter / owner->zoom);
    DrawHandle(px, py, activeHandle != 0, handleHalfSize());
    pixelPosition[0] = px;
    pixelPosition[1] = py;
}

void CrosshairOverlayVZ::Mouse(int event, float x, float y)
{
    const bool hit = overlayHandleHit(pixelPosition[0], pixelPosition[1], x, y, handleHalfSize());
    switch (event) {
    case OVERLAY_MOVE:
        hoverHandle = hit ? 1 : 0;
        Commit(OVERLAY_MOVE, x, y);
        break;
    case OVERLAY_PRESS:
        hoverHandle = activeHandle = hit ? 1 : 0;
        Commit(OVERLAY_PRESS, x, y);
        break;
    case OVERLAY_DRAG:
        if (activeHandle) {
            position[0] = x / owner->imageWidth;
            position[1] = y / owner->imageHeight;
        }
        Commit(OVERLAY_DRAG, x, y);
        break;
    case OVERLAY_RELEASE:
        Commit(OVERLAY_RELEASE, x, y);
        activeHandle = 0;
        break;
    default:
        break;
    }
}

void CrosshairOverlayVZ::Commit(int event, float, float)
{
    auto* control = static_cast<PositionControlVZ*>(controlA);
    if (!activeHandle || !control || !control->page)
        return;
    if (event == OVERLAY_DRAG) {
        // The page's number controls follow the drag; the properties wait.
        control->x = position[0];
        control->y = position[1];
        overlayShowValue(control, control->controlId, control->x);
        overlayShowValue(control, control->controlId + 1, control->y);
    } else if (event == OVERLAY_RELEASE) {
        overlayCommitValue(control, control->propertyGuid, control->x);
        overlayCommitValue(control, control->propertyGuidY, control->y);
    }
}
