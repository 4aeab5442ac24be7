// `lumenveil page`: the effect's property page as text, for the parameters
// given: each control with its label, shown or hidden, value and range.
// With `depth`, Lumenveil Depth's page (the depth parameters may be given).
#pragma once

#include "embed/effect_module.h"
#include "tools/lumenveil/parameter_options.h"

void printPage(const EffectModule& module, const ParameterOptions& parameters, bool depth);
