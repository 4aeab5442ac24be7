// Numbered file sequences: a frame number pattern in a path ("%04d", "%d",
// "#" for four digits and "@" for one, as compositors write them) and the
// frames of --frames.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

// The widest frame number a pattern may ask for ("####", sixteen digits):
// frames run up to 9 digits, the rest is zeros.
inline constexpr size_t kMaxFrameDigits = 16;
// Digits of one "#" in a pattern, and of one "@".
inline constexpr size_t kHashDigits = 4;
inline constexpr size_t kAtDigits = 1;

// The most frames one run takes.
inline constexpr long kMaxFrames = 10000000;

// The frames of a run, ascending, each once; a still is the one frame 0.
struct FrameList {
    std::vector<long> frames{0};
    long Count() const { return static_cast<long>(frames.size()); }
    long First() const { return frames.front(); }
};

// True when the file name of `path` holds a frame number pattern; UsageError
// for a pattern wider than kMaxFrameDigits or "%Nd" without the padding 0.
bool hasFramePattern(const std::string& path);

// The path of frame `frame`: the pattern replaced by the number, padded with
// zeros to the pattern's width ("#" and "%04d" are four wide, "@@@" three,
// "%d" none).
// A path without a pattern is returned as it is.
std::string framePath(const std::string& pattern, long frame);

// The lowest frame number of the files in `pattern`'s folder that the
// pattern names, or -1 when there is none (or no pattern).
long firstFrameOnDisk(const std::string& pattern);

// A comma-separated list of "A", "A-B" (A <= B) and "A-BxN" (every Nth
// frame from A to B), frames at or above 0: "1-100", "1-100x5",
// "1,5,9-12"; UsageError otherwise.
FrameList parseFrameList(const std::string& text);
