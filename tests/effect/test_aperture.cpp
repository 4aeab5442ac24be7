// ApertureVZ::Transform: the reach and margin of the aperture's kernel and the
// transform a frame needs in each engine mode, worked from the rules here.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "effect/ApertureVZ.h"
#include "vzlibs/fftlib/fft_modes.h"

namespace {

// A fraction of half the frame's width in pixels, rounded to a float, at least 0.5.
float pixels(double fraction, int width) { return std::max(0.5f, float(fraction * 0.5 * width)); }

int64_t powerOfTwoAtLeast(int64_t n)
{
    int64_t s = 1;
    while (s < n)
        s *= 2;
    return s;
}

// The first number from n on with no prime factor above 7.
int64_t smoothAtLeast(int64_t n)
{
    for (;; ++n) {
        int64_t rest = n;
        for (int p : {2, 3, 5, 7})
            while (rest % p == 0)
                rest /= p;
        if (rest == 1)
            return n;
    }
}

TEST(ApertureTransform, ReachMarginAndSidesFollowTheShapeTheFrameAndTheMode)
{
    struct Case {
        int32_t shape, match;
        double rx, ry, psf1, psf2;
        int w, h;
    } cases[] = {
        {SHAPE_CIRCLE, 0, 0.1, 0.4, 0, 0, 720, 486},    // 36 px: margin 37; RadiusY unread
        {SHAPE_ELLIPSE, 1, 0.05, 0.2, 0, 0, 1920, 1080},  // 48 and 192 px: the larger reaches
        {SHAPE_POLYGON, 1, 0.05, 0.2, 0, 0, 1920, 1080},  // matched: 48 px both
        {SHAPE_POLYGON, 0, 0.05, 0.2, 0, 0, 100, 3000},   // the height enters the sides only
        {SHAPE_CIRCLE, 0, 0.0, 0.0, 0, 0, 7, 5},           // half a pixel: margin 2
        {SHAPE_IMAGE, 0, 0.3, 0.3, 0.2, 0.1, 64, 48},      // 3.2 to 6.4 px either way round
        {SHAPE_IMAGE, 0, 0.3, 0.3, 0.1, 0.1, 64, 48},      // no softness: one pixel of it
        {SHAPE_CIRCLE, 0, 0.1702, 0, 0, 0, 7000, 4000},    // 595.7 px: 8194 beyond the square limit
    };
    for (const Case& c : cases) {
        ApertureVZ aperture;
        aperture.shape = c.shape;
        aperture.matchRadii = c.match != 0;
        aperture.radiusX = c.rx, aperture.radiusY = c.ry, aperture.radiusPsf1 = c.psf1, aperture.radiusPsf2 = c.psf2;
        // Shapes: RadiusY is read by an ellipse and an unmatched polygon only.
        // Image: the cut-out's radii either way round, a softness of at least 1.
        const bool ownSecond = c.shape == SHAPE_ELLIPSE || (c.shape == SHAPE_POLYGON && !c.match);
        const float r1 = pixels(c.rx, c.w), r2 = pixels(ownSecond ? c.ry : c.rx, c.w);
        const float a = float(std::min(c.psf1, c.psf2) * 0.5 * c.w), b = float(std::max(c.psf1, c.psf2) * 0.5 * c.w);
        const float reach = c.shape == SHAPE_IMAGE ? a + std::max(1.0f, b - a) : std::max(r1, r2);
        float got1, got2;
        aperture.ShapeRadii(c.w, &got1, &got2);
        EXPECT_TRUE(got1 == r1 && got2 == r2) << c.shape << " " << c.w << ": " << got1 << ", " << got2;
        const int64_t margin = int64_t(std::ceil(reach)) + 1;
        const int64_t needX = c.w + 2 * margin, needY = c.h + 2 * margin;
        for (uint32_t mode : {FFT_MODE_FFTW, FFT_MODE_FAST, FFT_MODE_FAST_FLOAT}) {
            const TransformVZ t = aperture.Transform(c.w, c.h, mode);
            const bool square = mode == FFT_MODE_FFTW;
            const int64_t sideX = square ? powerOfTwoAtLeast(std::max(needX, needY)) : smoothAtLeast(needX);
            const int64_t sideY = square ? sideX : smoothAtLeast(needY);
            EXPECT_EQ(t.reach, reach) << c.shape << " " << c.w;
            EXPECT_EQ(t.margin, margin) << c.shape << " " << c.w;
            EXPECT_EQ(t.width, sideX) << c.shape << " " << c.w << " mode " << mode;
            EXPECT_EQ(t.height, sideY) << c.shape << " " << c.w << " mode " << mode;
            // The square transform takes sides up to 8192; the fast ones take
            // a 7000 x 4000 frame with this blur too.
            EXPECT_TRUE(square ? t.largestSide == 8192 : t.largestSide >= std::max(sideX, sideY)) << mode;
            EXPECT_EQ(t.fits, !square || std::max(sideX, sideY) <= 8192) << c.w << " mode " << mode;
        }
    }
    // Worked by hand: a 720 x 486 frame with RadiusX 0.1 has a pixel radius of 36
    // and a margin of 37: 794 x 560, a square of 1024, or 800 x 560 in the fast modes.
    ApertureVZ circle;
    circle.radiusX = 0.1;
    const TransformVZ square = circle.Transform(720, 486, FFT_MODE_FFTW), fast = circle.Transform(720, 486, FFT_MODE_FAST);
    EXPECT_EQ(std::vector<int64_t>({square.margin, square.width, square.height, fast.width, fast.height}),
              std::vector<int64_t>({37, 1024, 1024, 800, 560}));
}

}  // namespace
