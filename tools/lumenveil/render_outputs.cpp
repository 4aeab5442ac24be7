#include "tools/lumenveil/render_outputs.h"

#include "tools/lumenveil/frame_pattern.h"

std::string RunOutput::Path(long frame) const { return framePath(pattern, frame + offset); }

void RunOutputs::Renumber(long offset)
{
    for (RunOutput& output : outputs)
        output.offset = offset;
}

RunOutputs::RunOutputs(const RenderRequest& r)
{
    outputs.push_back({OutputKind::Frame, "OUTPUT", r.output});
    if (!r.overlay.empty())
        outputs.push_back({OutputKind::Overlay, "--overlay", r.overlay});
    if (!r.psf.empty())
        outputs.push_back({OutputKind::PointSpread, "--psf", r.psf});
    if (!r.coc.empty())
        outputs.push_back({OutputKind::CircleOfConfusion, "--coc", r.coc});
}

const RunOutput* RunOutputs::Find(OutputKind kind) const
{
    for (const RunOutput& output : outputs)
        if (output.kind == kind)
            return &output;
    return nullptr;
}
