// The frame-number pattern of a path and the --frames list. Input: the
// list's text, a newline, the path. UsageError is how bad text (a list or
// a pattern) is refused; anything else (a crash, a hang, a sanitizer
// report) is a finding.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "tools/lumenveil/cli_error.h"
#include "tools/lumenveil/frame_pattern.h"

namespace {

// Frames beyond the parsed list's last, where a path meets them when a run
// counts past its list.
constexpr long kFramesPastEnd = 1;

void expandAt(const std::string& pattern, long frame)
{
    const std::string path = framePath(pattern, frame);
    // A path without a pattern comes back as it is.
    if (!hasFramePattern(pattern) && path != pattern)
        std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    const size_t newline = text.find('\n');
    const std::string list = text.substr(0, newline);
    const std::string pattern = newline == std::string::npos ? text : text.substr(newline + 1);
    try {
        expandAt(pattern, 0);
    } catch (const UsageError&) {
    }
    try {
        const FrameList frames = parseFrameList(list);
        // At least one frame, at most kMaxFrames, from 0, ascending, each once.
        if (frames.Count() < 1 || frames.Count() > kMaxFrames || frames.First() < 0)
            std::abort();
        for (size_t i = 1; i < frames.frames.size(); ++i)
            if (frames.frames[i] <= frames.frames[i - 1])
                std::abort();
        expandAt(pattern, frames.First());
        expandAt(pattern, frames.frames.back() + kFramesPastEnd);
    } catch (const UsageError&) {
    }
    return 0;
}
