#include "tools/lumenveil/depth_render.h"

#include <algorithm>
#include <string>

#include "tools/lumenveil/cli_error.h"

namespace {

bool holds(const std::vector<Parameter>& parameters, const Parameter& p)
{
    return std::any_of(parameters.begin(), parameters.end(), [&](const Parameter& q) { return q.guid == p.guid; });
}

// The lens values, by their option names.
constexpr const char* kLensOptions[] = {"f-stop", "focal-length", "sensor-width"};
constexpr const char* kUseLens = "use-lens";

}  // namespace

std::vector<Parameter> toolParameters(const EffectModule& module)
{
    std::vector<Parameter> parameters = EffectInstance(module.CreateEffect()).Parameters();
    const EffectInstance depthEffect(module.CreateEffect(kDepthEffectClassId));
    for (const Parameter& p : depthEffect.Parameters())
        if (!holds(parameters, p))
            parameters.push_back(p);
    return parameters;
}

EffectInstance makeRenderEffect(const EffectModule& module, bool depth, const ParameterOptions& parameters)
{
    EffectInstance effect(module.CreateEffect(depth ? kDepthEffectClassId : kEffectClassId));
    for (const Parameter* given : parameters.GivenParameters())
        if (!holds(effect.Parameters(), *given))
            throw UsageError("--" + given->option + (depth ? " does not go with a depth map" : " needs --depth"));
    return effect;
}

void useLensWhenGiven(EffectInstance& effect, const ParameterOptions& parameters)
{
    bool lens = false, useLensGiven = false;
    for (const Parameter* given : parameters.GivenParameters()) {
        lens |= std::find(std::begin(kLensOptions), std::end(kLensOptions), given->option) != std::end(kLensOptions);
        useLensGiven |= given->option == kUseLens;
    }
    const Parameter* useLens = findParameter(effect.Parameters(), kUseLens);
    if (lens && !useLensGiven && useLens)
        effect.Set(*useLens, 1.0);
}
