#include "tools/lumenveil/frame_pattern.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>

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
        if (path[i] == '#') {
            size_t start = i;
            while (start > nameStart && path[start - 1] == '#')
                --start;
            *at = start;
            *length = i - start + 1;
            if (*length > kMaxFrameDigits)
                throw UsageError(path + ": " + std::to_string(*length) + " #s make a frame number wider than " +
                                 std::to_string(kMaxFrameDigits) + " digits");
            *width = static_cast<int>(*length);
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

FrameRange parseFrameRange(const std::string& text)
{
    FrameRange range;
    const size_t dash = text.find('-');
    const std::string first = dash == std::string::npos ? text : text.substr(0, dash);
    const std::string last = dash == std::string::npos ? text : text.substr(dash + 1);
    if (!parseFrameNumber(first, &range.first) || !parseFrameNumber(last, &range.last))
        throw UsageError("--frames: \"" + text + "\" is not A-B with whole frame numbers from 0");
    if (range.last < range.first)
        throw UsageError("--frames: " + text + " ends before it starts");
    return range;
}
