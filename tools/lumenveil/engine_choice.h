// The effect's transform back end, chosen for the whole process through the
// environment variable the engine reads when it is created.
#pragma once

#include <string>
#include <vector>

struct EngineChoice {
    const char* name;       // as --engine takes it
    const char* modeValue;  // VZ_FFT_MODE's value; null: the variable is removed
    const char* help;       // what it costs and how far its output can differ
};

// The back ends offered, first the default.
const std::vector<EngineChoice>& engineChoices();

// The names, for the option's check and help.
std::vector<std::string> engineNames();

// Sets the environment for `name`; call before any effect is created.
// UsageError for a name not offered.
void selectEngine(const std::string& name);
