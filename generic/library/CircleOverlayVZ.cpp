#include "generic/library/CircleOverlayVZ.h"

#include <cmath>

#include "generic/library/ControlVZ.h"
#include "generic/library/OverlayCommit.h"
#include "generic/library/OverlayDrawing.h"

namespace {

constexpr float kAngleX = 0.0f;
constexpr float kAngleY = -1.5707964f;
constexpr float kAngleDiagonal = -0.7853982f;
constexpr float kSegmentLength = 4.0f;
constexpr double kDegree = 3.141592653589793 / 180.0;

// Handle slots in handleX / handleY.
enum { SLOT_DIAGONAL = 0, SLOT_X = 1, SLOT_Y = 2 };

// Shows (drag) or commits (release) a radius through its size control.
void writeRadius(ControlVZ* control, int event, double value)
{
    auto* size = static_cast<FloatControlVZ*>(control);
    if (!size || !size->page)
        return;
    if (event == OVERLAY_DRAG) {
        size->value = value;
        overlayShowValue(size, size->controlId, value);
    } else {
        overlayCommitValue(size, size->propertyGuid, size->value);
    }
}

}  // namespace

CircleOverlayVZ::CircleOverlayVZ()
    : centre{0.0f, 0.0f},
      radius{0.0f, 0.0f},
      rotation(0.0f),
      singleHandle(0),
      dashed(0),
      handleX{0.0f, 0.0f, 0.0f},
      handleY{0.0f, 0.0f, 0.0f}
{
}

void CircleOverlayVZ::Draw()
{
    DrawColour(colour[0], colour[1], colour[2], colour[3]);
    const float W = static_cast<float>(owner->imageWidth);
    const float cx = W * centre[0];
    const float cy = owner->imageHeight * centre[1];
    const float rx = radius[0] * W * 0.5f;
    const float ry = radius[1] * W * 0.5f;
    DrawEllipse(cx, cy, 2.0f * rx, 2.0f * ry, rotation, dashed != 0, kSegmentLength, 0.0f, 360.0f);

    const double turn = rotation * kDegree;
    const float cosR = static_cast<float>(std::cos(turn)), sinR = static_cast<float>(std::sin(turn));
    EllipsePoint(cx, cy, rx, ry, cosR, sinR, kAngleX, &handleX[SLOT_X], &handleY[SLOT_X]);
    EllipsePoint(cx, cy, rx, ry, cosR, sinR, kAngleY, &handleX[SLOT_Y], &handleY[SLOT_Y]);
    EllipsePoint(cx, cy, rx, ry, cosR, sinR, kAngleDiagonal, &handleX[SLOT_DIAGONAL], &handleY[SLOT_DIAGONAL]);
    const float s = handleHalfSize();
    DrawHandle(handleX[SLOT_X], handleY[SLOT_X], activeHandle == CIRCLE_HANDLE_X, s);
    if (!singleHandle) {
        DrawHandle(handleX[SLOT_Y], handleY[SLOT_Y], activeHandle == CIRCLE_HANDLE_Y, s);
        DrawHandle(handleX[SLOT_DIAGONAL], handleY[SLOT_DIAGONAL], activeHandle == CIRCLE_HANDLE_DIAGONAL, s);
    }
}

int32_t CircleOverlayVZ::handleAt(float x, float y) const
{
    const float s = handleHalfSize();
    if (!singleHandle && overlayHandleHit(handleX[SLOT_DIAGONAL], handleY[SLOT_DIAGONAL], x, y, s))
        return CIRCLE_HANDLE_DIAGONAL;
    if (overlayHandleHit(handleX[SLOT_X], handleY[SLOT_X], x, y, s))
        return CIRCLE_HANDLE_X;
    if (!singleHandle && overlayHandleHit(handleX[SLOT_Y], handleY[SLOT_Y], x, y, s))
        return CIRCLE_HANDLE_Y;
    return CIRCLE_HANDLE_NONE;
}

void CircleOverlayVZ::Mouse(int event, float x, float y)
{
    const float W = static_cast<float>(owner->imageWidth);
    switch (event) {
    case OVERLAY_MOVE:
        hoverHandle = handleAt(x, y);
        Commit(event, x, y);
        break;
    case OVERLAY_PRESS:
        hoverHandle = activeHandle = handleAt(x, y);
        Commit(event, x, y);
        break;
    case OVERLAY_DRAG: {
        const float dx = x - centre[0] * W;
        const float dy = y - centre[1] * owner->imageHeight;
        const float distance = std::sqrt(dx * dx + dy * dy);
        if (activeHandle == CIRCLE_HANDLE_X) {
            radius[0] = 2.0f * distance / W;
        } else if (activeHandle == CIRCLE_HANDLE_Y) {
            radius[1] = 2.0f * distance / W;
        } else if (activeHandle == CIRCLE_HANDLE_DIAGONAL) {
            // Scales both radii by the pointer's x alone, keeping their proportion.
            const float k = radius[1] / radius[0];
            const double turn = rotation * kDegree;
            const float r = static_cast<float>(
                dx / (std::cos(kAngleDiagonal) * std::cos(turn) - std::sin(turn) * std::sin(kAngleDiagonal) * k));
            radius[0] = 2.0f * r / W;
            radius[1] = 2.0f * k * r / W;
        }
        Commit(OVERLAY_DRAG, x, y);
        break;
    }
    case OVERLAY_RELEASE:
        Commit(OVERLAY_RELEASE, x, y);
        activeHandle = CIRCLE_HANDLE_NONE;
        break;
    default:
        break;
    }
}

void CircleOverlayVZ::Commit(int event, float, float)
{
    if (event != OVERLAY_DRAG && event != OVERLAY_RELEASE)
        return;
    if (activeHandle == CIRCLE_HANDLE_DIAGONAL || activeHandle == CIRCLE_HANDLE_X)
        writeRadius(controlA, event, radius[0]);
    if (activeHandle == CIRCLE_HANDLE_DIAGONAL || activeHandle == CIRCLE_HANDLE_Y)
        writeRadius(controlB, event, radius[1]);
}
