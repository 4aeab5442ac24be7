#include "tools/lumenveil/render_command.h"

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "embed/effect_host.h"
#include "embed/parameter_table.h"
#include "tools/lumenveil/cli_error.h"
#include "hostsdk/content.h"
#include "tools/lumenveil/depth_render.h"
#include "tools/lumenveil/frame_memory.h"
#include "tools/lumenveil/frame_pipeline.h"
#include "tools/lumenveil/keyframe_option.h"
#include "tools/lumenveil/overlay_picture.h"
#include "tools/lumenveil/render_plan.h"
#include "tools/lumenveil/stale_temporaries.h"
#include "embed/settings_directory.h"

namespace {

// The effect's state: a preset first, then the options and keys over it.
void setParameters(EffectInstance& effect, const RenderRequest& r, const ParameterOptions& parameters)
{
    if (!r.preset.empty())
        effect.LoadPreset(readTextFile(r.preset), r.preset);
    parameters.Apply(effect);
    useLensWhenGiven(effect, parameters);
    for (const std::string& text : r.keys) {
        const KeyOption key = parseKeyOption(effect.Parameters(), text);
        const double time = key.frame / r.rate;
        if (!std::isfinite(time))
            throw UsageError("--key " + text + ": frame " + formatNumber(key.frame) + " at --rate " +
                             formatNumber(r.rate) + " lies beyond any time the effect can hold");
        effect.SetKey(*key.parameter, time, key.value);
    }
}

// What a host tells the effect before the first frame.
HostSettings hostSettings(const RenderRequest& r, const RenderPlan& plan)
{
    HostSettings settings;
    settings.rate = r.rate;
    settings.timespan = plan.frames.Count() / r.rate;
    settings.pixelAspect = r.pixelAspect;
    settings.selectors = plan.selectors;
    settings.fieldMask = plan.fieldMask;
    return settings;
}

// Every file the run writes: each output of each frame, and the preset.
std::vector<std::string> targetsOf(const RenderRequest& r, const RenderPlan& plan, const RunOutputs& outputs)
{
    std::vector<std::string> targets;
    for (const RunOutput& output : outputs.All())
        for (long f : plan.frames.frames)
            targets.push_back(output.Path(f));
    if (!r.savePreset.empty())
        targets.push_back(r.savePreset);
    return targets;
}

}  // namespace

void runRender(const EffectModule& module, const RenderRequest& r, const ParameterOptions& parameters)
{
    const bool presetOnly = r.input.empty() && r.output.empty() && !r.savePreset.empty();
    RunOutputs outputs(r);
    RenderPlan plan;
    if (!presetOnly) {
        plan = checkRequest(r, outputs);
        outputs.Renumber(plan.renumberOffset);
        clampToExistingFrames(r, plan);
    }
    prepareSettingsDirectory();

    EffectInstance effect = makeRenderEffect(module, plan.depthMap.has_value(), parameters);
    std::unique_ptr<OverlayPainter> overlay;
    if (outputs.Find(OutputKind::Overlay))
        overlay = std::make_unique<OverlayPainter>(module, effect);
    setParameters(effect, r, parameters);
    const LightPath light = presetOnly ? LightPath() : chooseLightPath(effect, r, parameters);
    if (!r.savePreset.empty())
        checkWritable(r.savePreset);
    if (presetOnly) {
        removeStaleTemporaries({r.savePreset});
        writeTextFile(r.savePreset, effect.SavePreset());
        return;
    }
    // Everything that can be known before the first frame is checked first,
    // so that a bad run writes nothing.
    const RenderSetup setup = checkRun(effect, r, plan, outputs, light);
    removeStaleTemporaries(targetsOf(r, plan, outputs));
    // The preset is renamed into place only once every frame is written.
    StagedFile preset;
    if (!r.savePreset.empty())
        preset = stageTextFile(r.savePreset, effect.SavePreset());

    keepFrameMemory();
    // The project frame is the frame itself, so the effect's scale is 1.
    DSContentSetProperty(kProjectFrameWidth, setup.header.width);
    DSContentSetProperty(kProjectFrameHeight, setup.header.height);
    EffectHost host(effect.Effect(), hostSettings(r, plan));
    FramePipeline(r, plan, setup, outputs, effect.Effect(), host.Link(), overlay.get()).Run();
    if (!r.savePreset.empty())
        preset.Commit();
}
