// Whether the effect's transform takes a frame, asked of the effect itself
// (IDSTransformNeeds): it knows how its parameters become the blur's reach
// and how its engine sizes a transform. The tool checks each frame before it
// starts, and says what would work instead.
#pragma once

#include <cstdint>
#include <string>

#include "embed/effect_instance.h"

// "" when a width x height frame fits at `time` seconds in the engine the
// effect is set to, else the message saying the largest width and height that
// work at the radius in force then. The effect is asked about `rows` rows
// when given (the host frame's rows, padded below the picture), the message
// names the picture's height. Failure when the effect cannot tell.
std::string transformLimitProblem(const EffectInstance& effect, int32_t width, int32_t height, double time,
                                  int32_t rows = 0);
