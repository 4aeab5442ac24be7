// `lumenveil focus`: the depth of one pixel of a depth map and the blur
// radius Lumenveil Depth gives it with the parameters given: the focus picker
// of the command line.
#pragma once

#include <string>

#include <CLI/CLI.hpp>

#include "embed/effect_module.h"
#include "tools/lumenveil/parameter_options.h"

struct FocusRequest {
    std::string input;    // the frame, for its size (and its depth channel)
    std::string depth;    // the depth map; empty: INPUT's --depth-channel
    std::string channel;
    std::string at;       // X,Y in pixels, 0,0 the top-left
};

// Adds the command's own options (not the parameters) to `command`.
void addFocusOptions(CLI::App& command, FocusRequest& request);
// Prints the depth and radius at the pixel; UsageError or Failure otherwise.
void printFocus(const EffectModule& module, const FocusRequest& request, const ParameterOptions& parameters);
