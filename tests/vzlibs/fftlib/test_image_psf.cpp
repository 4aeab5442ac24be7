// FftEngine::BuildImagePsf: a soft-rimmed disc cut out of a picture, moved to
// the middle of psfImage; flat cut-outs and refusals.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "aperture_test_support.h"
#include "vzlibs/fftlib/FftEngine.h"

namespace {

class ImagePsf : public ::testing::Test {
protected:
    void TearDown() override
    {
        for (ImageRec* image : sources)
            image_free(image);
    }
    // Channel 0 is `value` (at (dotX, dotY) only, when a dot is given, 0
    // elsewhere); the other channels are 250.
    ImageRec* source(int w, int h, uint32_t value, int type = IMAGE_U8, int channels = 1, int dotX = -1, int dotY = -1)
    {
        ImageRec* image = sources.emplace_back(image_create(w, h, channels, type, 1));
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                for (int c = 0; c < channels; ++c) {
                    const uint32_t v = c ? 250u : dotX < 0 || (x == dotX && y == dotY) ? value : 0u;
                    std::memcpy(static_cast<unsigned char*>(image->pixels) + size_t(y) * image->rowBytes +
                                    size_t(x) * image->pixelBytes + size_t(c) * image->sampleBytes,
                                &v, image->sampleBytes);  // little-endian
                }
        return image;
    }
    int at(int x, int y) const { return aperture_test::at(engine.psfImage, x, y); }
    int count() const { return aperture_test::measure(engine.psfImage).count; }

    FftEngine engine;
    std::vector<ImageRec*> sources;
};

TEST_F(ImagePsf, WeightFallsLinearlyOverTheSoftness)
{
    // Radius 0: a cone, full only at the centre, zero at distance 20.
    ASSERT_TRUE(engine.BuildImagePsf(source(40, 40, 200), 20, 20, 0.0f, 20.0f));
    EXPECT_EQ(at(20, 20), 200);
    EXPECT_EQ(at(30, 20), 100);
    EXPECT_EQ(at(20, 15), 150);
    EXPECT_EQ(at(23, 24), 150);  // distance 5 on a diagonal
    EXPECT_EQ(at(0, 20), 0);
    // Softness below 1 counts as 1.
    ASSERT_TRUE(engine.BuildImagePsf(source(40, 40, 200), 20, 20, 5.0f, 0.0f));
    EXPECT_EQ(at(25, 20), 200);
    EXPECT_NEAR(at(24, 24), 200.0 * (6.0 - std::sqrt(32.0)), 1.0);
    EXPECT_EQ(at(26, 20), 0);
}

TEST_F(ImagePsf, CornerCentreGivesAQuarterDisc)
{
    ASSERT_TRUE(engine.BuildImagePsf(source(40, 30, 255), 0, 0, 8.0f, 2.0f));
    int full = 0, within = 0;
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 40; ++x) {
            if (x < 20 || y < 15) {
                ASSERT_EQ(at(x, y), 0) << x << "," << y;
            }
            full += at(x, y) == 255;
            within += (x - 20) * (x - 20) + (y - 15) * (y - 15) <= 64 && x >= 20 && y >= 15;
        }
    EXPECT_EQ(full, within);
    EXPECT_GT(at(27, 19), 0);
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
    ASSERT_TRUE(engine.BuildImagePsf(source(5, 4, 90u, IMAGE_U8, 3, 1, 3), 1, 3, 50.0f, 1.0f));
    EXPECT_EQ(at(2, 2), 90);
    EXPECT_EQ(count(), 1);
    ASSERT_TRUE(engine.BuildImagePsf(source(5, 4, 0xAB12u, IMAGE_U16, 4, 1, 3), 1, 3, 50.0f, 1.0f));
    EXPECT_EQ(at(2, 2), 0xAB);
    ASSERT_TRUE(engine.BuildImagePsf(source(5, 4, 0xCD123456u, IMAGE_I32, 1, 1, 3), 1, 3, 50.0f, 1.0f));
    EXPECT_EQ(at(2, 2), 0xCD);
}

TEST_F(ImagePsf, RefusalsLeaveTheImageAlone)
{
    ASSERT_TRUE(engine.BuildImagePsf(source(40, 30, 200), 20, 15, 5.0f, 2.0f));
    const std::vector<unsigned char> before = aperture_test::picture(engine.psfImage);
    EXPECT_FALSE(engine.BuildImagePsf(source(20, 10, 0, IMAGE_F32), 5, 5, 5.0f, 2.0f));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_PSF_TYPE);
    EXPECT_FALSE(engine.BuildImagePsf(nullptr, 20, 15, 5.0f, 2.0f));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_NOT_PREPARED);
    EXPECT_FALSE(engine.BuildImagePsf(source(40, 30, 200), 20, 15, std::nanf(""), 2.0f));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_ARGUMENT);
    EXPECT_EQ(aperture_test::picture(engine.psfImage), before);
    EXPECT_FALSE(engine.BuildImagePsf(source(40, 30, 200), 20, 15, 9000.0f, 2.0f));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_SIZE);
}

}  // namespace
