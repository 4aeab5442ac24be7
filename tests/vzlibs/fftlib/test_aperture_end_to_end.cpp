// A bright dot on black, convolved through an aperture kernel, takes the
// aperture's shape: checked by the output's support, level and symmetry.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "vzlibs/fftlib/FftEngine.h"

namespace {

constexpr int kSize = 64, kDotX = 30, kDotY = 34;

class ApertureEndToEnd : public ::testing::Test {
protected:
    void TearDown() override
    {
        image_free(output);
        image_free(frame);
    }
    static uint16_t& sample(ImageRec* image, int x, int y, int c)
    {
        return static_cast<uint16_t*>(image->pixels)[(size_t(y) * kSize + x) * 4 + c];
    }
    double at(int c, int x, int y) const
    {
        return x < 0 || y < 0 || x >= kSize || y >= kSize ? 0.0 : sample(output, x, y, c);
    }

    // Runs a white dot on black (four 16-bit channels) through the shape's
    // kernel, then checks for each colour channel that the light is kept, that
    // the spread is centred on the dot and mirror symmetric in x and y, and
    // that its flat top has the dot's light over `area`. The support (pixels
    // above a tenth of the top) must have about that area and the given extent.
    void expectSpread(int shape, int sides, double area, double width, double height)
    {
        frame = image_create(kSize, kSize, 4, IMAGE_U16, 1);
        ASSERT_NE(frame, nullptr);
        std::memset(frame->pixels, 0, size_t(frame->rowBytes) * kSize);
        for (int c = 0; c < 3; ++c)
            sample(frame, kDotX, kDotY, c) = 65535;
        ASSERT_TRUE(engine.BuildShapePsf(kSize, kSize, shape, kRadius, kRadius, 0.0f, sides));
        ASSERT_TRUE(engine.SetInput(frame));
        ASSERT_NE(output = image_clone(frame), nullptr);
        ASSERT_TRUE(engine.Run(output, 7));
        for (int c = 0; c < 3; ++c) {
            double total = 0.0, sx = 0.0, sy = 0.0;
            std::vector<double> values;
            for (int y = 0; y < kSize; ++y)
                for (int x = 0; x < kSize; ++x) {
                    total += at(c, x, y), sx += x * at(c, x, y), sy += y * at(c, x, y);
                    values.push_back(at(c, x, y));
                }
            EXPECT_NEAR(total, 65535.0, 0.02 * 65535.0) << "channel " << c;
            EXPECT_NEAR(sx / total, kDotX, 1.0);
            EXPECT_NEAR(sy / total, kDotY, 1.0);
            // Mirror pairs about the centroid, to whole pixels.
            const int mirrorX = int(std::lround(2.0 * sx / total)), mirrorY = int(std::lround(2.0 * sy / total));
            std::sort(values.begin(), values.end());
            const double level = values[values.size() - 20];  // well inside the flat top
            EXPECT_NEAR(level, 65535.0 / area, 0.05 * level);
            int minX = kSize, maxX = -1, minY = kSize, maxY = -1, support = 0;
            for (int y = 0; y < kSize; ++y)
                for (int x = 0; x < kSize; ++x) {
                    ASSERT_NEAR(at(c, x, y), at(c, mirrorX - x, y), 0.03 * level + 2.0) << x << "," << y;
                    ASSERT_NEAR(at(c, x, y), at(c, x, mirrorY - y), 0.03 * level + 2.0) << x << "," << y;
                    if (at(c, x, y) > 0.1 * level) {
                        ++support;
                        minX = std::min(minX, x), maxX = std::max(maxX, x);
                        minY = std::min(minY, y), maxY = std::max(maxY, y);
                    }
                }
            EXPECT_NEAR(support, area, 0.12 * area);
            EXPECT_NEAR(maxX - minX + 1, width, 1.5);
            EXPECT_NEAR(maxY - minY + 1, height, 1.5);
        }
    }

    static constexpr float kRadius = 12.0f;
    FftEngine engine;
    ImageRec* frame = nullptr;
    ImageRec* output = nullptr;
};

TEST_F(ApertureEndToEnd, DotThroughACircleBecomesADisc)
{
    expectSpread(1, 0, std::acos(-1.0) * kRadius * kRadius, 2 * kRadius, 2 * kRadius);
}

TEST_F(ApertureEndToEnd, DotThroughAHexagonBecomesAHexagon)
{
    // Vertex 0 on +x: corners left and right, flat edges at the apothem above
    // and below, so it is wider than high and smaller than the circle.
    expectSpread(2, 6, 1.5 * std::sqrt(3.0) * kRadius * kRadius, 2 * kRadius, std::sqrt(3.0) * kRadius);
}

}  // namespace
