// CircleOverlayVZ: an ellipse over the frame with up to three handles
// (diagonal, x, y); dragging a handle changes the radii in its controls.
#pragma once

#include "generic/library/OverlayVZ.h"

// Handle numbers, as kept in activeHandle and hoverHandle.
enum CircleHandle : int32_t {
    CIRCLE_HANDLE_NONE = 0,
    CIRCLE_HANDLE_DIAGONAL = 1,
    CIRCLE_HANDLE_X = 2,
    CIRCLE_HANDLE_Y = 3,
};

class CircleOverlayVZ : public OverlayControlVZ {
public:
    CircleOverlayVZ();
    // Draws the ellipse and its handles, and stores the handles' pixels.
    void Draw();
    void Mouse(int event, float x, float y) override;
    void Commit(int event, float x, float y) override;

    float centre[2];     // fractions of the frame
    float radius[2];     // x and y, fractions of the frame width
    float rotation;      // degrees
    int32_t singleHandle;  // non-zero: only the x handle
    int32_t dashed;
    float handleX[3];    // frame pixels of the diagonal, x and y handles
    float handleY[3];

private:
    // The handle under (x, y) by the order diagonal, x, y; 0 for none.
    int32_t handleAt(float x, float y) const;
};
