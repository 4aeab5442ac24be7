// The bright-emphasis curve and its inverse.
#include <gtest/gtest.h>

#include <cmath>

#include "vzlibs/fftlib/emphasis.h"

namespace {

TEST(EmphasisCurve, IdentityUpTo1001EvenOutsideTheUnitRange)
{
    for (double e : {0.0, 0.5, 1.0, 1.001})
        for (double x : {-0.5, 0.0, 0.3, 1.0, 2.0}) {
            EXPECT_EQ(emphasise(x, e), x);
            EXPECT_EQ(deemphasise(x, e), x);
        }
    // Just above, the curve clamps and bends.
    EXPECT_EQ(emphasise(2.0, 1.002), 1.0);
    EXPECT_EQ(emphasise(-1.0, 1.002), 0.0);
    EXPECT_LT(emphasise(0.5, 1.002), 0.5);
}

TEST(EmphasisCurve, WorkedValues)
{
    EXPECT_NEAR(emphasise(0.5, 2.0), 0.2, 1e-12);
    EXPECT_NEAR(deemphasise(0.2, 2.0), 0.5, 1e-12);
    EXPECT_NEAR(emphasise(0.5, 10.0), 0.0099, 0.00005);
    EXPECT_NEAR(emphasise(0.5, 50.0), 0.0004, 0.00002);
    // Above 50 the hyperbola is raised to (e - 50) * 0.03 + 1: 1.3 at 60.
    const double a = 1.0 / 60.0, d = 60.0 - a;
    const double hyperbola = (1.0 / (0.5 * d + a) - a) / d;
    EXPECT_NEAR(emphasise(0.5, 60.0), std::pow(hyperbola, 1.3), 1e-15);
    // The power stops growing at 500 (exponent 14.5).
    EXPECT_LT(emphasise(0.9, 500.0), emphasise(0.9, 400.0));
}

TEST(EmphasisCurve, EndsStayAndRoundTripsReturn)
{
    for (double e : {1.002, 2.0, 10.0, 49.0, 50.0, 51.0, 120.0, 500.0}) {
        EXPECT_NEAR(emphasise(0.0, e), 0.0, 1e-12) << e;
        EXPECT_NEAR(emphasise(1.0, e), 1.0, 1e-12) << e;
        EXPECT_NEAR(deemphasise(0.0, e), 0.0, 1e-12) << e;
        EXPECT_NEAR(deemphasise(1.0, e), 1.0, 1e-12) << e;
        double previous = -1.0;
        for (int i = 0; i <= 100; ++i) {
            const double x = i / 100.0;
            const double y = emphasise(x, e);
            EXPECT_GE(y, previous) << "monotone at e=" << e;
            EXPECT_LE(y, x + 1e-15) << "presses mid-tones down";
            previous = y;
            if (e <= 120.0 || x >= 0.2) {  // the steepest curves lose the darkest tones to rounding
                EXPECT_NEAR(deemphasise(y, e), x, 1e-9) << "x=" << x << " e=" << e;
            }
        }
    }
}

TEST(EmphasisCurve, NanPassesUnclamped)
{
    EXPECT_TRUE(std::isnan(emphasise(std::nan(""), 4.0)));
    EXPECT_TRUE(std::isnan(deemphasise(std::nan(""), 4.0)));
}

}  // namespace
