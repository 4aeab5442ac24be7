// LumenveilDepth: the depth-of-field effect. A Lumenveil whose blur follows a
// depth map: each pixel is blurred by its circle of confusion (DepthLensVZ),
// in depth layers composited far to near with correct occlusion
// (DepthCompositeVZ). The aperture (shape, radii's proportion, sides,
// rotation, image), the bright emphasis, alpha and the engine are the plain
// effect's; the kernels of the layers are cached by radius and box.
#pragma once

#include <atomic>
#include <cstdint>
#include <vector>

#include "effect/DepthCompositeVZ.h"
#include "effect/DepthKernelsVZ.h"
#include "effect/DepthLayersVZ.h"
#include "effect/DepthSettingsVZ.h"
#include "effect/Lumenveil.h"

// One channel of depth samples for the frame in work: sample (x, y) at
// samples[y * rowStride + x]; borrowed for one render.
struct DepthSamplesVZ {
    const float* samples = nullptr;
    int32_t width = 0, height = 0;
    ptrdiff_t rowStride = 0;
};

class LumenveilDepth : public Lumenveil {
public:
    LumenveilDepth() = default;

    // Defocuses `input` into `output` by the depth samples and the depth
    // settings set by the caller. Without depth samples of the frame's size
    // the output is left as it is.
    void Render() override;

    DepthSettingsVZ depthSettings;
    DepthSamplesVZ depth;
    // The engine status of the last render's failure, FFT_OK when it ran.
    int lastStatus = FFT_OK;
    // The layers of the last render, and the cached kernels.
    DepthLayersVZ layers;
    DepthKernelsVZ kernels;

    // The signed blur radius of each pixel of the last frame (empty before
    // any), FrameWidth() a row.
    const std::vector<float>& SignedRadii() const { return frame.signedRadius; }
    int32_t FrameWidth() const { return frame.width; }
    int32_t FrameHeight() const { return frame.height; }

private:
    // The frame's planes in the engine's colour, and the per-pixel radii.
    void loadPlanes(const ImageRec* image, double emphasis, bool alphaEmphasis);
    // Rows first..last of them; sets *alphaVaries when an alpha differs from `firstAlpha`.
    void loadRows(const ImageRec* image, double emphasis, bool alphaEmphasis, const DepthLensVZ& lens,
                  uint16_t firstAlpha, std::atomic<bool>* alphaVaries, int first, int last);
    // The composite back into `image` (four 16-bit channels).
    void storePlanes(ImageRec* image, double emphasis, bool alphaEmphasis, bool withAlpha) const;
    // The values that shape every kernel of this frame; `spreadRec` is the
    // Image aperture's picture, or null.
    DepthApertureVZ apertureOf(int32_t width, int32_t height, const ImageRec* spreadRec) const;

    DepthFrameVZ frame;
    DepthCompositeVZ composite;
    std::vector<float> result[kDepthChannels];
};
