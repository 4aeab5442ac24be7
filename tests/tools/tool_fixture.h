// Runs the built lumenveil tool on small image files made in a fresh
// directory, and reads its results back.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <OpenImageIO/imageio.h>

// An image in memory: `channels` floats a pixel, rows top-down.
struct Picture {
    int width = 0;
    int height = 0;
    int channels = 0;
    OIIO::TypeDesc format = OIIO::TypeDesc::FLOAT;
    std::vector<float> data;

    Picture() = default;
    Picture(int w, int h, int c) : width(w), height(h), channels(c), data(size_t(w) * h * c, 0.0f) {}
    float& at(int x, int y, int c) { return data[(size_t(y) * width + x) * channels + c]; }
    float at(int x, int y, int c) const { return data[(size_t(y) * width + x) * channels + c]; }
};

// What a run of the tool gave.
struct ToolRun {
    int exitCode = -1;
    std::string out;
    std::string err;
};

class ToolTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // The path of `name` in this test's directory.
    std::string path(const std::string& name) const;
    // Runs the tool with `args`, waiting for it.
    ToolRun run(const std::vector<std::string>& args) const;
    // As run, for at most `seconds`: exit code -1 (the tool killed) when longer.
    ToolRun runWithin(const std::vector<std::string>& args, int seconds) const;
    // Starts the tool without waiting; gives its process id.
    int start(const std::vector<std::string>& args) const;
    // Waits for a started tool; gives its exit code (128 + signal if killed).
    static int finish(int pid);
    // As finish, for at most `seconds`; -1 (the tool killed) when it took longer.
    static int finishWithin(int pid, int seconds);

    // Writes `picture` to `name` in the directory, as `type`; in square tiles
    // of `tile` pixels when that is not 0.
    void write(const std::string& name, const Picture& picture, OIIO::TypeDesc type = OIIO::TypeDesc::FLOAT,
               int tile = 0) const;
    // Reads `name` back as floats; fails the test if it cannot.
    Picture read(const std::string& name) const;
    // The file's bytes.
    std::string bytes(const std::string& name) const;
    // Names in the directory.
    std::vector<std::string> files() const;

    // A black RGB picture with one white pixel at (x, y).
    static Picture dot(int width, int height, int x, int y);

    std::string directory;
    // When not 0, the tool's files cannot grow beyond this many bytes: its
    // writes past it fail as on a full disk (RLIMIT_FSIZE, SIGXFSZ ignored).
    long fileSizeLimit = 0;
};

// Lit extent of channel 0 of `p` through (cx, cy): pixels above `threshold`
// counted along the row and the column, and in the whole picture.
struct LitExtent {
    int across = 0;
    int down = 0;
    int area = 0;
};
LitExtent litExtent(const Picture& p, int cx, int cy, float threshold);
