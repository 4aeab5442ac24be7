#include "tools/lumenveil/host_format_choice.h"

#include <cctype>
#include <cstdlib>

#include "embed/host_frame.h"
#include "tools/lumenveil/cli_error.h"

namespace {

std::string upper(std::string text)
{
    for (char& c : text)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

}  // namespace

std::string hostFormatSupport(const HostFormatGeometry& format)
{
    // The effect recognises the first fifteen formats only.
    if (format.code == kHostFormatCount)
        return "the effect does not take this format";
    return "";
}

const HostFormatGeometry* chooseHostFormat(const std::string& name, SampleDepth depth)
{
    if (name.empty())
        return &defaultHostFormat(depth == SampleDepth::U8);
    const HostFormatGeometry* format = nullptr;
    char* end = nullptr;
    const long code = std::strtol(name.c_str(), &end, 10);
    if (end && *end == '\0' && end != name.c_str() && code >= 1 && code <= kHostFormatCount)
        format = hostFormatGeometry(static_cast<int32_t>(code));
    const std::string wanted = upper(name);
    for (int32_t c = 1; c <= kHostFormatCount && !format; ++c) {
        const std::string known = upper(hostFormatGeometry(c)->name);
        if (known == wanted || known == "MFIF_" + wanted)
            format = hostFormatGeometry(c);
    }
    if (!format)
        throw UsageError("--host-format: unknown format \"" + name + "\" (`lumenveil formats` lists them)");
    const std::string why = hostFormatSupport(*format);
    if (!why.empty())
        throw UsageError(std::string("--host-format: ") + format->name + " is not available: " + why);
    return format;
}
