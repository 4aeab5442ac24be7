// Cb Y Cr Y colour: decoding checked against the ITU-R BT.601 / BT.709 equations,
// and round trips of grey and saturated colours.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "host_test_support.h"

namespace {

using namespace host_test;

// 75% bars, each one pair of pixels, coded from the equations in each depth
// (stored = offset + scale x value, rounded except in float; Y 0..1, Cb and Cr
// -0.5..0.5). The expected R G B are the inverse equations applied to the stored
// samples, so only the decoder's arithmetic is measured: it cuts where the
// equations are exact, so it may sit up to one 15-bit step away.
TEST(CbYCrYDecode, ColourBarsMatchTheEquations)
{
    const struct { double kr, kb; int codeStep; } standards[] = {{0.299, 0.114, 0}, {0.2126, 0.0722, 1}};
    const struct { int code601, bytes; double yScale, yOffset, cScale, cOffset; } depths[] = {
        {3, 1, 219.0, 16.0, 224.0, 128.0}, {8, 2, 16384.0, 0.0, 16384.0, 0.0}, {13, 4, 1.0, 0.0, 1.0, 0.0}};
    const int bars[8][3] = {{1, 1, 1}, {1, 1, 0}, {0, 1, 1}, {0, 1, 0}, {1, 0, 1}, {1, 0, 0}, {0, 0, 1}, {0, 0, 0}};
    for (const auto& s : standards)
        for (const auto& d : depths) {
            const double kg = 1.0 - s.kr - s.kb;
            const auto quantise = [&](double v, double scale, double offset) {
                const double q = offset + scale * v;
                return d.bytes == 4 ? static_cast<double>(static_cast<float>(q)) : std::round(q);
            };
            std::vector<double> stored;  // Cb Y Cr Y per bar
            for (const auto& bar : bars) {
                const double r = 0.75 * bar[0], g = 0.75 * bar[1], b = 0.75 * bar[2];
                const double y = s.kr * r + kg * g + s.kb * b, yq = quantise(y, d.yScale, d.yOffset);
                stored.insert(stored.end(), {quantise((b - y) / (2.0 * (1.0 - s.kb)), d.cScale, d.cOffset), yq,
                                             quantise((r - y) / (2.0 * (1.0 - s.kr)), d.cScale, d.cOffset), yq});
            }
            std::vector<uint8_t> buffer;
            for (const double v : stored) {
                const auto u8 = static_cast<uint8_t>(v);
                const auto i16 = static_cast<int16_t>(v);
                const auto f = static_cast<float>(v);
                const auto* p = static_cast<const uint8_t*>(
                    d.bytes == 1 ? static_cast<const void*>(&u8) : d.bytes == 2 ? static_cast<const void*>(&i16) : &f);
                buffer.insert(buffer.end(), p, p + d.bytes);
            }
            const int code = d.code601 + s.codeStep;
            Frame frame = decodeRow(buffer.data(), 16, code);
            ASSERT_NE(frame, nullptr);
            for (int i = 0; i < 16; ++i) {
                const double* q = &stored[4 * (i / 2)];
                const double y = (q[1] - d.yOffset) / d.yScale, cb = (q[0] - d.cOffset) / d.cScale;
                const double cr = (q[2] - d.cOffset) / d.cScale;
                const double r = y + 2.0 * (1.0 - s.kr) * cr, b = y + 2.0 * (1.0 - s.kb) * cb;
                const double want[4] = {r, (y - s.kr * r - s.kb * b) / kg, b, 1.0};
                for (int c = 0; c < 4; ++c)
                    EXPECT_NEAR(frame->pixels[4 * i + c], std::clamp(want[c], 0.0, 1.0) * 32767.0, 1.0)
                        << "code " << code << " pixel " << i << " channel " << c;
            }
        }
}

// A frame of colour pairs (both pixels of a pair equal), encoded and decoded again.
// Tolerances in 15-bit steps:
//  8 bits: Y rounds to half a code (32767 / 219 / 2 = 75 steps); chroma is cut
//    toward zero after adding 0.5, so a negative value can lose up to 1.5 codes,
//    and B weighs Cb by 1.772 x 146.3 = 259 steps a code: 75 + 1.5 x 259 = 464,
//    plus the decoder's cut. Grey has no chroma: 75 + 1.
//  2.14: the same with codes of 2 steps: about 1 + 1.5 x 3.7 + 1 = 8; grey 2.
//  float: no rounding on the way out; the decoder's cut and single precision: 2.
TEST(CbYCrYRoundTrip, GreyAndSaturatedColoursComeBackWithinTheStatedTolerance)
{
    const struct { int code; double grey, colour; } cases[] = {
        {3, 76, 466}, {4, 76, 466}, {8, 2, 8}, {9, 2, 8}, {13, 2, 2}, {14, 2, 2}};
    const int f = 32767;
    const std::vector<std::vector<int>> sets[2] = {
        {{0, 0, 0}, {1, 1, 1}, {1000, 1000, 1000}, {8191, 8191, 8191}, {16384, 16384, 16384}, {f, f, f}},
        {{f, 0, 0}, {0, f, 0}, {0, 0, f}, {f, f, 0}, {0, f, f}, {f, 0, f}, {f, f / 2, 0}}};
    for (const auto& c : cases)
        for (int set = 0; set < 2; ++set) {
            std::vector<uint16_t> samples;
            for (const auto& rgb : sets[set])
                for (int px = 0; px < 2; ++px)
                    samples.insert(samples.end(), {static_cast<uint16_t>(rgb[0]), static_cast<uint16_t>(rgb[1]),
                                                   static_cast<uint16_t>(rgb[2]), 32767});
            Frame back = decodeRow(encodeRow(samples, c.code).data(), static_cast<int>(samples.size() / 4), c.code);
            for (size_t i = 0; i < samples.size(); ++i)
                EXPECT_NEAR(back->pixels[i], samples[i], set == 0 ? c.grey : c.colour)
                    << "code " << c.code << " sample " << i;
        }
}

}  // namespace
