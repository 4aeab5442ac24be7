// Values a render would take and ignore are refused before anything is
// written: a compression or a sample depth the output's format has not, keys
// between frames, an overlay of a shape that draws none. A matte from a file
// without alpha is a warning.
#include <algorithm>
#include <filesystem>
#include <fstream>

#include <nlohmann/json.hpp>

#include "tool_fixture.h"

namespace {

class Guards : public ToolTest {
protected:
    void SetUp() override
    {
        ToolTest::SetUp();
        write("in.png", dot(32, 24, 16, 12), OIIO::TypeDesc::UINT8);
        write("in.exr", dot(32, 24, 16, 12));
        before = files();
    }
    // A refused run: its exit code, a message holding every one of
    // `phrases` on one line, and no file made.
    void expectRefused(const std::vector<std::string>& args, int exitCode, const std::vector<std::string>& phrases)
    {
        const ToolRun r = run(args);
        std::string command;
        for (const std::string& a : args)
            command += a + " ";
        EXPECT_EQ(r.exitCode, exitCode) << command << "\n" << r.err;
        const std::string firstLine = r.err.substr(0, r.err.find('\n'));
        for (const std::string& phrase : phrases)
            EXPECT_NE(firstLine.find(phrase), std::string::npos) << command << "\nstderr: " << r.err;
        EXPECT_EQ(files(), before) << command;
    }
    // The compression the file's reader reports.
    std::string compressionOf(const std::string& name) const
    {
        auto in = OIIO::ImageInput::create(path(name));
        OIIO::ImageSpec layout;
        const bool opened = in && in->open(path(name), layout);
        EXPECT_TRUE(opened) << name;
        return opened ? layout.get_string_attribute("compression") : "";
    }
    long sizeOf(const std::string& name) const { return long(std::filesystem::file_size(path(name))); }
    std::vector<std::string> before;
};

TEST_F(Guards, CompressionsTheOutputsFormatDoesNotTakeAreRefusedNamingThoseItTakes)
{
    // PNG stores deflate streams only (zlib levels), JPEG its own quality,
    // DPX as written; EXR's piz and TIFF's lzw are theirs alone.
    expectRefused({"render", "in.png", "-o", "out.png", "--compression", "piz"}, 2,
                  {"\"piz\" is not a compression of png files", "none or zip (1 to 9)", "OUTPUT out.png"});
    expectRefused({"render", "in.png", "-o", "out.png", "--compression", "lzw"}, 2, {"not a compression of png"});
    expectRefused({"render", "in.png", "-o", "out.jpg", "--compression", "zip:3"}, 2,
                  {"not a compression of jpeg files", "jpeg (1 to 100)"});
    expectRefused({"render", "in.png", "-o", "out.jpg", "--compression", "dwaa"}, 2, {"not a compression of jpeg"});
    expectRefused({"render", "in.png", "-o", "out.tif", "--compression", "piz"}, 2,
                  {"not a compression of tiff files", "lzw", "packbits"});
    expectRefused({"render", "in.png", "-o", "out.exr", "--compression", "lzw"}, 2,
                  {"not a compression of openexr files", "piz", "dwaa (1 to 1000)"});
    expectRefused({"render", "in.png", "-o", "out.dpx", "--compression", "none"}, 2,
                  {"dpx files have no choice of compression"});
    // The compression applies to the overlay picture too, in its own format.
    expectRefused({"render", "in.png", "-o", "out.exr", "--overlay", "over.png", "--shape", "image", "--compression",
                   "piz"},
                  2, {"not a compression of png files", "--overlay over.png"});
    // Taken, and each does what its name says.
    write("black.png", Picture(64, 64, 3), OIIO::TypeDesc::UINT8);
    for (const char* level : {"none", "zip:9"})
        ASSERT_EQ(run({"render", "black.png", "-o", std::string(level) + ".png", "--compression", level}).exitCode, 0)
            << level;
    EXPECT_GE(sizeOf("none.png"), 64 * 64 * 3);  // stored: a byte for every sample
    EXPECT_LT(sizeOf("zip:9.png"), 64 * 64 * 3 / 10);
    // TIFF's JPEG holds 8-bit samples (baseline JPEG): a 16-bit input needs --depth 8.
    write("in16.tif", dot(32, 24, 16, 12), OIIO::TypeDesc::UINT16);
    before = files();
    expectRefused({"render", "in16.tif", "-o", "out.tif", "--compression", "jpeg:90"}, 2,
                  {"tiff files take jpeg for 8-bit samples only, and these are 16 (give --depth 8)"});
    expectRefused({"render", "in.png", "-o", "out.tif", "--compression", "jpeg", "--depth", "16"}, 2,
                  {"for 8-bit samples only"});
    ASSERT_EQ(run({"render", "in16.tif", "-o", "jpeg.tif", "--compression", "jpeg:90", "--depth", "8"}).exitCode, 0);
    EXPECT_EQ(compressionOf("jpeg.tif"), "jpeg");
    ASSERT_EQ(run({"render", "in.png", "-o", "lzw.tif", "--compression", "lzw"}).exitCode, 0);
    EXPECT_EQ(compressionOf("lzw.tif"), "lzw");
    ASSERT_EQ(run({"render", "in.exr", "-o", "piz.exr", "--compression", "piz"}).exitCode, 0);
    EXPECT_EQ(compressionOf("piz.exr"), "piz");
}

TEST_F(Guards, DepthsTheOutputsFormatCannotHoldAreRefusedNamingThoseItHolds)
{
    // PNG holds 8 or 16 bits, JPEG 8, OpenEXR half and 32-bit float.
    expectRefused({"render", "in.exr", "-o", "out.png", "--depth", "float"}, 2,
                  {"--depth float: png files hold 8 or 16, not float", "OUTPUT out.png"});
    expectRefused({"render", "in.exr", "-o", "out.png", "--depth", "half"}, 2, {"png files hold 8 or 16"});
    expectRefused({"render", "in.png", "-o", "out.jpg", "--depth", "16"}, 2, {"jpeg files hold 8, not 16"});
    expectRefused({"render", "in.png", "-o", "out.exr", "--depth", "8"}, 2, {"openexr files hold half or float"});
    expectRefused({"render", "in.png", "-o", "out.exr", "--depth", "16"}, 2, {"openexr files hold half or float"});
    expectRefused({"render", "in.png", "-o", "out.tif", "--overlay", "over.jpg", "--shape", "image", "--depth", "16"},
                  2, {"jpeg files hold 8", "--overlay over.jpg"});
    // What the formats hold is written at that depth.
    const struct {
        const char* file;
        const char* depth;
        OIIO::TypeDesc stored;
    } held[] = {{"a.png", "8", OIIO::TypeDesc::UINT8},   {"b.png", "16", OIIO::TypeDesc::UINT16},
                {"c.jpg", "8", OIIO::TypeDesc::UINT8},   {"d.tif", "16", OIIO::TypeDesc::UINT16},
                {"e.tif", "float", OIIO::TypeDesc::FLOAT}, {"f.exr", "half", OIIO::TypeDesc::HALF},
                {"g.exr", "float", OIIO::TypeDesc::FLOAT}, {"h.dpx", "16", OIIO::TypeDesc::UINT16}};
    for (const auto& h : held) {
        const ToolRun r = run({"render", "in.exr", "-o", h.file, "--depth", h.depth});
        ASSERT_EQ(r.exitCode, 0) << h.file << " " << r.err;
        EXPECT_EQ(read(h.file).format, h.stored) << h.file;
    }
    // Without --depth a float input goes to PNG at the deepest it holds, 16 bits.
    ASSERT_EQ(run({"render", "in.exr", "-o", "deep.png"}).exitCode, 0);
    EXPECT_EQ(read("deep.png").format, OIIO::TypeDesc::UINT16);
}

TEST_F(Guards, KeysOffAFrameAreRefusedFromTheCommandLineAndFromPresets)
{
    expectRefused({"render", "in.png", "-o", "out.png", "--key", "radius-x=2.5:0.1"}, 2,
                  {"--key radius-x=2.5:0.1", "frame 2.5 is between frames 2 and 3"});
    expectRefused({"render", "in.png", "-o", "out.png", "--key", "radius-x=-1:0.1"}, 2,
                  {"--key radius-x=-1:0.1", "frame -1 is before frame 0"});
    // A preset's key times are seconds: frame 3 at 25 frames a second is
    // 0.12 s, frame 2.88 at 24.
    ASSERT_EQ(run({"render", "--save-preset", "look.json", "--rate", "25", "--key", "radius-x=3:0.1"}).exitCode, 0);
    before = files();
    expectRefused({"render", "in.png", "-o", "out.png", "--preset", "look.json", "--rate", "24"}, 1,
                  {"preset look.json refused", "RadiusX has a key at 0.12 s", "frame 2.88 is between frames 2 and 3"});
    const ToolRun same = run({"render", "in.png", "-o", "out.png", "--preset", "look.json", "--rate", "25"});
    EXPECT_EQ(same.exitCode, 0) << same.err;
    std::filesystem::remove(path("out.png"));
    // A negative time, written by hand.
    nlohmann::json preset = nlohmann::json::parse(bytes("look.json"));
    for (auto& item : preset["properties"])
        if (item["name"] == "RadiusX")
            item["keys"] = {{-0.04, 0.1}};
    std::ofstream(path("look.json")) << preset.dump(2);
    before = files();
    expectRefused({"render", "in.png", "-o", "out.png", "--preset", "look.json"}, 1,
                  {"RadiusX has a key at -0.04 s", "frame -1 is before frame 0"});
}

TEST_F(Guards, AnOverlayIsRefusedForShapesThatDrawNone)
{
    // Only the Image shape has a cut-out whose centre and radii the viewer
    // shows; the circle is the default.
    for (const char* shape : {"circle", "ellipse", "polygon"})
        expectRefused({"render", "in.png", "-o", "out.png", "--overlay", "over.png", "--shape", shape}, 2,
                      {"--overlay: the shape draws no overlay", "only --shape image does"});
    expectRefused({"render", "in.png", "-o", "out.png", "--overlay", "over.png"}, 2, {"only --shape image"});
    // A shape keyed to Image on one frame of the run draws it there.
    for (int f = 0; f < 3; ++f)
        write("s." + std::to_string(f) + ".png", dot(16, 12, 8, 6), OIIO::TypeDesc::UINT8);
    before = files();
    expectRefused({"render", "s.@.png", "-o", "o.@.png", "--frames", "0-1", "--overlay", "v.@.png", "--key",
                   "shape=0:circle", "--key", "shape=2:image"},
                  2, {"no overlay on any frame"});
    const ToolRun keyed = run({"render", "s.@.png", "-o", "o.@.png", "--frames", "0-2", "--overlay", "v.@.png",
                               "--key", "shape=0:circle", "--key", "shape=2:image"});
    EXPECT_EQ(keyed.exitCode, 0) << keyed.err;
    EXPECT_TRUE(std::filesystem::exists(path("v.2.png")));
}

TEST_F(Guards, AMatteFromAFileWithoutAlphaWarnsInOneLineAndRenders)
{
    const ToolRun plain = run({"render", "in.png", "-o", "out.png", "--matte"});
    EXPECT_EQ(plain.exitCode, 0) << plain.err;
    EXPECT_EQ(std::count(plain.err.begin(), plain.err.end(), '\n'), 1) << plain.err;
    EXPECT_NE(plain.err.find("warning: --matte: in.png has no alpha channel"), std::string::npos) << plain.err;
    EXPECT_EQ(read("out.png").width, 32);
    // With alpha there is nothing to say.
    Picture withAlpha(32, 24, 4);
    write("alpha.png", withAlpha, OIIO::TypeDesc::UINT8);
    const ToolRun matte = run({"render", "alpha.png", "-o", "matte.png", "--matte"});
    EXPECT_EQ(matte.exitCode, 0) << matte.err;
    EXPECT_EQ(matte.err, "");
}

}  // namespace
