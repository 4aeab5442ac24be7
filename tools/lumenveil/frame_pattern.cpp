#include "tools/lumenveil/frame_pattern.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "tools/lumenveil/cli_error.h"

namespace {

// Where the pattern starts and how long it is and how wide the number, in
// `path`'s file name; false when there is none. UsageError for a pattern the
// tool cannot fill: wider than kMaxFrameDigits, or "%Nd" without the 0 that
// pads with zeros (it would pad with spaces).
bool findPattern(const std::string& path, size_t* at, size_t* length, int* width)
{
    const size_t nameStart = path.rfind('/') == std::string::npos ? 0 : path.rfind('/') + 1;
    for (size_t i = path.size(); i-- > nameStart;) {
        if (path[i] == '#' || path[i] == '@') {
            size_t start = i, digits = 0;
            while (start > nameStart && (path[start - 1] == '#' || path[start - 1] == '@'))
                --start;
            for (size_t j = start; j <= i; ++j)
                digits += path[j] == '#' ? kHashDigits : kAtDigits;
            *at = start;
            *length = i - start + 1;
            if (digits > kMaxFrameDigits)
                throw UsageError(path + ": " + path.substr(start, *length) + " makes a frame number of " +
                                 std::to_string(digits) + " digits, wider than " + std::to_string(kMaxFrameDigits));
            *width = static_cast<int>(digits);
            return true;
        }
        if (path[i] == 'd' && i > nameStart) {
            size_t start = i;
            while (start > nameStart && std::isdigit(static_cast<unsigned char>(path[start - 1])))
                --start;
            if (start > nameStart && path[start - 1] == '%') {
                const std::string digits = path.substr(start, i - start);
                *at = start - 1;
                *length = i - start + 2;
                if (!digits.empty() && digits[0] != '0')
                    throw UsageError(path + ": %" + digits + "d pads frame numbers with spaces; %0" + digits +
                                     "d pads them with zeros");
                if (digits.size() > 3 || std::atoi(digits.c_str()) > static_cast<int>(kMaxFrameDigits))
                    throw UsageError(path + ": %" + digits + "d makes a frame number wider than " +
                                     std::to_string(kMaxFrameDigits) + " digits");
                *width = std::atoi(digits.c_str());
                return true;
            }
        }
    }
    return false;
}

bool parseFrameNumber(const std::string& text, long* value)
{
    if (text.empty())
        return false;
    for (char c : text)
        if (!std::isdigit(static_cast<unsigned char>(c)))
            return false;
    if (text.size() > 9)
        return false;
    *value = std::atol(text.c_str());
    return true;
}

}  // namespace

bool hasFramePattern(const std::string& path)
{
    size_t at = 0, length = 0;
    int width = 0;
    return findPattern(path, &at, &length, &width);
}

std::string framePath(const std::string& pattern, long frame)
{
    size_t at = 0, length = 0;
    int width = 0;
    if (!findPattern(pattern, &at, &length, &width))
        return pattern;
    char number[32];
    std::snprintf(number, sizeof number, "%0*ld", width, frame);
    return pattern.substr(0, at) + number + pattern.substr(at + length);
}

long firstFrameOnDisk(const std::string& pattern)
{
    size_t at = 0, length = 0;
    int width = 0;
    if (!findPattern(pattern, &at, &length, &width))
        return -1;
    const size_t slash = pattern.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : pattern.substr(0, slash + 1);
    const size_t nameStart = slash == std::string::npos ? 0 : slash + 1;
    const std::string prefix = pattern.substr(nameStart, at - nameStart);
    const std::string suffix = pattern.substr(at + length);
    long first = -1;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        const std::string name = entry.path().filename().string();
        if (name.size() <= prefix.size() + suffix.size() || name.compare(0, prefix.size(), prefix) != 0 ||
            name.compare(name.size() - suffix.size(), suffix.size(), suffix) != 0)
            continue;
        long frame = 0;
        // The number must be the one the pattern writes for it (padding included).
        if (parseFrameNumber(name.substr(prefix.size(), name.size() - prefix.size() - suffix.size()), &frame) &&
            framePath(pattern, frame) == pattern.substr(0, nameStart) + name && (first < 0 || frame < first))
            first = frame;
    }
    return first;
}

FrameList parseFrameList(const std::string& text)
{
    const std::string usage = "--frames: \"" + text + "\" is not a list of A, A-B or A-BxN with whole frame numbers from 0";
    FrameList list;
    list.frames.clear();
    size_t start = 0;
    while (start <= text.size()) {
        const size_t comma = std::min(text.find(',', start), text.size());
        const std::string item = text.substr(start, comma - start);
        start = comma + 1;
        const size_t x = item.find('x');
        const std::string span = item.substr(0, x);
        const size_t dash = span.find('-');
        long first = 0, last = 0, step = 1;
        if (!parseFrameNumber(span.substr(0, dash), &first) ||
            !parseFrameNumber(dash == std::string::npos ? span : span.substr(dash + 1), &last) ||
            (x != std::string::npos && (dash == std::string::npos || !parseFrameNumber(item.substr(x + 1), &step))))
            throw UsageError(usage);
        if (last < first)
            throw UsageError("--frames: " + item + " ends before it starts");
        if (step < 1)
            throw UsageError("--frames: " + item + " steps by " + std::to_string(step) + ": the step is 1 or more");
        if ((last - first) / step + 1 > kMaxFrames - list.Count())
            throw UsageError("--frames: " + text + " lists more than " + std::to_string(kMaxFrames) + " frames");
        for (long f = first; f <= last; f += step)
            list.frames.push_back(f);
    }
    std::sort(list.frames.begin(), list.frames.end());
    list.frames.erase(std::unique(list.frames.begin(), list.frames.end()), list.frames.end());
    return list;
}
