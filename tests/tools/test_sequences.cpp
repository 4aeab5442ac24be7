// Sequences split over processes with GNU parallel give the bytes of one run,
// and an interrupt leaves whole frames only.
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>
#include <vector>

#include "tool_fixture.h"

namespace {

using Sequences = ToolTest;

// Frame f: a few coloured dots that move with f.
Picture frame(int w, int h, int f)
{
    Picture p(w, h, 3);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            p.at(x, y, 2) = 0.1f + 0.3f * y / h;
    for (int i = 0; i < 4; ++i) {
        const int x = (7 + 11 * i + 3 * f) % w, y = (5 + 9 * i + 2 * f) % h;
        p.at(x, y, 0) = 1.0f;
        p.at(x, y, 1) = i % 2 ? 1.0f : 0.4f;
    }
    return p;
}

TEST_F(Sequences, SplitOverThreeProcessesWithParallelGivesTheBytesOfOneRun)
{
    if (std::system("command -v parallel >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "GNU parallel is not installed (scripts/install-deps installs it)";
    for (int f = 0; f < 6; ++f)
        write("in." + std::to_string(1000 + f).substr(1) + ".png", frame(48, 40, f), OIIO::TypeDesc::UINT8);
    const ToolRun whole = run({"render", "in.@@@.png", "-o", "one.@@@.png", "--frames", "0-5", "--shape", "polygon",
                               "--radius-x", "0.1"});
    ASSERT_EQ(whole.exitCode, 0) << whole.err;
    const std::string command = "cd " + directory + " && parallel --halt now,fail=1 -j3 '" LUMENVEIL_TOOL_PATH
                                " render in.@@@.png -o split.@@@.png --frames {} --shape polygon --radius-x 0.1 "
                                "--quiet' ::: 0-1 2-3 4-5";
    ASSERT_EQ(std::system(command.c_str()), 0);
    for (int f = 0; f < 6; ++f) {
        const std::string number = std::to_string(1000 + f).substr(1);
        EXPECT_FALSE(bytes("one." + number + ".png").empty());
        EXPECT_EQ(bytes("one." + number + ".png"), bytes("split." + number + ".png")) << "frame " << f;
    }
}

// The first frame of a later part keeps the kernel a long run would have at
// that frame: the one built at the last change of the aperture, with the trace
// of the kernels built before it. Keys that change the aperture on every frame,
// keys that drift below the kernel tolerance a frame (the long run keeps its
// first kernel all along), the Image aperture (rebuilt on every frame), and an
// aperture of about a pixel, whose kernels keep about half of the one before
// (a trace that takes some 60 kernels to fade); each engine. The sequence on
// disk starts at frame 2, where the long run starts.
TEST_F(Sequences, SplitRunsGiveTheBytesOfOneRunWithKeyedApertures)
{
    constexpr int kFirst = 2, kLast = 21;
    for (int f = kFirst; f <= kLast; ++f)
        write("in." + std::to_string(1000 + f).substr(1) + ".png", frame(40, 32, f), OIIO::TypeDesc::UINT16);
    // Radii are fractions of half the width (20 pixels): the second look drifts
    // by 0.0004 a frame, 0.008 pixels, under the kernel tolerance of 0.01; the
    // last grows from the smallest aperture (0.5 pixels) by 0.05 pixels a frame.
    const std::vector<std::vector<std::string>> looks = {
        {"--shape", "polygon", "--sides", "5", "--key", "radius-x=2:0.1", "--key", "radius-x=21:0.28", "--key",
         "rotation=2:0", "--key", "rotation=21:70"},
        {"--shape", "ellipse", "--radius-y", "0.2", "--key", "radius-x=0:0.2", "--key", "radius-x=50:0.22"},
        {"--shape", "image", "--key", "radius-psf1=2:0.05", "--key", "radius-psf2=2:0.3", "--key", "centre-x=2:0.2",
         "--key", "centre-x=21:0.7"},
        {"--key", "radius-x=2:0.025", "--key", "radius-x=21:0.0725"},
    };
    for (const char* engine : {"faithful", "fast", "fast-float"})
        for (size_t look = 0; look < looks.size(); ++look) {
            auto render = [&](const std::string& out, const std::string& frames) {
                std::vector<std::string> args = {"render", "in.@@@.png", "-o", out + ".@@@.png", "--frames", frames,
                                                 "--engine", engine, "--quiet"};
                args.insert(args.end(), looks[look].begin(), looks[look].end());
                const ToolRun r = run(args);
                ASSERT_EQ(r.exitCode, 0) << r.err;
            };
            render("one", "2-21");
            render("part", "2-4");
            render("part", "5-11");
            render("part", "12-21");
            for (int f = kFirst; f <= kLast; ++f) {
                const std::string number = std::to_string(1000 + f).substr(1);
                EXPECT_EQ(bytes("one." + number + ".png"), bytes("part." + number + ".png"))
                    << engine << ", look " << look << ", frame " << f;
            }
        }
}

TEST_F(Sequences, FrameListsStepsDigitPatternsRenumberingAndClamping)
{
    // Frames 1 to 12, numbered with four digits: "#".
    for (int f = 1; f <= 12; ++f)
        write("in." + std::to_string(10000 + f).substr(1) + ".png", frame(16, 12, f), OIIO::TypeDesc::UINT8);
    auto outputs = [this](const std::string& prefix) {
        std::vector<std::string> names;
        for (const std::string& name : files())
            if (name.rfind(prefix, 0) == 0)
                names.push_back(name);
        return names;
    };
    // 1-9x4 is 1, 5, 9; with 11, four frames, written with five digits ("@@@@@").
    ToolRun r = run({"render", "in.#.png", "-o", "out.@@@@@.png", "--frames", "1-9x4,11", "-q"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(outputs("out."),
              (std::vector<std::string>{"out.00001.png", "out.00005.png", "out.00009.png", "out.00011.png"}));
    // Frames 3 to 5 written as 101 to 103; frame 101 is frame 3's picture.
    r = run({"render", "in.#.png", "-o", "re.%04d.png", "--frames", "3-5", "--renumber", "101", "-q"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(outputs("re."), (std::vector<std::string>{"re.0101.png", "re.0102.png", "re.0103.png"}));
    ASSERT_EQ(run({"render", "in.0003.png", "-o", "three.png"}).exitCode, 0);
    EXPECT_EQ(bytes("re.0101.png"), bytes("three.png"));
    // A chunk past the end: without --frames-clamp nothing is written.
    r = run({"render", "in.#.png", "-o", "end.#.png", "--frames", "10-15"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_TRUE(outputs("end.").empty());
    r = run({"render", "in.#.png", "-o", "end.#.png", "--frames", "10-15", "--frames-clamp", "-q"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_NE(r.err.find("skipped frames 13-15"), std::string::npos) << r.err;
    EXPECT_EQ(outputs("end."), (std::vector<std::string>{"end.0010.png", "end.0011.png", "end.0012.png"}));
    r = run({"render", "in.#.png", "-o", "none.#.png", "--frames", "20-22", "--frames-clamp"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_NE(r.err.find("none of the frames 20-22 exists"), std::string::npos) << r.err;
    // Lists that are not lists.
    for (const char* bad : {"1-5x0", "5-1", "1,,2", "a", "1-", "x3", "1x3"}) {
        r = run({"render", "in.#.png", "-o", "bad.#.png", "--frames", bad});
        EXPECT_EQ(r.exitCode, 2) << bad;
    }
    EXPECT_TRUE(outputs("bad.").empty());
}

TEST_F(Sequences, InterruptOrHangUpLeavesOnlyWholeFrames)
{
    constexpr int kFrames = 40;
    for (int f = 0; f < kFrames; ++f)
        write("in." + std::to_string(f) + ".png", frame(256, 256, f), OIIO::TypeDesc::UINT8);
    for (const int signal : {SIGINT, SIGHUP}) {
        for (const std::string& name : files())
            if (name.rfind("out.", 0) == 0)
                std::filesystem::remove(path(name));
        const int pid = start({"render", "in.%d.png", "-o", "out.%d.png", "--frames",
                               "0-" + std::to_string(kFrames - 1), "--radius-x", "0.1"});
        // Once the second frame is written, the signal.
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (!std::filesystem::exists(path("out.1.png")) && std::chrono::steady_clock::now() < deadline)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        kill(pid, signal);
        const int code = finish(pid);
        int written = 0;
        for (const std::string& name : files()) {
            EXPECT_EQ(name.find(".partial"), std::string::npos) << name;
            if (name.rfind("out.", 0) == 0) {
                ++written;
                EXPECT_EQ(read(name).width, 256) << name;
            }
        }
        if (written == kFrames)
            continue;  // the run ended before the signal
        EXPECT_EQ(code, 130) << "signal " << signal;
        // The frames written are the first ones, without a gap.
        for (int f = 0; f < written; ++f)
            EXPECT_TRUE(std::filesystem::exists(path("out." + std::to_string(f) + ".png"))) << f;
        EXPECT_GE(written, 2);
    }
}

// A signal that comes while the tool is still starting (its module loaded,
// no frame read yet) ends it as an interrupt, not by the signal's default.
TEST_F(Sequences, SignalWhileStartingIsAnInterrupt)
{
    write("big.png", frame(1024, 1024, 0), OIIO::TypeDesc::UINT8);
    const int pid = start({"render", "big.png", "-o", "big-out.png", "--radius-x", "0.2"});
    const std::string maps = "/proc/" + std::to_string(pid) + "/maps";
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    auto moduleLoaded = [&maps] {
        std::ifstream in(maps);
        const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        return text.find("libLumenveilVZ") != std::string::npos;
    };
    while (!moduleLoaded() && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    kill(pid, SIGTERM);
    EXPECT_EQ(finish(pid), 130);
    EXPECT_FALSE(std::filesystem::exists(path("big-out.png")));
    for (const std::string& name : files())
        EXPECT_EQ(name.find(".partial"), std::string::npos) << name;
}

}  // namespace
