// Progress of a render on stderr, only when stderr is a terminal and not
// silenced: a sequence's line (frame, frames per second, time left) after each
// frame, and, for a frame (of a sequence or a still) that has taken longer
// than a set time, the file, its stage and its time so far, redrawn a few
// times a second. One thread of the meter draws every line, so that the
// stages never wait for stderr.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

// What the tool is doing with a frame.
enum class FrameStage { Reading, Preparing, Rendering, Writing };

class ProgressMeter {
public:
    // `stageAfter`: seconds a frame takes before its stage is shown.
    ProgressMeter(long frames, bool quiet, double stageAfter);
    ~ProgressMeter();
    ProgressMeter(const ProgressMeter&) = delete;
    ProgressMeter& operator=(const ProgressMeter&) = delete;

    // The frame read from the file `name` begins: its clock starts, reading.
    void FrameBegins(const std::string& name);
    // The frame that began goes on to `stage`.
    void Stage(FrameStage stage);
    // Frame `number` (of the range) is done; `done` frames so far.
    void FrameDone(long number, long done);
    // Draws what is owed and ends the line; nothing is drawn after it.
    void Finish();

private:
    using Clock = std::chrono::steady_clock;

    // The frame goes on to `next`; its line is owed if it has taken long. Under `lock`.
    void oweStage(FrameStage next);
    // The frame's stage line when it has taken `stageAfter`, else empty.
    std::string stageLine(Clock::time_point now) const;
    // The drawing thread: owed lines as they come, the stage line at each tick.
    void draw();
    // Replaces the line on the terminal with `text` (empty: clears it).
    void show(const std::string& text);

    const long frames;
    const bool shown;
    const std::chrono::duration<double> stageAfter;
    const Clock::time_point start;

    std::mutex lock;  // guards what follows, up to `thread`
    std::condition_variable wake;
    std::vector<std::string> owed;  // lines to draw in order
    bool open = false;              // a frame has begun and is not done
    std::string name;
    FrameStage stage = FrameStage::Reading;
    Clock::time_point frameStart;
    bool stopping = false;
    std::thread thread;

    size_t width = 0;  // of the line on the terminal; only the drawing thread's
};
