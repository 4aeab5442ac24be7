// Writing files: on a full disk every output format fails with exit 1, keeps
// the earlier output byte for byte and leaves no temporary file; the files of
// one run are replaced together, only once all of them are written; the
// temporaries a killed run left are removed; a failed rename says why.
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/statvfs.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <set>
#include <utility>

#include "tool_fixture.h"

namespace {

namespace fs = std::filesystem;

const std::string kEarlier = "an earlier result\n";

// Noise, so that no format compresses the picture to a few bytes; 64 wide
// for ICO, which takes up to 256.
Picture noise(int w, int h)
{
    std::mt19937 random(7);
    Picture p(w, h, 3);
    for (float& v : p.data)
        v = float(random() % 256) / 255.0f;
    return p;
}

// A picture PNG stores in a few hundred bytes and PPM in thousands.
Picture smooth(int w, int h)
{
    Picture p(w, h, 3);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            for (int c = 0; c < 3; ++c)
                p.at(x, y, c) = float(x) / w;
    return p;
}

// Each image format OpenImageIO writes, with the first of its extensions;
// not the two that make no file (null, term).
std::vector<std::pair<std::string, std::string>> writtenFormats()
{
    std::string writers, extensions;
    OIIO::getattribute("output_format_list", writers);
    OIIO::getattribute("extension_list", extensions);
    std::set<std::string> writable;
    for (size_t start = 0; start < writers.size();) {
        const size_t end = std::min(writers.find(',', start), writers.size());
        writable.insert(writers.substr(start, end - start));
        start = end + 1;
    }
    std::vector<std::pair<std::string, std::string>> formats;
    for (size_t start = 0; start < extensions.size();) {
        const size_t end = std::min(extensions.find(';', start), extensions.size());
        const std::string entry = extensions.substr(start, end - start);
        const size_t colon = entry.find(':');
        const std::string name = entry.substr(0, colon);
        const std::string first = entry.substr(colon + 1, entry.find(',', colon) - colon - 1);
        if (writable.count(name) && name != "null" && name != "term")
            formats.emplace_back(name, first);
        start = end + 1;
    }
    return formats;
}

// Formats whose writers refuse this picture whatever the disk holds: the
// tool says so as a failure like any other.
bool refusesEveryPicture(const std::string& format) { return format == "iff" || format == "zfile"; }

class Writes : public ToolTest {
protected:
    void SetUp() override
    {
        ToolTest::SetUp();
        write("in.png", noise(64, 48), OIIO::TypeDesc::UINT8);
        write("smooth.png", smooth(64, 48), OIIO::TypeDesc::UINT8);
    }
    void TearDown() override
    {
        if (!mounted.empty())
            umount2(mounted.c_str(), MNT_DETACH);
        ToolTest::TearDown();
    }
    void earlier(const std::string& name) const { std::ofstream(path(name), std::ios::binary) << kEarlier; }
    // Names in `folder` (the test's directory when empty) that are temporaries.
    std::vector<std::string> temporaries(const std::string& folder = "") const
    {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder.empty() ? directory : folder))
            if (entry.path().filename().string().find(".partial") != std::string::npos)
                names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }
    // A failed write of `target`: exit 1, one line naming it, the earlier
    // bytes kept, no temporary beside it.
    void expectFailedWrite(const ToolRun& r, const std::string& target, const std::string& what) const
    {
        EXPECT_EQ(r.exitCode, 1) << what << "\n" << r.err;
        EXPECT_NE(r.err.find("cannot write " + target), std::string::npos) << what << "\n" << r.err;
        EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << what << "\n" << r.err;
        EXPECT_EQ(bytes(target), kEarlier) << what;
        EXPECT_TRUE(temporaries(fs::path(path(target)).parent_path()).empty()) << what;
    }
    // Mounts `options` of `type` at `name`; false where the test may not.
    bool mount(const std::string& source, const std::string& name, const char* type, unsigned long flags,
               const char* options)
    {
        if (geteuid() != 0 || ::mount(source.c_str(), path(name).c_str(), type, flags, options) != 0)
            return false;
        mounted = path(name);
        return true;
    }
    std::string mounted;
};

TEST_F(Writes, EveryFormatFailsCleanlyWhenItsFileCannotGrow)
{
    for (const auto& [format, extension] : writtenFormats()) {
        const std::string keep = "keep." + extension, whole = "whole." + extension;
        earlier(keep);
        const ToolRun alone = run({"render", "in.png", "-o", whole});
        if (refusesEveryPicture(format)) {
            expectFailedWrite(run({"render", "in.png", "-o", keep}), keep, format);
            continue;
        }
        ASSERT_EQ(alone.exitCode, 0) << format << "\n" << alone.err;
        const long size = long(bytes(whole).size());
        // Half the file, and no more than its first bytes.
        for (long limit : {size / 2, 512L}) {
            fileSizeLimit = limit;
            expectFailedWrite(run({"render", "in.png", "-o", keep}), keep, format + " at " + std::to_string(limit));
            fileSizeLimit = 0;
        }
    }
}

TEST_F(Writes, EveryFormatFailsCleanlyOnAFullFileSystem)
{
    fs::create_directory(path("disk"));
    if (!mount("lumenveil-test", "disk", "tmpfs", 0, "size=1m"))
        GTEST_SKIP() << "cannot mount a small file system here";
    for (const auto& [format, extension] : writtenFormats()) {
        if (refusesEveryPicture(format))
            continue;
        ASSERT_EQ(run({"render", "in.png", "-o", "disk/whole." + extension}).exitCode, 0) << format;
        const long size = long(bytes("disk/whole." + extension).size());
        fs::remove(path("disk/whole." + extension));
        const std::string keep = "disk/keep." + extension;
        earlier(keep);
        // A filler leaves room for half the file.
        struct statvfs room;
        ASSERT_EQ(statvfs(path("disk").c_str(), &room), 0);
        const long filler = long(room.f_bavail * room.f_bsize) - size / 2;
        std::ofstream(path("disk/filler"), std::ios::binary) << std::string(std::max(filler, 0L), 'x');
        expectFailedWrite(run({"render", "in.png", "-o", keep}), keep, format);
        fs::remove(path("disk/filler"));
        fs::remove(path(keep));
    }
}

TEST_F(Writes, FilesOfOneRunAreReplacedTogetherOnlyOnceAllAreWritten)
{
    // The frame (a few hundred bytes of PNG) fits, its overlay or
    // point-spread picture (PPM, some 9 kB) does not: the frame is not
    // replaced, and the preset is not written. The overlay fails while the
    // frame's rows are written, the point-spread picture after the frame's
    // file is finished.
    for (const char* option : {"--overlay", "--psf"}) {
        earlier("keep.png");
        earlier("keep.ppm");
        fileSizeLimit = 4096;
        const ToolRun r = run({"render", "smooth.png", "-o", "keep.png", option, "keep.ppm", "--save-preset", "p.json",
                               "--shape", "image"});
        fileSizeLimit = 0;
        expectFailedWrite(r, "keep.ppm", option);
        EXPECT_EQ(bytes("keep.png"), kEarlier) << option;
        EXPECT_FALSE(fs::exists(path("p.json"))) << option;
        // The same run with room writes all three.
        ASSERT_EQ(run({"render", "smooth.png", "-o", "keep.png", option, "keep.ppm", "--save-preset", "p.json",
                       "--shape", "image"})
                      .exitCode,
                  0);
        EXPECT_EQ(read("keep.png").width, 64);
        EXPECT_EQ(read("keep.ppm").width, 64);
        EXPECT_NE(bytes("p.json").find('{'), std::string::npos);
        fs::remove(path("p.json"));
    }
}

TEST_F(Writes, TemporariesOfAKilledRunAreRemovedByExactNameAndOnlyWhenNoWriterHoldsThem)
{
    // What a run killed while writing leaves: its temporaries under their
    // first names; a name with a process id, and other outputs' ones, stay.
    for (const char* name : {".out.partial.png", ".p.partial.json", ".out.partial-99-0.png", ".other.partial.png"})
        std::ofstream(path(name)) << "left";
    ToolRun r = run({"render", "in.png", "-o", "out.png", "--save-preset", "p.json"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(r.err, "lumenveil: removed 2 temporary files left by earlier runs stopped while writing: .out.partial.png, "
                     ".p.partial.json\n");
    EXPECT_EQ(temporaries(), (std::vector<std::string>{".other.partial.png", ".out.partial-99-0.png"}));
    // One is said in one line of its own.
    std::ofstream(path(".out.partial.png")) << "left";
    r = run({"render", "in.png", "-o", "out.png"});
    EXPECT_EQ(r.err, "lumenveil: removed .out.partial.png, left by an earlier run that was stopped while writing\n");
    // A temporary another writer holds (locked) is its own: the run writes
    // under a name of its own and leaves that one alone.
    std::ofstream(path(".out.partial.png")) << "being written";
    const int held = open(path(".out.partial.png").c_str(), O_RDONLY);
    ASSERT_EQ(flock(held, LOCK_EX), 0);
    r = run({"render", "in.png", "-o", "out.png"});
    close(held);
    EXPECT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(r.err, "");
    EXPECT_EQ(bytes(".out.partial.png"), "being written");
    EXPECT_EQ(read("out.png").width, 64);
}

TEST_F(Writes, AFailedRenameSaysWhyAndLeavesNoTemporary)
{
    // A file mounted over the output: it is a regular file, but the rename
    // onto it fails (EBUSY).
    earlier("busy.png");
    earlier("other.png");
    if (!mount(path("other.png"), "busy.png", nullptr, MS_BIND, nullptr))
        GTEST_SKIP() << "cannot mount here";
    const ToolRun r = run({"render", "in.png", "-o", "busy.png"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(r.err, "lumenveil: cannot write busy.png: " + std::string(std::strerror(EBUSY)) + "\n");
    EXPECT_TRUE(temporaries().empty());
}

}  // namespace
