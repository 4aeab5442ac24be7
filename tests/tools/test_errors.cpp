// Bad input: one clear message, exit 2 for usage and 1 for failures, and
// nothing written: no output, no temporary file, an existing output kept.
#include <sys/stat.h>
#include <sys/wait.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "tool_fixture.h"

namespace {

class Errors : public ToolTest {
protected:
    void SetUp() override
    {
        ToolTest::SetUp();
        write("in.png", dot(32, 24, 16, 12), OIIO::TypeDesc::UINT8);
        write("small.png", dot(16, 24, 8, 12), OIIO::TypeDesc::UINT8);
        Picture five(8, 8, 5);
        write("five.tif", five, OIIO::TypeDesc::UINT8);
        std::ofstream(path("garbage.png")) << "this is not a picture";
        std::ofstream(path("bad.json")) << "{ \"not\": ";
        std::ofstream(path("keep.png")) << "an older result";
        before = files();
    }
    // Runs a failing command; checks the exit code, the message, and that no
    // file came or went and keep.png is as it was.
    void expectRefused(const std::vector<std::string>& args, int exitCode, const std::string& message)
    {
        const ToolRun r = run(args);
        std::string command;
        for (const std::string& a : args)
            command += a + " ";
        EXPECT_EQ(r.exitCode, exitCode) << command << "\n" << r.err;
        EXPECT_NE(r.err.find(message), std::string::npos) << command << "\nstderr: " << r.err;
        // One line; a usage error may add where the help is.
        EXPECT_LE(std::count(r.err.begin(), r.err.end(), '\n'), exitCode == 2 ? 2 : 1) << r.err;
        EXPECT_EQ(files(), before) << command;
        EXPECT_EQ(bytes("keep.png"), "an older result") << command;
    }
    std::vector<std::string> before;
};

TEST_F(Errors, UsageErrorsExitTwo)
{
    expectRefused({"render", "in.png", "-o", "keep.png", "--radius-x", "wide"}, 2, "\"wide\" is not a number");
    expectRefused({"render", "in.png", "-o", "keep.png", "--radius-x", "0.5"}, 2, "0.5 is outside 0 to 0.3");
    expectRefused({"render", "in.png", "-o", "keep.png", "--radius-psf1", "0"}, 2, "outside 0.001 to 1");
    expectRefused({"render", "in.png", "-o", "keep.png", "--sides", "21"}, 2, "21 is outside 3 to 20");
    expectRefused({"render", "in.png", "-o", "keep.png", "--sides", "4.5"}, 2, "not a whole number");
    expectRefused({"render", "in.png", "-o", "keep.png", "--shape", "hexagon"}, 2, "circle|ellipse|polygon|image");
    expectRefused({"render", "in.png", "-o", "keep.png", "--centre", "0.5"}, 2, "is not X,Y");
    expectRefused({"render", "in.png", "-o", "keep.png", "--centre", "0.5,1.5"}, 2, "outside 0 to 1");
    expectRefused({"render", "in.png", "-o", "keep.png", "--key", "radius-x=3"}, 2, "NAME=FRAME:VALUE");
    expectRefused({"render", "in.png", "-o", "keep.png", "--key", "depth=0:1"}, 2, "no parameter named");
    expectRefused({"render", "in.png", "-o", "keep.png", "--key", "match-radii=0:1"}, 2, "cannot be animated");
    expectRefused({"render", "in.png", "-o", "keep.png", "--key", "radius-x=0:0.9"}, 2, "outside 0 to 0.3");
    expectRefused({"render", "in.png", "-o", "keep.png", "--frames", "0-3"}, 2, "--frames needs a sequence");
    expectRefused({"render", "in.png", "-o", "keep.png", "--compression", "zip:fast"}, 2, "level of zip runs from 1 to 9");
    expectRefused({"render", "in.png", "-o", "keep.png", "--compression", "fast"}, 2, "is not a compression");
    expectRefused({"render", "in.%04d.png", "-o", "out.png", "--frames", "0-3"}, 2, "OUTPUT needs a frame number");
    expectRefused({"render", "in.%04d.png", "-o", "o.%04d.png", "--frames", "0-3", "--psf", "p.png"}, 2,
                  "--psf needs a frame number");
    expectRefused({"render", "in.%04d.png", "-o", "out.%04d.png", "--frames", "3-1"}, 2, "ends before it starts");
    expectRefused({"render", "in.%04d.png", "-o", "out.%04d.png"}, 2, "--frames A-B");
    expectRefused({"render", "in.png", "-o", "keep.png", "--host-format", "MFIF_CbYCrY709A_FLOAT"}, 2,
                   "MFIF_CbYCrY709A_FLOAT is not available: the effect does not take this format");
    expectRefused({"render", "in.png", "-o", "keep.png", "--host-format", "MFIF_NOPE"}, 2, "unknown format");
    expectRefused({"render", "in.png", "-o", "keep.png", "--keep", "q"}, 2, "not a channel");
    expectRefused({"render", "in.png", "-o", "keep.png", "--rate", "0"}, 2, "--rate");
    expectRefused({"render", "in.png", "-o", "keep.png", "--engine", "warp"}, 2, "warp");
    expectRefused({"render", "in.png", "-o", "keep.png", "--no-such-option"}, 2, "no-such-option");
    // A mistyped option: the nearest of the command's, within a third of its letters.
    expectRefused({"render", "in.png", "-o", "keep.png", "--radus-x", "0.1"}, 2, "(did you mean --radius-x?)");
    expectRefused({"render", "in.png", "-o", "keep.png", "--bright-emphsis=3"}, 2, "(did you mean --bright-emphasis?)");
    expectRefused({"render", "in.png", "-o", "keep.png", "--ouptut", "x.png"}, 2, "(did you mean --output?)");
    EXPECT_EQ(run({"render", "in.png", "-o", "keep.png", "--no-such-option"}).err.find("did you mean"), std::string::npos);
    expectRefused({"render", "in.png"}, 2, "-o OUTPUT");
    expectRefused({}, 2, "subcommand");
}

TEST_F(Errors, FailuresExitOne)
{
    expectRefused({"render", "missing.png", "-o", "keep.png", "--save-preset", "p.json"}, 1,
                  "cannot read missing.png: no such file");
    expectRefused({"render", "garbage.png", "-o", "keep.png"}, 1, "cannot read garbage.png");
    expectRefused({"render", "five.tif", "-o", "keep.png"}, 1, "5 channels");
    expectRefused({"render", "in.png", "-o", "keep.png", "--spread", "small.png"}, 1, "must be the same size");
    expectRefused({"render", "in.png", "-o", "keep.png", "--spread", "missing.png"}, 1, "missing.png");
    expectRefused({"render", "in.png", "-o", "no/such/dir/out.png"}, 1, "cannot write no/such/dir/out.png");
    expectRefused({"render", "in.png", "-o", "keep.png", "--preset", "bad.json"}, 1, "preset bad.json refused");
    expectRefused({"render", "in.png", "-o", "keep.png", "--preset", "none.json"}, 1, "cannot read none.json");
    expectRefused({"--module", "no-module.so", "info"}, 1, "cannot load the effect module");
}

// The largest width whose transform fits at RadiusX `radius`: the frame and a
// margin of ceil(radius x 0.5 x width) + 1 on each side within 8192.
int largestWidth(double radius)
{
    auto fits = [radius](int w) {
        const int margin = int(std::ceil(float(radius * 0.5 * w))) + 1;
        return w + 2 * margin <= 8192;
    };
    int w = 8192;
    while (!fits(w))
        --w;
    return w;
}

TEST_F(Errors, FrameTooLargeForTheTransformSaysWhatFitsAndWhichEngineTakesIt)
{
    write("wide.png", Picture(8000, 4, 3), OIIO::TypeDesc::UINT8);
    write("wider.png", Picture(16000, 4, 3), OIIO::TypeDesc::UINT8);
    before = files();
    const int widest = largestWidth(0.1);
    const int margin = int(std::ceil(float(0.1 * 0.5 * widest))) + 1;
    // The square transform of 8000 + 2 x 401 is 16384, above 8192; the fast
    // engines size each side by itself: 8802 rounds up to 8820 = 2^2 3^2 5 7^2,
    // within their 16384.
    expectRefused({"render", "wide.png", "-o", "keep.png", "--radius-x", "0.1"}, 1,
                  "up to " + std::to_string(widest) + " wide and " + std::to_string(8192 - 2 * margin) +
                      " high work; --engine fast or fast-float takes it");
    EXPECT_EQ(run({"render", "wide.png", "-o", "wide-out.png", "--radius-x", "0.1", "--engine", "fast"}).exitCode, 0);
    std::filesystem::remove(path("wide-out.png"));
    // 16000 + 2 x 801 = 17602 is beyond every engine: no engine is named.
    const ToolRun r = run({"render", "wider.png", "-o", "keep.png", "--radius-x", "0.1", "--engine", "fast-float"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_NE(r.err.find("needs a transform of 17640, above the largest, 16384"), std::string::npos) << r.err;
    EXPECT_EQ(r.err.find("--engine"), std::string::npos) << r.err;
}

TEST_F(Errors, AnOutputThatIsAnInputIsRefusedUnlessAllowed)
{
    ASSERT_EQ(run({"render", "--save-preset", "p.json"}).exitCode, 0);
    before = files();
    expectRefused({"render", "in.png", "-o", "in.png"}, 2, "OUTPUT in.png is also an input");
    expectRefused({"render", "in.png", "-o", "./in.png"}, 2, "give --overwrite-input");
    expectRefused({"render", "in.png", "-o", "keep.png", "--psf", "small.png", "--spread", "small.png"}, 2,
                  "--psf small.png is also an input");
    expectRefused({"render", "in.png", "-o", "keep.png", "--preset", "p.json", "--save-preset", "p.json"}, 2,
                  "--save-preset p.json is also an input");
    // Renumbered onto itself: output frame 1 of a run over frames 0 and 1 is input frame 1.
    for (int f = 0; f < 3; ++f)
        write("s." + std::to_string(f) + ".png", dot(16, 12, 8, 6), OIIO::TypeDesc::UINT8);
    before = files();
    expectRefused({"render", "s.@.png", "-o", "s.@.png", "--frames", "0-1", "--renumber", "1"}, 2,
                  "OUTPUT s.1.png is also an input");
    // Allowed: the frame is replaced by its render.
    const std::string original = bytes("in.png");
    const ToolRun r = run({"render", "in.png", "-o", "in.png", "--overwrite-input"});
    EXPECT_EQ(r.exitCode, 0) << r.err;
    EXPECT_NE(bytes("in.png"), original);
}

TEST_F(Errors, NumbersPatternsAndLevelsTheToolCouldMisreadAreRefused)
{
    expectRefused({"render", "in.png", "-o", "keep.png", "--radius-x", "1e309"}, 2, "1e309 is beyond the range");
    expectRefused({"render", "in.png", "-o", "keep.png", "--host-format", "4294967297"}, 2, "unknown format");
    expectRefused({"render", "in.png", "-o", "keep.png", "--compression", "zip:0"}, 2, "zip runs from 1 to 9");
    expectRefused({"render", "in.png", "-o", "keep.png", "--compression", "zip:10"}, 2, "zip runs from 1 to 9");
    expectRefused({"render", "in.png", "-o", "keep.jpg", "--compression", "jpeg:101"}, 2, "jpeg runs from 1 to 100");
    expectRefused({"render", "in.png", "-o", "keep.tif", "--compression", "lzw:3"}, 2, "lzw takes no level");
    // printf's %4d pads with spaces, and widths beyond ten digits cannot be
    // frame numbers: each would put frames in wrong or shared files.
    for (const char* pattern : {"%4d", "%40d", "%040d", "%2147483648d", "###########"})
        expectRefused({"render", "in.png", "-o", std::string("out.") + pattern + ".png"}, 2, pattern);
    // Keys whose times (frame / rate) are beyond the doubles.
    expectRefused({"render", "in.png", "-o", "keep.png", "--rate", "1e-300", "--key", "radius-x=1e9:0.3"}, 2,
                  "beyond any time");
}

// An engine that cannot allocate its transform: a 7000 x 2 frame takes the
// faithful engine's square transform of 8192, 512 MiB a plane, beyond an
// address space of 2.5 GB. The sanitizers' shadow memory needs more than that.
TEST_F(Errors, ARenderTheEngineCannotAllocateFailsAndWritesNothing)
{
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "an address-space limit cannot be set under the address sanitizer";
#endif
    write("long.png", Picture(7000, 2, 3), OIIO::TypeDesc::UINT8);
    before = files();
    const std::string command = "cd " + directory + " && ulimit -v 2500000 && exec " LUMENVEIL_TOOL_PATH
                                " render long.png -o keep.png 2> err.txt";
    const int status = std::system(command.c_str());
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 1);
    const std::string err = bytes("err.txt");
    std::filesystem::remove(path("err.txt"));
    EXPECT_NE(err.find("could not allocate memory"), std::string::npos) << err;
    EXPECT_EQ(std::count(err.begin(), err.end(), '\n'), 1) << err;
    EXPECT_EQ(files(), before);
    EXPECT_EQ(bytes("keep.png"), "an older result");
}

}  // namespace

namespace {

// Noise, so that a cut anywhere in a file falls inside its pixels.
Picture noise(int w, int h)
{
    Picture p(w, h, 3);
    unsigned state = 12345;
    for (float& v : p.data) {
        state = state * 1103515245u + 12345u;
        v = float((state >> 16) % 256) / 255.0f;
    }
    return p;
}

// The first `percent` of `from` as `to`.
void cut(const std::string& from, const std::string& to, size_t percent)
{
    std::ifstream in(from, std::ios::binary);
    const std::string all((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::ofstream(to, std::ios::binary) << all.substr(0, all.size() * percent / 100);
}

TEST_F(Errors, DamagedFilesAndMoviesAreRefusedInOneLineBeforeAnythingIsWritten)
{
    for (const char* name : {"good.png", "good.jpg", "good.tif", "good.dpx"})
        write(name, noise(64, 48), OIIO::TypeDesc::UINT8);
    for (const char* kind : {"png", "jpg", "dpx"})
        for (size_t percent : {50, 90})
            cut(path(std::string("good.") + kind), path("cut" + std::to_string(percent) + "." + kind), percent);
    cut(path("good.png"), path("head.png"), 1);  // inside the header chunk
    cut(path("good.tif"), path("cut10.tif"), 10);
    // Whole, but with damaged pixel data: libpng's own complaint is not shown.
    std::string damaged = bytes("good.png");
    for (size_t i = 200; i < 400; ++i)
        damaged[i] = char(damaged[i] ^ 0x55);
    std::ofstream(path("damaged.png"), std::ios::binary) << damaged;
    // Movie containers, by their first bytes or by their names.
    std::ofstream(path("clip.mp4"), std::ios::binary) << std::string("\0\0\0\x18" "ftypisom\0\0\2\0isomiso2", 24);
    std::ofstream(path("clip.mkv"), std::ios::binary) << "\x1A\x45\xDF\xA3" << std::string(40, '\x42');
    std::ofstream(path("clip.avi"), std::ios::binary) << "RIFF\x10\0\0\0AVI LIST";
    std::filesystem::copy_file(path("clip.mp4"), path("movie-named.png"));
    std::filesystem::copy_file(path("good.png"), path("picture-named.mov"));
    if (std::system(("ffmpeg -loglevel error -f lavfi -i testsrc=size=64x48:rate=5:duration=0.6 -y " + path("real.mp4") +
                     " " + path("real.mkv"))
                        .c_str()) != 0)
        std::filesystem::copy_file(path("clip.mp4"), path("real.mp4"),
                                   std::filesystem::copy_options::overwrite_existing);
    before = files();
    for (const char* name : {"cut50.png", "cut90.png", "head.png"})
        expectRefused({"render", name, "-o", "keep.png"}, 1, std::string("cannot read ") + name + ": the file ends");
    expectRefused({"render", "damaged.png", "-o", "keep.png"}, 1, "cannot read damaged.png: ");
    // JPEG fills what is missing with grey unless its complaint is heard.
    for (const char* name : {"cut50.jpg", "cut90.jpg"})
        expectRefused({"render", name, "-o", "keep.png"}, 1, std::string("cannot read ") + name + ": ");
    for (const char* name : {"cut50.dpx", "cut90.dpx"})
        expectRefused({"render", name, "-o", "keep.png"}, 1, "(it is truncated)");
    expectRefused({"render", "cut10.tif", "-o", "keep.png"}, 1, "cannot read cut10.tif: Read error");
    EXPECT_EQ(run({"render", "cut10.tif", "-o", "keep.png"}).err.find("4294967295"), std::string::npos);
    for (const char* name : {"clip.mp4", "clip.mkv", "clip.avi", "movie-named.png", "picture-named.mov", "real.mp4"})
        expectRefused({"render", name, "-o", "keep.png"}, 1, "it is a movie file");
    expectRefused({"render", "clip.mp4", "-o", "keep.png"}, 1, "ffmpeg -i MOVIE frame.%04d.png");
    if (std::filesystem::exists(path("real.mkv")))
        expectRefused({"render", "in.png", "-o", "keep.png", "--spread", "real.mkv"}, 1, "it is a movie file");
}

TEST_F(Errors, SpecialFilesAreNeitherWaitedOnNorReplaced)
{
    ASSERT_EQ(mkfifo(path("fifo.png").c_str(), 0644), 0);
    ASSERT_EQ(mkfifo(path("fifo.json").c_str(), 0644), 0);
    std::filesystem::create_directory(path("dir.png"));
    write("depth.png", Picture(32, 24, 1), OIIO::TypeDesc::UINT8);
    std::filesystem::create_symlink("keep.png", path("link.png"));
    std::ofstream(path("target.json")) << "an older preset";
    std::filesystem::create_symlink("target.json", path("link.json"));
    before = files();
    // Each within seconds: a FIFO with no writer is never opened.
    auto refused = [&](const std::vector<std::string>& args, const std::string& message) {
        const ToolRun r = runWithin(args, 20);
        EXPECT_EQ(r.exitCode, 1) << args[1] << " " << args.back() << "\n" << r.err;
        EXPECT_NE(r.err.find(message), std::string::npos) << r.err;
        EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
        EXPECT_EQ(files(), before);
        EXPECT_EQ(bytes("keep.png"), "an older result");
        EXPECT_TRUE(std::filesystem::is_symlink(path("link.png")));
        EXPECT_TRUE(std::filesystem::is_symlink(path("link.json")));
        EXPECT_EQ(bytes("target.json"), "an older preset");
    };
    refused({"render", "/dev/zero", "-o", "keep.png"}, "cannot read /dev/zero: it is a device");
    refused({"render", "/dev/urandom", "-o", "keep.png"}, "cannot read /dev/urandom: it is a device");
    refused({"render", "fifo.png", "-o", "keep.png"}, "cannot read fifo.png: it is a FIFO");
    refused({"render", "dir.png", "-o", "keep.png"}, "cannot read dir.png: it is a directory");
    refused({"render", "in.png", "-o", "keep.png", "--spread", "fifo.png"}, "it is a FIFO");
    refused({"render", "in.png", "-o", "keep.png", "--preset", "fifo.json"}, "cannot read fifo.json: it is a FIFO");
    refused({"render", "in.png", "-o", "keep.png", "--preset", "/dev/zero"}, "it is a device");
    refused({"render", "in.png", "-o", "keep.png", "--depth", "fifo.png"}, "it is a FIFO");
    refused({"render", "in.png", "-o", "link.png"}, "cannot write link.png: it is a symbolic link");
    refused({"render", "in.png", "-o", "fifo.png"}, "cannot write fifo.png: it is a FIFO");
    refused({"render", "in.png", "-o", "dir.png"}, "cannot write dir.png: it is a directory");
    refused({"render", "in.png", "-o", "keep.png", "--psf", "fifo.png"}, "cannot write fifo.png: it is a FIFO");
    refused({"render", "in.png", "-o", "keep.png", "--overlay", "link.png", "--shape", "image"}, "cannot write link.png");
    refused({"render", "in.png", "-o", "keep.png", "--save-preset", "link.json"}, "cannot write link.json");
    refused({"render", "--save-preset", "link.json"}, "cannot write link.json: it is a symbolic link");
    refused({"render", "in.png", "-o", "keep.png", "--depth", "depth.png", "--coc", "fifo.png"},
            "cannot write fifo.png: it is a FIFO");
    // Every output's format is known before anything is written.
    refused({"render", "in.png", "-o", "keep.png", "--psf", "p.xyz"}, "cannot write p.xyz: no image file format");
    refused({"render", "in.png", "-o", "keep.png", "--overlay", "o.null", "--shape", "image"}, "cannot write o.null");
}

}  // namespace
