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
// "centre-x"); FRAME a frame number (fractions allowed); VALUE as the
// parameter's option takes it. UsageError for anything else, or a
// parameter that cannot be animated.
KeyOption parseKeyOption(const std::vector<Parameter>& parameters, const std::string& text);
