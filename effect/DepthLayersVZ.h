// DepthLayersVZ: the depth layers of a depth-of-field render. Layers stand at
// signed radii (DepthLensVZ) from the frame's nearest to its farthest, spaced
// so that neighbouring layers' radii differ by at most about `spacing` pixels
// up to a radius of 20 pixels and by about `spacing` x 5% beyond. A pixel
// between two layers is shared between them in proportion to its distance
// from each, so that no band shows where the radius steps. A surface of one
// depth covering many pixels gets a layer at exactly its radius, so that it is
// not shared between two layers (whose overlapping soft coverages would let
// what lies behind show through it); a frame of one or two depths is rendered
// at exactly those radii.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

// Pixels of a frame in a rectangle: columns x0..x1-1, rows y0..y1-1.
struct PixelBox {
    int32_t x0 = 0, y0 = 0, x1 = 0, y1 = 0;
    bool Empty() const { return x1 <= x0 || y1 <= y0; }
    int32_t Width() const { return x1 - x0; }
    int32_t Height() const { return y1 - y0; }
};

// The layer spacing below which radii differ by whole pixels, and the
// fraction of the radius beyond.
inline constexpr double kLayerStepPixels = 1.0;
inline constexpr double kLayerStepFraction = 0.05;

class DepthLayersVZ {
public:
    // Plans the layers of `count` signed radii (width x height of them, row
    // by row) with `spacing` (above 0; 1 is the standard fineness).
    void Plan(const float* signedRadii, int32_t width, int32_t height, double spacing);

    int32_t Count() const { return static_cast<int32_t>(radii.size()); }
    // Layer `layer`'s signed radius; layers go from the nearest (0) to the
    // farthest.
    float SignedRadius(int32_t layer) const { return radii[static_cast<size_t>(layer)]; }
    // The pixels layer `layer` holds; empty when it holds none.
    const PixelBox& Box(int32_t layer) const { return boxes[static_cast<size_t>(layer)]; }
    // Pixel i's share of layer `layer`, 0 to 1; the shares of a pixel sum to 1.
    float Weight(int32_t layer, size_t i) const
    {
        const int32_t k = lower[i];
        return k == layer ? 1.0f - upperShare[i] : k + 1 == layer ? upperShare[i] : 0.0f;
    }

    // The warped radius in which layers are evenly spaced: u(s) grows by 1 for
    // each layer step at s; odd in s.
    static double Warp(double signedRadius, double spacing);
    static double Unwarp(double warped, double spacing);

private:
    // The layers' warped radii, from u0 to u1.
    static std::vector<double> positions(const std::vector<float>& warped, double u0, double u1);

    std::vector<float> radii;
    std::vector<PixelBox> boxes;
    std::vector<int32_t> lower;       // per pixel: the nearer of its two layers
    std::vector<float> upperShare;    // per pixel: its share of the farther one
};
