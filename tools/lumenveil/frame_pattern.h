// Numbered file sequences: a frame number pattern in a path ("%04d", "%d" or
// "####") and the frame range of --frames.
#pragma once

#include <cstddef>
#include <string>

// The widest frame number a pattern may ask for: frames run up to 9 digits.
inline constexpr size_t kMaxFrameDigits = 10;

struct FrameRange {
    long first = 0;
    long last = 0;
    long Count() const { return last - first + 1; }
};

// True when the file name of `path` holds a frame number pattern; UsageError
// for a pattern wider than kMaxFrameDigits or "%Nd" without the padding 0.
bool hasFramePattern(const std::string& path);

// The path of frame `frame`: the pattern replaced by the number, padded with
// zeros to the pattern's width ("####" and "%04d" are four wide, "%d" none).
// A path without a pattern is returned as it is.
std::string framePath(const std::string& pattern, long frame);

// "A-B" (A <= B) or "A", frames at or above 0; UsageError otherwise.
FrameRange parseFrameRange(const std::string& text);
