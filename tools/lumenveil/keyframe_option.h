// --key NAME=FRAME:VALUE: a key of an animated parameter at a frame.
#pragma once

#include <string>
#include <vector>

#include "embed/parameter_table.h"

struct KeyOption {
    const Parameter* parameter;
    double frame;
    double value;
};

// NAME is a parameter's option or property name ("radius-x", "RadiusX",
// "centre-x"); FRAME a whole frame number from 0; VALUE as the parameter's
// option takes it. UsageError for anything else, or a parameter that cannot
// be animated.
KeyOption parseKeyOption(const std::vector<Parameter>& parameters, const std::string& text);

// "" when `frame` is a whole frame number from 0 (within `tolerance` of
// one), else why not: "frame 2.5 is between frames 2 and 3".
std::string offFrameProblem(double frame, double tolerance = 0.0);
