#include "tools/lumenveil/frame_pipeline.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <future>
#include <optional>
#include <vector>

#include "embed/point_spread.h"
#include "embed/render_status.h"
#include "hostsdk/depth_input.h"
#include "tools/lumenveil/depth_frames.h"
#include "tools/lumenveil/cli_error.h"
#include "embed/host_frame.h"
#include "tools/lumenveil/interrupt.h"
#include "tools/lumenveil/kernel_history.h"
#include "tools/lumenveil/progress_meter.h"

namespace {

std::string sizeText(int w, int h) { return std::to_string(w) + " x " + std::to_string(h); }

// The effect's point-spread image of the frame just rendered, as a grey picture.
ImageFrame pointSpreadPicture(IDSImageEffect* fx)
{
    GreyPicture grey;
    try {
        grey = ::pointSpreadPicture(fx);
    } catch (const Failure& e) {
        throw Failure(std::string("--psf: ") + e.what());
    }
    ImageFrame picture;
    picture.width = grey.width;
    picture.height = grey.height;
    picture.channels = 1;
    picture.rgba.resize(static_cast<size_t>(grey.width) * grey.height * 4);
    for (size_t i = 0; i < grey.pixels.size(); ++i) {
        float* p = &picture.rgba[i * 4];
        p[0] = p[1] = p[2] = grey.pixels[i] / 255.0f;
        p[3] = 1.0f;
    }
    return picture;
}

// A host image of the Spread picture at `path`, which must be the input's size.
ComRef<MemoryImage> readSpread(const std::string& path, const ImageHeader& input, const std::string& inputPath,
                               const HostFormatGeometry& format, int32_t rows)
{
    ImageReader reader(path);
    const ImageHeader& spread = reader.Header();
    if (spread.width != input.width || spread.height != input.height)
        throw Failure("the Spread image " + path + " is " + sizeText(spread.width, spread.height) + " but " +
                      inputPath + " is " + sizeText(input.width, input.height) + ": they must be the same size");
    ComRef<MemoryImage> image = newHostImage(format, spread.width, rows);
    storeHostImage(image.get(), format, spread.width, spread.height, rows,
                   [&](int32_t y, int32_t count, float* rgba) { reader.ReadRows(y, count, rgba); });
    return image;
}

struct InterruptGuard {
    explicit InterruptGuard(ImageEffectHost* host) { attachInterruptHost(host); }
    ~InterruptGuard() { releaseInterruptHost(); }
};

}  // namespace

// The host images of one frame. They are used again for later frames, so
// that a sequence does not map fresh memory for each one.
struct FramePipeline::HostFrames {
    ComRef<MemoryImage> input;
    ComRef<MemoryImage> output;
};

// One frame read and handed over to the host's images.
struct FramePipeline::LoadedFrame {
    ImageHeader header;
    HostFrames images;
    ComRef<MemoryImage> spread;
    ComRef<MemoryImage> depth;  // the Depth input of a depth-of-field render
    std::vector<float> alpha;  // the file's alpha, kept where the host format has none
};

// What a frame's Execute leaves to write besides the output image.
struct FramePipeline::Rendered {
    RgbaImage layer;            // the overlay, with --overlay
    ImageFrame spreadPicture;  // the point-spread picture, with --psf
    ImageFrame cocPicture;     // the blur radii, with --coc
};

FramePipeline::FramePipeline(const RenderRequest& request, const RenderPlan& renderPlan, const RenderSetup& renderSetup,
                             const RunOutputs& runOutputs, IDSImageEffect* effect, ImageEffectHost& effectHost,
                             OverlayPainter* overlayPainter)
    : r(request),
      plan(renderPlan),
      setup(renderSetup),
      outputs(runOutputs),
      fx(effect),
      host(effectHost),
      overlay(overlayPainter),
      spreadPerFrame(!request.spread.empty() && renderPlan.sequence && hasFramePattern(request.spread)),
      keepFileAlpha(!hostFormatHasAlpha(*renderSetup.format))
{
}

FramePipeline::LoadedFrame FramePipeline::load(long f, HostFrames images)
{
    const std::string path = framePath(r.input, f);
    const HostFormatGeometry& format = *setup.format;
    ImageReader reader(path, depthInInput(r, plan));
    LoadedFrame loaded;
    loaded.header = reader.Header();
    const ImageHeader& frame = loaded.header;
    if (frame.width != setup.header.width || frame.height != setup.header.height)
        throw Failure(path + " is " + sizeText(frame.width, frame.height) + ", frame " +
                      std::to_string(plan.frames.First()) + " was " + sizeText(setup.header.width, setup.header.height));
    for (ComRef<MemoryImage>* image : {&images.input, &images.output})
        if (!*image)
            *image = newHostImage(format, frame.width, setup.rows);
    const bool fileAlpha = keepFileAlpha && (frame.channels == 2 || frame.channels == 4);
    if (fileAlpha)
        loaded.alpha.resize(static_cast<size_t>(frame.width) * frame.height);
    storeHostImage(
        images.input.get(), format, frame.width, frame.height, setup.rows,
        [&](int32_t y, int32_t count, float* rgba) {
            reader.ReadRows(y, count, rgba);
            setup.light.ToFrame(rgba, static_cast<size_t>(count) * frame.width, frame.format);
            for (size_t i = 0; fileAlpha && i < static_cast<size_t>(count) * frame.width; ++i)
                loaded.alpha[static_cast<size_t>(y) * frame.width + i] = rgba[i * 4 + 3];
        },
        setup.light.Linear());
    // With one field rendered, the other keeps the input: the output starts
    // as its copy. Otherwise the effect writes every pixel.
    if (plan.fieldMask != DS_FIELDS_BOTH)
        std::memcpy(images.output->Data(), images.input->Data(), images.input->Bytes());
    loaded.images = std::move(images);
    if (spreadPerFrame)
        loaded.spread = readSpread(framePath(r.spread, f), frame, path, format, setup.rows);
    if (plan.depthMap) {
        const DepthSource source{framePath(plan.depthMap->path, f), plan.depthMap->channel};
        loaded.depth = depthHostImage(readDepth(source, frame.width, frame.height), frame.width, frame.height,
                                      setup.rows);
    }
    return loaded;
}

IDSImage* FramePipeline::spreadFor(const LoadedFrame& frame, long f)
{
    if (spreadPerFrame)
        return frame.spread.get();
    if (!r.spread.empty() && !stillSpread)
        stillSpread = readSpread(r.spread, frame.header, framePath(r.input, f), *setup.format, setup.rows);
    return stillSpread.get();
}

void FramePipeline::present(long f, const LoadedFrame& frame)
{
    host.SetInput(1, spreadFor(frame, f));
    host.SetInput(DS_INPUT_DEPTH, frame.depth.get());
    fx->SetInput(frame.images.input.get());
    fx->SetOutput(frame.images.output.get());
}

void FramePipeline::followKernelHistory(long first, const LoadedFrame& frame, ProgressMeter& progress)
{
    const ComRef<IDSKernelHistory> history = ComRef<IDSKernelHistory>::Query(fx, IID_IDSKernelHistory);
    const std::vector<long> before = history ? framesBefore(r, plan, first) : std::vector<long>();
    if (before.empty())
        return;
    progress.Stage(FrameStage::Preparing);
    // The tracked frames take the first frame's size: a sequence has one.
    present(first, frame);
    const std::vector<long> builds = kernelBuildsAmong(history.get(), before, r.rate);
    const size_t tried = std::min(builds.size(), kFirstHistoryBuilds);
    const std::vector<double> traces = buildAgain(history.get(), builds, tried);
    const size_t needed = historyBuildsNeeded(traces, builds.size());
    // From further back, on a kernel with no trace of the ones just built: the
    // sequence's first build starts so in a long run.
    if (needed > tried) {
        history->ForgetKernel();
        buildAgain(history.get(), builds, needed);
    }
    present(first, frame);
    int32_t buildsThere = 0;
    history->TrackKernel(before.back() / r.rate, &buildsThere);
}

std::vector<double> FramePipeline::buildAgain(IDSKernelHistory* history, const std::vector<long>& builds, size_t count)
{
    std::vector<double> traces;
    for (size_t i = builds.size() - count; i < builds.size(); ++i) {
        if (interruptRequested())
            throw Interrupted("");
        // A frame before the run that cannot be read is left out of its history.
        try {
            const LoadedFrame earlier = load(builds[i], HostFrames{});
            present(builds[i], earlier);
            double trace = 1.0;
            if (SUCCEEDED(history->BuildKernel(builds[i] / r.rate, &trace)))
                traces.push_back(trace);
        } catch (const Failure&) {
        }
    }
    return traces;
}

FramePipeline::Rendered FramePipeline::execute(long f, const LoadedFrame& frame)
{
    present(f, frame);
    if (interruptRequested())
        throw Interrupted("");
    const double time = f / r.rate;
    const HRESULT status = fx->Execute(time);
    if (interruptRequested())
        throw Interrupted("");
    requireRendered(fx, status, "the effect did not render " + framePath(r.input, f));
    Rendered rendered;
    if (overlay)
        rendered.layer = overlay->Draw(frame.header.width, frame.header.height, r.pixelAspect, time);
    if (outputs.Find(OutputKind::PointSpread))
        rendered.spreadPicture = pointSpreadPicture(fx);
    if (const RunOutput* coc = outputs.Find(OutputKind::CircleOfConfusion))
        rendered.cocPicture = circleOfConfusionPicture(fx, frame.header.width, frame.header.height,
                                                       imageFileIsFloat(coc->Path(f)));
    return rendered;
}

void FramePipeline::write(long f, const LoadedFrame& frame, const Rendered& rendered)
{
    const ImageHeader& h = frame.header;
    const SampleDepth depth = plan.depth.value_or(h.depth);
    ImageWriter output(outputs.Find(OutputKind::Frame)->Path(f), h.width, h.height, depth, h.channels, r.compression);
    std::optional<ImageWriter> withOverlay;
    if (const RunOutput* o = outputs.Find(OutputKind::Overlay))
        withOverlay.emplace(o->Path(f), h.width, h.height, depth, h.channels, r.compression);
    // Each file gets the rows in its own alpha convention.
    std::vector<float> overlayRows;
    const std::string outputFormat = output.FormatName();
    loadHostImage(frame.images.output.get(), *setup.format, h.width, h.height, setup.rows,
                  [&](int32_t y, int32_t count, float* rgba) {
                      const size_t pixels = static_cast<size_t>(count) * h.width;
                      for (size_t i = 0; !frame.alpha.empty() && i < pixels; ++i)
                          rgba[i * 4 + 3] = frame.alpha[static_cast<size_t>(y) * h.width + i];
                      if (withOverlay)
                          overlayRows.assign(rgba, rgba + pixels * 4);
                      setup.light.ToFile(rgba, pixels, outputFormat);
                      output.WriteRows(count, rgba);
                      if (withOverlay) {
                          setup.light.ToFile(overlayRows.data(), pixels, withOverlay->FormatName());
                          compositeOverlay(overlayRows.data(), h.width, y, count, rendered.layer);
                          withOverlay->WriteRows(count, overlayRows.data());
                      }
                  });
    // Every file of the frame written whole before any is renamed into place.
    StagedFiles staged;
    staged.Add(output.Close());
    if (withOverlay)
        staged.Add(withOverlay->Close());
    if (const RunOutput* psf = outputs.Find(OutputKind::PointSpread))
        staged.Add(stageImage(psf->Path(f), rendered.spreadPicture, SampleDepth::U8, 1));
    if (const RunOutput* coc = outputs.Find(OutputKind::CircleOfConfusion))
        staged.Add(stageImage(coc->Path(f), rendered.cocPicture,
                              imageFileIsFloat(coc->Path(f)) ? SampleDepth::Float : SampleDepth::U16, 1));
    staged.CommitAll();
}

void FramePipeline::Run()
{
    const std::vector<long>& frames = plan.frames.frames;
    InterruptGuard guard(&host);
    ProgressMeter progress(plan.frames.Count(), r.quiet, r.progressAfter);
    HostFrames spare;  // images no frame uses any more
    std::future<LoadedFrame> next = std::async(std::launch::async, &FramePipeline::load, this, frames[0], HostFrames{});
    std::future<ComRef<MemoryImage>> writing;  // gives back the output image it wrote
    long written = 0;
    for (size_t i = 0; i < frames.size(); ++i) {
        const long f = frames[i];
        progress.FrameBegins(std::filesystem::path(framePath(r.input, f)).filename().string());
        LoadedFrame current = next.get();
        if (i + 1 < frames.size())
            next = std::async(std::launch::async, &FramePipeline::load, this, frames[i + 1], std::move(spare));
        Rendered rendered;
        try {
            if (i == 0)
                followKernelHistory(f, current, progress);
            progress.Stage(FrameStage::Rendering);
            rendered = execute(f, current);
        } catch (const Interrupted&) {
            if (writing.valid())
                writing.get();
            progress.Finish();
            const std::string done = written == 0 ? "no frame was written"
                                                  : "frames " + std::to_string(frames[0]) + " to " +
                                                        std::to_string(frames[written - 1]) + " were written";
            throw Interrupted("interrupted: " + done + ", and no partial one");
        }
        // The frame's write waits for the one before; the last is waited for.
        progress.Stage(FrameStage::Writing);
        spare.input = std::move(current.images.input);
        spare.output = writing.valid() ? writing.get() : ComRef<MemoryImage>();
        ++written;
        writing = std::async(std::launch::async, [this, f, frame = std::move(current),
                                                  rendered = std::move(rendered)]() mutable {
            write(f, frame, rendered);
            return std::move(frame.images.output);
        });
        if (i + 1 == frames.size())
            writing.get();
        progress.FrameDone(f, written);
    }
    progress.Finish();
    host.SetInput(1, nullptr);
    host.SetInput(DS_INPUT_DEPTH, nullptr);
}
