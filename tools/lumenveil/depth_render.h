// The depth-of-field render in the tool: which effect a render makes (the
// plain Lumenveil, or Lumenveil Depth with a depth map), and the parameters
// the commands offer for both.
#pragma once

#include <vector>

#include "embed/effect_instance.h"
#include "embed/effect_module.h"
#include "tools/lumenveil/parameter_options.h"

// The plain effect's parameters, then those only Lumenveil Depth has.
std::vector<Parameter> toolParameters(const EffectModule& module);

// A new effect for a render: Lumenveil Depth when `depth`, else the plain
// effect. UsageError when an option given names a parameter it lacks.
EffectInstance makeRenderEffect(const EffectModule& module, bool depth, const ParameterOptions& parameters);

// After the options are applied: lens values given (--f-stop,
// --focal-length, --sensor-width) switch Use Lens on, unless it was given.
void useLensWhenGiven(EffectInstance& effect, const ParameterOptions& parameters);
