// RenderOutcomeVZ: what a render of the effect came to. The effect's render
// steps return nothing, and the engine's failures would stay in the engine;
// the outcome keeps them for the host, which reports a frame that was not
// rendered.
#pragma once

#include <cstdint>

enum RenderResultVZ : int32_t {
    RENDER_DONE = 0,        // the output holds the render of the frame
    RENDER_NOT_RUN,         // no render has run, or a frame was missing
    RENDER_NO_ENGINE,       // the engine could not be made
    RENDER_NO_MEMORY,       // the frame's records could not be made
    RENDER_KERNEL_FAILED,   // the aperture's kernel could not be built
    RENDER_ENGINE_FAILED,   // the engine refused the convolution
};

struct RenderOutcomeVZ {
    RenderResultVZ result = RENDER_NOT_RUN;
    int engineStatus = 0;  // the engine's FftStatus when it failed

    bool Done() const { return result == RENDER_DONE; }
    // One line saying why the frame was not rendered ("" when it was).
    const char* Reason() const;
};
