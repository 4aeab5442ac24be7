// The nearest option to one that was mistyped, for the message that refuses it.
#pragma once

#include <string>

#include <CLI/CLI.hpp>

// " (did you mean --radius-x?)" for the first word of argv that starts with
// "--" and names no option of `command` or of the program `app`, when one of
// theirs is within a few letters of it; "" otherwise.
std::string suggestOption(const CLI::App& app, const CLI::App* command, int argc, char** argv);
