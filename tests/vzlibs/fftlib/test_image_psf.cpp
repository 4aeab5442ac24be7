// FftEngine::BuildImagePsf: a soft-rimmed disc cut out of a picture, moved to
// the middle of psfImage; flat cut-outs and refusals.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

#include "engine_test_support.h"

namespace {

using enginetest::Image;

class ImagePsf : public ::testing::Test {
protected:
    // Channel 0 is `value` (at (dotX, dotY) only when a dot is given, 0
    // elsewhere); the other channels are 250.
    ImageRec* source(int w, int h, uint32_t value, int type = IMAGE_U8, int channels = 1, int dotX = -1, int dotY = -1)
    {
        Image& image = *sources.emplace_back(std::make_unique<Image>(w, h, channels, type));
        image.each([&](int x, int y, int c) {
            image.set(x, y, c, c ? 250u : dotX < 0 || (x == dotX && y == dotY) ? value : 0u);
        });
        return image.rec;
    }
    int at(int x, int y) const { return enginetest::at(engine.psfImage, x, y); }
    int count() const { return enginetest::measure(engine.psfImage).count; }

    FftEngine engine;
    std::vector<std::unique_ptr<Image>> sources;
};

TEST_F(ImagePsf, WeightFallsLinearlyOverTheSoftnessAndTheMarginIsTheReachPlusOne)
{
    // Radius 0: a cone, full only at the centre, zero at distance 20.
    ASSERT_TRUE(engine.BuildImagePsf(source(40, 40, 200), 20, 20, 0.0f, 20.0f));
    EXPECT_EQ(engine.padMargin, 21);
    const int cone[][3] = {{20, 20, 200}, {30, 20, 100}, {20, 15, 150}, {23, 24, 150}, {0, 20, 0}};
    for (const auto& p : cone)
        EXPECT_EQ(at(p[0], p[1]), p[2]) << p[0] << "," << p[1];
    // Softness below 1 counts as 1; the weighted sample is truncated.
    ASSERT_TRUE(engine.BuildImagePsf(source(40, 40, 200), 20, 20, 5.0f, 0.0f));
    EXPECT_EQ(engine.padMargin, 7);
    EXPECT_EQ(at(25, 20), 200);
    EXPECT_EQ(at(24, 24), int(200.0 * (6.0 - std::sqrt(32.0))));
    EXPECT_EQ(at(26, 20), 0);
}

TEST_F(ImagePsf, CornerCentreGivesAQuarterDiscAndTheRestIsLost)
{
    // Full within radius 8 of (20, 15), painted to distance 9, nothing above or left.
    ASSERT_TRUE(engine.BuildImagePsf(source(40, 30, 255), 0, 0, 8.0f, 2.0f));
    const enginetest::Extent e = enginetest::measure(engine.psfImage);
    EXPECT_TRUE(e.minX == 20 && e.minY == 15 && e.maxX == 29 && e.maxY == 24);
    int within = 0;
    for (int i = 0; i < 81; ++i)
        within += (i % 9) * (i % 9) + (i / 9) * (i / 9) <= 64;
    const std::vector<unsigned char> p = enginetest::picture(engine.psfImage);
    EXPECT_EQ(std::count(p.begin(), p.end(), 255), within);
}

TEST_F(ImagePsf, CutOutsWithoutStructureBecomeTheSinglePixel)
{
    // A disc wholly outside the source (at centres that would overflow an int),
    // a black source, and a uniform one filling the disc.
    const struct { uint32_t value; int x, y; float radius; } flatCases[] = {
        {180, INT32_MIN, INT32_MAX, 10.0f}, {0, 20, 15, 10.0f}, {90, 20, 15, 60.0f}};
    for (const auto& c : flatCases) {
        ASSERT_TRUE(engine.BuildImagePsf(source(40, 30, c.value), c.x, c.y, c.radius, 5.0f));
        EXPECT_EQ(at(20, 15), 255) << c.value;
        EXPECT_EQ(count(), 1) << c.value;
    }
}

TEST_F(ImagePsf, ReadsTheTopByteOfChannelZeroAroundTheLowerMiddle)
{
    // Width 5, height 4: the centre (1, 3) lands on (2, 2).
    const struct { uint32_t value; int type, channels, top; } cases[] = {
        {90u, IMAGE_U8, 3, 90}, {0xAB12u, IMAGE_U16, 4, 0xAB}, {0xCD123456u, IMAGE_I32, 1, 0xCD}};
    for (const auto& c : cases) {
        ASSERT_TRUE(engine.BuildImagePsf(source(5, 4, c.value, c.type, c.channels, 1, 3), 1, 3, 50.0f, 1.0f));
        EXPECT_EQ(at(2, 2), c.top);
        EXPECT_EQ(count(), 1);
    }
}

TEST_F(ImagePsf, RefusalsLeaveTheImageAlone)
{
    ASSERT_TRUE(engine.BuildImagePsf(source(40, 30, 200), 20, 15, 5.0f, 2.0f));
    const std::vector<unsigned char> before = enginetest::picture(engine.psfImage);
    EXPECT_FALSE(engine.BuildImagePsf(source(20, 10, 0, IMAGE_F32), 5, 5, 5.0f, 2.0f));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_PSF_TYPE);
    EXPECT_FALSE(engine.BuildImagePsf(nullptr, 20, 15, 5.0f, 2.0f));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_NOT_PREPARED);
    EXPECT_FALSE(engine.BuildImagePsf(source(40, 30, 200), 20, 15, std::nanf(""), 2.0f));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_ARGUMENT);
    EXPECT_EQ(enginetest::picture(engine.psfImage), before);
    EXPECT_FALSE(engine.BuildImagePsf(source(40, 30, 200), 20, 15, 9000.0f, 2.0f));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_SIZE);
}

}  // namespace
