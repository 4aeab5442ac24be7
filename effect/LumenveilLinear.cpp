// Lumenveil::RenderLinear: the scene-linear render. The frame's channels go
// through the engine's float convolution as they are, so light above 1 keeps
// its energy and spreads into the aperture's shape with it.
#include "effect/Lumenveil.h"
#include "vzlibs/fftlib/highlight.h"

bool Lumenveil::RenderLinear(LinearFrameVZ& frame, double highlightEmphasis, double highlightThreshold)
{
    if (!engine || engine->mode == FFT_MODE_FFTW || !frame.pixels || !(highlightThreshold > 0.0))
        return false;
    pixelAspectX = static_cast<float>(frame.pixelAspect[0]);
    pixelAspectY = static_cast<float>(frame.pixelAspect[1]);
    engine->SetRowRunner(this, PluginVZ::RunRows);
    engine->SetAbortCheck(this, PluginVZ::ShouldAbort);
    keepOrBuildKernel(frame.width, frame.height);

    highlight_emphasise_pixels(frame.pixels, frame.PixelCount(), highlightEmphasis, highlightThreshold);
    bool done = true;
    for (int c = 0; c < kLinearChannels && done; ++c)
        done = engine->ConvolveFloat(frame.Channel(c), frame.Channel(c), frame.width, frame.height, FFT_EDGE_REPEAT);
    // A refused convolution leaves channels emphasised; the inverse runs all
    // the same, so that nothing stays raised.
    highlight_deemphasise_pixels(frame.pixels, frame.PixelCount(), highlightEmphasis, highlightThreshold);
    return done;
}
