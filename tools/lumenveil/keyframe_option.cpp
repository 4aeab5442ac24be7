#include "tools/lumenveil/keyframe_option.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>

#include "tools/lumenveil/cli_error.h"

KeyOption parseKeyOption(const std::vector<Parameter>& parameters, const std::string& text)
{
    const size_t equals = text.find('=');
    const size_t colon = text.find(':', equals == std::string::npos ? 0 : equals);
    if (equals == std::string::npos || colon == std::string::npos)
        throw UsageError("--key: \"" + text + "\" is not NAME=FRAME:VALUE");
    const std::string name = text.substr(0, equals);
    const std::string frameText = text.substr(equals + 1, colon - equals - 1);
    const std::string valueText = text.substr(colon + 1);
    const Parameter* parameter = findParameter(parameters, name);
    if (!parameter)
        throw UsageError("--key: no parameter named \"" + name + "\" (`lumenveil info` lists them)");
    if (!parameter->animated)
        throw UsageError("--key: " + parameter->name + " cannot be animated");
    char* end = nullptr;
    errno = 0;
    const double frame = std::strtod(frameText.c_str(), &end);
    if (frameText.empty() || errno != 0 || *end != '\0' || !std::isfinite(frame))
        throw UsageError("--key: \"" + frameText + "\" in \"" + text + "\" is not a frame number");
    if (const std::string problem = offFrameProblem(frame); !problem.empty())
        throw UsageError("--key " + text + ": " + problem);
    const double value = parseParameterValue(*parameter, valueText, "--key " + name);
    return KeyOption{parameter, frame, value};
}

std::string offFrameProblem(double frame, double tolerance)
{
    if (frame < -tolerance)
        return "frame " + formatNumber(frame) + " is before frame 0, the first a key can lie on";
    const double below = std::floor(frame);
    if (frame - below <= tolerance || below + 1.0 - frame <= tolerance)
        return "";
    return "frame " + formatNumber(frame) + " is between frames " + formatNumber(below) + " and " +
           formatNumber(below + 1.0) + "; keys lie on whole frames";
}
