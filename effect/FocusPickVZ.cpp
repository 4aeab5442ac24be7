#include "effect/FocusPickVZ.h"

#include <algorithm>
#include <cmath>

#include "effect/DepthLensVZ.h"

double FocusPickVZ::FocusOf(float depth) const
{
    if (!(depth > 0.0f) || !std::isfinite(depth))
        return kind == DEPTH_NORMALISED ? lowest : highest;
    return std::clamp(static_cast<double>(depth), lowest, highest);
}
