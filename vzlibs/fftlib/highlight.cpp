#include "vzlibs/fftlib/highlight.h"

#include <cmath>

double highlight_curve(double x, double e, double t)
{
    if (e < kHighlightEmphasisOff || !(x > t))
        return x;
    const double d = x - t;
    return x + (e - 1.0) * d * d / (2.0 * t);
}

double highlight_inverse(double y, double e, double t)
{
    if (e < kHighlightEmphasisOff || !(y > t))
        return y;
    const double d = y - t;
    return t + 2.0 * d / (1.0 + std::sqrt(1.0 + 2.0 * (e - 1.0) * d / t));
}

namespace {

inline double luminance(const float* p)
{
    return kLuminanceRed * p[0] + kLuminanceGreen * p[1] + kLuminanceBlue * p[2];
}

// Scales the colour of each pixel whose luminance lies above t by
// curve(L) / L.
template <double (*Curve)(double, double, double)>
void scaleHighlights(float* rgba, size_t count, double e, double t)
{
    if (e < kHighlightEmphasisOff)
        return;
    for (size_t i = 0; i < count; ++i, rgba += 4) {
        const double l = luminance(rgba);
        if (!(l > t))
            continue;
        const double gain = Curve(l, e, t) / l;
        for (int c = 0; c < 3; ++c)
            rgba[c] = static_cast<float>(rgba[c] * gain);
    }
}

}  // namespace

void highlight_emphasise_pixels(float* rgba, size_t count, double e, double t)
{
    scaleHighlights<highlight_curve>(rgba, count, e, t);
}

void highlight_deemphasise_pixels(float* rgba, size_t count, double e, double t)
{
    scaleHighlights<highlight_inverse>(rgba, count, e, t);
}
