// The largest frame the effect's transform takes. The engine convolves in a
// square power-of-two transform of side at most 8192 that holds the frame and
// a margin of the blur's reach plus one pixel on every side; a larger frame
// is not rendered at all. The tool checks each frame before it starts.
#pragma once

#include <cstdint>
#include <string>

#include "tools/lumenveil/effect_instance.h"

inline constexpr int64_t kLargestTransformSide = 8192;

// The blur's reach in pixels for a frame `width` wide at `time` seconds, by
// the effect's rule: radii are fractions of the frame width (RadiusX x 0.5 x
// width, at least 0.5 px); Shape image reaches to its outer cut-out radius,
// at least one pixel beyond the inner.
double blurReach(const EffectInstance& effect, int32_t width, double time);

// The transform side for a width x height frame with that reach.
int64_t transformSide(int32_t width, int32_t height, double reach);

// "" when a width x height frame fits at `time`, else the message saying
// the largest width and height that work at the radius in force then.
std::string transformLimitProblem(const EffectInstance& effect, int32_t width, int32_t height, double time);
