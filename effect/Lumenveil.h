// Lumenveil: the effect. A PluginVZ that is also its own parameter block and
// overlay. Render turns the parameter values and frames of one time into calls
// on its FftEngine, rebuilding the kernel only when the aperture has changed by
// 0.01 or more since the previous render; Draw and Mouse run the overlay of the
// image aperture.
#pragma once

#include <cstdint>
#include <mutex>

#include "effect/ApertureVZ.h"
#include "effect/RenderOutcomeVZ.h"
#include "generic/library/LinearFrameVZ.h"
#include "generic/library/LumenveilInfo.h"
#include "generic/library/OverlayVZ.h"
#include "generic/library/PluginVZ.h"
#include "vzlibs/fftlib/FftEngine.h"

// The tolerance below which a change of a radius, rotation or pixel aspect
// keeps the kernel.
inline constexpr double kKernelTolerance = 0.01;

class Lumenveil : public PluginVZ, public LumenveilInfo, public OverlayVZ {
public:
    // Creates the engine in the faithful mode (or the one VZ_FFT_MODE names);
    // without it, Render does nothing.
    Lumenveil();
    // Deletes the engine first.
    ~Lumenveil() override;

    // Defocuses `input` into `output` (both VZImage frames of one size, set in
    // the slots by the caller) by the controls' values.
    void Render() override;
    // Defocuses `frame` in place in scene-linear light: each of its four
    // channels (colour premultiplied with alpha) is convolved as it is, with no
    // clamp and no 16-bit steps, by the same kernel and kernel cache as Render.
    // With a highlight emphasis above 1.001, colour whose luminance lies above
    // the threshold is raised by the highlight curve before the convolution
    // and lowered by its inverse after it (highlight.h); Bright Emphasis and
    // Emphasise Alpha are not used. Needs a fast engine mode: false, with the
    // frame untouched, without an engine, in the faithful mode, without pixels
    // or with a threshold not above 0; false too when the engine refuses a
    // convolution (its status tells why), the channels before it convolved.
    bool RenderLinear(LinearFrameVZ& frame, double highlightEmphasis, double highlightThreshold);
    // Shape's table, then Match Radii's.
    void UpdateControls() override;
    // Draws the crosshair and the two circles when Shape is Image.
    void Draw() override;
    // Hands the event to the crosshair and both circles, always all three.
    void Mouse(int event, float x, float y) override;

    // The values of the controls that shape the kernel.
    ApertureVZ Aperture() const;
    // Makes the engine one of `mode` (a FftMode, taken as given) if it is
    // not: the old engine goes, with its kernel. An engine that cannot be made
    // leaves `engine` null, and renders do nothing.
    void SelectEngine(uint32_t mode);
    // A new engine of the same mode in place of the old: no kernel, and no
    // trace of one in the next.
    void ForgetKernel();
    // What a render of a width x height frame at the controls' values would
    // decide, without rendering or building: true when it would build the
    // kernel anew. The values are kept for the next frame's comparison, as a
    // render keeps them, and the kernel counts as made (the builds of
    // kernelOnly follow).
    bool TrackKernel(int32_t width, int32_t height, float aspectX, float aspectY);
    // The weight of the previous kernel's trace in the engine's last built
    // kernel: 1 / (W + 1), W the sum of its point-spread image (each sample
    // over 255), the previous kernel summing to 1. 1 without a built kernel.
    double KernelTrace() const;

    float pixelAspectX;
    float pixelAspectY;
    float lastRadius1;
    float lastRadius2;
    float lastRotation;
    int32_t lastShape;
    int32_t lastSides;
    float lastAspectX;
    float lastAspectY;
    int32_t lastWidth;
    int32_t lastHeight;
    uint8_t kernelValid;
    FftEngine* engine;
    // What the last Render or RenderLinear came to.
    RenderOutcomeVZ outcome;
    // Held by the host effect that renders through this Lumenveil: an effect
    // and its clones share it and render one at a time.
    std::mutex renderLock;
    // Set, Render and RenderLinear build the kernel of their frame whether or
    // not it stands, and render nothing: the output frame is not touched.
    bool kernelOnly = false;

protected:
    // The last kernel build failed (its engine status in kernelStatus): a
    // render that keeps that kernel has not rendered the frame.
    bool kernelFailed = false;
    int kernelStatus = 0;

private:
    // True when every value that shapes the kernel is within tolerance of the
    // previous render's.
    bool kernelStands(int32_t shapeCode, int32_t width, int32_t height, float radius1, float radius2) const;
    // Builds the kernel of `aperture` (Shape 1 to 4).
    void buildKernel(const ApertureVZ& aperture, int32_t width, int32_t height, float radius1, float radius2);
    // Works out the pixel radii of this frame, keeps the kernel or builds it
    // anew, and stores the values the next frame is compared with.
    void keepOrBuildKernel(int32_t width, int32_t height);
    // Keeps this frame's values for the next frame's comparison.
    void keepValues(int32_t shapeCode, int32_t width, int32_t height, float radius1, float radius2);
    // The outcome of a kernelOnly render.
    void settleKernelOnly();
    // Cuts the image aperture out of the Spread frame.
    void buildImageKernel(const ApertureVZ& aperture, int32_t width, int32_t height);
};
