#include "tools/lumenveil/scene_linear.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>

#include "hostsdk/image_format_geometry.h"
#include "hostsdk/image_formats.h"
#include "tools/lumenveil/cli_error.h"
#include "tools/lumenveil/host_format_choice.h"
#include "tools/lumenveil/keyframe_option.h"

double exposureScale(const std::string& text, bool linear)
{
    if (text.empty())
        return 1.0;
    if (!linear)
        throw UsageError("--exposure scales light for a scene-linear render: give --linear too");
    char* end = nullptr;
    errno = 0;
    const double stops = std::strtod(text.c_str(), &end);
    const double scale = std::exp2(stops);
    if (errno != 0 || !end || *end != '\0' || !std::isfinite(stops) || !std::isnormal(scale) ||
        !std::isfinite(static_cast<float>(scale)) || static_cast<float>(scale) == 0.0f)
        throw UsageError("--exposure: \"" + text + "\" is not a number of stops");
    return scale;
}

LightPath::LightPath(bool linearFrames, double exposure, bool exrUnassociated)
    : linear(linearFrames),
      scaleIn(static_cast<float>(exposure)),
      scaleOut(static_cast<float>(1.0 / exposure)),
      unassociatedExr(exrUnassociated),
      frame(linearFrames ? AlphaConvention::Associated : AlphaConvention::Unassociated)
{
}

void LightPath::ToFrame(float* rgba, size_t pixels, const std::string& fileFormat) const
{
    convertAlpha(rgba, pixels, fileAlphaConvention(fileFormat, unassociatedExr), frame);
    if (scaleIn != 1.0f)
        scaleColour(rgba, pixels, scaleIn);
}

void LightPath::ToFile(float* rgba, size_t pixels, const std::string& fileFormat) const
{
    if (scaleOut != 1.0f)
        scaleColour(rgba, pixels, scaleOut);
    convertAlpha(rgba, pixels, frame, fileAlphaConvention(fileFormat, unassociatedExr));
}

namespace {

// Property names of the parameters the light path reads.
constexpr const char* kLinear = "Linear";
constexpr const char* kEngine = kEngineParameterName;
constexpr const char* kBrightEmphasis = "Bright Emphasis";
// The Engine list's entries.
constexpr const char* kFaithful = "faithful";
constexpr const char* kFast = "fast";

const Parameter& parameterNamed(const EffectInstance& effect, const char* name)
{
    const Parameter* p = findParameter(effect.Parameters(), name);
    if (!p)
        throw Failure(std::string("the effect has no parameter ") + name);
    return *p;
}

double listIndexOf(const Parameter& p, const char* entry)
{
    for (size_t i = 0; i < p.listEntries.size(); ++i)
        if (p.listEntries[i] == entry)
            return static_cast<double>(i);
    throw Failure("the effect's " + p.name + " has no entry " + entry);
}

// --bright-emphasis, as an option or a key.
bool brightEmphasisGiven(const EffectInstance& effect, const RenderRequest& r, const ParameterOptions& options)
{
    if (options.Given(kBrightEmphasis))
        return true;
    for (const std::string& key : r.keys)
        if (parseKeyOption(effect.Parameters(), key).parameter->name == kBrightEmphasis)
            return true;
    return false;
}

}  // namespace

LightPath chooseLightPath(EffectInstance& effect, const RenderRequest& r, const ParameterOptions& options)
{
    // An effect without the Linear property (Lumenveil Depth) renders in 16 bits.
    const Parameter* linearProperty = findParameter(effect.Parameters(), kLinear);
    const bool linear = linearProperty && effect.Get(*linearProperty, -1.0) != 0.0;
    const double exposure = exposureScale(r.exposure, linear);
    if (!linear)
        return LightPath(false, exposure, r.unassociatedAlpha);
    const Parameter& engine = parameterNamed(effect, kEngine);
    if (effect.Get(engine, -1.0) == listIndexOf(engine, kFaithful)) {
        if (options.Given(kEngine))
            throw UsageError("--linear renders on --engine fast or fast-float: the faithful engine works in 16 bits");
        effect.Set(engine, listIndexOf(engine, kFast));
    }
    const HostFormatGeometry* linearFormat = hostFormatGeometry(hostFormatCodeOf(MFIF_RGBA_FLOAT));
    if (!r.hostFormat.empty() && chooseHostFormat(r.hostFormat, SampleDepth::Float) != linearFormat)
        throw UsageError("--linear hands frames over as MFIF_RGBA_FLOAT: --host-format " + r.hostFormat +
                         " cannot carry light above 1");
    if (brightEmphasisGiven(effect, r, options))
        throw UsageError("--bright-emphasis is not used by a scene-linear render: its emphasis is "
                         "--highlight-emphasis (above --highlight-threshold)");
    return LightPath(true, exposure, r.unassociatedAlpha);
}
