// Sample rules of the RGBA formats and the alpha planes: edge values and round
// trips of every value.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <vector>

#include "generic/library/HostPixelFormat.h"

namespace {

enum Code {
    kRgba8 = 1,
    kBgraVideo8 = 2,
    kCbYCrYA8 = 5,
    kRgba214 = 7,
    kCbYCrYA214 = 10,
    kRgbaFloat = 12,
    kCbYCrYAFloat = 15,
};

template <class T>
std::vector<uint8_t> bytesOf(const std::vector<T>& samples)
{
    std::vector<uint8_t> bytes(samples.size() * sizeof(T));
    std::memcpy(bytes.data(), samples.data(), bytes.size());
    return bytes;
}

template <class T>
T sampleAt(const std::vector<uint8_t>& bytes, size_t index)
{
    T value;
    std::memcpy(&value, bytes.data() + index * sizeof(T), sizeof(T));
    return value;
}

// Decodes a one-row buffer of `count` RGBA pixels in an RGBA format.
template <class T>
std::unique_ptr<VZImage> decodeRow(const std::vector<T>& samples, int code)
{
    const int width = static_cast<int>(samples.size() / 4);
    const std::vector<uint8_t> bytes = bytesOf(samples);
    return std::unique_ptr<VZImage>(hostToVzImage(bytes.data(), width, 1, width, 1, 0, 0, code, 0));
}

// A one-row frame of the given samples, encoded into a buffer of `sampleBytes`
// samples in an RGBA format.
std::vector<uint8_t> encodeRow(const std::vector<uint16_t>& samples, int code, size_t sampleBytes)
{
    const int width = static_cast<int>(samples.size() / 4);
    VZImage frame(width, 1, 0, static_cast<uint16_t*>(nullptr), 0u);
    std::copy(samples.begin(), samples.end(), frame.pixels);
    std::vector<uint8_t> bytes(samples.size() * sampleBytes, 0);
    vzImageToHost(&frame, bytes.data(), width, 1, width, 1, 0, 0, code, 0);
    return bytes;
}

// Every 15-bit value, four to a pixel.
std::vector<uint16_t> allFifteenBitValues()
{
    std::vector<uint16_t> values(32768);
    for (int s = 0; s < 32768; ++s)
        values[s] = static_cast<uint16_t>(s);
    return values;
}

TEST(HostEightBit, FullRangeRoundTripsEveryValue)
{
    std::vector<uint8_t> samples(256 * 4);
    for (int v = 0; v < 256; ++v)
        for (int c = 0; c < 4; ++c)
            samples[v * 4 + c] = static_cast<uint8_t>(v);
    auto frame = decodeRow(samples, kRgba8);
    ASSERT_NE(frame, nullptr);
    EXPECT_EQ(frame->pixels[255 * 4], 32767);
    EXPECT_EQ(frame->pixels[0], 0);
    EXPECT_EQ(frame->pixels[128 * 4 + 3], 16448);
    std::vector<uint16_t> decoded(frame->pixels, frame->pixels + 256 * 4);
    EXPECT_EQ(encodeRow(decoded, kRgba8, 1), samples);
}

TEST(HostEightBit, VideoRangeLevelsAndTheWhiterThanWhiteWrap)
{
    // B G R A bytes; one channel probed at a time.
    const std::vector<uint8_t> samples = {
        0,   0,   235, 255,  // R 235: full scale
        0,   236, 0,   0,    // G 236: wraps to black
        16,  0,   0,   128,  // B 16: black
        0,   0,   15,  0,    // below black
        255, 0,   0,   0,    // B 255: wraps to black
        0,   126, 0,   0,    // mid grey
    };
    auto frame = decodeRow(samples, kBgraVideo8);
    ASSERT_NE(frame, nullptr);
    const uint16_t* p = frame->pixels;
    EXPECT_EQ(p[0], 32767);
    EXPECT_EQ(p[1], 0);
    EXPECT_EQ(p[2], 0);
    EXPECT_EQ(p[3], 32767);  // alpha is full range
    EXPECT_EQ(p[4 + 1], 0);
    EXPECT_EQ(p[8 + 2], 0);
    EXPECT_EQ(p[8 + 3], 16448);
    EXPECT_EQ(p[12 + 0], 0);
    EXPECT_EQ(p[16 + 2], 0);
    EXPECT_NEAR(p[20 + 1], (126 - 16) * 32767.0 / 219.0, 1.0);

    // Encoding: white to 235, black to 16, stored B G R.
    const auto bytes = encodeRow({32767, 0, 16384, 32767}, kBgraVideo8, 1);
    EXPECT_EQ(bytes[2], 235);  // R
    EXPECT_EQ(bytes[1], 16);   // G
    EXPECT_EQ(bytes[0], 125);  // B: 16 + 109.5, cut
    EXPECT_EQ(bytes[3], 255);
}

TEST(HostEightBit, VideoRangeLosesAtMostOneLevelThereAndBack)
{
    // Both directions cut: a legal level comes back as itself or one below, black
    // and white exactly. Alpha is full range and comes back exactly.
    std::vector<uint8_t> samples;
    for (int v = 16; v <= 235; ++v)
        samples.insert(samples.end(), {static_cast<uint8_t>(v), static_cast<uint8_t>(v), static_cast<uint8_t>(v),
                                       static_cast<uint8_t>(v)});
    auto frame = decodeRow(samples, kBgraVideo8);
    std::vector<uint16_t> decoded(frame->pixels, frame->pixels + samples.size());
    const auto back = encodeRow(decoded, kBgraVideo8, 1);
    for (size_t i = 0; i < samples.size(); ++i) {
        if (i % 4 == 3) {
            ASSERT_EQ(back[i], samples[i]);
        } else {
            ASSERT_LE(back[i], samples[i]);
            ASSERT_GE(back[i] + 1, samples[i]) << i;
        }
    }
    EXPECT_EQ(back[0], 16);
    EXPECT_EQ(back[back.size() - 2], 235);
}

TEST(HostFixedPoint, EdgeValues)
{
    auto frame = decodeRow<int16_t>({16384, 20000, -1, -32768, 0, 8192, 1, 32767}, kRgba214);
    ASSERT_NE(frame, nullptr);
    const uint16_t* p = frame->pixels;
    EXPECT_EQ(p[0], 32767);  // 1.0
    EXPECT_EQ(p[1], 32767);  // above 1.0 is limited
    EXPECT_EQ(p[2], 0);      // negative gives 0
    EXPECT_EQ(p[3], 0);
    EXPECT_EQ(p[4], 0);
    EXPECT_EQ(p[5], 16383);  // half scale, cut
    EXPECT_EQ(p[6], 1);
    EXPECT_EQ(p[7], 32767);

    const auto bytes = encodeRow({32767, 0, 16384, 1}, kRgba214, 2);
    EXPECT_EQ(sampleAt<int16_t>(bytes, 0), 16384);
    EXPECT_EQ(sampleAt<int16_t>(bytes, 1), 0);
    EXPECT_EQ(sampleAt<int16_t>(bytes, 2), 8192);
    EXPECT_EQ(sampleAt<int16_t>(bytes, 3), 0);
}

TEST(HostFixedPoint, EveryFifteenBitValueComesBackWithinTwoSteps)
{
    // 2.14 has half the steps of the frame; both directions cut, so a value can
    // only come back lower, by at most two steps.
    const auto values = allFifteenBitValues();
    const auto bytes = encodeRow(values, kRgba214, 2);
    std::vector<int16_t> fixed(values.size());
    std::memcpy(fixed.data(), bytes.data(), bytes.size());
    auto frame = decodeRow(fixed, kRgba214);
    for (int s = 0; s < 32768; ++s) {
        const int back = frame->pixels[s];
        ASSERT_LE(back, s);
        ASSERT_GE(back, s - 2) << s;
    }
    EXPECT_EQ(frame->pixels[32767], 32767);
}

TEST(HostFloat, EdgeValuesIncludingNaN)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    auto frame = decodeRow<float>({1.0f, 0.0f, 2.0f, -0.5f, nan, 0.5f, std::numeric_limits<float>::infinity(), 1e-6f},
                                  kRgbaFloat);
    ASSERT_NE(frame, nullptr);
    const uint16_t* p = frame->pixels;
    EXPECT_EQ(p[0], 32767);  // not 32768
    EXPECT_EQ(p[1], 0);
    EXPECT_EQ(p[2], 32767);
    EXPECT_EQ(p[3], 0);
    EXPECT_EQ(p[4], 0);  // NaN
    EXPECT_EQ(p[5], 16383);
    EXPECT_EQ(p[6], 32767);
    EXPECT_EQ(p[7], 0);

    const auto bytes = encodeRow({32767, 0, 16384, 1}, kRgbaFloat, 4);
    EXPECT_EQ(sampleAt<float>(bytes, 0), 1.0f);
    EXPECT_EQ(sampleAt<float>(bytes, 1), 0.0f);
    EXPECT_FLOAT_EQ(sampleAt<float>(bytes, 2), 16384.0f / 32767.0f);
}

TEST(HostFloat, EveryFifteenBitValueComesBackExactly)
{
    const auto values = allFifteenBitValues();
    const auto bytes = encodeRow(values, kRgbaFloat, 4);
    std::vector<float> floats(values.size());
    std::memcpy(floats.data(), bytes.data(), bytes.size());
    auto frame = decodeRow(floats, kRgbaFloat);
    for (int s = 0; s < 32768; ++s)
        ASSERT_EQ(frame->pixels[s], s);
}

// A 2 x 1 pair buffer (one pair of mid grey) with an alpha plane behind it.
template <class T>
std::vector<uint8_t> pairWithAlpha(T cb, T y, T cr, T alpha0, T alpha1)
{
    return bytesOf<T>({cb, y, cr, y, alpha0, alpha1});
}

TEST(HostAlphaPlane, DepthRulesAndEdgeValues)
{
    {
        auto bytes = pairWithAlpha<uint8_t>(128, 126, 128, 255, 128);
        std::unique_ptr<VZImage> frame(hostToVzImage(bytes.data(), 2, 1, 2, 1, 0, 0, kCbYCrYA8, 0));
        EXPECT_EQ(frame->pixels[3], 32767);
        EXPECT_EQ(frame->pixels[7], 16448);
    }
    {
        auto bytes = pairWithAlpha<int16_t>(0, 8192, 0, 16384, -3);
        std::unique_ptr<VZImage> frame(hostToVzImage(bytes.data(), 2, 1, 2, 1, 0, 0, kCbYCrYA214, 0));
        EXPECT_EQ(frame->pixels[3], 32767);
        EXPECT_EQ(frame->pixels[7], 0);
    }
    {
        // The float plane rounds to nearest where float colour cuts: at 0.5 the
        // two rules part by one step.
        auto bytes = pairWithAlpha<float>(0.0f, 0.5f, 0.0f, 0.5f, 1.0f);
        std::unique_ptr<VZImage> frame(hostToVzImage(bytes.data(), 2, 1, 2, 1, 0, 0, kCbYCrYAFloat, 0));
        EXPECT_EQ(frame->pixels[3], 16384);
        EXPECT_EQ(frame->pixels[7], 32767);
        auto rgba = decodeRow<float>({0.5f, 0.5f, 0.5f, 0.5f}, kRgbaFloat);
        EXPECT_EQ(rgba->pixels[3], 16383);
    }
}

// Round trip of every 15-bit alpha value through a pair format's alpha plane:
// the value comes back within [s - below, s + above].
void expectAlphaPlaneRoundTrip(int code, int below, int above)
{
    const int width = 32768;
    VZImage frame(width, 1, 0, static_cast<uint16_t*>(nullptr), 0u);
    for (int x = 0; x < width; ++x) {
        uint16_t* p = frame.pixels + 4 * x;
        p[0] = p[1] = p[2] = 16384;
        p[3] = static_cast<uint16_t>(x);
    }
    const size_t sampleBytes = code == kCbYCrYA8 ? 1 : (code == kCbYCrYA214 ? 2 : 4);
    std::vector<uint8_t> buffer(static_cast<size_t>(width) * 3 * sampleBytes);
    vzImageToHost(&frame, buffer.data(), width, 1, width, 1, 0, 0, code, 0);
    std::unique_ptr<VZImage> back(hostToVzImage(buffer.data(), width, 1, width, 1, 0, 0, code, 0));
    for (int x = 0; x < width; ++x) {
        const int a = back->pixels[4 * x + 3];
        ASSERT_LE(a, x + above) << "code " << code;
        ASSERT_GE(a, x - below) << "code " << code;
    }
    EXPECT_EQ(back->pixels[4 * (width - 1) + 3], 32767);
}

TEST(HostAlphaPlane, EveryFifteenBitValueComesBackWithinTheDepthsRounding)
{
    expectAlphaPlaneRoundTrip(kCbYCrYAFloat, 0, 0);  // exact
    expectAlphaPlaneRoundTrip(kCbYCrYA214, 2, 0);    // half the steps, cut both ways
    // 8 bits keep the top 8 of 15; the expansion fills the low 7 bits from the top,
    // so a value comes back within 127 either way.
    expectAlphaPlaneRoundTrip(kCbYCrYA8, 127, 127);
}

}  // namespace
