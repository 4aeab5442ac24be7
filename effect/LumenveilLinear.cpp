// Lumenveil::RenderLinear: the scene-linear render. The frame's channels go
// through the engine's float convolution as they are, so light above 1 keeps
// its energy and spreads into the aperture's shape with it.
#include "effect/Lumenveil.h"
#include "vzlibs/fftlib/highlight.h"

bool Lumenveil::RenderLinear(LinearFrameVZ& frame, double highlightEmphasis, double highlightThreshold)
{
    outcome = RenderOutcomeVZ{engine ? RENDER_NOT_RUN : RENDER_NO_ENGINE, 0};
    if (!engine || engine->mode == FFT_MODE_FFTW || !frame.pixels || !(highlightThreshold > 0.0))
        return false;
    pixelAspectX = static_cast<float>(frame.pixelAspect[0]);
    pixelAspectY = static_cast<float>(frame.pixelAspect[1]);
    engine->SetRowRunner(this, PluginVZ::RunRows);
    engine->SetAbortCheck(this, PluginVZ::ShouldAbort);
    keepOrBuildKernel(frame.width, frame.height);
    if (kernelOnly) {
        settleKernelOnly();
        return !kernelFailed;
    }

    highlight_emphasise_pixels(frame.pixels, frame.PixelCount(), highlightEmphasis, highlightThreshold);
    bool done = true;
    for (int c = 0; c < kLinearChannels && done; ++c)
        done = engine->ConvolveFloat(frame.Channel(c), frame.Channel(c), frame.width, frame.height, FFT_EDGE_REPEAT);
    // A refused convolution leaves channels emphasised; the inverse runs all
    // the same, so that nothing stays raised.
    highlight_deemphasise_pixels(frame.pixels, frame.PixelCount(), highlightEmphasis, highlightThreshold);
    outcome = kernelFailed ? RenderOutcomeVZ{RENDER_KERNEL_FAILED, kernelStatus}
              : done       ? RenderOutcomeVZ{RENDER_DONE, 0}
                           : RenderOutcomeVZ{RENDER_ENGINE_FAILED, engine->GetStatus()};
    return done;
}
