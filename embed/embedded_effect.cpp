#include "embed/embedded_effect.h"

#include <chrono>
#include <cstdio>

#include "embed/errors.h"
#include "embed/host_frame.h"
#include "embed/render_status.h"
#include "embed/transform_limit.h"

namespace {

std::string sizeText(int32_t width, int32_t height) { return std::to_string(width) + " x " + std::to_string(height); }

void checkFrames(const FrameView& input, const FrameView& output, const FrameView* spread)
{
    for (const auto& [frame, what] : {std::pair{&input, "the input frame"}, std::pair{&output, "the output frame"},
                                      std::pair{spread, "the Spread picture"}})
        if (frame)
            if (const std::string problem = frameProblem(*frame, what); !problem.empty())
                throw UsageError(problem);
    if (output.width != input.width || output.height != input.height || output.channels != input.channels ||
        output.type != input.type)
        throw UsageError("the output frame must have the input's size, channels and sample type");
    if (spread && (spread->width != input.width || spread->height != input.height))
        throw UsageError("the Spread picture is " + sizeText(spread->width, spread->height) + " but the frame is " +
                         sizeText(input.width, input.height) + ": they must be the same size");
}

// The effect's switch for scene-linear renders.
constexpr const char* kLinearParameter = "Linear";

}  // namespace

EmbeddedEffect::EmbeddedEffect(const EffectModule& module, const HostSettings& settings)
    : instance(module.CreateEffect()), host(instance.Effect(), settings)
{
}

EmbeddedEffect::~EmbeddedEffect()
{
    instance.Effect()->SetInput(nullptr);
    instance.Effect()->SetOutput(nullptr);
}

const Parameter& EmbeddedEffect::Find(const std::string& name) const
{
    const Parameter* p = findParameter(Parameters(), name);
    if (!p)
        throw UsageError("the effect has no parameter named \"" + name + "\"");
    return *p;
}

void EmbeddedEffect::Set(const std::string& name, double value)
{
    const Parameter& p = Find(name);
    instance.Set(p, checkParameterValue(p, value, p.name));
}

void EmbeddedEffect::SetKey(const std::string& name, double time, double value)
{
    const Parameter& p = Find(name);
    if (!p.animated)
        throw UsageError(p.name + " cannot be animated");
    instance.SetKey(p, time, checkParameterValue(p, value, p.name));
}

double EmbeddedEffect::Get(const std::string& name, double time) const { return instance.Get(Find(name), time); }

MemoryImage* EmbeddedEffect::hostImage(ComRef<MemoryImage>& image, const HostFormatGeometry& format, int32_t width,
                                       int32_t rows)
{
    int32_t w = 0, h = 0;
    if (image)
        image->GetDimensions(&w, &h);
    if (!image || image->Code() != format.code || w != width || h != rows)
        image = newHostImage(format, width, rows);
    return image.get();
}

void EmbeddedEffect::Render(const FrameView& input, const FrameView& output, double time, const FrameView* spread)
{
    checkFrames(input, output, spread);
    const HostFormatGeometry& format = defaultHostFormat(input.type == SampleType::U8);
    // A scene-linear render takes float samples as they are: premultiplied
    // light, above 1 too. (It refuses 8-bit frames, which go over in
    // MFIF_RGBA_RAW_32.)
    const Parameter* linearParameter = findParameter(Parameters(), kLinearParameter);
    const bool keepRange = input.type == SampleType::Float && linearParameter &&
                           instance.Get(*linearParameter, time) != 0.0;
    const int32_t rows = hostFrameRows(input.height, true);
    if (const std::string problem = transformLimitProblem(instance, input.width, input.height, time, rows);
        !problem.empty())
        throw Failure("cannot render the frame: " + problem);
    MemoryImage* in = hostImage(inputImage, format, input.width, rows);
    MemoryImage* out = hostImage(outputImage, format, input.width, rows);
    storeFrame(in, format, rows, input, keepRange);
    if (spread)
        storeFrame(hostImage(spreadImage, format, input.width, rows), format, rows, *spread);
    host.Link().SetInput(1, spread ? spreadImage.get() : nullptr);
    IDSImageEffect* fx = instance.Effect();
    fx->SetInput(in);
    fx->SetOutput(out);
    const auto start = std::chrono::steady_clock::now();
    const HRESULT status = fx->Execute(time);
    executeSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    host.Link().SetInput(1, nullptr);
    requireRendered(fx, status, "the effect could not render the frame");
    loadFrame(out, format, rows, output);
}
