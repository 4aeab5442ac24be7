#include "tools/lumenveil/alpha_convention.h"

namespace {

// OpenImageIO's name of the OpenEXR format.
constexpr const char* kExrFormat = "openexr";

}  // namespace

AlphaConvention fileAlphaConvention(const std::string& formatName, bool unassociatedExr)
{
    return formatName == kExrFormat && !unassociatedExr ? AlphaConvention::Associated : AlphaConvention::Unassociated;
}

void convertAlpha(float* rgba, size_t pixels, AlphaConvention from, AlphaConvention to)
{
    if (from == to)
        return;
    const bool multiply = to == AlphaConvention::Associated;
    for (size_t i = 0; i < pixels; ++i, rgba += 4) {
        const float a = rgba[3];
        if (!multiply && a == 0.0f)
            continue;
        for (int c = 0; c < 3; ++c)
            rgba[c] = multiply ? rgba[c] * a : rgba[c] / a;
    }
}

void scaleColour(float* rgba, size_t pixels, float factor)
{
    for (size_t i = 0; i < pixels; ++i, rgba += 4)
        for (int c = 0; c < 3; ++c)
            rgba[c] *= factor;
}
