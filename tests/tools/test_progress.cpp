// On a terminal, a frame that takes longer than --progress-after (2 s unless
// given) shows its file, its stage and its time so far, redrawn a few times a
// second; a still's line goes when it is done, a sequence's line takes its
// place. Not on a stderr that is no terminal, not with --quiet.
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <regex>
#include <vector>

#include "tool_fixture.h"

namespace {

class Progress : public ToolTest {
protected:
    // Runs the tool with its stderr on a new terminal (stdout to /dev/null);
    // gives its exit code and what the terminal received.
    ToolRun runOnTerminal(const std::vector<std::string>& args) const
    {
        ToolRun result;
        int terminal = -1;
        const pid_t pid = forkpty(&terminal, nullptr, nullptr, nullptr);
        if (pid == 0) {
            if (!freopen("/dev/null", "w", stdout))
                _exit(127);
            setenv("LSAN_OPTIONS", "suppressions=" LEAK_SUPPRESSIONS ":print_suppressions=0", 1);
            if (chdir(directory.c_str()) != 0)
                _exit(127);
            std::vector<char*> argv{const_cast<char*>(LUMENVEIL_TOOL_PATH)};
            for (const std::string& a : args)
                argv.push_back(const_cast<char*>(a.c_str()));
            argv.push_back(nullptr);
            execv(LUMENVEIL_TOOL_PATH, argv.data());
            _exit(127);
        }
        EXPECT_GT(pid, 0) << "no terminal";
        if (pid <= 0)
            return result;
        // Read until the tool closes its side (EIO) or a minute passes.
        char buffer[4096];
        for (int idle = 0; idle < 600;) {
            pollfd ready{terminal, POLLIN, 0};
            if (poll(&ready, 1, 100) == 0) {
                ++idle;
                continue;
            }
            const ssize_t n = ::read(terminal, buffer, sizeof buffer);
            if (n <= 0)
                break;
            result.err.append(buffer, static_cast<size_t>(n));
        }
        close(terminal);
        result.exitCode = finish(pid);
        return result;
    }
};

// The lines a terminal shows after `text`: a carriage return goes back to the
// line's start, later characters cover earlier ones; trailing spaces dropped.
std::vector<std::string> screen(const std::string& text)
{
    std::vector<std::string> lines(1);
    size_t column = 0;
    for (char c : text) {
        if (c == '\r') {
            column = 0;
        } else if (c == '\n') {
            lines.emplace_back();
            column = 0;
        } else {
            std::string& line = lines.back();
            if (line.size() <= column)
                line.resize(column + 1, ' ');
            line[column++] = c;
        }
    }
    for (std::string& line : lines)
        line.erase(line.find_last_not_of(' ') + 1);
    return lines;
}

// Each stage line drawn in `text`: the file, the stage and the seconds shown.
struct StageLine {
    std::string file;
    std::string stage;
    double seconds;
};
std::vector<StageLine> stageLines(const std::string& text)
{
    static const std::regex line(R"(([A-Za-z0-9._]+): (reading|preparing|rendering|writing), ([0-9]+\.[0-9]) s)");
    std::vector<StageLine> found;
    for (std::sregex_iterator i(text.begin(), text.end(), line), end; i != end; ++i)
        found.push_back({(*i)[1], (*i)[2], std::stod((*i)[3])});
    return found;
}

// The stages drawn for `file`, in order, each once however often it was redrawn.
std::vector<std::string> stagesOf(const std::string& text, const std::string& file)
{
    std::vector<std::string> stages;
    for (const StageLine& s : stageLines(text))
        if (s.file == file && (stages.empty() || stages.back() != s.stage))
            stages.push_back(s.stage);
    return stages;
}

Picture grey(int w, int h, int seed)
{
    Picture p(w, h, 3);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            for (int c = 0; c < 3; ++c)
                p.at(x, y, c) = static_cast<float>((x * 7 + y * 3 + c * 5 + seed) % 97) / 96.0f;
    return p;
}

using Strings = std::vector<std::string>;

TEST_F(Progress, AStillShowsItsStagesPastTheThresholdOnlyOnATerminalAndLeavesNothing)
{
    write("in.png", grey(64, 48, 0), OIIO::TypeDesc::UINT8);
    const Strings common{"render", "in.png", "--radius-x", "0.05"};
    auto with = [&](const std::string& output, Strings more) {
        Strings args = common;
        args.insert(args.end(), {"-o", output});
        args.insert(args.end(), more.begin(), more.end());
        return args;
    };

    // Past a threshold of 0 from the start: each stage of the still, in order,
    // named with its file and the time so far; the line cleared at the end.
    const ToolRun shown = runOnTerminal(with("shown.png", {"--progress-after", "0"}));
    ASSERT_EQ(shown.exitCode, 0) << shown.err;
    EXPECT_EQ(stagesOf(shown.err, "in.png"), (Strings{"reading", "rendering", "writing"})) << shown.err;
    EXPECT_EQ(screen(shown.err), Strings{""}) << "a still leaves nothing on the terminal: " << shown.err;

    // The same command with stderr not a terminal: nothing on it, the same file.
    const ToolRun piped = run(with("piped.png", {"--progress-after", "0"}));
    ASSERT_EQ(piped.exitCode, 0) << piped.err;
    EXPECT_EQ(piped.err, "");
    EXPECT_FALSE(bytes("shown.png").empty());
    EXPECT_EQ(bytes("piped.png"), bytes("shown.png"));

    // --quiet on the terminal: nothing.
    const ToolRun quiet = runOnTerminal(with("quiet.png", {"--progress-after", "0", "--quiet"}));
    ASSERT_EQ(quiet.exitCode, 0) << quiet.err;
    EXPECT_EQ(quiet.err, "");

    // The default threshold of about two seconds: a small frame is done long before.
    const ToolRun quick = runOnTerminal(with("quick.png", {}));
    ASSERT_EQ(quick.exitCode, 0) << quick.err;
    EXPECT_EQ(quick.err, "");

    for (const char* bad : {"-1", "nan"}) {
        const ToolRun refused = run(with("no.png", {"--progress-after", bad}));
        EXPECT_EQ(refused.exitCode, 2) << bad << ": " << refused.err;
        EXPECT_NE(refused.err.find("--progress-after"), std::string::npos) << refused.err;
    }
    EXPECT_EQ(files(), (Strings{"in.png", "piped.png", "quick.png", "quiet.png", "shown.png"}));
}

TEST_F(Progress, ASequenceShowsEachFramesStagesThenItsOwnLine)
{
    for (int f = 0; f < 3; ++f)
        write("in.00" + std::to_string(f) + ".png", grey(48, 40, f), OIIO::TypeDesc::UINT8);
    // From frame 1: the kernels of frame 0 are worked out first ("preparing").
    const Strings args{"render", "in.@@@.png", "-o", "out.@@@.png", "--frames", "1-2", "--radius-x", "0.05",
                       "--progress-after", "0"};
    const ToolRun shown = runOnTerminal(args);
    ASSERT_EQ(shown.exitCode, 0) << shown.err;
    EXPECT_EQ(stagesOf(shown.err, "in.001.png"), (Strings{"reading", "preparing", "rendering", "writing"}))
        << shown.err;
    EXPECT_EQ(stagesOf(shown.err, "in.002.png"), (Strings{"reading", "rendering", "writing"})) << shown.err;
    // The sequence's line as the last, on a line of its own.
    const std::vector<std::string> lines = screen(shown.err);
    ASSERT_EQ(lines.size(), 2u) << shown.err;
    EXPECT_EQ(lines[0].rfind("frame 2 (2 of 2) ", 0), 0u) << lines[0];
    EXPECT_NE(lines[0].find(" fps "), std::string::npos) << lines[0];
    EXPECT_EQ(lines[1], "");

    const ToolRun piped = run(args);
    ASSERT_EQ(piped.exitCode, 0) << piped.err;
    EXPECT_EQ(piped.err, "");
}

// A frame that takes longer than the threshold: no line before it, then the
// line again a few times a second with the time so far.
TEST_F(Progress, ALongFrameIsRedrawnWithItsTimeFromTheThresholdOn)
{
    write("large.png", grey(2000, 1400, 0), OIIO::TypeDesc::UINT8);
    const double threshold = 0.2;
    const auto begun = std::chrono::steady_clock::now();
    const ToolRun shown = runOnTerminal({"render", "large.png", "-o", "out.png", "--radius-x", "0.05",
                                         "--progress-after", "0.2"});
    const double took = std::chrono::duration<double>(std::chrono::steady_clock::now() - begun).count();
    ASSERT_EQ(shown.exitCode, 0) << shown.err;
    const std::vector<StageLine> drawn = stageLines(shown.err);
    ASSERT_FALSE(drawn.empty()) << "took " << took << " s: " << shown.err;
    for (size_t i = 0; i < drawn.size(); ++i) {
        EXPECT_EQ(drawn[i].file, "large.png");
        EXPECT_GE(drawn[i].seconds, threshold) << shown.err;
        if (i > 0) {
            EXPECT_GE(drawn[i].seconds, drawn[i - 1].seconds) << shown.err;
        }
    }
    // Four draws a second: a frame past the threshold by a second is drawn
    // at least thrice, even if it stays in one stage.
    if (took > threshold + 1.0) {
        EXPECT_GE(drawn.size(), 3u) << "took " << took << " s: " << shown.err;
    }
    EXPECT_EQ(screen(shown.err), Strings{""});
}

}  // namespace
