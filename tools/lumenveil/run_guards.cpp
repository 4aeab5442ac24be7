#include "tools/lumenveil/run_guards.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include <nlohmann/json.hpp>

#include "hostsdk/lumenveil_shape.h"
#include "tools/lumenveil/checked_image_output.h"
#include "tools/lumenveil/cli_error.h"
#include "tools/lumenveil/keyframe_option.h"
#include "tools/lumenveil/output_format_table.h"

namespace {

// How far from a whole frame a preset's key time x rate may be: the
// rounding of a time saved as frame / rate and multiplied back.
constexpr double kFrameTolerance = 1e-6;

constexpr const char* kShapeProperty = "Shape";

}  // namespace

void checkOutputFormats(const RenderRequest& r, const RunOutputs& outputs, long firstFrame,
                        std::optional<SampleDepth> given, std::optional<SampleDepth> input)
{
    if (r.compression.empty() && !given)
        return;
    for (const RunOutput& output : outputs.All()) {
        if (output.kind != OutputKind::Frame && output.kind != OutputKind::Overlay)
            continue;
        const std::string path = output.Path(firstFrame);
        const std::string name = imageOutputFormat(path);
        const OutputFormat* format = findOutputFormat(name);
        if (!format)
            continue;
        if (given && !holdsDepth(*format, *given))
            throw UsageError("--depth " + r.depth + ": " + format->format + " files hold " + depthList(*format) +
                             ", not " + r.depth + " (" + output.name + " " + path + ")");
        std::optional<SampleDepth> written = given ? given : input;
        if (written)
            written = depthWritten(name, *written);
        if (r.compression.empty())
            continue;
        const std::string problem = compressionProblem(*format, r.compression, written ? &*written : nullptr);
        if (!problem.empty())
            throw UsageError("--compression: " + problem + " (" + output.name + " " + path + ")");
    }
}

void checkPresetKeys(const RenderRequest& r)
{
    if (r.preset.empty())
        return;
    const nlohmann::json preset = nlohmann::json::parse(readTextFile(r.preset), nullptr, false);
    if (!preset.is_object() || !preset.contains("properties") || !preset["properties"].is_array())
        return;  // the effect has said what is wrong with it
    for (const nlohmann::json& item : preset["properties"]) {
        if (!item.is_object() || !item.contains("keys") || !item["keys"].is_array())
            continue;
        const std::string name = item.value("name", std::string("a property"));
        for (const nlohmann::json& key : item["keys"]) {
            if (!key.is_array() || key.empty() || !key[0].is_number())
                continue;
            const double time = key[0].get<double>();
            const double frame = time * r.rate;
            const std::string problem = offFrameProblem(frame, kFrameTolerance * std::max(1.0, std::fabs(frame)));
            if (!problem.empty())
                throw Failure("preset " + r.preset + " refused: " + name + " has a key at " + formatNumber(time) +
                              " s (at --rate " + formatNumber(r.rate) + ": " + problem + ")");
        }
    }
}

void checkOverlayShape(const EffectInstance& effect, const RenderRequest& r, const std::vector<long>& frames)
{
    if (r.overlay.empty())
        return;
    const Parameter* shape = findParameter(effect.Parameters(), kShapeProperty);
    if (!shape)
        return;
    for (long f : frames)
        if (shapeDrawsOverlay(shapeOfProperty(static_cast<int32_t>(effect.Get(*shape, f / r.rate)))))
            return;
    std::string drawing;
    for (size_t i = 0; i < shape->listEntries.size(); ++i)
        if (shapeDrawsOverlay(shapeOfProperty(static_cast<int32_t>(i))))
            drawing += (drawing.empty() ? "" : ", ") + formatParameterValue(*shape, static_cast<double>(i));
    throw UsageError("--overlay: the shape draws no overlay on any frame of the run; only --shape " + drawing +
                     " does (its cut-out's crosshair and circles)");
}

void warnMatteWithoutAlpha(const RenderRequest& r, const std::string& input, const ImageHeader& header)
{
    if (r.matte && header.channels != 2 && header.channels != 4)
        std::fprintf(stderr,
                     "lumenveil: warning: --matte: %s has no alpha channel, so the matte is full and the effect "
                     "covers the whole frame\n",
                     input.c_str());
}
