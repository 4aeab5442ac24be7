// Files of each depth and kind, alpha and grey, whole frames, and the channel
// and field selections of the host.
#include <algorithm>
#include <cmath>
#include <regex>

#include "tool_fixture.h"

namespace {

using Files = ToolTest;

// Smooth colour over the frame with one bright spot; alpha 0.5 where asked.
Picture scene(int w, int h, int channels)
{
    Picture p(w, h, channels);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            p.at(x, y, 0) = float(x) / w;
            if (channels >= 3) {
                p.at(x, y, 1) = float(y) / h;
                p.at(x, y, 2) = 0.3f;
            }
            if (channels == 4 || channels == 2)
                p.at(x, y, channels - 1) = 0.5f;
        }
    p.at(w / 2, h / 2, 0) = 1.0f;
    return p;
}

TEST_F(Files, EachDepthAndFileFormatKeepsDepthAndAlpha)
{
    struct Case {
        const char* name;
        OIIO::TypeDesc type;
        float step;  // one step of the file's depth
    };
    const Case cases[] = {{"in8.png", OIIO::TypeDesc::UINT8, 1 / 255.0f},
                          {"in16.tif", OIIO::TypeDesc::UINT16, 1 / 65535.0f},
                          {"inf.exr", OIIO::TypeDesc::FLOAT, 0.0f},
                          {"inh.exr", OIIO::TypeDesc::HALF, 0.0f},
                          {"in16.png", OIIO::TypeDesc::UINT16, 1 / 65535.0f}};
    for (const Case& c : cases) {
        write(c.name, scene(40, 32, 4), c.type);
        const std::string out = std::string("out-") + c.name;
        const ToolRun r = run({"render", c.name, "-o", out});
        ASSERT_EQ(r.exitCode, 0) << c.name << r.err;
        const Picture p = read(out);
        EXPECT_EQ(p.format, c.type) << c.name;
        ASSERT_EQ(p.channels, 4) << c.name;
        // A uniform alpha of one half is still one half (the effect's 15 bits).
        for (int i = 3; i < int(p.data.size()); i += 4)
            ASSERT_NEAR(p.data[i], 0.5f, c.step + 1 / 32767.0f) << c.name;
        // The spot was spread.
        EXPECT_LT(p.at(20, 16, 0), 0.9f) << c.name;
    }
    // --depth converts.
    ASSERT_EQ(run({"render", "in8.png", "-o", "deep.tif", "--depth", "16"}).exitCode, 0);
    EXPECT_EQ(read("deep.tif").format, OIIO::TypeDesc::UINT16);
    ASSERT_EQ(run({"render", "in16.tif", "-o", "flat.png", "--depth", "8"}).exitCode, 0);
    EXPECT_EQ(read("flat.png").format, OIIO::TypeDesc::UINT8);
    // --compression changes the file, not the pixels.
    ASSERT_EQ(run({"render", "in16.tif", "-o", "plain.tif", "--compression", "none"}).exitCode, 0);
    EXPECT_EQ(read("plain.tif").data, read("out-in16.tif").data);
    EXPECT_GT(bytes("plain.tif").size(), bytes("out-in16.tif").size());
    // PNM too keeps 16 bits.
    write("in16.ppm", scene(40, 32, 3), OIIO::TypeDesc::UINT16);
    ASSERT_EQ(run({"render", "in16.ppm", "-o", "out16.ppm"}).exitCode, 0);
    EXPECT_EQ(read("out16.ppm").format, OIIO::TypeDesc::UINT16);
}

TEST_F(Files, GreyIsTakenAsRgbAndSameCommandSameBytes)
{
    write("grey.png", scene(40, 32, 1), OIIO::TypeDesc::UINT8);
    ASSERT_EQ(run({"render", "grey.png", "-o", "a.png"}).exitCode, 0);
    const Picture p = read("a.png");
    ASSERT_EQ(p.channels, 3);
    for (int y = 0; y < p.height; ++y)
        for (int x = 0; x < p.width; ++x) {
            ASSERT_NEAR(p.at(x, y, 1), p.at(x, y, 0), 1 / 255.0f);
            ASSERT_NEAR(p.at(x, y, 2), p.at(x, y, 0), 1 / 255.0f);
        }
    ASSERT_EQ(run({"render", "grey.png", "-o", "b.png"}).exitCode, 0);
    EXPECT_EQ(bytes("a.png"), bytes("b.png"));
    // TIFF and OpenEXR files carry no time stamp, and a DPX file names the
    // file it was written as: that too is the same on every run.
    const std::regex stamp("[0-9]{4}:[0-9]{2}:[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}");
    for (const std::string name : {"t.tif", "t.exr", "t.dpx"}) {
        ASSERT_EQ(run({"render", "grey.png", "-o", name}).exitCode, 0) << name;
        const std::string first = bytes(name);
        EXPECT_FALSE(std::regex_search(first, stamp)) << name;
        ASSERT_EQ(run({"render", "grey.png", "-o", name}).exitCode, 0) << name;
        EXPECT_EQ(bytes(name), first) << name;
    }
    // Grey with alpha gives RGBA, grey in R, G and B.
    write("greya.png", scene(40, 32, 2), OIIO::TypeDesc::UINT8);
    ASSERT_EQ(run({"render", "greya.png", "-o", "c.png"}).exitCode, 0);
    const Picture c = read("c.png");
    ASSERT_EQ(c.channels, 4);
    for (size_t i = 0; i < c.data.size(); i += 4)
        ASSERT_EQ(c.data[i + 1], c.data[i]) << "pixel " << i / 4;
}

TEST_F(Files, KeptChannelsComeBackAsTheHostFrameHeldThem)
{
    // Every 8-bit value passes the 8-bit host frame and the effect's 15 bits
    // unchanged.
    Picture ramp8(256, 4, 4);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 256; ++x)
            for (int c = 0; c < 4; ++c)
                ramp8.at(x, y, c) = ((x * (2 * c + 1) + 64 * y) % 256) / 255.0f;
    write("ramp8.png", ramp8, OIIO::TypeDesc::UINT8);
    ASSERT_EQ(run({"render", "ramp8.png", "-o", "kept8.png", "--keep", "r,g,b,a"}).exitCode, 0);
    EXPECT_EQ(read("kept8.png").data, read("ramp8.png").data);
    // 16-bit samples go over in float frames: v / 65535, cut to the effect's
    // 15 bits (x 32767.5), back over 32767 and to the nearest 16-bit step.
    // Half of all values round up there. Tiled files are read as well.
    Picture ramp16(1024, 40, 3);
    for (int y = 0; y < 40; ++y)
        for (int x = 0; x < 1024; ++x)
            for (int c = 0; c < 3; ++c)
                ramp16.at(x, y, c) = ((x * 64 + 21 * c + x % 61 + 997 * y) % 65536) / 65535.0f;
    write("ramp16.tif", ramp16, OIIO::TypeDesc::UINT16);
    write("tiled16.tif", ramp16, OIIO::TypeDesc::UINT16, 16);
    const Picture in = read("ramp16.tif");
    for (const char* name : {"ramp16.tif", "tiled16.tif"}) {
        ASSERT_EQ(run({"render", name, "-o", "kept16.tif", "--keep", "r,g,b"}).exitCode, 0) << name;
        const Picture out = read("kept16.tif");
        ASSERT_EQ(out.data.size(), in.data.size());
        for (size_t i = 0; i < in.data.size(); ++i) {
            const long v = std::lround(in.data[i] * 65535.0f);
            const int frame = static_cast<int>(std::min(v * (1.0f / 65535.0f), 1.0f) * 32767.5f);
            const float back = static_cast<float>(frame / 32767.0);
            ASSERT_EQ(std::lround(out.data[i] * 65535.0f), std::lround(back * 65535.0f))
                << name << " sample " << i << " of value " << v;
        }
    }
    // Float samples put into an 8-bit host frame go to the nearest step.
    Picture fine(1000, 4, 3);
    for (size_t i = 0; i < fine.data.size(); ++i)
        fine.data[i] = (i % 1000) / 999.0f;
    write("fine.exr", fine);
    ASSERT_EQ(run({"render", "fine.exr", "-o", "steps.exr", "--keep", "r,g,b", "--host-format", "MFIF_RGBA_RAW_32"})
                  .exitCode,
              0);
    const Picture steps = read("steps.exr");
    for (size_t i = 0; i < fine.data.size(); ++i)
        ASSERT_NEAR(steps.data[i], std::lround(fine.data[i] * 255.0f) / 255.0f, 1e-6f) << "sample " << i;
}

TEST_F(Files, BottomRowsOfAFrameNotAMultipleOfFourAreDefocusedLikeTheRest)
{
    // Coloured vertical stripes, the same in every row: defocused, every row
    // is alike; left unconvolved, the last rows keep their sharp stripes.
    constexpr int w = 320, h = 199;  // 199 = 4 x 49 + 3
    Picture stripes(w, h, 3);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const bool red = (x / 6) % 2 == 0;
            stripes.at(x, y, 0) = red ? 0.9f : 0.1f;
            stripes.at(x, y, 2) = red ? 0.1f : 0.9f;
        }
    write("stripes.png", stripes, OIIO::TypeDesc::UINT8);
    auto worstBottomRow = [&](const std::string& out) {
        const Picture p = read(out);
        float worst = 0;
        for (int y = h - 3; y < h; ++y)
            for (int x = 0; x < w; ++x)
                for (int c = 0; c < 3; ++c)
                    worst = std::max(worst, std::fabs(p.at(x, y, c) - p.at(x, h - 8, c)));
        return worst;
    };
    ASSERT_EQ(run({"render", "stripes.png", "-o", "whole.png", "--radius-x", "0.03"}).exitCode, 0);
    EXPECT_LE(worstBottomRow("whole.png"), 2 / 255.0f);
    ASSERT_EQ(run({"render", "stripes.png", "-o", "exact.png", "--radius-x", "0.03", "--exact-host-frame"}).exitCode, 0);
    EXPECT_GT(worstBottomRow("exact.png"), 0.3f);
}

TEST_F(Files, KeepMatteFieldsAndHostFormatsSelectWhatTheEffectTouches)
{
    constexpr int w = 48, h = 32;
    write("in.png", scene(w, h, 4), OIIO::TypeDesc::UINT8);
    const Picture in = read("in.png");
    ASSERT_EQ(run({"render", "in.png", "-o", "all.png"}).exitCode, 0);
    const Picture all = read("all.png");
    // --keep names channels taken unchanged; the others are the effect's.
    for (int kept = 0; kept < 3; ++kept) {
        const std::string name = std::string(1, "rgb"[kept]);
        ASSERT_EQ(run({"render", "in.png", "-o", "keep.png", "--keep", name}).exitCode, 0) << name;
        const Picture p = read("keep.png");
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                for (int c = 0; c < 3; ++c)
                    ASSERT_EQ(p.at(x, y, c), c == kept ? in.at(x, y, c) : all.at(x, y, c))
                        << "--keep " << name << " channel " << c << " at " << x << "," << y;
    }
    // --matte: where the input's alpha is 0 the input stands whole.
    Picture matted = scene(w, h, 4);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w / 2; ++x)
            matted.at(x, y, 3) = 0.0f;
    write("matted.png", matted, OIIO::TypeDesc::UINT8);
    const Picture matteIn = read("matted.png");
    ASSERT_EQ(run({"render", "matted.png", "-o", "matte.png", "--matte"}).exitCode, 0);
    const Picture m = read("matte.png");
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w / 2; ++x)
            for (int c = 0; c < 4; ++c)
                ASSERT_EQ(m.at(x, y, c), matteIn.at(x, y, c)) << x << "," << y;
    // --fields even: odd rows (counted from 0 at the top) stay as the input.
    ASSERT_EQ(run({"render", "in.png", "-o", "even.png", "--fields", "even"}).exitCode, 0);
    const Picture even = read("even.png");
    int changedEven = 0;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            if (y % 2)
                ASSERT_EQ(even.at(x, y, 0), in.at(x, y, 0)) << x << "," << y;
            else
                changedEven += even.at(x, y, 0) != in.at(x, y, 0);
        }
    EXPECT_GT(changedEven, 0);
    // Every RGBA host format gives the same picture within a step of 8 bits.
    for (const char* format : {"MFIF_RGBA_S2_14", "RGBA_FLOAT", "2"}) {
        ASSERT_EQ(run({"render", "in.png", "-o", "fmt.png", "--host-format", format}).exitCode, 0) << format;
        const Picture p = read("fmt.png");
        for (size_t i = 0; i < p.data.size(); ++i)
            ASSERT_NEAR(p.data[i], all.data[i], 2.5f / 255.0f) << format << " sample " << i;
    }
}

TEST_F(Files, CbYCrYFormatsCarryColoursThroughTheirOwnMatrix)
{
    // Flat patches 16 wide over a grey ramp. A colour encoded with one matrix
    // and decoded with the other leaves the gamut and is clipped by the
    // effect, so saturated colours show a wrong matrix, range or chroma
    // order; the ramp shows whether each pixel of a pair keeps its own luma.
    // The width is odd: the pairs need one column more, which the tool adds
    // and removes again.
    const float colours[6][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 1, 1}, {0.05f, 0.05f, 0.05f}, {0.9f, 0.5f, 0.1f}};
    constexpr int w = 95, h = 32;
    Picture in(w, h, 4);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            for (int c = 0; c < 3; ++c)
                in.at(x, y, c) = y < h / 2 ? colours[x / 16][c] : 0.1f + 0.8f * x / w;
            in.at(x, y, 3) = 0.25f;
        }
    write("patches.exr", in);  // colour as stored: the runs take it unassociated
    struct Case {
        const char* format;
        float step;       // of the format's luma
        bool alphaPlane;  // otherwise INPUT's alpha is kept as it was
    };
    const Case cases[] = {{"MFIF_CbYCrY_16", 1 / 219.0f, false},        {"MFIF_CbYCrY709A_24", 1 / 219.0f, true},
                          {"MFIF_CbYCrY709_S2_14", 1 / 16384.0f, false}, {"MFIF_CbYCrYA_S2_14", 1 / 16384.0f, true},
                          {"MFIF_CbYCrY_FLOAT", 0.0f, false},            {"MFIF_CbYCrYA_FLOAT", 0.0f, true}};
    for (const Case& c : cases) {
        // Two steps of the effect's 15 bits and of the format's chroma and luma each.
        const float bound = 2.0f / 32767.0f + 4.0f * c.step;
        // Colour kept from INPUT: what the effect decoded, encoded again.
        ToolRun r = run({"render", "patches.exr", "-o", "kept.exr", "--host-format", c.format, "--keep", "r,g,b",
                          "--unassociated-alpha"});
        ASSERT_EQ(r.exitCode, 0) << c.format << ": " << r.err;
        const Picture kept = read("kept.exr");
        for (int y = 0; y < h; y += 5)
            for (int x = 0; x < w; ++x)
                for (int ch = 0; ch < 3; ++ch)
                    ASSERT_NEAR(kept.at(x, y, ch), in.at(x, y, ch), bound) << c.format << " at " << x << "," << y;
        // Defocused, a radius of 2.4 pixels leaves the patches' centres as they were.
        r = run({"render", "patches.exr", "-o", "out.exr", "--host-format", c.format, "--radius-x", "0.05",
                 "--unassociated-alpha"});
        ASSERT_EQ(r.exitCode, 0) << c.format << ": " << r.err;
        const Picture p = read("out.exr");
        for (int k = 0; k < 6; ++k) {
            const int x = std::min(16 * k + 8, w - 4);
            for (int ch = 0; ch < 3; ++ch)
                EXPECT_NEAR(p.at(x, 6, ch), colours[k][ch], bound) << c.format << " patch " << k << " channel " << ch;
            EXPECT_NEAR(p.at(x, 6, 3), 0.25f, c.alphaPlane ? 1 / 255.0f + 2.0f / 32767.0f : 0.0f) << c.format;
        }
    }
}

}  // namespace

namespace {

TEST_F(Files, FastEnginesAgreeWithTheFaithfulOneWithinTheirSteps)
{
    // 16-bit in and out: the fast double engine within 1 step of 65535, the
    // single-precision one within 2 (plus the file's own rounding of 1 step).
    write("in.png", scene(96, 64, 3), OIIO::TypeDesc::UINT16);
    const char* engines[] = {"faithful", "fast", "fast-float"};
    const float bound[] = {0.0f, 2.0f, 3.0f};
    for (const char* engine : engines) {
        const ToolRun r = run({"render", "in.png", "-o", std::string(engine) + ".png", "--engine", engine,
                               "--radius-x", "0.1", "--bright-emphasis", "8"});
        ASSERT_EQ(r.exitCode, 0) << engine << ": " << r.err;
        EXPECT_EQ(r.err.find("WARN"), std::string::npos) << r.err;
    }
    const Picture faithful = read("faithful.png");
    for (int e = 1; e < 3; ++e) {
        const Picture other = read(std::string(engines[e]) + ".png");
        float worst = 0.0f;
        for (size_t i = 0; i < faithful.data.size(); ++i)
            worst = std::max(worst, std::fabs(other.data[i] - faithful.data[i]) * 65535.0f);
        EXPECT_LE(worst, bound[e]) << engines[e];
        if (e == 2) {
            EXPECT_GT(worst, 0.0f) << "single precision cannot match to the last bit: the engine was not switched";
        }
    }
}

}  // namespace
