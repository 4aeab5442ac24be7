#include "tools/lumenveil/render_command.h"

#include <memory>

#include "hostsdk/IDSCoordMan.h"
#include "hostsdk/IDSImageEffectHost.h"
#include "hostsdk/content.h"
#include "tools/lumenveil/frame_memory.h"
#include "tools/lumenveil/frame_pipeline.h"
#include "tools/lumenveil/keyframe_option.h"
#include "tools/lumenveil/overlay_picture.h"
#include "tools/lumenveil/render_plan.h"
#include "embed/settings_directory.h"

namespace {

// The effect's state: a preset first, then the options and keys over it.
void setParameters(EffectInstance& effect, const RenderRequest& r, const ParameterOptions& parameters)
{
    if (!r.preset.empty())
        effect.LoadPreset(readTextFile(r.preset), r.preset);
    parameters.Apply(effect);
    for (const std::string& text : r.keys) {
        const KeyOption key = parseKeyOption(effect.Parameters(), text);
        effect.SetKey(*key.parameter, key.frame / r.rate, key.value);
    }
}

// Tells the effect what a host tells it before the first frame.
void connectEffect(IDSImageEffect* fx, ImageEffectHost* host, CoordMan* coordinates, const RenderRequest& r,
                   const RenderPlan& plan, const ImageHeader& header)
{
    // The project frame is the frame itself, so the effect's scale is 1.
    DSContentSetProperty(kProjectFrameWidth, header.width);
    DSContentSetProperty(kProjectFrameHeight, header.height);
    fx->SetEffectHost(host);
    fx->SetCoordMan(coordinates);
    fx->SetSampleRate(r.rate);
    fx->SetTimespan(plan.range.Count() / r.rate);
    fx->SetChannelMask(plan.selectors.data());
    fx->SetFieldMask(plan.fieldMask);
}

}  // namespace

void runRender(const EffectModule& module, const RenderRequest& r, const ParameterOptions& parameters)
{
    const bool presetOnly = r.input.empty() && r.output.empty() && !r.savePreset.empty();
    const RunOutputs outputs(r);
    RenderPlan plan;
    if (!presetOnly)
        plan = checkRequest(r, outputs);
    prepareSettingsDirectory();

    EffectInstance effect(module.CreateEffect());
    std::unique_ptr<OverlayPainter> overlay;
    if (outputs.Find(OutputKind::Overlay))
        overlay = std::make_unique<OverlayPainter>(module, effect);
    setParameters(effect, r, parameters);
    if (!r.savePreset.empty())
        checkWritable(r.savePreset);
    if (presetOnly) {
        writeTextFile(r.savePreset, effect.SavePreset());
        return;
    }
    // Everything that can be known before the first frame is checked first,
    // so that a bad run writes nothing.
    const RenderSetup setup = checkRun(effect, r, plan, outputs);
    if (!r.savePreset.empty())
        writeTextFile(r.savePreset, effect.SavePreset());

    keepFrameMemory();
    ImageEffectHost host;
    CoordMan coordinates(r.pixelAspect);
    connectEffect(effect.Effect(), &host, &coordinates, r, plan, setup.header);
    FramePipeline(r, plan, setup, outputs, effect.Effect(), host, overlay.get()).Run();
}
