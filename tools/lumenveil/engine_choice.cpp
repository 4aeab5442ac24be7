#include "tools/lumenveil/engine_choice.h"

#include <cstdlib>

#include "tools/lumenveil/cli_error.h"

namespace {

constexpr const char* kModeVariable = "VZ_FFT_MODE";

}  // namespace

const std::vector<EngineChoice>& engineChoices()
{
    // One line per back end.
    static const std::vector<EngineChoice> choices = {
        {"faithful", nullptr,
         "square power-of-two double-precision transform, the effect's reference output; the slowest"},
        {"fast", "fast",
         "smallest sizes of factors 2, 3, 5, 7, chosen per axis, in double precision: 2 to 10 times faster and "
         "far less memory; within one step of 16 bits of faithful"},
        {"fast-float", "fast-float",
         "as fast, in single precision: faster again and half the memory; within two steps of 16 bits of "
         "faithful"},
    };
    return choices;
}

std::vector<std::string> engineNames()
{
    std::vector<std::string> names;
    for (const EngineChoice& choice : engineChoices())
        names.emplace_back(choice.name);
    return names;
}

void selectEngine(const std::string& name)
{
    for (const EngineChoice& choice : engineChoices()) {
        if (name != choice.name)
            continue;
        if (choice.modeValue)
            setenv(kModeVariable, choice.modeValue, 1);
        else
            unsetenv(kModeVariable);
        return;
    }
    std::string names;
    for (const std::string& n : engineNames()) {
        if (!names.empty())
            names += ", ";
        names += n;
    }
    throw UsageError("--engine: \"" + name + "\" is not one of " + names);
}
