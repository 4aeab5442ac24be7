// Progress of a sequence on stderr: frame, frames per second, time left; only
// when stderr is a terminal and not silenced.
#pragma once

#include <chrono>
#include <string>

class ProgressMeter {
public:
    ProgressMeter(long frames, bool quiet);
    // Frame `number` (of the range) is done; `done` frames so far.
    void FrameDone(long number, long done);
    // Ends the line.
    void Finish();

private:
    long frames;
    bool shown;
    bool drawn = false;
    std::chrono::steady_clock::time_point start;
};
