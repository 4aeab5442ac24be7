#include "effect/ApertureVZ.h"

#include <utility>

#include "vzlibs/fftlib/FftEngine.h"

namespace {

// A width fraction in pixels, rounded to 32 bits once.
float pixels(double fraction, int32_t width) { return static_cast<float>(fraction * 0.5 * width); }

// At least half a pixel; the comparison lets a NaN through.
float atLeastHalf(float radius) { return radius < 0.5f ? 0.5f : radius; }

}  // namespace

void ApertureVZ::ShapeRadii(int32_t width, float* radius1, float* radius2) const
{
    const float first = pixels(radiusX, width);
    const bool ownSecond = shape == SHAPE_ELLIPSE || (shape == SHAPE_POLYGON && !matchRadii);
    const float second = ownSecond ? pixels(radiusY, width) : first;
    *radius1 = atLeastHalf(first);
    *radius2 = atLeastHalf(second);
}

void ApertureVZ::ImageRadii(int32_t width, float* inner, float* outer) const
{
    float a = pixels(radiusPsf1, width);
    float b = pixels(radiusPsf2, width);
    if (b < a)
        std::swap(a, b);
    *inner = a;
    *outer = b;
}

float ApertureVZ::Reach(int32_t width) const
{
    float r1, r2;
    if (shape == SHAPE_IMAGE) {
        ImageRadii(width, &r1, &r2);
        return FftEngine::ImagePsfReach(r1, r2 - r1);
    }
    ShapeRadii(width, &r1, &r2);
    return FftEngine::ShapePsfReach(r1, r2);
}

TransformVZ ApertureVZ::Transform(int32_t width, int32_t height, uint32_t mode) const
{
    TransformVZ t{};
    t.reach = Reach(width);
    t.margin = FftEngine::PadMargin(t.reach);
    t.fits = FftEngine::TransformSize(mode, width, height, t.margin, &t.width, &t.height);
    t.largestSide = FftEngine::LargestSide(mode);
    return t;
}
