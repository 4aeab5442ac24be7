// A bright dot on black, convolved through an aperture kernel, takes the
// aperture's shape: checked by the output's support, level and symmetry.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "generic/library/RunFourThreads.h"
#include "vzlibs/fftlib/FftEngine.h"

namespace {

constexpr int kSize = 64;
constexpr int kDotX = 30;
constexpr int kDotY = 34;

class ApertureEndToEnd : public ::testing::Test {
protected:
    void SetUp() override
    {
        // Four 16-bit channels, black with opaque alpha, one white dot.
        frame = image_create(kSize, kSize, 4, IMAGE_U16, 1);
        ASSERT_NE(frame, nullptr);
        std::memset(frame->pixels, 0, size_t(frame->rowBytes) * kSize);
        for (int y = 0; y < kSize; ++y)
            for (int x = 0; x < kSize; ++x)
                sample(frame, x, y, 3) = 65535;
        for (int c = 0; c < 3; ++c)
            sample(frame, kDotX, kDotY, c) = 65535;
    }
    void TearDown() override
    {
        image_free(output);
        image_free(frame);
    }

    static uint16_t& sample(ImageRec* image, int x, int y, int c)
    {
        return static_cast<uint16_t*>(image->pixels)[(size_t(y) * image->width + x) * image->channels + c];
    }

    // Builds the kernel, runs the frame through it and keeps channel `c` of the
    // output as doubles.
    void convolve(int shape, float radius, int sides)
    {
        ASSERT_TRUE(engine.BuildShapePsf(kSize, kSize, shape, radius, radius, 0.0f, sides));
        ASSERT_TRUE(engine.SetInput(frame));
        output = image_clone(frame);
        ASSERT_NE(output, nullptr);
        ASSERT_TRUE(engine.Run(output, 7));
        for (int c = 0; c < 3; ++c) {
            channel[c].assign(size_t(kSize) * kSize, 0.0);
            for (int y = 0; y < kSize; ++y)
                for (int x = 0; x < kSize; ++x)
                    channel[c][size_t(y) * kSize + x] = sample(output, x, y, c);
        }
        // Alpha was not in the mask and stays as it came.
        EXPECT_EQ(sample(output, 0, 0, 3), 65535);
        EXPECT_EQ(sample(output, kDotX, kDotY, 3), 65535);
    }
    double at(int c, int x, int y) const
    {
        if (x < 0 || y < 0 || x >= kSize || y >= kSize)
            return 0.0;
        return channel[c][size_t(y) * kSize + x];
    }

    struct Shape {
        double centreX, centreY, total, level;
        int width, height, supportArea;
    };

    // The spread of channel c: centroid, total, typical level inside, and the
    // extent and area of the pixels above a tenth of that level. Also checks
    // that the spread is symmetric about its centroid in x and in y.
    Shape analyse(int c) const
    {
        Shape s{};
        double sx = 0.0, sy = 0.0;
        for (int y = 0; y < kSize; ++y)
            for (int x = 0; x < kSize; ++x) {
                s.total += at(c, x, y);
                sx += x * at(c, x, y);
                sy += y * at(c, x, y);
            }
        s.centreX = sx / s.total;
        s.centreY = sy / s.total;
        std::vector<double> values(channel[c]);
        std::sort(values.begin(), values.end());
        s.level = values[values.size() - 20];  // well inside the flat top

        // Mirror pairs: x <-> 2 cx - x, y <-> 2 cy - y, to whole pixels.
        const int mirrorX = int(std::lround(2.0 * s.centreX));
        const int mirrorY = int(std::lround(2.0 * s.centreY));
        int minX = kSize, maxX = -1, minY = kSize, maxY = -1;
        for (int y = 0; y < kSize; ++y)
            for (int x = 0; x < kSize; ++x) {
                const double v = at(c, x, y);
                EXPECT_NEAR(v, at(c, mirrorX - x, y), 0.03 * s.level + 2.0) << "x mirror at " << x << "," << y;
                EXPECT_NEAR(v, at(c, x, mirrorY - y), 0.03 * s.level + 2.0) << "y mirror at " << x << "," << y;
                if (v > 0.1 * s.level) {
                    ++s.supportArea;
                    minX = std::min(minX, x);
                    maxX = std::max(maxX, x);
                    minY = std::min(minY, y);
                    maxY = std::max(maxY, y);
                }
            }
        s.width = maxX - minX + 1;
        s.height = maxY - minY + 1;
        return s;
    }

    FftEngine engine;
    ImageRec* frame = nullptr;
    ImageRec* output = nullptr;
    std::vector<double> channel[3];
};

TEST_F(ApertureEndToEnd, DotThroughACircleBecomesADisc)
{
    // The four-thread runner, as the effect runs it (64 rows split evenly).
    int context = 1;
    engine.SetRowRunner(&context, RunEngineJobOnFourThreads);
    const double radius = 12.0;
    convolve(1, float(radius), 0);
    const double pi = std::acos(-1.0);
    for (int c = 0; c < 3; ++c) {
        const Shape s = analyse(c);
        EXPECT_NEAR(s.centreX, kDotX, 1.0);
        EXPECT_NEAR(s.centreY, kDotY, 1.0);
        // The light of the dot is spread, not lost or made.
        EXPECT_NEAR(s.total, 65535.0, 0.02 * 65535.0) << "channel " << c;
        // Flat top at the dot's light over the disc's area.
        EXPECT_NEAR(s.level, 65535.0 / (pi * radius * radius), 0.05 * s.level);
        EXPECT_NEAR(s.width, 2 * radius, 1.5);
        EXPECT_NEAR(s.height, 2 * radius, 1.5);
        EXPECT_NEAR(s.supportArea, pi * radius * radius, 0.12 * pi * radius * radius);
        // Round: the same reach along the axes and the diagonals.
        const int cx = int(std::lround(s.centreX)), cy = int(std::lround(s.centreY));
        EXPECT_GT(at(c, cx + 7, cy + 7), 0.5 * s.level);
        EXPECT_GT(at(c, cx - 8, cy - 8), 0.5 * s.level);
        EXPECT_LT(at(c, cx + 10, cy + 10), 0.1 * s.level);
        // Black far from the dot.
        EXPECT_EQ(at(c, 2, 2), 0.0);
        EXPECT_EQ(at(c, kDotX + 16, kDotY), 0.0);
    }
}

TEST_F(ApertureEndToEnd, DotThroughAHexagonBecomesAHexagon)
{
    // Vertex 0 on +x: corners left and right, flat edges at the top and bottom,
    // at the apothem r cos 30.
    const double radius = 12.0;
    convolve(2, float(radius), 6);
    const double apothem = radius * std::sqrt(3.0) / 2.0;
    for (int c = 0; c < 3; ++c) {
        const Shape s = analyse(c);
        EXPECT_NEAR(s.centreX, kDotX, 1.0);
        EXPECT_NEAR(s.centreY, kDotY, 1.0);
        EXPECT_NEAR(s.total, 65535.0, 0.02 * 65535.0);
        const double area = 3.0 * std::sqrt(3.0) / 2.0 * radius * radius;
        EXPECT_NEAR(s.level, 65535.0 / area, 0.05 * s.level);
        EXPECT_NEAR(s.width, 2 * radius, 1.5);
        EXPECT_NEAR(s.height, 2 * apothem, 1.5);
        EXPECT_GE(s.width - s.height, 2);
        EXPECT_NEAR(s.supportArea, area, 0.12 * area);
        // The corners are cut: along the diagonal the hexagon ends before the
        // circle of the same radius would.
        const int cx = int(std::lround(s.centreX)), cy = int(std::lround(s.centreY));
        EXPECT_GT(at(c, cx + 10, cy), 0.5 * s.level);
        EXPECT_LT(at(c, cx + 8, cy + 8), 0.1 * s.level);
        EXPECT_GT(at(c, cx + 5, cy + 8), 0.5 * s.level);
    }
}

}  // namespace
