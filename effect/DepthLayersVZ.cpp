#include "effect/DepthLayersVZ.h"

#include <algorithm>
#include <cmath>

namespace {

// The radius from which the step is a fraction of the radius.
constexpr double kKnee = kLayerStepPixels / kLayerStepFraction;

// Warped radii closer than this are one layer.
constexpr double kSameLayer = 1e-6;
// A share this close to 0 or 1 is taken as that.
constexpr float kShareRounding = 1e-5f;

void include(PixelBox& box, int32_t x, int32_t y)
{
    if (box.Empty()) {
        box = {x, y, x + 1, y + 1};
        return;
    }
    box.x0 = std::min(box.x0, x);
    box.y0 = std::min(box.y0, y);
    box.x1 = std::max(box.x1, x + 1);
    box.y1 = std::max(box.y1, y + 1);
}

}  // namespace

double DepthLayersVZ::Warp(double s, double spacing)
{
    const double r = std::fabs(s);
    // Steps of kLayerStepPixels up to the knee, then of kLayerStepFraction x r:
    // the integral of 1 / step.
    const double u = r <= kKnee ? r / kLayerStepPixels : kKnee / kLayerStepPixels + std::log(r / kKnee) / kLayerStepFraction;
    return std::copysign(u / spacing, s);
}

double DepthLayersVZ::Unwarp(double u, double spacing)
{
    const double w = std::fabs(u) * spacing;
    const double kneeU = kKnee / kLayerStepPixels;
    const double r = w <= kneeU ? w * kLayerStepPixels : kKnee * std::exp((w - kneeU) * kLayerStepFraction);
    return std::copysign(r, u);
}

void DepthLayersVZ::Plan(const float* signedRadii, int32_t width, int32_t height, double spacing)
{
    const size_t count = static_cast<size_t>(width) * static_cast<size_t>(height);
    float lo = 0.0f, hi = 0.0f;
    if (count > 0) {
        const auto [a, b] = std::minmax_element(signedRadii, signedRadii + count);
        lo = *a;
        hi = *b;
    }
    const double u0 = Warp(lo, spacing);
    const double u1 = Warp(hi, spacing);
    const int32_t n = u1 - u0 < kSameLayer ? 1 : static_cast<int32_t>(std::ceil(u1 - u0 - kSameLayer)) + 1;
    const double du = n > 1 ? (u1 - u0) / (n - 1) : 1.0;
    radii.assign(static_cast<size_t>(n), lo);
    // The ends are the frame's own extreme radii, exactly.
    for (int32_t k = 1; k < n; ++k)
        radii[static_cast<size_t>(k)] = k == n - 1 ? hi : static_cast<float>(Unwarp(u0 + k * du, spacing));
    boxes.assign(static_cast<size_t>(n), PixelBox{});
    lower.resize(count);
    upperShare.resize(count);
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x) {
            const size_t i = static_cast<size_t>(y) * width + x;
            double t = n > 1 ? (Warp(signedRadii[i], spacing) - u0) / du : 0.0;
            t = std::clamp(t, 0.0, static_cast<double>(n - 1));
            int32_t k = std::min(static_cast<int32_t>(t), n - 1);
            float share = static_cast<float>(t - k);
            // A radius on a layer (to rounding) belongs to that layer alone.
            if (share > 1.0f - kShareRounding && k + 1 < n) {
                ++k;
                share = 0.0f;
            }
            if (share < kShareRounding || k == n - 1)
                share = 0.0f;
            lower[i] = k;
            upperShare[i] = share;
            if (share < 1.0f)
                include(boxes[static_cast<size_t>(k)], x, y);
            if (share > 0.0f)
                include(boxes[static_cast<size_t>(k) + 1], x, y);
        }
}
