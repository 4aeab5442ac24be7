// Cb Y Cr Y colour: decoding checked against the ITU-R BT.601 / BT.709 equations,
// round trips of grey and saturated colours, and the encoder's limits.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "generic/library/HostPixelFormat.h"

namespace {

struct Standard {
    const char* name;
    double kr, kb;
    int code8, code214, codeFloat;
};

const Standard kBt601 = {"601", 0.299, 0.114, 3, 8, 13};
const Standard kBt709 = {"709", 0.2126, 0.0722, 4, 9, 14};

struct Rgb {
    double r, g, b;
};

// Y' Cb Cr of an R' G' B' colour in 0..1, Cb and Cr in -0.5..0.5.
void toYCbCr(const Standard& s, const Rgb& c, double* y, double* cb, double* cr)
{
    const double kg = 1.0 - s.kr - s.kb;
    *y = s.kr * c.r + kg * c.g + s.kb * c.b;
    *cb = (c.b - *y) / (2.0 * (1.0 - s.kb));
    *cr = (c.r - *y) / (2.0 * (1.0 - s.kr));
}

// The inverse, straight from the same equations.
Rgb toRgb(const Standard& s, double y, double cb, double cr)
{
    const double kg = 1.0 - s.kr - s.kb;
    Rgb c;
    c.r = y + 2.0 * (1.0 - s.kr) * cr;
    c.b = y + 2.0 * (1.0 - s.kb) * cb;
    c.g = (y - s.kr * c.r - s.kb * c.b) / kg;
    return c;
}

double toFrameScale(double v) { return std::clamp(v, 0.0, 1.0) * 32767.0; }

// 75% bars, in the usual order: white, yellow, cyan, green, magenta, red, blue, black.
std::vector<Rgb> colourBars75()
{
    std::vector<Rgb> bars;
    const int pattern[8][3] = {{1, 1, 1}, {1, 1, 0}, {0, 1, 1}, {0, 1, 0}, {1, 0, 1}, {1, 0, 0}, {0, 0, 1}, {0, 0, 0}};
    for (const auto& p : pattern)
        bars.push_back({0.75 * p[0], 0.75 * p[1], 0.75 * p[2]});
    return bars;
}

class ColourBarsTest : public ::testing::TestWithParam<Standard> {};

// Each bar is one pair of pixels. The 8-bit codes are the equations' values
// rounded to integers; the expected R G B come from the equations applied to
// those integer codes, so only the decoder's own arithmetic is measured. The
// decoder cuts where the equations are exact, so it may sit up to one 15-bit
// step below; the single-precision matrix adds far less than a step.
TEST_P(ColourBarsTest, EightBitDecodeMatchesTheEquations)
{
    const Standard& s = GetParam();
    const auto bars = colourBars75();
    std::vector<uint8_t> buffer;
    for (const Rgb& bar : bars) {
        double y, cb, cr;
        toYCbCr(s, bar, &y, &cb, &cr);
        const auto y8 = static_cast<uint8_t>(std::lround(16.0 + 219.0 * y));
        const auto cb8 = static_cast<uint8_t>(std::lround(128.0 + 224.0 * cb));
        const auto cr8 = static_cast<uint8_t>(std::lround(128.0 + 224.0 * cr));
        buffer.insert(buffer.end(), {cb8, y8, cr8, y8});
    }
    const int width = static_cast<int>(bars.size()) * 2;
    std::unique_ptr<VZImage> frame(hostToVzImage(buffer.data(), width, 1, width, 1, 0, 0, s.code8, 0));
    ASSERT_NE(frame, nullptr);
    for (size_t i = 0; i < bars.size(); ++i) {
        const uint8_t* q = &buffer[i * 4];
        const Rgb expected = toRgb(s, (q[1] - 16) / 219.0, (q[0] - 128) / 224.0, (q[2] - 128) / 224.0);
        const double want[3] = {toFrameScale(expected.r), toFrameScale(expected.g), toFrameScale(expected.b)};
        const double bar[3] = {bars[i].r, bars[i].g, bars[i].b};
        for (int px = 0; px < 2; ++px)
            for (int c = 0; c < 3; ++c) {
                const double got = frame->pixels[(i * 2 + px) * 4 + c];
                EXPECT_NEAR(got, want[c], 1.0) << s.name << " bar " << i << " channel " << c;
                // And the bar itself, to within the 8-bit codes' quantisation.
                EXPECT_NEAR(got, bar[c] * 32767.0, 0.01 * 32767.0) << s.name << " bar " << i << " channel " << c;
            }
        EXPECT_EQ(frame->pixels[i * 8 + 3], 32767);
    }
}

// The same bars in float and in 2.14 samples, where Y is 0..1 (0..16384) and Cb,
// Cr -0.5..0.5 (-8192..8192).
TEST_P(ColourBarsTest, FloatAndFixedPointDecodeMatchTheEquations)
{
    const Standard& s = GetParam();
    const auto bars = colourBars75();
    std::vector<float> floats;
    std::vector<int16_t> fixed;
    std::vector<Rgb> fixedExpected;
    for (const Rgb& bar : bars) {
        double y, cb, cr;
        toYCbCr(s, bar, &y, &cb, &cr);
        floats.insert(floats.end(), {static_cast<float>(cb), static_cast<float>(y), static_cast<float>(cr),
                                     static_cast<float>(y)});
        const auto y14 = static_cast<int16_t>(std::lround(y * 16384.0));
        const auto cb14 = static_cast<int16_t>(std::lround(cb * 16384.0));
        const auto cr14 = static_cast<int16_t>(std::lround(cr * 16384.0));
        fixed.insert(fixed.end(), {cb14, y14, cr14, y14});
        fixedExpected.push_back(toRgb(s, y14 / 16384.0, cb14 / 16384.0, cr14 / 16384.0));
    }
    const int width = static_cast<int>(bars.size()) * 2;
    std::unique_ptr<VZImage> fromFloat(hostToVzImage(floats.data(), width, 1, width, 1, 0, 0, s.codeFloat, 0));
    std::unique_ptr<VZImage> fromFixed(hostToVzImage(fixed.data(), width, 1, width, 1, 0, 0, s.code214, 0));
    ASSERT_NE(fromFloat, nullptr);
    ASSERT_NE(fromFixed, nullptr);
    for (size_t i = 0; i < bars.size(); ++i) {
        const double wantFloat[3] = {toFrameScale(bars[i].r), toFrameScale(bars[i].g), toFrameScale(bars[i].b)};
        const Rgb& e = fixedExpected[i];
        const double wantFixed[3] = {toFrameScale(e.r), toFrameScale(e.g), toFrameScale(e.b)};
        for (int c = 0; c < 3; ++c) {
            EXPECT_NEAR(fromFloat->pixels[i * 8 + c], wantFloat[c], 1.0) << s.name << " bar " << i << " channel " << c;
            EXPECT_NEAR(fromFixed->pixels[i * 8 + c], wantFixed[c], 1.0) << s.name << " bar " << i << " channel " << c;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Standards, ColourBarsTest, ::testing::Values(kBt601, kBt709),
                         [](const auto& info) { return std::string("BT") + info.param.name; });

// Round trips: a frame of colour pairs (both pixels of a pair equal) encoded and
// decoded again.
struct RoundTripCase {
    int code;
    int sampleBytes;
    double greyTolerance;
    double colourTolerance;
};

// Stated tolerances, in 15-bit steps:
//  8 bits: Y is rounded to half a code (32767/219/2 = 75 steps); chroma is cut
//    toward zero after adding 0.5, so a negative value can lose up to 1.5 codes,
//    and B weighs Cb by 1.772 x 146.3 = 259 steps a code: 75 + 1.5 x 259 = 464,
//    plus the decoder's cut. Grey has no chroma: 75 + 1.
//  2.14: the same with codes of 2 steps: about 1 + 1.5 x 3.7 + 1 = 8; grey 2.
//  float: no rounding on the way out; the decoder's cut and single precision: 2.
const RoundTripCase kRoundTrips[] = {
    {3, 1, 76.0, 466.0},  {4, 1, 76.0, 466.0},  {8, 2, 2.0, 8.0},
    {9, 2, 2.0, 8.0},     {13, 4, 2.0, 2.0},    {14, 4, 2.0, 2.0},
};

void expectRoundTrip(const RoundTripCase& rt, const std::vector<Rgb>& colours, double tolerance)
{
    const int width = static_cast<int>(colours.size()) * 2;
    VZImage frame(width, 1, 0, static_cast<uint16_t*>(nullptr), 0u);
    for (size_t i = 0; i < colours.size(); ++i)
        for (int px = 0; px < 2; ++px) {
            uint16_t* p = frame.pixels + (i * 2 + px) * 4;
            p[0] = static_cast<uint16_t>(colours[i].r);
            p[1] = static_cast<uint16_t>(colours[i].g);
            p[2] = static_cast<uint16_t>(colours[i].b);
            p[3] = 32767;
        }
    std::vector<uint8_t> buffer(static_cast<size_t>(width) * 2 * rt.sampleBytes);
    vzImageToHost(&frame, buffer.data(), width, 1, width, 1, 0, 0, rt.code, 0);
    std::unique_ptr<VZImage> back(hostToVzImage(buffer.data(), width, 1, width, 1, 0, 0, rt.code, 0));
    ASSERT_NE(back, nullptr);
    for (int i = 0; i < width * 4; ++i)
        EXPECT_NEAR(back->pixels[i], frame.pixels[i], tolerance) << "code " << rt.code << " sample " << i;
}

TEST(CbYCrYRoundTrip, GreyComesBackWithinHalfALumaCode)
{
    std::vector<Rgb> greys;
    for (double v : {0.0, 1.0, 1000.0, 8191.0, 16384.0, 24575.0, 32000.0, 32767.0})
        greys.push_back({v, v, v});
    for (const RoundTripCase& rt : kRoundTrips)
        expectRoundTrip(rt, greys, rt.greyTolerance);
}

TEST(CbYCrYRoundTrip, SaturatedColoursComeBackWithinTheStatedTolerance)
{
    const double f = 32767.0;
    const std::vector<Rgb> colours = {{f, 0, 0}, {0, f, 0}, {0, 0, f}, {f, f, 0}, {0, f, f},
                                      {f, 0, f}, {f, f, f}, {0, 0, 0}, {f, f / 2, 0}};
    for (const RoundTripCase& rt : kRoundTrips)
        expectRoundTrip(rt, colours, rt.colourTolerance);
}

TEST(CbYCrYEncode, VideoLevelsAndLimits)
{
    // White, black, then samples beyond full scale: blue 65535 pushes Cb above its
    // upper limit, yellow 65535 pushes it below -0.5 (far below the 8-bit floor).
    VZImage frame(6, 1, 0, static_cast<uint16_t*>(nullptr), 0u);
    const uint16_t pixels[6][3] = {{32767, 32767, 32767}, {32767, 32767, 32767}, {0, 0, 0},
                                   {0, 0, 0},             {0, 0, 65535},         {65535, 65535, 0}};
    for (int x = 0; x < 6; ++x)
        for (int c = 0; c < 3; ++c)
            frame.pixels[x * 4 + c] = pixels[x][c];

    std::vector<uint8_t> eight(12);
    vzImageToHost(&frame, eight.data(), 6, 1, 6, 1, 0, 0, 3, 0);
    EXPECT_EQ(eight[0], 128);  // white: Cb
    EXPECT_EQ(eight[1], 235);  //        Y
    EXPECT_EQ(eight[2], 128);  //        Cr
    EXPECT_EQ(eight[4], 128);  // black
    EXPECT_EQ(eight[5], 16);
    EXPECT_EQ(eight[8], 240);  // Cb of over-blue, limited
    EXPECT_EQ(eight[9], 16 + 50);   // its Y: 0.114 x 2 x 219
    EXPECT_EQ(eight[11], 235);      // over-yellow's Y, limited

    std::vector<int16_t> fixed(12);
    vzImageToHost(&frame, fixed.data(), 6, 1, 6, 1, 0, 0, 8, 0);
    EXPECT_EQ(fixed[1], 16384);
    EXPECT_EQ(fixed[0], 0);
    EXPECT_EQ(fixed[8], 8192);
    EXPECT_EQ(fixed[11], 16384);
    // Over-yellow's Cb would be -1.0: limited to -8192 in 2.14.
    std::vector<int16_t> fixedYellow(4);
    VZImage yellow(2, 1, 0, static_cast<uint16_t*>(nullptr), 0u);
    std::fill(yellow.pixels, yellow.pixels + 8, 65535);
    yellow.pixels[2] = yellow.pixels[6] = 0;
    vzImageToHost(&yellow, fixedYellow.data(), 2, 1, 2, 1, 0, 0, 8, 0);
    EXPECT_EQ(fixedYellow[0], -8192);

    std::vector<float> floats(12);
    vzImageToHost(&frame, floats.data(), 6, 1, 6, 1, 0, 0, 13, 0);
    EXPECT_NEAR(floats[1], 1.0f, 1e-6f);
    EXPECT_EQ(floats[5], 0.0f);
    EXPECT_EQ(floats[8], 0.5f);  // Cb limited above
    EXPECT_EQ(floats[11], 1.0f); // Y limited
    std::vector<float> floatYellow(4);
    vzImageToHost(&yellow, floatYellow.data(), 2, 1, 2, 1, 0, 0, 13, 0);
    EXPECT_NEAR(floatYellow[0], -1.0f, 1e-4f);  // Cb has no lower limit in float
}

TEST(CbYCrYEncode, SecondPixelsChromaIsDropped)
{
    // Red then blue in one pair: the pair's chroma is the red pixel's alone.
    VZImage frame(2, 1, 0, static_cast<uint16_t*>(nullptr), 0u);
    const uint16_t redBlue[8] = {32767, 0, 0, 32767, 0, 0, 32767, 32767};
    std::memcpy(frame.pixels, redBlue, sizeof redBlue);
    VZImage red(2, 1, 0, static_cast<uint16_t*>(nullptr), 0u);
    const uint16_t redRed[8] = {32767, 0, 0, 32767, 32767, 0, 0, 32767};
    std::memcpy(red.pixels, redRed, sizeof redRed);
    std::vector<uint8_t> a(4), b(4);
    vzImageToHost(&frame, a.data(), 2, 1, 2, 1, 0, 0, 4, 0);
    vzImageToHost(&red, b.data(), 2, 1, 2, 1, 0, 0, 4, 0);
    EXPECT_EQ(a[0], b[0]);
    EXPECT_EQ(a[2], b[2]);
    EXPECT_EQ(a[1], b[1]);
    EXPECT_LT(a[3], b[3]);  // blue is darker than red in 709
}

}  // namespace
