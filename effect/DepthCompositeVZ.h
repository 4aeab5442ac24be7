// DepthCompositeVZ: the layered depth-of-field render of one frame.
//
// Each depth layer (DepthLayersVZ) takes its pixels' share of the frame's
// channels, premultiplied by the share, and the share itself as coverage;
// both are convolved with the aperture at the layer's radius (layers of a
// radius under half a pixel stay sharp) and composited over what lies behind,
// far to near. Before a layer goes over, what lies behind is completed where
// nearer layers hid it, by normalised convolution of the layers behind (a box
// of the layer's radius): the soft edge of a defocused layer shows what lay
// behind it, and a defocused background keeps its brightness up to a sharp
// edge in front of it, with neither a dark nor a bright fringe. The result is
// normalised by the total coverage, so that a background never bleeds over a
// sharp foreground, which covers its own pixels fully.
//
// Each layer works in a box around its pixels, as large as its blur reaches,
// so a layer that holds a band of the frame costs a band's transform.
#pragma once

#include <cstdint>
#include <vector>

#include "effect/DepthKernelsVZ.h"
#include "effect/DepthLayersVZ.h"

// The planes a frame is rendered in: emphasised luma, chroma A and B (with the
// engine's offset) and alpha (emphasised when asked), as the engine loads them.
inline constexpr int kDepthChannels = 4;
inline constexpr int kDepthAlpha = 3;

struct DepthFrameVZ {
    int32_t width = 0, height = 0;
    std::vector<float> channel[kDepthChannels];
    std::vector<float> signedRadius;  // per pixel (DepthLensVZ)
    bool alphaVaries = true;          // false: alpha is one value over the frame and is not convolved
    size_t PixelCount() const { return static_cast<size_t>(width) * static_cast<size_t>(height); }
};

class DepthCompositeVZ {
public:
    // Renders `frame` into `result` (the four planes, the frame's size): each
    // the layers' composite normalised by its coverage. False, with the
    // engine's status in *status, when a kernel or a convolution fails, or
    // when `monitor` asks to stop (status FFT_OK then).
    bool Render(const DepthFrameVZ& frame, const DepthLayersVZ& layers, DepthKernelsVZ& kernels, PluginVZ* monitor,
                std::vector<float> result[kDepthChannels], int* status);

private:
    // Completes the channels behind in `box` where their coverage is short of
    // 1, from the box of half-width `reach` around each pixel.
    void completeBehind(const PixelBox& box, int32_t reach, int32_t width, int channels);
    // The completion of rows first..last of the box, from the summed-area
    // tables in `sums`.
    void fillRows(const PixelBox& box, int32_t reach, int32_t width, int channels, int first, int last);
    // Fills the layer planes of `box` with layer `layer`'s share of the frame.
    void takeLayer(const DepthFrameVZ& frame, const DepthLayersVZ& layers, int32_t layer, const PixelBox& box,
                   int channels, bool coverageFlat);
    // Composites the layer planes of `box` over what lies behind.
    void compositeOver(const PixelBox& box, int32_t width, int channels);
    bool convolveLayer(FftEngine& engine, const PixelBox& box, int channels, bool coverageFlat);

    std::vector<float> behind[kDepthChannels];  // premultiplied, the frame's size
    std::vector<float> behindCoverage;
    std::vector<float> layer[kDepthChannels];   // the box's size
    std::vector<float> layerCoverage;
    std::vector<double> sums;                   // summed-area table of one channel
};
