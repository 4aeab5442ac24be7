#include "tool_fixture.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

namespace {

std::string slurp(const std::string& file)
{
    std::ifstream in(file, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

}  // namespace

void ToolTest::SetUp()
{
    char pattern[] = "/tmp/lumenveil-tool-test-XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    directory = pattern;
}

void ToolTest::TearDown()
{
    if (!HasFailure()) {
        std::error_code error;
        fs::remove_all(directory, error);
    } else {
        std::fprintf(stderr, "files kept in %s\n", directory.c_str());
    }
}

std::string ToolTest::path(const std::string& name) const { return directory + "/" + name; }

int ToolTest::start(const std::vector<std::string>& args) const
{
    const pid_t pid = fork();
    if (pid == 0) {
        const std::string outFile = directory + "/.stdout", errFile = directory + "/.stderr";
        const int out = open(outFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        const int err = open(errFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        dup2(out, 1);
        dup2(err, 2);
        if (fileSizeLimit > 0) {
            std::signal(SIGXFSZ, SIG_IGN);
            const struct rlimit limit = {rlim_t(fileSizeLimit), rlim_t(fileSizeLimit)};
            setrlimit(RLIMIT_FSIZE, &limit);
        }
        // Under the sanitizers: leaks of the encoders some writers use are theirs.
        setenv("LSAN_OPTIONS", "suppressions=" LEAK_SUPPRESSIONS ":print_suppressions=0", 1);
        if (chdir(directory.c_str()) != 0)
            _exit(127);
        std::vector<char*> argv;
        argv.push_back(const_cast<char*>(LUMENVEIL_TOOL_PATH));
        for (const std::string& a : args)
            argv.push_back(const_cast<char*>(a.c_str()));
        argv.push_back(nullptr);
        execv(LUMENVEIL_TOOL_PATH, argv.data());
        _exit(127);
    }
    return pid;
}

int ToolTest::finish(int pid)
{
    int status = 0;
    waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

int ToolTest::finishWithin(int pid, int seconds)
{
    for (int tenths = 0; tenths < seconds * 10; ++tenths) {
        int status = 0;
        if (waitpid(pid, &status, WNOHANG) == pid)
            return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        usleep(100000);
    }
    kill(pid, SIGKILL);
    finish(pid);
    return -1;
}

ToolRun ToolTest::run(const std::vector<std::string>& args) const { return runWithin(args, 0); }

ToolRun ToolTest::runWithin(const std::vector<std::string>& args, int seconds) const
{
    ToolRun result;
    const int pid = start(args);
    result.exitCode = seconds > 0 ? finishWithin(pid, seconds) : finish(pid);
    result.out = slurp(directory + "/.stdout");
    result.err = slurp(directory + "/.stderr");
    std::remove((directory + "/.stdout").c_str());
    std::remove((directory + "/.stderr").c_str());
    return result;
}

void ToolTest::write(const std::string& name, const Picture& picture, OIIO::TypeDesc type, int tile) const
{
    auto out = OIIO::ImageOutput::create(path(name));
    ASSERT_TRUE(out) << name;
    OIIO::ImageSpec layout(picture.width, picture.height, picture.channels, type);
    layout.tile_width = layout.tile_height = tile;
    layout.attribute("oiio:BitsPerSample", int(type.size() * 8));  // PNM takes its depth from this
    ASSERT_TRUE(out->open(path(name), layout)) << out->geterror();
    ASSERT_TRUE(out->write_image(OIIO::TypeDesc::FLOAT, picture.data.data())) << out->geterror();
    out->close();
}

Picture ToolTest::read(const std::string& name) const
{
    Picture p;
    OIIO::ImageSpec layout;
    auto in = OIIO::ImageInput::create(path(name));
    const bool opened = in && in->open(path(name), layout);
    EXPECT_TRUE(opened) << "cannot read " << name;
    if (!opened)
        return p;
    p = Picture(layout.width, layout.height, layout.nchannels);
    p.format = layout.format;
    EXPECT_TRUE(in->read_image(0, 0, 0, layout.nchannels, OIIO::TypeDesc::FLOAT, p.data.data()));
    return p;
}

std::string ToolTest::bytes(const std::string& name) const { return slurp(path(name)); }

std::vector<std::string> ToolTest::files() const
{
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(directory))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

Picture ToolTest::dot(int width, int height, int x, int y)
{
    Picture p(width, height, 3);
    for (int c = 0; c < 3; ++c)
        p.at(x, y, c) = 1.0f;
    return p;
}

LitExtent litExtent(const Picture& p, int cx, int cy, float threshold)
{
    LitExtent e;
    for (int x = 0; x < p.width; ++x)
        e.across += p.at(x, cy, 0) > threshold;
    for (int y = 0; y < p.height; ++y)
        e.down += p.at(cx, y, 0) > threshold;
    for (int y = 0; y < p.height; ++y)
        for (int x = 0; x < p.width; ++x)
            e.area += p.at(x, y, 0) > threshold;
    return e;
}
