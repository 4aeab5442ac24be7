// lumenveil render --depth and lumenveil focus: the depth-of-field effect
// through the tool, its circle-of-confusion picture against the thin-lens
// rule, and bad depth input refused with nothing written.
#include <algorithm>
#include <cmath>
#include <fstream>

#include "tool_fixture.h"

namespace {

class Depth : public ToolTest {
protected:
    static constexpr int W = 40, H = 24;
    void SetUp() override
    {
        ToolTest::SetUp();
        Picture frame(W, H, 3);
        for (int y = 0; y < H; ++y)
            for (int x = 0; x < W; ++x)
                for (int c = 0; c < 3; ++c)
                    frame.at(x, y, c) = ((x * 7 + y * 3 + c * 5) % 11) / 10.0f;
        write("in.exr", frame);
        Picture depth(W, H, 1);
        for (int y = 0; y < H; ++y)
            for (int x = 0; x < W; ++x)
                depth.at(x, y, 0) = 1.0f + x * 0.25f;  // 1 m to 10.75 m
        write("z.exr", depth);
        Picture flat(W, H, 1);
        std::fill(flat.data.begin(), flat.data.end(), 3.2f);
        write("flat.exr", flat);
        // A CG render's layers: the depth in a channel named depth.Z.
        std::vector<float> layered(W * H * 2, 0.5f);
        for (int i = 0; i < W * H; ++i)
            layered[i * 2 + 1] = depth.data[i];
        OIIO::ImageSpec layout(W, H, 2, OIIO::TypeDesc::FLOAT);
        layout.channelnames = {"R", "depth.Z"};
        auto out = OIIO::ImageOutput::create(path("layered.exr"));
        ASSERT_TRUE(out && out->open(path("layered.exr"), layout) && out->write_image(OIIO::TypeDesc::FLOAT,
                                                                                       layered.data()));
        out->close();
        // A CG render: colour and depth in one file, R G B Z.
        std::vector<float> render(W * H * 4);
        for (int i = 0; i < W * H; ++i) {
            std::copy(&frame.data[i * 3], &frame.data[i * 3] + 3, &render[i * 4]);
            render[i * 4 + 3] = depth.data[i];
        }
        OIIO::ImageSpec renderSpec(W, H, 4, OIIO::TypeDesc::FLOAT);
        renderSpec.channelnames = {"R", "G", "B", "Z"};
        renderSpec.alpha_channel = -1;
        out = OIIO::ImageOutput::create(path("render.exr"));
        ASSERT_TRUE(out && out->open(path("render.exr"), renderSpec) &&
                    out->write_image(OIIO::TypeDesc::FLOAT, render.data()));
        out->close();
        write("small.exr", Picture(W - 1, H, 1));
    }
    // r_inf of the thin lens in pixels: f^2 / (N (zf - f)) mm on the sensor.
    static double radiusAtInfinity(double n, double f, double sensor, double focusMetres)
    {
        return f * f / (n * (focusMetres * 1000.0 - f)) / sensor * W;
    }
};

TEST_F(Depth, FocusEverywhereGivesTheFrameBackAndTheCocFollowsTheThinLens)
{
    ToolRun r = run({"render", "in.exr", "-o", "same.exr", "--depth", "flat.exr", "--focus", "3.2", "--f-stop", "2",
                     "--focal-length", "50", "--sensor-width", "36", "--bright-emphasis", "1", "-q"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const Picture in = read("in.exr"), same = read("same.exr");
    for (size_t i = 0; i < in.data.size(); ++i)
        ASSERT_NEAR(same.data[i], in.data[i], 2.0 / 32767) << i;

    r = run({"render", "in.exr", "-o", "out.exr", "--depth", "z.exr", "--focus", "3.2", "--f-stop", "2",
             "--focal-length", "50", "--sensor-width", "36", "--max-radius", "0.3", "--coc", "coc.exr", "-q"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const Picture coc = read("coc.exr");
    const double rInf = radiusAtInfinity(2.0, 50.0, 36.0, 3.2);
    for (int x = 0; x < W; ++x) {
        const double z = 1.0 + x * 0.25;
        EXPECT_NEAR(coc.at(x, H / 2, 0), rInf * std::fabs(z - 3.2) / z, 1e-4) << x;
    }
}

TEST_F(Depth, DepthFromANamedChannelAndTheFocusCommand)
{
    ToolRun r = run({"render", "in.exr", "-o", "a.exr", "--depth", "z.exr", "--focus", "2", "--radius-infinity",
                     "0.1", "-q"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    r = run({"render", "in.exr", "-o", "b.exr", "--depth", "layered.exr", "--depth-channel", "Z", "--focus", "2",
             "--radius-infinity", "0.1", "-q"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(read("a.exr").data, read("b.exr").data);
    // The depth from a channel of INPUT itself.
    r = run({"render", "render.exr", "-o", "c.exr", "--depth-channel", "Z", "--focus", "2", "--radius-infinity", "0.1",
             "-q"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(read("a.exr").data, read("c.exr").data);
    // Pixel 12 is at 4 m: r = 0.1 x 0.5 x 40 x |4 - 2| / 4 = 1 px behind the focus.
    r = run({"focus", "in.exr", "--depth", "z.exr", "--at", "12,5", "--focus", "2", "--radius-infinity", "0.1"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_NE(r.out.find("depth 4"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("blur radius 1.00 px behind the focus"), std::string::npos) << r.out;
}

// Depth maps follow the frame pattern, the focus follows its keys, and a
// saved preset carries the depth values: each circle-of-confusion picture
// against r_inf |z - zf| / z, with r_inf = 0.1 x 0.5 x 40 = 2 px, clamped to
// the maximum of 0.3 x 0.5 x 40 = 6 px.
TEST_F(Depth, SequencesKeysAndPresetsAsForThePlainEffect)
{
    const Picture frame = read("in.exr"), ramp = read("z.exr"), flat = read("flat.exr");
    for (int f = 0; f < 3; ++f)
        write("in." + std::to_string(f) + ".exr", frame);
    write("z.0.exr", flat);
    write("z.1.exr", ramp);
    write("z.2.exr", ramp);
    const double rInf = 0.1 * 0.5 * W, most = 0.3 * 0.5 * W;
    auto expectCoc = [&](const std::string& name, const Picture& depth, double focus) {
        const Picture coc = read(name);
        for (int x = 0; x < W; ++x) {
            const double z = depth.at(x, H / 2, 0);
            EXPECT_NEAR(coc.at(x, H / 2, 0), std::min(rInf * std::fabs(z - focus) / z, most), 1e-4) << name << " x " << x;
        }
    };
    // Frame 0's depth is at the focus everywhere, frames 1 and 2 a ramp; the
    // focus goes from 3.2 m at frame 0 to 5.2 m at frame 2, 4.2 m at frame 1.
    ToolRun r = run({"render", "in.%d.exr", "-o", "out.%d.exr", "--frames", "0-2", "--depth", "z.%d.exr",
                     "--radius-infinity", "0.1", "--max-radius", "0.3", "--key", "focus=0:3.2", "--key",
                     "focus=2:5.2", "--rate", "1", "--coc", "coc.%d.exr", "--save-preset", "depth.json", "-q"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    expectCoc("coc.0.exr", flat, 3.2);
    expectCoc("coc.1.exr", ramp, 4.2);
    expectCoc("coc.2.exr", ramp, 5.2);
    // The preset holds the radius, the maximum and the keys.
    r = run({"render", "in.1.exr", "-o", "again.exr", "--depth", "z.1.exr", "--preset", "depth.json", "--coc",
             "again-coc.exr", "-q"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    expectCoc("again-coc.exr", ramp, 3.2);  // a still is frame 0: the first key's focus
}

TEST_F(Depth, BadDepthInputIsOneClearErrorAndWritesNothing)
{
    std::ofstream(path("garbage.exr")) << "not a picture";
    const std::vector<std::string> before = files();
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{"--depth", "small.exr"}, "must be the same size"},
        {{"--depth", "layered.exr"}, "name the depth channel with --depth-channel"},
        {{"--depth", "layered.exr", "--depth-channel", "depth"}, "no channel named depth"},
        {{"--depth", "garbage.exr"}, "cannot read the depth map"},
        {{"--depth", "missing.exr"}, "cannot read the depth map"},
    };
    for (const auto& [options, message] : cases) {
        std::vector<std::string> args = {"render", "in.exr", "-o", "out.exr", "--coc", "coc.exr", "-q"};
        args.insert(args.end(), options.begin(), options.end());
        const ToolRun r = run(args);
        EXPECT_EQ(r.exitCode, 1) << options[1];
        EXPECT_NE(r.err.find(message), std::string::npos) << r.err;
        EXPECT_EQ(files(), before) << options[1];
    }
    const ToolRun usage = run({"render", "in.exr", "-o", "out.exr", "--focus", "2"});
    EXPECT_EQ(usage.exitCode, 2);
    EXPECT_NE(usage.err.find("--focus needs --depth"), std::string::npos) << usage.err;
}

}  // namespace
