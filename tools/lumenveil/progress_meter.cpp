#include "tools/lumenveil/progress_meter.h"

#include <unistd.h>

#include <cstdio>

#include "tools/lumenveil/quiet_stderr.h"

namespace {

// How often the stage line of a long frame is redrawn.
constexpr std::chrono::milliseconds kTick{250};

const char* stageWord(FrameStage stage)
{
    switch (stage) {
        case FrameStage::Reading:
            return "reading";
        case FrameStage::Preparing:
            return "preparing";
        case FrameStage::Rendering:
            return "rendering";
        case FrameStage::Writing:
            return "writing";
    }
    return "";
}

}  // namespace

ProgressMeter::ProgressMeter(long count, bool quiet, double after)
    : frames(count), shown(!quiet && isatty(STDERR_FILENO)), stageAfter(after), start(Clock::now())
{
    if (shown)
        thread = std::thread(&ProgressMeter::draw, this);
}

ProgressMeter::~ProgressMeter() { Finish(); }

void ProgressMeter::FrameBegins(const std::string& file)
{
    if (!shown)
        return;
    const std::lock_guard<std::mutex> hold(lock);
    open = true;
    name = file;
    frameStart = Clock::now();
    oweStage(FrameStage::Reading);
}

void ProgressMeter::Stage(FrameStage next)
{
    if (!shown)
        return;
    const std::lock_guard<std::mutex> hold(lock);
    oweStage(next);
}

void ProgressMeter::oweStage(FrameStage next)
{
    stage = next;
    // Each stage of a long frame is drawn, however short.
    if (std::string line = stageLine(Clock::now()); !line.empty()) {
        owed.push_back(std::move(line));
        wake.notify_one();
    }
}

void ProgressMeter::FrameDone(long number, long done)
{
    if (!shown)
        return;
    const std::lock_guard<std::mutex> hold(lock);
    open = false;
    // A still's stage line goes; a sequence's line takes its place.
    std::string line;
    if (frames > 1) {
        const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
        const double rate = seconds > 0 ? done / seconds : 0.0;
        const long left = rate > 0 ? static_cast<long>((frames - done) / rate + 0.5) : 0;
        char text[160];
        std::snprintf(text, sizeof text, "frame %ld (%ld of %ld)  %.2f fps  %ld:%02ld left ", number, done, frames,
                      rate, left / 60, left % 60);
        line = text;
    }
    owed.push_back(std::move(line));
    wake.notify_one();
}

void ProgressMeter::Finish()
{
    if (!thread.joinable())
        return;
    {
        const std::lock_guard<std::mutex> hold(lock);
        stopping = true;
        wake.notify_one();
    }
    thread.join();
}

std::string ProgressMeter::stageLine(Clock::time_point now) const
{
    if (!open || now - frameStart < stageAfter)
        return "";
    const double seconds = std::chrono::duration<double>(now - frameStart).count();
    char time[32];
    std::snprintf(time, sizeof time, "%.1f s", seconds);
    return name + ": " + stageWord(stage) + ", " + time;
}

void ProgressMeter::draw()
{
    std::unique_lock<std::mutex> hold(lock);
    for (;;) {
        wake.wait_for(hold, kTick, [&] { return !owed.empty() || stopping; });
        std::vector<std::string> lines;
        lines.swap(owed);
        if (lines.empty())
            if (std::string line = stageLine(Clock::now()); !line.empty())
                lines.push_back(std::move(line));
        const bool last = stopping;
        hold.unlock();
        for (const std::string& line : lines)
            show(line);
        if (last) {
            if (width > 0) {
                const StderrLine printing;
                std::fputc('\n', stderr);
            }
            return;
        }
        hold.lock();
    }
}

void ProgressMeter::show(const std::string& text)
{
    if (text.empty() && width == 0)
        return;
    // Spaces over what is left of a longer line before.
    const std::string blank(width > text.size() ? width - text.size() : 0, ' ');
    const StderrLine printing;
    std::fprintf(stderr, "\r%s%s", text.c_str(), blank.c_str());
    if (text.empty())
        std::fputc('\r', stderr);
    std::fflush(stderr);
    width = text.size();
}
