// PluginVZ: the host-independent face of an effect.
//
// It knows the frame in work (time, length), a few flags, the host link that
// says whether to go on, and it is the engine's row runner: RunRows splits an
// engine row job over four threads through RunFourThreads, and ShouldAbort asks
// the host link whether to stop. A concrete effect overrides Render and
// UpdateControls; the other slots are empty hooks that nothing calls.
#pragma once

#include <cstdint>

#include "vzlibs/fftlib/FftEngine.h"

class Plug;
struct IDSImageEffectHost;

class PluginVZ {
public:
    PluginVZ();
    virtual ~PluginVZ();

    PluginVZ(const PluginVZ&) = delete;
    PluginVZ& operator=(const PluginVZ&) = delete;

    // Renders the frame described by the effect's parameter block.
    virtual void Render();
    // Empty hooks with their argument words; nothing calls them.
    virtual void Reserved2(const uint32_t words[10]);
    // Shows and hides the page's controls to suit the parameters.
    virtual void UpdateControls();
    virtual void Reserved4(uint32_t a, uint32_t b);
    virtual void Reserved5(uint32_t a);
    virtual void Reserved6();
    virtual void Reserved7();
    virtual void Reserved8(uint32_t a);
    virtual void Reserved9(uint32_t a, uint32_t b);

    // Row runner for FftEngine::SetRowRunner; `context` is the PluginVZ. Runs
    // job(argument, first, last) over four slices of rows 0..rowCount-1 (the last
    // rowCount mod 4 rows are left out). One job at a time per object.
    static void RunRows(void* context, FftRowJob job, int rowCount, FftEngine* argument);
    // Abort check for FftEngine::SetAbortCheck; `context` is the PluginVZ. 1 when
    // the host link's ShouldContinue answers 0 or less, else 0; with no host
    // link, 0. Called from the row threads.
    static int ShouldAbort(void* context);

    double time;                       // frame in work: sample rate x time, not rounded
    double frame;                      // length of the time span in whole frames
    uint8_t colourEnabled;             // set before each render; read by nothing
    uint8_t alphaEnabled;              // 0: the render leaves alpha out of the transform
    Plug* owner;                       // the host-side effect object
    IDSImageEffectHost* renderMonitor; // asked whether to go on
    FftRowJob jobFunction;             // the row job in flight
    FftEngine* jobArgument;
    int32_t channelMask;               // read by nothing
    double defaultRate;                // read by nothing

private:
    static void runSlice(void* object, int first, int last);
};
