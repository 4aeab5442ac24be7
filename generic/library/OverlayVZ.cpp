#include "generic/library/OverlayVZ.h"

OverlayVZ::OverlayVZ() : imageWidth(0), imageHeight(0), aspectNumerator(1.0f), aspectDenominator(1.0f), zoom(1.0f) {}
OverlayVZ::~OverlayVZ() = default;
void OverlayVZ::Draw() {}
void OverlayVZ::Mouse(int, float, float) {}

OverlayControlVZ::OverlayControlVZ()
    : controlA(nullptr),
      controlB(nullptr),
      colour{65535, 65535, 65535, 65535},
      visible(1),
      activeHandle(0),
      hoverHandle(0),
      owner(nullptr)
{
}

OverlayControlVZ::~OverlayControlVZ() = default;
void OverlayControlVZ::Mouse(int, float, float) {}
void OverlayControlVZ::Commit(int, float, float) {}

float OverlayControlVZ::handleHalfSize() const { return kOverlayHandleHalfSize / owner->zoom; }

bool overlayHandleHit(float hx, float hy, float x, float y, float s)
{
    return hx > x - s && hx < x + s && hy > y - s && hy < y + s;
}
