// The bright-emphasis curve and its inverse, against the hyperbola and power
// worked out here from their definition.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "vzlibs/fftlib/emphasis.h"

namespace {

// The curve's exponent above e = 50: (min(e, 500) - 50) x 0.03 + 1.
double exponentFor(double e) { return e > 50.0 ? (std::min(e, 500.0) - 50.0) * 0.03 + 1.0 : 1.0; }

TEST(EmphasisCurve, IdentityUpTo1001AndClampedAbove)
{
    for (double e : {0.0, 0.5, 1.0, 1.001})
        for (double x : {-0.5, 0.0, 0.3, 1.0, 2.0}) {
            EXPECT_EQ(emphasise(x, e), x);
            EXPECT_EQ(deemphasise(x, e), x);
        }
    EXPECT_EQ(emphasise(2.0, 1.002), 1.0);
    EXPECT_EQ(emphasise(-1.0, 1.002), 0.0);
    EXPECT_EQ(deemphasise(-1.0, 1.002), 0.0);
    EXPECT_TRUE(std::isnan(emphasise(std::nan(""), 4.0)));
    EXPECT_TRUE(std::isnan(deemphasise(std::nan(""), 4.0)));
}

TEST(EmphasisCurve, HyperbolaThenPowerWithItsExponentCappedAt500)
{
    // Worked values: e = 2 maps 0.5 to 0.2; e = 60 has exponent 1.3, e = 500 and
    // beyond 14.5 (the hyperbola itself keeps the uncapped e).
    EXPECT_NEAR(emphasise(0.5, 2.0), 0.2, 1e-15);
    EXPECT_NEAR(deemphasise(0.2, 2.0), 0.5, 1e-15);
    EXPECT_DOUBLE_EQ(exponentFor(60.0), 1.3);
    EXPECT_DOUBLE_EQ(exponentFor(800.0), 14.5);
    for (double e : {1.002, 3.0, 10.0, 50.0, 50.5, 60.0, 333.0, 500.0, 800.0})
        for (double x : {0.0, 0.05, 0.3, 0.5, 0.77, 0.99, 1.0}) {
            const double a = 1.0 / e, d = e - a;
            const double want = std::pow((1.0 / ((1.0 - x) * d + a) - a) / d, exponentFor(e));
            EXPECT_NEAR(emphasise(x, e), want, 1e-14 * std::max(want, 1e-3)) << "x=" << x << " e=" << e;
            // The inverse: the root first, then the hyperbola's inverse.
            const double root = std::pow(x, 1.0 / exponentFor(e));
            EXPECT_NEAR(deemphasise(x, e), 1.0 - (1.0 / (root * d + a) - a) / d, 1e-13) << "x=" << x << " e=" << e;
        }
}

}  // namespace
