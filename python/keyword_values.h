// Keyword arguments given to `defocus`, `Effect` or `Effect.set`, read into
// values for an effect. Every value is read and checked before any is
// applied, so that a bad one leaves the effect as it was.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <pybind11/pybind11.h>

#include "python/array_frame.h"
#include "python/keyword_table.h"

struct EffectValues {
    std::vector<std::pair<const Parameter*, double>> properties;  // in keyword order
    std::optional<double> pixelAspect;
    bool apertureGiven = false;
    std::optional<ArrayFrame> aperture;  // a copy of its own; none: cut from the frame
    std::optional<std::string> presetPath, presetText;
};

// The values `keywords` give (a keyword given None is left out). TypeError
// for an unknown keyword or a value of the wrong kind; ValueError for a value
// outside its range; OSError for a preset that cannot be read.
EffectValues readValues(const std::vector<Keyword>& table, const pybind11::kwargs& keywords);

// The number a property takes for `value`: a list entry's name or index, a
// bool (or 0 or 1) for a switch, a whole number for an integer, a number
// otherwise; within the property's range. `what` names it in messages.
double propertyValue(const Parameter& property, const pybind11::handle& value, const std::string& what);

// A property's value as Python shows it: a list entry's name, a bool, an int
// or a float.
pybind11::object pythonValue(const Parameter& property, double value);

// The text of the file at `path` (str or os.PathLike); OSError when it
// cannot be read.
std::string readTextFile(const pybind11::handle& path);

// Writes `text` to `path` through a temporary file beside it, renamed into
// place, so that a failure leaves no partial file; OSError when it cannot.
void writeTextFile(const pybind11::handle& path, const std::string& text);
