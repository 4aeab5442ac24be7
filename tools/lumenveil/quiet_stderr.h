// Readers and writers of image files (libpng) print some complaints to
// stderr themselves, before the tool reports the same failure in its own
// one line. While a QuietStderr lives, stderr goes to /dev/null; sections of
// several threads may overlap, and stderr comes back when the last ends.
// The tool's own lines printed meanwhile (the progress meter) wait for that
// through StderrLine.
#pragma once

class QuietStderr {
public:
    QuietStderr();
    ~QuietStderr();
    QuietStderr(const QuietStderr&) = delete;
    QuietStderr& operator=(const QuietStderr&) = delete;
};

// Held while the tool prints a line of its own: never inside a quiet section.
class StderrLine {
public:
    StderrLine();
    ~StderrLine();
    StderrLine(const StderrLine&) = delete;
    StderrLine& operator=(const StderrLine&) = delete;
};
