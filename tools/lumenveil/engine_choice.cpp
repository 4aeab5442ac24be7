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
