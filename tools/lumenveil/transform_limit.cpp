#include "tools/lumenveil/transform_limit.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

// The value of the parameter named `name` at `time`, or `fallback` when the
// module has no such parameter.
double valueOf(const EffectInstance& effect, const char* name, double time, double fallback)
{
    const Parameter* p = findParameter(effect.Parameters(), name);
    return p ? effect.Get(*p, time) : fallback;
}

// Pixel radius of a width fraction, rounded to 32 bits as the effect does.
float pixelRadius(double fraction, int32_t width) { return static_cast<float>(fraction * 0.5 * width); }

int64_t nextPowerOfTwo(int64_t n)
{
    int64_t p = 1;
    while (p < n)
        p *= 2;
    return p;
}

}  // namespace

double blurReach(const EffectInstance& effect, int32_t width, double time)
{
    const int shape = static_cast<int>(valueOf(effect, "Shape", time, 0));
    if (shape == 3) {  // image: the cut-out with its soft rim
        float a = pixelRadius(valueOf(effect, "RadiusPSF1", time, 0.1), width);
        float b = pixelRadius(valueOf(effect, "RadiusPSF2", time, 0.15), width);
        if (b < a)
            std::swap(a, b);
        return a + std::max(b - a, 1.0f);
    }
    const float r1 = std::max(pixelRadius(valueOf(effect, "RadiusX", time, 0.03), width), 0.5f);
    float r2 = r1;
    const bool matched = valueOf(effect, "Match Radii", time, 1) != 0;
    if (shape == 1 || (shape == 2 && !matched))
        r2 = std::max(pixelRadius(valueOf(effect, "RadiusY", time, 0.03), width), 0.5f);
    return std::max(r1, r2);
}

int64_t transformSide(int32_t width, int32_t height, double reach)
{
    const int64_t margin = static_cast<int64_t>(std::ceil(reach)) + 1;
    return nextPowerOfTwo(std::max<int64_t>(width, height) + 2 * margin);
}

std::string transformLimitProblem(const EffectInstance& effect, int32_t width, int32_t height, double time)
{
    const double reach = blurReach(effect, width, time);
    const int64_t side = transformSide(width, height, reach);
    if (side <= kLargestTransformSide)
        return "";
    // The reach grows with the width: find the widest frame that fits, then
    // the height that fits beside it.
    int32_t widest = static_cast<int32_t>(kLargestTransformSide);
    while (widest > 1 && transformSide(widest, 1, blurReach(effect, widest, time)) > kLargestTransformSide)
        --widest;
    const int64_t margin = static_cast<int64_t>(std::ceil(blurReach(effect, widest, time))) + 1;
    const int64_t tallest = kLargestTransformSide - 2 * margin;
    char reachText[32];
    std::snprintf(reachText, sizeof reachText, "%.1f", reach);
    return "a " + std::to_string(width) + " x " + std::to_string(height) + " frame with a blur reach of " +
           reachText + " px needs a transform of " + std::to_string(side) + ", above the largest, " +
           std::to_string(kLargestTransformSide) + "; at this radius frames up to " + std::to_string(widest) +
           " wide and " + std::to_string(tallest) + " high work";
}
