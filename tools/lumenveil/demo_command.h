// `lumenveil demo`: renders the built-in night scene through the effect with
// a few apertures and says where the pictures are.
#pragma once

#include <string>

#include "embed/effect_module.h"

void runDemo(const EffectModule& module, const std::string& directory);
