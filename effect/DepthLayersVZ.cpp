#include "effect/DepthLayersVZ.h"

#include <algorithm>
#include <cmath>

#include "effect/ParallelRowsVZ.h"

namespace {

// The radius from which the step is a fraction of the radius.
constexpr double kKnee = kLayerStepPixels / kLayerStepFraction;

// Warped radii closer than this are one layer.
constexpr double kSameLayer = 1e-6;
// A share this close to 0 or 1 is taken as that.
constexpr float kShareRounding = 1e-5f;
// Bins of the warped radius a layer step holds, for finding surfaces of one
// depth: a bin of at least this many pixels, and this many times the average
// of the bins within half a step of it.
constexpr int32_t kBinsPerStep = 40;
constexpr uint64_t kSurfacePixels = 16;
constexpr uint64_t kSurfaceContrast = 4;

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

// Layer positions in the warped radius, from u0 to u1 (exact ends): an even
// grid of at most one layer step, and besides it the radius of every bin that
// stands out from those around it (a surface of one depth), so that such a
// surface lies on a layer of its own and is not shared between two.
std::vector<double> DepthLayersVZ::positions(const std::vector<float>& warped, double u0, double u1)
{
    const int32_t n = u1 - u0 < kSameLayer ? 1 : static_cast<int32_t>(std::ceil(u1 - u0 - kSameLayer)) + 1;
    std::vector<double> u(static_cast<size_t>(n), u0);
    if (n == 1)
        return u;
    const double du = (u1 - u0) / (n - 1);
    for (int32_t k = 1; k < n; ++k)
        u[static_cast<size_t>(k)] = k == n - 1 ? u1 : u0 + k * du;
    const int32_t bins = (n - 1) * kBinsPerStep + 1;
    std::vector<uint32_t> counts(static_cast<size_t>(bins), 0);
    std::vector<float> value(static_cast<size_t>(bins), 0.0f);
    for (float w : warped) {
        const int32_t b = std::clamp(static_cast<int32_t>(std::lround((w - u0) / du * kBinsPerStep)), 0, bins - 1);
        if (counts[static_cast<size_t>(b)]++ == 0)
            value[static_cast<size_t>(b)] = w;
    }
    // Running sums, for the average around each bin.
    std::vector<uint64_t> sums(static_cast<size_t>(bins) + 1, 0);
    for (int32_t b = 0; b < bins; ++b)
        sums[static_cast<size_t>(b) + 1] = sums[static_cast<size_t>(b)] + counts[static_cast<size_t>(b)];
    for (int32_t b = 1; b + 1 < bins; ++b) {
        const uint64_t peak = counts[static_cast<size_t>(b)];
        const int32_t from = std::max(b - kBinsPerStep / 2, 0), to = std::min(b + kBinsPerStep / 2 + 1, bins);
        const uint64_t around = sums[static_cast<size_t>(to)] - sums[static_cast<size_t>(from)];
        if (peak >= kSurfacePixels && peak * (to - from) >= kSurfaceContrast * around)
            u.push_back(value[static_cast<size_t>(b)]);
    }
    std::sort(u.begin(), u.end());
    u.erase(std::unique(u.begin(), u.end(), [](double a, double b) { return b - a < kSameLayer; }), u.end());
    u.back() = u1;
    return u;
}

void DepthLayersVZ::Plan(const float* signedRadii, int32_t width, int32_t height, double spacing)
{
    const size_t count = static_cast<size_t>(width) * static_cast<size_t>(height);
    std::vector<float> warped(count);
    forEachRowSlice(height, [&](int first, int last) {
        for (size_t i = static_cast<size_t>(first) * width; i < static_cast<size_t>(last + 1) * width; ++i)
            warped[i] = static_cast<float>(Warp(signedRadii[i], spacing));
    });
    float lo = 0.0f, hi = 0.0f;
    if (count > 0) {
        const auto [a, b] = std::minmax_element(signedRadii, signedRadii + count);
        lo = *a;
        hi = *b;
    }
    const double u0 = Warp(lo, spacing), u1 = Warp(hi, spacing);
    const std::vector<double> u = positions(warped, u0, u1);
    const int32_t n = static_cast<int32_t>(u.size());
    radii.resize(u.size());
    // The ends are the frame's own extreme radii, exactly.
    for (int32_t k = 0; k < n; ++k)
        radii[static_cast<size_t>(k)] = k == 0 ? lo : k == n - 1 ? hi : static_cast<float>(Unwarp(u[k], spacing));
    boxes.assign(static_cast<size_t>(n), PixelBox{});
    lower.resize(count);
    upperShare.resize(count);
    forEachRowSlice(height, [&](int first, int last) {
        for (size_t i = static_cast<size_t>(first) * width; i < static_cast<size_t>(last + 1) * width; ++i) {
            const double w = warped[i];
            int32_t k = static_cast<int32_t>(std::upper_bound(u.begin(), u.end(), w) - u.begin()) - 1;
            k = std::clamp(k, 0, n - 1);
            float share = k + 1 < n ? static_cast<float>((w - u[k]) / (u[k + 1] - u[k])) : 0.0f;
            // A radius on a layer (to rounding) belongs to that layer alone.
            if (share > 1.0f - kShareRounding && k + 1 < n) {
                ++k;
                share = 0.0f;
            }
            if (share < kShareRounding || k == n - 1)
                share = 0.0f;
            lower[i] = k;
            upperShare[i] = share;
        }
    });
    size_t i = 0;
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x, ++i) {
            include(boxes[static_cast<size_t>(lower[i])], x, y);
            if (upperShare[i] > 0.0f)
                include(boxes[static_cast<size_t>(lower[i]) + 1], x, y);
        }
}
