#include "tools/lumenveil/render_command.h"

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <future>
#include <optional>

#include "hostsdk/IDSCoordMan.h"
#include "hostsdk/IDSImageEffectHost.h"
#include "hostsdk/IDSPointSpread.h"
#include "hostsdk/content.h"
#include "tools/lumenveil/channel_selection.h"
#include "tools/lumenveil/cli_error.h"
#include "tools/lumenveil/engine_choice.h"
#include "tools/lumenveil/frame_memory.h"
#include "tools/lumenveil/frame_pattern.h"
#include "tools/lumenveil/host_format_choice.h"
#include "tools/lumenveil/host_frame.h"
#include "tools/lumenveil/image_file.h"
#include "tools/lumenveil/interrupt.h"
#include "tools/lumenveil/keyframe_option.h"
#include "tools/lumenveil/overlay_picture.h"
#include "tools/lumenveil/progress_meter.h"
#include "tools/lumenveil/settings_directory.h"
#include "tools/lumenveil/transform_limit.h"

namespace {

// The effect's point-spread image of the frame just rendered, as a grey picture.
ImageFrame pointSpreadPicture(IDSImageEffect* fx)
{
    IDSPointSpread* spread = nullptr;
    int32_t width = 0, height = 0, rowBytes = 0;
    const uint8_t* pixels = nullptr;
    const bool ok = SUCCEEDED(fx->QueryInterface(IID_IDSPointSpread, reinterpret_cast<void**>(&spread))) &&
                    SUCCEEDED(spread->GetPointSpreadImage(&width, &height, &rowBytes, &pixels));
    if (spread)
        spread->Release();
    if (!ok)
        throw Failure("--psf: the effect has no point-spread picture to give");
    ImageFrame picture;
    picture.width = width;
    picture.height = height;
    picture.channels = 1;
    picture.rgba.resize(static_cast<size_t>(width) * height * 4);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            float* p = picture.Pixel(x, y);
            p[0] = p[1] = p[2] = pixels[static_cast<size_t>(y) * rowBytes + x] / 255.0f;
            p[3] = 1.0f;
        }
    return picture;
}

namespace fs = std::filesystem;

// The checked form of a request.
struct RenderPlan {
    bool sequence = false;
    FrameRange range;
    std::array<int32_t, 4> selectors{};
    uint32_t fieldMask = 0;
    std::optional<SampleDepth> depth;
};

uint32_t fieldMaskOf(const std::string& fields)
{
    // The effect's mask: bit value 1 keeps the even rows, 2 the odd ones.
    if (fields == "even")
        return 1;
    if (fields == "odd")
        return 2;
    return 0;
}

RenderPlan checkRequest(const RenderRequest& r)
{
    RenderPlan plan;
    if (r.input.empty())
        throw UsageError("render needs an INPUT file (or only --save-preset)");
    if (r.output.empty())
        throw UsageError("render needs an output file: -o OUTPUT");
    plan.sequence = hasFramePattern(r.input);
    const char* patternHelp = " (a frame number pattern: %04d or ####)";
    if (plan.sequence) {
        if (!hasFramePattern(r.output))
            throw UsageError(std::string("INPUT is a sequence: OUTPUT needs a frame number pattern too") + patternHelp);
        if (!r.overlay.empty() && !hasFramePattern(r.overlay))
            throw UsageError(std::string("INPUT is a sequence: --overlay needs a frame number pattern too") + patternHelp);
        if (!r.psf.empty() && !hasFramePattern(r.psf))
            throw UsageError(std::string("INPUT is a sequence: --psf needs a frame number pattern too") + patternHelp);
        if (r.frames.empty())
            throw UsageError("INPUT is a sequence: give its frames with --frames A-B");
        plan.range = parseFrameRange(r.frames);
    } else {
        if (hasFramePattern(r.output) || hasFramePattern(r.overlay) || hasFramePattern(r.spread) ||
            hasFramePattern(r.psf))
            throw UsageError(std::string("only a sequence INPUT goes with output patterns") + patternHelp);
        if (!r.frames.empty())
            throw UsageError(std::string("--frames needs a sequence INPUT") + patternHelp);
    }
    if (!(r.rate > 0.0) || !std::isfinite(r.rate))
        throw UsageError("--rate must be above 0");
    if (!(r.pixelAspect > 0.0) || !std::isfinite(r.pixelAspect))
        throw UsageError("--pixel-aspect must be above 0");
    plan.selectors = channelSelectors(r.keep, r.matte);
    plan.fieldMask = fieldMaskOf(r.fields);
    if (r.depth == "8")
        plan.depth = SampleDepth::U8;
    else if (r.depth == "16")
        plan.depth = SampleDepth::U16;
    else if (r.depth == "float")
        plan.depth = SampleDepth::Float;
    if (const std::string problem = r.compression.empty() ? "" : compressionProblem(r.compression); !problem.empty())
        throw UsageError("--compression: " + problem);
    if (!r.hostFormat.empty())
        chooseHostFormat(r.hostFormat, SampleDepth::U8);
    return plan;
}

// Failure unless the directory of `path` exists and can be written to.
void checkWritable(const std::string& path)
{
    fs::path directory = fs::path(path).parent_path();
    if (directory.empty())
        directory = ".";
    std::error_code error;
    if (!fs::is_directory(directory, error))
        throw Failure("cannot write " + path + ": no directory " + directory.string());
    if (access(directory.c_str(), W_OK) != 0)
        throw Failure("cannot write " + path + ": " + directory.string() + " is not writable");
}

void checkExists(const std::string& path)
{
    std::error_code error;
    if (!fs::exists(path, error))
        throw Failure("cannot read " + path + ": no such file");
}

std::string sizeText(int w, int h) { return std::to_string(w) + " x " + std::to_string(h); }

// The host images of one frame. They are used again for later frames, so
// that a sequence does not map fresh memory for each one.
struct HostFrames {
    ComRef<MemoryImage> input;
    ComRef<MemoryImage> output;
};

// One frame read and handed over to the host's images.
struct LoadedFrame {
    ImageHeader header;
    HostFrames images;
    ComRef<MemoryImage> spread;
    std::vector<float> alpha;  // the file's alpha, kept where the host format has none
};

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

}  // namespace

void runRender(const EffectModule& module, const RenderRequest& r, const ParameterOptions& parameters)
{
    const bool presetOnly = r.input.empty() && r.output.empty() && !r.savePreset.empty();
    RenderPlan plan;
    if (!presetOnly)
        plan = checkRequest(r);
    selectEngine(r.engine);
    prepareSettingsDirectory();

    EffectInstance effect(module.CreateEffect());
    std::unique_ptr<OverlayPainter> overlay;
    if (!r.overlay.empty())
        overlay = std::make_unique<OverlayPainter>(module, effect);
    if (!r.preset.empty())
        effect.LoadPreset(readTextFile(r.preset), r.preset);
    parameters.Apply(effect);
    for (const std::string& text : r.keys) {
        const KeyOption key = parseKeyOption(effect.Parameters(), text);
        effect.SetKey(*key.parameter, key.frame / r.rate, key.value);
    }
    if (!r.savePreset.empty())
        checkWritable(r.savePreset);
    if (presetOnly) {
        writeTextFile(r.savePreset, effect.SavePreset());
        return;
    }

    // Everything that can be known before the first frame is checked first,
    // so that a bad run writes nothing.
    const FrameRange range = plan.range;
    auto inputPath = [&](long f) { return framePath(r.input, f); };
    for (long f = range.first; f <= range.last; ++f) {
        checkExists(inputPath(f));
        if (!r.spread.empty())
            checkExists(framePath(r.spread, f));
    }
    const ImageHeader header = readImageHeader(inputPath(range.first));
    const HostFormatGeometry& format = *chooseHostFormat(r.hostFormat, header.depth);
    const int32_t rows = hostFrameRows(header.height, !r.exactHostFrame);
    for (long f = range.first; f <= range.last; ++f) {
        const std::string problem =
            transformLimitProblem(effect, hostFrameColumns(header.width, format), rows, f / r.rate);
        if (!problem.empty())
            throw Failure("cannot render " + inputPath(f) + ": " + problem);
    }
    checkWritable(framePath(r.output, range.first));
    if (!r.overlay.empty())
        checkWritable(framePath(r.overlay, range.first));
    if (!r.psf.empty())
        checkWritable(framePath(r.psf, range.first));
    if (!r.savePreset.empty())
        writeTextFile(r.savePreset, effect.SavePreset());

    keepFrameMemory();
    ImageEffectHost host;
    CoordMan coordinates(r.pixelAspect);
    // The project frame is the frame itself, so the effect's scale is 1.
    DSContentSetProperty(kProjectFrameWidth, header.width);
    DSContentSetProperty(kProjectFrameHeight, header.height);
    IDSImageEffect* fx = effect.Effect();
    fx->SetEffectHost(&host);
    fx->SetCoordMan(&coordinates);
    fx->SetSampleRate(r.rate);
    fx->SetTimespan(range.Count() / r.rate);
    fx->SetChannelMask(plan.selectors.data());
    fx->SetFieldMask(plan.fieldMask);

    // A still Spread is read once; a sequence of them with each frame.
    const bool spreadPerFrame = !r.spread.empty() && plan.sequence && hasFramePattern(r.spread);
    std::optional<ComRef<MemoryImage>> stillSpread;

    const bool keepFileAlpha = !hostFormatHasAlpha(format);
    auto load = [&](long f, HostFrames images) {
        ImageReader reader(inputPath(f));
        LoadedFrame loaded;
        loaded.header = reader.Header();
        const ImageHeader& frame = loaded.header;
        if (frame.width != header.width || frame.height != header.height)
            throw Failure(inputPath(f) + " is " + sizeText(frame.width, frame.height) + ", frame " +
                          std::to_string(range.first) + " was " + sizeText(header.width, header.height));
        for (ComRef<MemoryImage>* image : {&images.input, &images.output})
            if (!*image)
                *image = newHostImage(format, frame.width, rows);
        const bool fileAlpha = keepFileAlpha && (frame.channels == 2 || frame.channels == 4);
        if (fileAlpha)
            loaded.alpha.resize(static_cast<size_t>(frame.width) * frame.height);
        storeHostImage(images.input.get(), format, frame.width, frame.height, rows,
                       [&](int32_t y, int32_t count, float* rgba) {
                           reader.ReadRows(y, count, rgba);
                           for (size_t i = 0; fileAlpha && i < static_cast<size_t>(count) * frame.width; ++i)
                               loaded.alpha[static_cast<size_t>(y) * frame.width + i] = rgba[i * 4 + 3];
                       });
        // With one field rendered, the other keeps the input: the output
        // starts as its copy. Otherwise the effect writes every pixel.
        if (plan.fieldMask != 0)
            std::memcpy(images.output->Data(), images.input->Data(), images.input->Bytes());
        loaded.images = std::move(images);
        if (spreadPerFrame)
            loaded.spread = readSpread(framePath(r.spread, f), frame, inputPath(f), format, rows);
        return loaded;
    };
    // Writes the effect's output of frame f, and the overlay picture over it.
    auto write = [&](long f, const LoadedFrame& frame, const RgbaImage& layer, const ImageFrame& spreadPicture) {
        const ImageHeader& h = frame.header;
        const SampleDepth depth = plan.depth.value_or(h.depth);
        ImageWriter output(framePath(r.output, f), h.width, h.height, depth, h.channels, r.compression);
        std::optional<ImageWriter> withOverlay;
        if (overlay)
            withOverlay.emplace(framePath(r.overlay, f), h.width, h.height, depth, h.channels, r.compression);
        loadHostImage(frame.images.output.get(), format, h.width, h.height, rows,
                      [&](int32_t y, int32_t count, float* rgba) {
                          for (size_t i = 0; !frame.alpha.empty() && i < static_cast<size_t>(count) * h.width; ++i)
                              rgba[i * 4 + 3] = frame.alpha[static_cast<size_t>(y) * h.width + i];
                          output.WriteRows(count, rgba);
                          if (withOverlay) {
                              compositeOverlay(rgba, h.width, y, count, layer);
                              withOverlay->WriteRows(count, rgba);
                          }
                      });
        output.Finish();
        if (withOverlay)
            withOverlay->Finish();
        if (!r.psf.empty())
            writeImage(framePath(r.psf, f), spreadPicture, SampleDepth::U8, 1);
    };
    struct InterruptGuard {
        explicit InterruptGuard(ImageEffectHost* host) { watchInterrupts(host); }
        ~InterruptGuard() { releaseInterrupts(); }
    } guard(&host);

    ProgressMeter progress(range.Count(), r.quiet);
    // The next frame is read while this one renders, and the last one written.
    HostFrames spare;  // images no frame uses any more
    std::future<LoadedFrame> next = std::async(std::launch::async, load, range.first, HostFrames{});
    std::future<ComRef<MemoryImage>> writing;  // gives back the output image it wrote
    long written = 0;
    auto interrupted = [&]() {
        if (writing.valid())
            writing.get();
        progress.Finish();
        const std::string done = written == 0 ? "no frame was written"
                                              : "frames " + std::to_string(range.first) + " to " +
                                                    std::to_string(range.first + written - 1) + " were written";
        return Interrupted("interrupted: " + done + ", and no partial one");
    };
    for (long f = range.first; f <= range.last; ++f) {
        LoadedFrame current = next.get();
        if (f < range.last)
            next = std::async(std::launch::async, load, f + 1, std::move(spare));
        if (!r.spread.empty() && !spreadPerFrame && !stillSpread)
            stillSpread = readSpread(r.spread, current.header, inputPath(f), format, rows);
        IDSImage* spread = spreadPerFrame ? current.spread.get() : stillSpread ? stillSpread->get() : nullptr;
        host.SetInput(1, spread);
        fx->SetInput(current.images.input.get());
        fx->SetOutput(current.images.output.get());
        if (interruptRequested())
            throw interrupted();
        const double time = f / r.rate;
        const HRESULT status = fx->Execute(time);
        if (interruptRequested())
            throw interrupted();
        if (FAILED(status)) {
            char code[16];
            std::snprintf(code, sizeof code, "0x%08X", static_cast<unsigned>(status));
            throw Failure("the effect failed on " + inputPath(f) + " (" + code + ")");
        }
        RgbaImage layer;
        if (overlay)
            layer = overlay->Draw(current.header.width, current.header.height, r.pixelAspect, time);
        ImageFrame spreadPicture;
        if (!r.psf.empty())
            spreadPicture = pointSpreadPicture(fx);
        spare.input = std::move(current.images.input);
        spare.output = writing.valid() ? writing.get() : ComRef<MemoryImage>();
        ++written;
        writing = std::async(std::launch::async, [&write, f, frame = std::move(current), layer = std::move(layer),
                                                  spreadPicture = std::move(spreadPicture)]() mutable {
            write(f, frame, layer, spreadPicture);
            return std::move(frame.images.output);
        });
        progress.FrameDone(f, written);
    }
    if (writing.valid())
        writing.get();
    progress.Finish();
    host.SetInput(1, nullptr);
}
