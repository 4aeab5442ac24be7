// The overlay model's two bases: OverlayVZ, the effect's side (frame size,
// aspect, zoom; drawing and mouse events), and OverlayControlVZ, one item drawn
// over the frame that writes what the user drags into its controls.
//
// Positions are fractions of the frame; pixels appear only when drawing and hit
// testing.
#pragma once

#include <cstdint>

class ControlVZ;

// Mouse events of the overlay; anything else is ignored.
enum OverlayMouseEvent : int {
    OVERLAY_MOVE = 0,
    OVERLAY_PRESS = 1,
    OVERLAY_DRAG = 2,
    OVERLAY_RELEASE = 3,
};

// Handle half-size and crosshair stroke ends, in frame pixels at zoom 1.
inline constexpr float kOverlayHandleHalfSize = 5.0f;
inline constexpr float kCrosshairInner = 10.0f;
inline constexpr float kCrosshairOuter = 25.0f;

class OverlayVZ {
public:
    OverlayVZ();
    virtual ~OverlayVZ();
    virtual void Draw();
    // `x` and `y` are frame pixels.
    virtual void Mouse(int event, float x, float y);

    // Set by the interactive tool before each call.
    int32_t imageWidth;
    int32_t imageHeight;
    float aspectNumerator;    // over aspectDenominator: the vertical stretch of circles
    float aspectDenominator;  // 1.0
    float zoom;               // divides every handle and crosshair size
};

class OverlayControlVZ {
public:
    OverlayControlVZ();
    virtual ~OverlayControlVZ();
    virtual void Mouse(int event, float x, float y);
    // Writes the dragged values to the page (drag) or the properties (release).
    virtual void Commit(int event, float x, float y);

    ControlVZ* controlA;
    ControlVZ* controlB;
    uint32_t colour[4];     // red, green, blue, alpha; 0 to 65535
    uint8_t visible;        // takes part in drawing
    int32_t activeHandle;   // handle being dragged; 0 for none
    int32_t hoverHandle;    // handle under the pointer; 0 for none
    OverlayVZ* owner;       // frame size and zoom

protected:
    // The handle half-size at the owner's zoom.
    float handleHalfSize() const;
};

// True when (hx, hy) lies strictly inside the square of half-size `s` around (x, y).
bool overlayHandleHit(float hx, float hy, float x, float y, float s);
