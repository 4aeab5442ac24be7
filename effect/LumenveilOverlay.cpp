// Lumenveil's overlay: the crosshair and the two circles of the image aperture.
#include "effect/Lumenveil.h"

void Lumenveil::Draw()
{
    const float ratio = static_cast<float>(static_cast<double>(aspectNumerator) / aspectDenominator);
    const bool show = shapeDrawsOverlay(shape.value);
    crosshair.visible = innerCircle.visible = outerCircle.visible = show ? 1 : 0;
    if (!show)
        return;
    const float cx = static_cast<float>(centre.x), cy = static_cast<float>(centre.y);
    crosshair.position[0] = cx;
    crosshair.position[1] = cy;
    crosshair.Draw();
    struct {
        CircleOverlayVZ* circle;
        double radius;
        int32_t dashed;
    } circles[] = {{&innerCircle, radiusPsf1.value, 0}, {&outerCircle, radiusPsf2.value, 1}};
    for (auto& c : circles) {
        c.circle->centre[0] = cx;
        c.circle->centre[1] = cy;
        c.circle->radius[0] = static_cast<float>(c.radius);
        c.circle->radius[1] = static_cast<float>(ratio * c.radius);
        c.circle->rotation = 0.0f;
        c.circle->singleHandle = 1;
        c.circle->dashed = c.dashed;
        c.circle->Draw();
    }
}

void Lumenveil::Mouse(int event, float x, float y)
{
    crosshair.Mouse(event, x, y);
    innerCircle.Mouse(event, x, y);
    outerCircle.Mouse(event, x, y);
}
