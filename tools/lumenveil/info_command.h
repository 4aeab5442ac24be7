// `lumenveil info`: the effect's name, class, inputs and parameters, read
// from the module; `lumenveil formats`: the host pixel formats and the image
// file formats available.
#pragma once

#include "embed/effect_module.h"

void printEffectInfo(const EffectModule& module);
void printFormats();
