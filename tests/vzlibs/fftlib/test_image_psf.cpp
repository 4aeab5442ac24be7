// FftEngine::BuildImagePsf: the soft-rimmed cut-out moved to the middle of
// psfImage, the sample reading per type, the flat test and refusals.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <vector>

#include "vzlibs/fftlib/FftEngine.h"

namespace {

class ImagePsf : public ::testing::Test {
protected:
    void TearDown() override
    {
        for (ImageRec* image : sources)
            image_free(image);
    }

    // A source whose channel 0 is value(x, y) and whose other channels are 250.
    ImageRec* source(int w, int h, std::function<uint32_t(int, int)> value, int type = IMAGE_U8, int channels = 1)
    {
        ImageRec* image = image_create(w, h, channels, type, 1);
        EXPECT_NE(image, nullptr);
        sources.push_back(image);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                for (int c = 0; c < channels; ++c) {
                    const uint32_t v = c == 0 ? value(x, y) : 250u;
                    unsigned char* sample = static_cast<unsigned char*>(image->pixels) + size_t(y) * image->rowBytes +
                                            size_t(x) * image->pixelBytes + size_t(c) * image->sampleBytes;
                    if (type == IMAGE_U8)
                        *sample = static_cast<unsigned char>(v);
                    else if (type == IMAGE_U16) {
                        const uint16_t s = static_cast<uint16_t>(v);
                        std::memcpy(sample, &s, 2);
                    } else
                        std::memcpy(sample, &v, 4);
                }
        return image;
    }
    static std::function<uint32_t(int, int)> flat(uint32_t v)
    {
        return [v](int, int) { return v; };
    }
    int at(int x, int y) const
    {
        return static_cast<const unsigned char*>(engine.psfImage->pixels)[y * engine.psfImage->rowBytes + x];
    }
    int countNonZero() const
    {
        int n = 0;
        for (int y = 0; y < engine.psfImage->height; ++y)
            for (int x = 0; x < engine.psfImage->width; ++x)
                n += at(x, y) != 0;
        return n;
    }
    std::vector<unsigned char> picture() const
    {
        const unsigned char* p = static_cast<const unsigned char*>(engine.psfImage->pixels);
        return {p, p + size_t(engine.psfImage->rowBytes) * engine.psfImage->height};
    }
    // The single bright pixel: 255 at (midX, midY), 0 elsewhere.
    void expectSinglePixel(int midX, int midY) const
    {
        EXPECT_EQ(at(midX, midY), 255);
        EXPECT_EQ(countNonZero(), 1);
    }

    FftEngine engine;
    std::vector<ImageRec*> sources;
};

TEST_F(ImagePsf, RadiusZeroGivesACone)
{
    ASSERT_TRUE(engine.BuildImagePsf(source(40, 40, flat(200)), 20, 20, 0.0f, 20.0f));
    EXPECT_EQ(engine.padMargin, 21);
    EXPECT_EQ(at(20, 20), 200);
    EXPECT_EQ(at(30, 20), 100);  // half way down the slope
    EXPECT_EQ(at(20, 25), 150);
    EXPECT_EQ(at(23, 24), 150);  // distance 5 on a diagonal
    EXPECT_EQ(at(0, 20), 0);
    EXPECT_EQ(at(39, 39), 0);
    // Full weight only at the exact centre, falling with distance alike in every
    // direction.
    for (int dy = -19; dy <= 19; ++dy)
        for (int dx = -19; dx <= 19; ++dx) {
            if (dx || dy) {
                ASSERT_LT(at(20 + dx, 20 + dy), 200);
            }
            ASSERT_EQ(at(20 + dx, 20 + dy), at(20 - dx, 20 + dy));
            ASSERT_EQ(at(20 + dx, 20 + dy), at(20 + dy, 20 + dx));
        }
}

TEST_F(ImagePsf, SoftnessBelowOneFallsOffOverOnePixel)
{
    ASSERT_TRUE(engine.BuildImagePsf(source(40, 40, flat(200)), 20, 20, 5.0f, 0.0f));
    EXPECT_EQ(engine.padMargin, 7);
    EXPECT_EQ(at(25, 20), 200);  // distance 5
    EXPECT_EQ(at(23, 24), 200);  // distance 5
    EXPECT_EQ(at(26, 20), 0);    // distance 6
    EXPECT_NEAR(at(24, 24), 200.0 * (6.0 - std::sqrt(32.0)), 1.0);  // distance 5.66
}

TEST_F(ImagePsf, CornerCentreGivesAQuarterDisc)
{
    ASSERT_TRUE(engine.BuildImagePsf(source(40, 30, flat(255)), 0, 0, 8.0f, 2.0f));
    EXPECT_EQ(at(20, 15), 255);
    int full = 0;
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 40; ++x) {
            if (x < 20 || y < 15) {
                ASSERT_EQ(at(x, y), 0) << x << "," << y;
            }
            full += at(x, y) == 255;
        }
    // Full weight exactly where the source pixel lies within distance 8.
    int within = 0;
    for (int r = 0; r <= 8; ++r)
        for (int c = 0; c <= 8; ++c)
            within += c * c + r * r <= 64;
    EXPECT_EQ(full, within);
    EXPECT_GT(at(27, 19), 0);
    EXPECT_EQ(at(31, 15), 0);
}

TEST_F(ImagePsf, CutOutIsClippedAtTheEdgeNotWrapped)
{
    // A bright stripe at the source's left edge would land left of the image.
    ImageRec* src = source(40, 30, [](int x, int) { return x < 4 ? 250u : 50u; });
    ASSERT_TRUE(engine.BuildImagePsf(src, 35, 15, 100.0f, 1.0f));
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 40; ++x)
            ASSERT_EQ(at(x, y), x < 25 ? 50 : 0) << x << "," << y;
}

TEST_F(ImagePsf, CutOutsWithoutStructureBecomeASinglePixel)
{
    // Empty disc: the centre lies far outside the source.
    ASSERT_TRUE(engine.BuildImagePsf(source(40, 30, flat(180)), -200, 10, 10.0f, 5.0f));
    expectSinglePixel(20, 15);
    // On fresh planes the kernel is one sample at the transform's origin. (Later
    // calls at the same transform size carry the engine's documented residue.)
    EXPECT_NEAR(engine.kernelReal[0], 1.0, 1e-12);
    // Black source.
    ASSERT_TRUE(engine.BuildImagePsf(source(40, 30, flat(0)), 20, 15, 10.0f, 5.0f));
    expectSinglePixel(20, 15);
    // Uniform source, disc larger than the frame's diagonal.
    ASSERT_TRUE(engine.BuildImagePsf(source(40, 30, flat(90)), 20, 15, 60.0f, 5.0f));
    expectSinglePixel(20, 15);

    // A grey disc on black is structure: it stays a disc, with a soft rim.
    ImageRec* disc = source(40, 30, [](int x, int y) { return (x - 17) * (x - 17) + (y - 12) * (y - 12) <= 36 ? 128u : 0u; });
    ASSERT_TRUE(engine.BuildImagePsf(disc, 17, 12, 4.0f, 3.0f));
    EXPECT_EQ(at(20, 15), 128);
    EXPECT_EQ(at(24, 15), 128);  // distance 4
    EXPECT_EQ(at(26, 15), 42);   // distance 6: weight 1/3
    EXPECT_EQ(at(27, 15), 0);    // outside the grey disc
    EXPECT_GT(countNonZero(), 100);
}

TEST_F(ImagePsf, ReadsTheTopByteOfChannelZero)
{
    const auto dot = [](uint32_t v) { return [v](int x, int y) { return x == 3 && y == 2 ? v : 0u; }; };
    ASSERT_TRUE(engine.BuildImagePsf(source(8, 6, dot(0xAB12u), IMAGE_U16), 3, 2, 50.0f, 1.0f));
    EXPECT_EQ(at(4, 3), 0xAB);
    ASSERT_TRUE(engine.BuildImagePsf(source(8, 6, dot(0xCD123456u), IMAGE_I32), 3, 2, 50.0f, 1.0f));
    EXPECT_EQ(at(4, 3), 0xCD);
    // Channel 0 of a three-channel source, not the others (all 250 here).
    ASSERT_TRUE(engine.BuildImagePsf(source(8, 6, dot(90u), IMAGE_U8, 3), 3, 2, 50.0f, 1.0f));
    EXPECT_EQ(at(4, 3), 90);
    EXPECT_EQ(countNonZero(), 1);
    // Four 16-bit channels, as a frame of the effect arrives.
    ASSERT_TRUE(engine.BuildImagePsf(source(8, 6, dot(0x7FFFu), IMAGE_U16, 4), 3, 2, 50.0f, 1.0f));
    EXPECT_EQ(at(4, 3), 0x7F);
}

TEST_F(ImagePsf, OddWidthPutsTheCentreOnTheLowerMiddle)
{
    ImageRec* src = source(5, 4, [](int x, int y) { return y == 1 && x == 2 ? 255u : y == 1 && x == 4 ? 100u : 0u; });
    ASSERT_TRUE(engine.BuildImagePsf(src, 2, 1, 10.0f, 1.0f));
    EXPECT_EQ(at(2, 2), 255);
    EXPECT_EQ(at(4, 2), 100);
    EXPECT_EQ(at(3, 2), 0);
    EXPECT_EQ(countNonZero(), 2);
}

TEST_F(ImagePsf, RefusalsLeaveTheImageAlone)
{
    ImageRec* floats = source(40, 30, flat(0), IMAGE_F32);
    EXPECT_FALSE(engine.BuildImagePsf(floats, 20, 15, 5.0f, 2.0f));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_PSF_TYPE);
    EXPECT_EQ(engine.psfImage, nullptr);

    ASSERT_TRUE(engine.BuildImagePsf(source(40, 30, flat(200)), 20, 15, 5.0f, 2.0f));
    ImageRec* kept = engine.psfImage;
    const std::vector<unsigned char> before = picture();
    EXPECT_FALSE(engine.BuildImagePsf(source(20, 10, flat(0), IMAGE_F32), 5, 5, 5.0f, 2.0f));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_PSF_TYPE);
    EXPECT_EQ(engine.psfImage, kept);
    EXPECT_EQ(picture(), before);

    EXPECT_FALSE(engine.BuildImagePsf(nullptr, 20, 15, 5.0f, 2.0f));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_NOT_PREPARED);
    EXPECT_FALSE(engine.BuildImagePsf(source(40, 30, flat(200)), 20, 15, std::numeric_limits<float>::quiet_NaN(), 2.0f));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_ARGUMENT);
    EXPECT_EQ(engine.psfImage, kept);
    EXPECT_EQ(picture(), before);

    // A reach too large for any transform is the size error of PrepareKernel.
    EXPECT_FALSE(engine.BuildImagePsf(source(40, 30, flat(200)), 20, 15, 9000.0f, 2.0f));
    EXPECT_EQ(engine.GetStatus(), FFT_ERR_SIZE);

    // A new size replaces the image; extreme centres do not overflow.
    ASSERT_TRUE(engine.BuildImagePsf(source(16, 12, flat(70)), INT32_MIN, INT32_MAX, 5.0f, 2.0f));
    EXPECT_EQ(engine.psfImage->width, 16);
    expectSinglePixel(8, 6);
    EXPECT_NEAR(engine.kernelReal[0], 1.0, 1e-12);
}

}  // namespace
