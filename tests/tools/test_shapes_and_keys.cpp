// One bright dot through each aperture, keyed radii over a sequence, and the
// preset round trip. A dot's bokeh has the radius RadiusX x 0.5 x frame width.
#include <cmath>

#include <algorithm>

#include "tool_fixture.h"

namespace {

constexpr int W = 80, H = 48, CX = 40, CY = 24;  // the frame is wider than high: radii follow the width
constexpr double kPi = 3.14159265358979;

class Shapes : public ToolTest {
protected:
    void SetUp() override
    {
        ToolTest::SetUp();
        write("dot.exr", dot(W, H, CX, CY));
    }
    // The dot rendered with `options` (linear emphasis), and its lit extent at
    // 30% of the brightest pixel.
    LitExtent bokeh(std::vector<std::string> options, const std::string& output = "out.exr")
    {
        options.insert(options.begin(), {"render", "dot.exr", "-o", output, "--bright-emphasis", "1"});
        const ToolRun r = run(options);
        EXPECT_EQ(r.exitCode, 0) << r.err;
        const Picture p = read(output);
        float brightest = 0;
        for (int y = 0; y < p.height; ++y)
            for (int x = 0; x < p.width; ++x)
                brightest = std::max(brightest, p.at(x, y, 0));
        EXPECT_GT(brightest, 0.0f);
        return litExtent(p, CX, CY, 0.3f * brightest);
    }
};

TEST_F(Shapes, EachApertureGivesItsShapeAtRadiusXHalfTheWidth)
{
    // Circle: 0.2 x 0.5 x 80 = 8 px each way (from the height it would be 4.8).
    const double r = 0.2 * 0.5 * W;
    const LitExtent circle = bokeh({"--radius-x", "0.2"});
    EXPECT_NEAR(circle.across, 2 * r, 2);
    EXPECT_NEAR(circle.down, 2 * r, 2);
    EXPECT_NEAR(circle.area, kPi * r * r, 0.15 * kPi * r * r);

    // Ellipse: RadiusY sets the vertical radius, also a fraction of the width.
    const double ry = 0.1 * 0.5 * W;
    const LitExtent ellipse = bokeh({"--shape", "ellipse", "--radius-x", "0.2", "--radius-y", "0.1"});
    EXPECT_NEAR(ellipse.across, 2 * r, 2);
    EXPECT_NEAR(ellipse.down, 2 * ry, 2);

    // Polygon with four sides: a square inside the circle, area 2 r^2.
    const LitExtent square = bokeh({"--shape", "polygon", "--sides", "4", "--radius-x", "0.2"});
    EXPECT_NEAR(square.area, 2 * r * r, 0.15 * 2 * r * r);
    // Match Radii off lets RadiusY in; on, it is ignored.
    const LitExtent unmatched =
        bokeh({"--shape", "polygon", "--sides", "4", "--radius-x", "0.2", "--radius-y", "0.1", "--no-match-radii"});
    EXPECT_NEAR(unmatched.area, 2 * r * ry, 0.2 * 2 * r * ry);
    const LitExtent matched = bokeh({"--shape", "polygon", "--sides", "4", "--radius-x", "0.2", "--radius-y", "0.1"});
    EXPECT_EQ(matched.area, square.area);
}

TEST_F(Shapes, ImageApertureIsCutFromTheSpreadPicture)
{
    // A 9 x 9 white square at the centre of the Spread picture; the cut-out
    // (radii 0.3 and 0.35 of the width: 12 and 14 px) holds all of it.
    Picture spread(W, H, 3);
    for (int y = CY - 4; y <= CY + 4; ++y)
        for (int x = CX - 4; x <= CX + 4; ++x)
            for (int c = 0; c < 3; ++c)
                spread.at(x, y, c) = 1.0f;
    write("spread.png", spread, OIIO::TypeDesc::UINT8);
    const LitExtent cut = bokeh({"--shape", "image", "--spread", "spread.png", "--radius-psf1", "0.3",
                                 "--radius-psf2", "0.35"});
    EXPECT_NEAR(cut.across, 9, 1);
    EXPECT_NEAR(cut.down, 9, 1);
    EXPECT_NEAR(cut.area, 81, 12);
    // Without a Spread the aperture is cut from the input itself: the dot.
    const LitExtent self = bokeh({"--shape", "image", "--radius-psf1", "0.3", "--radius-psf2", "0.35"});
    EXPECT_LE(self.area, 4);
}

TEST_F(Shapes, OverlayDrawsTheCrosshairAtTheCutOutCentre)
{
    // Centre (0.5, 0.75) of 64 x 48: the crosshair's strokes run 10 to 25 px
    // either side of (32, 36), lines one pixel wide on a pixel boundary, so
    // half in each of the two pixels beside it; its handle is grey.
    write("black.png", Picture(64, 48, 3), OIIO::TypeDesc::UINT8);
    const ToolRun r = run({"render", "black.png", "-o", "out.png", "--shape", "image", "--centre", "0.5,0.75",
                           "--overlay", "over.png"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const Picture over = read("over.png");
    const int px = 32, py = 36;
    for (int c = 0; c < 3; ++c) {
        EXPECT_NEAR(over.at(px + 17, py - 1, c) + over.at(px + 17, py, c), 1.0f, 0.02f);
        EXPECT_NEAR(over.at(px - 17, py - 1, c) + over.at(px - 17, py, c), 1.0f, 0.02f);
        EXPECT_NEAR(over.at(px - 1, py - 17, c) + over.at(px, py - 17, c), 1.0f, 0.02f);
        EXPECT_NEAR(over.at(px, py, c), 0.5f, 0.02f);
        EXPECT_EQ(over.at(px + 17, 48 - 1 - py, c), 0.0f);  // not mirrored
    }
}

TEST_F(Shapes, PointSpreadPictureIsTheApertureAtItsRadius)
{
    // RadiusX 0.2 of an 80-wide frame: a disc of radius 8 px around the middle
    // of the picture, area pi x 64.
    write("dot.png", dot(W, H, CX, CY), OIIO::TypeDesc::UINT8);
    const ToolRun r = run({"render", "dot.png", "-o", "out.png", "--radius-x", "0.2", "--psf", "psf.png"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const Picture psf = read("psf.png");
    ASSERT_EQ(psf.width, W);
    ASSERT_EQ(psf.height, H);
    const LitExtent disc = litExtent(psf, CX, CY, 0.5f);
    EXPECT_NEAR(disc.across, 16, 1);
    EXPECT_NEAR(disc.down, 16, 1);
    EXPECT_NEAR(disc.area, 3.14159 * 64, 10);
}

TEST_F(Shapes, KeyedRadiusGrowsFrameByFrame)
{
    for (int f = 0; f < 5; ++f)
        write("in." + std::to_string(f) + ".exr", dot(W, H, CX, CY));
    // Keys at frames 0 and 4 (at 10 frames a second): RadiusX 0.1 to 0.3.
    const ToolRun r = run({"render", "in.@.exr", "-o", "out.%03d.exr", "--frames", "0-4", "--rate", "10",
                           "--bright-emphasis", "1", "--key", "radius-x=0:0.1", "--key", "RadiusX=4:0.3"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    for (int f = 0; f < 5; ++f) {
        const Picture p = read("out.00" + std::to_string(f) + ".exr");
        float brightest = 0;
        for (float v : p.data)
            brightest = std::max(brightest, v);
        const double radius = (0.1 + (0.3 - 0.1) * f / 4) * 0.5 * W;
        EXPECT_NEAR(litExtent(p, CX, CY, 0.3f * brightest).across, 2 * radius, 2) << "frame " << f;
    }
}

TEST_F(Shapes, PresetRoundTripRendersTheSameBytes)
{
    const std::vector<std::string> options = {"--shape", "polygon", "--sides", "5", "--rotation", "12",
                                              "--centre", "0.25,0.75", "--key", "radius-x=0:0.15"};
    std::vector<std::string> first = {"render", "dot.exr", "-o", "a.png", "--save-preset", "look.json"};
    first.insert(first.end(), options.begin(), options.end());
    ASSERT_EQ(run(first).exitCode, 0);
    const ToolRun second = run({"render", "dot.exr", "-o", "b.png", "--preset", "look.json"});
    ASSERT_EQ(second.exitCode, 0) << second.err;
    EXPECT_EQ(bytes("a.png"), bytes("b.png"));
    const std::string preset = bytes("look.json");
    EXPECT_NE(preset.find("{E4203B7E-F356-49EF-B070-9B77E72C722E}"), std::string::npos);  // Sides
    // The preset holds the values: a render with the defaults differs.
    ASSERT_EQ(run({"render", "dot.exr", "-o", "c.png"}).exitCode, 0);
    EXPECT_NE(bytes("a.png"), bytes("c.png"));
    // Options after a preset override it.
    ASSERT_EQ(run({"render", "dot.exr", "-o", "d.png", "--preset", "look.json", "--sides", "6"}).exitCode, 0);
    EXPECT_NE(bytes("a.png"), bytes("d.png"));
    // A preset alone can be saved, with no input.
    ASSERT_EQ(run({"render", "--save-preset", "only.json", "--sides", "7"}).exitCode, 0);
    EXPECT_NE(bytes("only.json").find("\"value\": 7"), std::string::npos) << bytes("only.json");
}

}  // namespace
