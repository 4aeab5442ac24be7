// DepthKernelsVZ: the kernels of a depth-of-field render, cached by radius
// and frame size. Each kernel lives in an engine of its own (its spectrum and
// transform plans belong to the size of the layer's box), so a layer of the
// same radius and box in the next frame costs no kernel preparation. A frame
// starts with BeginFrame, which drops every kernel when the aperture or the
// engine mode has changed, and ends with EndFrame, which drops the kernels
// the frame did not use.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "vzlibs/fftlib/FftEngine.h"

class PluginVZ;

// What shapes every kernel of a frame besides its radius.
struct DepthApertureVZ {
    int32_t shape = 1;          // SHAPE_CIRCLE .. SHAPE_IMAGE
    float radiusRatio = 1.0f;   // the second radius over the first (ellipse, free polygon)
    float rotation = 0.0f;
    int32_t sides = 6;
    float aspectX = 1.0f, aspectY = 1.0f;
    uint32_t mode = FFT_MODE_FFTW;
    // Image: the aperture picture (borrowed, for this frame), the centre of
    // the cut-out in it, its outer radius in pixels and its inner radius as a
    // fraction of the outer. The cut-out is scaled to each layer's radius.
    const ImageRec* spread = nullptr;
    int32_t centreX = 0, centreY = 0;
    float cutRadius = 1.0f;
    float innerFraction = 1.0f;

    bool SameKernels(const DepthApertureVZ& other) const;
};

class DepthKernelsVZ {
public:
    DepthKernelsVZ() = default;
    ~DepthKernelsVZ();
    DepthKernelsVZ(const DepthKernelsVZ&) = delete;
    DepthKernelsVZ& operator=(const DepthKernelsVZ&) = delete;

    // Starts a frame whose engines report to `runner` (row runner and abort
    // check). Image apertures are rebuilt on every frame, as their picture may
    // change.
    void BeginFrame(const DepthApertureVZ& aperture, PluginVZ* runner);
    // The engine holding the kernel of `radius` pixels for frames of
    // width x height; null, with the reason in *status, when it cannot be made.
    FftEngine* Kernel(float radius, int32_t width, int32_t height, int* status);
    void EndFrame();

    // The reach in pixels of the kernel of `radius` (the margin a layer's box
    // needs around it).
    float Reach(float radius) const;
    size_t Count() const { return entries.size(); }
    // Kernels prepared since this object was made.
    uint64_t Prepared() const { return prepared; }

private:
    struct Entry {
        float radius;
        int32_t width, height;
        bool used;
        std::unique_ptr<FftEngine> engine;
    };
    // The two radii of the shape at `radius`, each at least half a pixel.
    void shapeRadii(float radius, float* first, float* second) const;
    bool build(FftEngine& engine, float radius, int32_t width, int32_t height);

    DepthApertureVZ aperture;
    PluginVZ* runner = nullptr;
    std::vector<Entry> entries;
    uint64_t prepared = 0;
};
