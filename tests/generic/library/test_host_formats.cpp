// Host pixel formats: codes, then every format decoded and encoded against a reference written
// here from the format table, the published matrices and the sample rules; worked values; refusals.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

#include "generic/library/HostFormatTables.h"
#include "generic/library/HostPixelFormat.h"
#include "hostsdk/image_formats.h"

namespace {

using ::testing::ElementsAreArray;

struct Format {
    int family, alphaPlane, bottomUp, samples, bytes;
};
// By code: colour family (0 RGB), alpha plane, bottom-up, samples a pixel, bytes a sample.
constexpr Format kFormats[17] = {{0, 0, 0, 0, 0}, {0, 0, 0, 4, 1}, {0, 0, 1, 4, 1}, {1, 0, 1, 2, 1}, {2, 0, 1, 2, 1},
                                 {1, 1, 1, 2, 1}, {2, 1, 1, 2, 1}, {0, 0, 1, 4, 2}, {3, 0, 1, 2, 2}, {4, 0, 1, 2, 2},
                                 {3, 1, 1, 2, 2}, {4, 1, 1, 2, 2}, {0, 0, 1, 4, 4}, {5, 0, 1, 2, 4}, {6, 0, 1, 2, 4},
                                 {5, 1, 1, 2, 4}, {6, 1, 1, 2, 4}};
// The matrices of each family follow from the published luma weights of red
// and blue, ITU-R BT.601 (0.299, 0.114) for odd families and BT.709 (0.2126,
// 0.0722) for even ones, with luma in units of 32767 / 219 and chroma of
// 32767 / 224 at 8 bits, both 32767 / 16384 in 2.14 and 32767 in float.
struct Matrices {
    double decode[9];  // rows R G B, columns Y Cb Cr
    double encode[9];  // rows Y Cb Cr, columns R G B
};
Matrices published(int family)
{
    const double kr = family % 2 ? 0.299 : 0.2126, kb = family % 2 ? 0.114 : 0.0722, kg = 1 - kr - kb;
    const int depth = (family - 1) / 2;  // 8-bit, 2.14, float
    const double luma = depth == 0 ? 32767.0 / 219 : depth == 1 ? 32767.0 / 16384 : 32767.0;
    const double chroma = depth == 0 ? 32767.0 / 224 : luma;
    Matrices m = {{luma, 0, 2 * (1 - kr) * chroma,                                            // R
                   luma, -2 * kb * (1 - kb) / kg * chroma, -2 * kr * (1 - kr) / kg * chroma,  // G
                   luma, 2 * (1 - kb) * chroma, 0},                                           // B
                  {kr / luma, kg / luma, kb / luma,                                           // Y
                   -kr / (2 * (1 - kb)) / chroma, -kg / (2 * (1 - kb)) / chroma, 0.5 / chroma,
                   0.5 / chroma, -kg / (2 * (1 - kr)) / chroma, -kb / (2 * (1 - kr)) / chroma}};
    return m;
}

// The effect's single-precision matrices, used by the reference below once the
// test HostMatrices has found them to be the published ones.
const float (&kDecode)[kHostColourFamilyCount][9] = hostDecodeMatrix;
const float (&kEncode)[kHostColourFamilyCount][9] = hostEncodeMatrix;

// Sample rules; a cut is the conversion to int, toward zero, and NaN gives 0. Code 2's
// colour narrows to 16 bits before its lower limit.
int expand8(int v) { return v << 7 | v >> 1; }
int fromVideo(int v) { return std::max<int16_t>(0, static_cast<int16_t>((v - 16) * 32767 / 219)); }
int decodeSample(int bytes, double v, bool alpha)
{
    return bytes == 1 ? expand8(int(v))
           : bytes == 2 ? std::clamp(int(v), 0, 16384) * 32767 / 16384
           : v > 0      ? int(std::min(v, 1.0) * (alpha ? 32767.0 : 32767.5) + (alpha ? 0.5 : 0.0))
                        : 0;
}
double encodeSample(int bytes, int s, bool alpha)
{
    return bytes == 1 ? s >> 7
           : bytes == 2 ? s * 16384 / 32767
                        : static_cast<float>(alpha ? s * 3.0518509447574615e-05 : s / 32767.0);
}
double quantise(int bytes, float v, bool chroma)
{
    return bytes == 4   ? (chroma ? std::min(v, 0.5f) : std::clamp(v, 0.0f, 1.0f))
           : bytes == 2 ? std::clamp(int(v + 0.5f), chroma ? -8192 : 0, chroma ? 8192 : 16384)
                        : std::clamp(int(v + 0.5f) + (chroma ? 128 : 16), 16, chroma ? 240 : 235);
}

// A host buffer of one format. Pixel column x of buffer row r starts at unit
// x + r x width; the alpha plane follows the colour plane, one sample a pixel.
struct Buffer {
    Buffer(int code, int width, int height, uint8_t fill = 0)
        : code(code), width(width), height(height), f(kFormats[code]),
          bytes(size_t{1} * width * height * f.bytes * (f.samples + f.alphaPlane), fill)
    {
    }
    size_t unit() const { return size_t{1} * f.samples * f.bytes; }
    size_t plane() const { return unit() * width * height; }
    int row(int roiY, int y) const { return f.bottomUp ? height - roiY - y - 1 : roiY + y; }
    size_t colour(int x, int r) const { return (x + size_t{1} * r * width) * unit(); }
    size_t alpha(int x, int r) const { return plane() + (x + size_t{1} * r * width) * f.bytes; }
    double get(size_t at) const
    {
        int16_t i;
        float x;
        return f.bytes == 1   ? bytes[at]
               : f.bytes == 2 ? (std::memcpy(&i, &bytes[at], 2), i)
                              : (std::memcpy(&x, &bytes[at], 4), x);
    }
    void put(size_t at, double v)
    {
        const auto i = static_cast<int16_t>(f.bytes == 2 ? v : 0);
        const auto x = static_cast<float>(v);
        if (f.bytes == 1)
            bytes[at] = static_cast<uint8_t>(v);
        else
            std::memcpy(&bytes[at], f.bytes == 2 ? static_cast<const void*>(&i) : &x, f.bytes);
    }

    // The frame pixel from column x of buffer row r, in a region starting at column x0.
    std::array<int, 4> decode(int x0, int x, int r) const
    {
        const size_t at = colour(x, r);
        if (code == 2)
            return {fromVideo(bytes[at + 2]), fromVideo(bytes[at + 1]), fromVideo(bytes[at]), expand8(bytes[at + 3])};
        std::array<int, 4> out;
        for (int c = 0; c < 4 && f.family == 0; ++c)
            out[c] = decodeSample(f.bytes, get(at + c * f.bytes), false);
        if (f.family == 0)
            return out;
        // Cb Y0 Cr Y1, chroma terms per pair; a Cr beyond the colour plane counts as neutral.
        const size_t pair = colour(x0 + (x - x0) / 2 * 2, r);
        const float off = f.bytes == 1 ? 128.0f : 0.0f, y = static_cast<float>(get(at + f.bytes)) - off / 8;
        const float cb = static_cast<float>(get(pair)) - off;
        const float cr = pair + 2 * unit() <= plane() ? static_cast<float>(get(pair + unit())) - off : 0.0f;
        const float* m = kDecode[f.family];
        const float t[3] = {cb * m[1] + cr * m[2], cr * m[5] + cb * m[4], cr * m[8] + cb * m[7]};
        for (int c = 0; c < 3; ++c) {
            const float v = t[c] + y * m[3 * c];
            out[c] = v > 0.0f ? (v < 32767.0f ? int(v) : 32767) : 0;
        }
        out[3] = f.alphaPlane ? decodeSample(f.bytes, get(alpha(x, r)), true) : 32767;
        return out;
    }

    // Writes a frame row of `width` pixels at column x0 of buffer row r. Pairs take
    // their chroma from the first pixel; the last pixel of an odd width writes its
    // Cb and Y only.
    void encode(const uint16_t* px, int width, int x0, int r)
    {
        const float* e = kEncode[f.family];
        const auto matrixRow = [e](int row, const uint16_t* p) {
            return e[3 * row] * float(p[0]) + e[3 * row + 1] * float(p[1]) + e[3 * row + 2] * float(p[2]);
        };
        for (int x = 0; x < width; ++x) {
            const uint16_t* p = px + 4 * x;
            const size_t at = colour(x0 + x, r);
            if (f.alphaPlane)
                put(alpha(x0 + x, r), encodeSample(f.bytes, p[3], true));
            // RGBA samples; code 2 stores B G R in video range.
            for (int c = 0; c < 4 && f.family == 0; ++c)
                put(at + c * f.bytes, code == 2 && c < 3 ? p[2 - c] * 219 / 32767 + 16 : encodeSample(f.bytes, p[c], 0));
            if (f.family == 0 || x % 2 == 1)
                continue;
            // Cb Y0 Cr Y1 (matrix rows 1 0 2 0), or Cb Y0 alone at the end of an odd row.
            for (int k = 0; k < (x + 1 < width ? 4 : 2); ++k)
                put(at + k * f.bytes, quantise(f.bytes, matrixRow(k % 2 ? 0 : k / 2 + 1, p + 4 * (k == 3)), k % 2 == 0));
        }
    }

    int code, width, height;
    Format f;
    std::vector<uint8_t> bytes;
};

using Frame = std::unique_ptr<VZImage>;

// Buffer size, region size and place: a region inside a larger buffer, odd in width
// and height, and a whole buffer of odd width, where the last pair's Cr comes from
// the next row or lies beyond the plane.
constexpr struct { int bw, bh, w, h, x, y; } kRegions[] = {{10, 7, 5, 5, 2, 1}, {33, 17, 33, 17, 0, 0}};
// Frame row shown by each row of a five-row frame, by field flags 0 to 3: the pass
// works in place from the top, and the last row has no successor.
constexpr int kFieldSource[4][5] = {{0, 1, 2, 3, 4}, {1, 1, 3, 3, 4}, {0, 0, 2, 2, 4}, {1, 1, 3, 3, 4}};

// Samples each depth holds: any byte; 2.14 values below 0, within 0..1 and above;
// floats continuous in the colour plane of pair formats, elsewhere on a 1/256 grid
// from -0.25 to 1.25, where products with 32767 and 32767.5 are exact; a NaN in
// each plane of a float format.
Buffer sampleBuffer(int code, int width, int height)
{
    Buffer b(code, width, height);
    uint32_t seed = 2654435761u * code;
    for (size_t at = 0; at < b.bytes.size(); at += b.f.bytes) {
        seed = seed * 1664525u + 1013904223u;
        const int n = static_cast<int>(seed >> 8);
        const bool grid = b.f.family == 0 || at >= b.plane();
        b.put(at, b.f.bytes == 1 ? n % 256
                  : b.f.bytes == 2 ? n % 27000 - 9000
                  : grid           ? (n % 384 - 64) / 256.0
                                   : (n % 110000 - 40000) / 65536.0);
    }
    if (b.f.bytes == 4)
        b.put(b.colour(3, 2), NAN), b.put(b.f.alphaPlane ? b.alpha(4, 2) : b.colour(5, 1) + 4, NAN);
    return b;
}

// The samples of a frame (none for null), or of a buffer.
std::vector<int> samples(const Frame& frame)
{
    return frame ? std::vector<int>(frame->pixels, frame->pixels + 4 * frame->width * frame->height)
                 : std::vector<int>();
}
std::vector<int> samples(const Buffer& b) { return std::vector<int>(b.bytes.begin(), b.bytes.end()); }

TEST(HostMatrices, AreThePublishedOnesInSinglePrecision)
{
    // The stored constants are those of the original, rounded once more than a
    // float of the exact value: they agree to a few parts in a million (the
    // smallest terms to about 1e-5), far closer than a wrong weight or scale.
    for (int family = 1; family <= 6; ++family) {
        const Matrices m = published(family);
        for (int i = 0; i < 9; ++i) {
            EXPECT_NEAR(kDecode[family][i], m.decode[i], 2e-5 * std::fabs(m.decode[i])) << family << " " << i;
            EXPECT_NEAR(kEncode[family][i], m.encode[i], 2e-5 * std::fabs(m.encode[i])) << family << " " << i;
        }
    }
}

TEST(HostFormatPick, NamesFifteenFormatsInOrderAndNeverSixteen)
{
    const GUID* const formats[16] = {
        &MFIF_RGBA_RAW_32,     &MFIF_BGRA_RAW_32_VIDEO, &MFIF_CbYCrY_16,        &MFIF_CbYCrY709_16,
        &MFIF_CbYCrYA_24,      &MFIF_CbYCrY709A_24,     &MFIF_RGBA_S2_14,       &MFIF_CbYCrY_S2_14,
        &MFIF_CbYCrY709_S2_14, &MFIF_CbYCrYA_S2_14,     &MFIF_CbYCrY709A_S2_14, &MFIF_RGBA_FLOAT,
        &MFIF_CbYCrY_FLOAT,    &MFIF_CbYCrY709_FLOAT,   &MFIF_CbYCrYA_FLOAT,    &MFIF_CbYCrY709A_FLOAT};
    for (int code = 1; code <= 16; ++code)
        EXPECT_EQ(pickHostFormat(*formats[code - 1]), code < 16 ? code : 0) << code;
}

TEST(HostDecode, EveryPixelOfEveryFormatFollowsTheRulesAndTheFieldPass)
{
    for (int code = 1; code <= 16; ++code)
        for (const auto& r : kRegions)
            for (uint32_t flags = 0; flags < (r.h == 5 ? 4u : 1u); ++flags) {
                const Buffer b = sampleBuffer(code, r.bw, r.bh);
                std::vector<int> want;
                for (int y = 0; y < r.h; ++y)
                    for (int x = 0; x < r.w; ++x)
                        for (const int v : b.decode(r.x, r.x + x, b.row(r.y, flags ? kFieldSource[flags][y] : y)))
                            want.push_back(v);
                EXPECT_THAT(samples(Frame(hostToVzImage(b.bytes.data(), r.bw, r.bh, r.w, r.h, r.x, r.y, code, flags))),
                            ElementsAreArray(want))
                    << "code " << code << " buffer width " << r.bw << " flags " << flags;
            }
}

TEST(HostEncode, EveryFormatWritesOnlyTheRegionByTheRulesAndSkipsFieldRows)
{
    // Random samples, colour up to twice full scale for pair formats so that they meet their limits.
    for (int code = 1; code <= 16; ++code) {
        for (const auto& r : kRegions) {
            VZImage frame(r.w, r.h, 0, static_cast<uint16_t*>(nullptr), 0u);
            uint32_t seed = 99;
            for (int i = 0; i < 4 * r.w * r.h; ++i, seed = seed * 1664525u + 1013904223u)
                frame.pixels[i] = static_cast<uint16_t>(seed >> (kFormats[code].family && i % 4 < 3 ? 16 : 17));
            for (uint32_t flags = 0; flags < 4; ++flags) {
                Buffer got(code, r.bw, r.bh, 0xEE), want(got);
                vzImageToHost(&frame, got.bytes.data(), r.bw, r.bh, r.w, r.h, r.x, r.y, code, flags);
                for (int y = 0; y < r.h; ++y)
                    if (!(flags & (y % 2 ? 2 : 1)))
                        want.encode(frame.rows[y], r.w, r.x, want.row(r.y, y));
                EXPECT_THAT(samples(got), ElementsAreArray(samples(want)))
                    << "code " << code << " buffer width " << r.bw << " flags " << flags;
            }
        }
    }
}

// Values worked by hand from the rules, which also hold the reference to them:
// 8-bit expansion, the code 2 wrap above 235, 2.14 limits, float colour x 32767.5.
TEST(HostDecode, WorkedValues)
{
    const struct { int code; std::vector<double> colour; std::vector<int> want; } cases[] = {
        {1, {255, 128, 1, 0}, {32767, 16448, 128, 0}},
        {2, {16, 236, 235, 255, 126, 0, 0, 0}, {32767, 0, 0, 32767, 0, 0, 16458, 0}},  // B G R A
        {7, {16384, 20000, -1, 8192}, {32767, 32767, 0, 16383}},
        {12, {1.0, 0.5, 1.0 - 1.0 / 65536, NAN}, {32767, 16383, 32767, 0}}};
    for (const auto& c : cases) {
        Buffer b(c.code, 2, 1);
        for (size_t i = 0; i < c.colour.size(); ++i)
            b.put(i * b.f.bytes, c.colour[i]);
        Frame frame(hostToVzImage(b.bytes.data(), 2, 1, 2, 1, 0, 0, c.code, 0));
        EXPECT_EQ(std::vector<int>(frame->pixels, frame->pixels + c.want.size()), c.want) << "code " << c.code;
    }
}

TEST(HostFormatArguments, BadCodesAndRegionsGiveNullAndWriteNothing)
{
    Buffer buffer(1, 8, 4, 0x5A);
    VZImage frame(8, 4, 0, static_cast<uint16_t*>(nullptr), 0u);
    // roiWidth, roiHeight, roiX, roiY, code over an 8 x 4 buffer.
    const int cases[][5] = {{8, 4, 0, 0, 0}, {8, 4, 0, 0, 17}, {8, 4, 0, 0, -1}, {8, 0, 0, 0, 1},
                            {8, 4, 1, 0, 1}, {8, 4, 0, 1, 3},  {4, 2, -1, 0, 12}};
    for (const auto& [w, h, x, y, code] : cases) {
        EXPECT_EQ(Frame(hostToVzImage(buffer.bytes.data(), 8, 4, w, h, x, y, code, 0)), nullptr) << code;
        vzImageToHost(&frame, buffer.bytes.data(), 8, 4, w, h, x, y, code, 0);
    }
    // Frames not of the region's size.
    vzImageToHost(&frame, buffer.bytes.data(), 8, 4, 4, 4, 0, 0, 1, 0);
    vzImageToHost(&frame, buffer.bytes.data(), 8, 4, 8, 2, 0, 0, 1, 0);
    EXPECT_EQ(samples(buffer), std::vector<int>(8 * 4 * 4, 0x5A));
}

}  // namespace
