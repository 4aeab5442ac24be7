#include "vzlibs/fftlib/emphasis.h"

#include <cmath>

namespace {
// Above e = 50 the hyperbola is steepened by a power of (e' - 50) * 0.03 + 1.
double steepening(double e)
{
    const double capped = e < 500.0 ? e : 500.0;
    return (capped - 50.0) * 0.03 + 1.0;
}

double clampUnit(double x)
{
    if (x < 0.0)
        return 0.0;
    if (x > 1.0)
        return 1.0;
    return x;
}
}  // namespace

double emphasise(double x, double e)
{
    if (e - 1.0 < 0.001)
        return x;
    x = clampUnit(x);
    const double a = 1.0 / e;
    const double d = e - a;
    const double u = (1.0 / ((1.0 - x) * d + a) - a) / d;
    if (e <= 50.0)
        return u;
    return std::pow(u, steepening(e));
}

double deemphasise(double x, double e)
{
    if (e - 1.0 < 0.001)
        return x;
    x = clampUnit(x);
    if (e > 50.0)
        x = std::pow(x, 1.0 / steepening(e));
    const double a = 1.0 / e;
    const double d = e - a;
    return 1.0 - (1.0 / (x * d + a) - a) / d;
}
