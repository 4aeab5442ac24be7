// The frames of a render on their way through the effect: the next frame is
// read into the host's images while the current one renders, and the last
// one written while the next renders. Images and frame memory are used again
// from frame to frame.
#pragma once

#include <cstddef>
#include <vector>

#include "hostsdk/IDSImageEffect.h"
#include "hostsdk/IDSImage.h"
#include "hostsdk/IDSImageEffectHost.h"
#include "hostsdk/IDSKernelHistory.h"
#include "tools/lumenveil/overlay_picture.h"
#include "tools/lumenveil/render_plan.h"

class ProgressMeter;

class FramePipeline {
public:
    // `effect` has its host link, coordinate manager, rate, time span, channel
    // mask and fields set; `host` is its link; `overlay` is null without --overlay.
    FramePipeline(const RenderRequest& request, const RenderPlan& plan, const RenderSetup& setup,
                  const RunOutputs& outputs, IDSImageEffect* effect, ImageEffectHost& host, OverlayPainter* overlay);

    // Renders and writes every frame of the range. Failure when a frame cannot
    // be read, rendered or written; Interrupted after a signal, with the
    // frames finished so far written and no partial one.
    void Run();

private:
    struct HostFrames;
    struct LoadedFrame;
    struct Rendered;

    // Frame f read into host images (`images`, or new ones where it has none).
    LoadedFrame load(long f, HostFrames images);
    // Sets frame f's images on the effect and its host.
    void present(long f, const LoadedFrame& frame);
    // Before the first frame `first` (loaded as `frame`): the effect brought
    // to where a run from the sequence's first frame would stand; `progress`
    // hears of it when there is such a walk.
    void followKernelHistory(long first, const LoadedFrame& frame, ProgressMeter& progress);
    // Builds the kernels of the last `count` of `builds` again, in order;
    // gives the traces they kept.
    std::vector<double> buildAgain(IDSKernelHistory* history, const std::vector<long>& builds, size_t count);
    // The Spread image for the frame just loaded, or null without one.
    IDSImage* spreadFor(const LoadedFrame& frame, long f);
    // Frame f through the effect's Execute, and the pictures drawn beside it.
    Rendered execute(long f, const LoadedFrame& frame);
    // Writes the outputs of frame f.
    void write(long f, const LoadedFrame& frame, const Rendered& rendered);

    const RenderRequest& r;
    const RenderPlan& plan;
    const RenderSetup& setup;
    const RunOutputs& outputs;
    IDSImageEffect* fx;
    ImageEffectHost& host;
    OverlayPainter* overlay;
    bool spreadPerFrame;  // a sequence of Spread pictures; else a still one read once
    bool keepFileAlpha;   // the host format has no alpha: the file's alpha goes round the effect
    ComRef<MemoryImage> stillSpread;
};
