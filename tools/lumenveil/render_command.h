// `lumenveil render`: image files or sequences through the effect, as a host
// runs it: one effect object for the whole range, a frame handed over,
// Execute, the result written; the next frame is read and the last one
// written while the current one renders.
#pragma once

#include "embed/effect_module.h"
#include "tools/lumenveil/parameter_options.h"
#include "tools/lumenveil/render_request.h"

// Throws UsageError, Failure or Interrupted; returns when every frame is written.
void runRender(const EffectModule& module, const RenderRequest& request, const ParameterOptions& parameters);
