// The effect's parameters as a host knows them: read from the module's
// property map (names, types, defaults, page ranges, list entries), with the
// option name derived from each property's name.
#pragma once

#include <string>
#include <vector>

#include "hostsdk/CDSParamDef.h"

// The name of the effect's property that picks its transform engine.
inline constexpr const char* kEngineParameterName = "Engine";

struct Parameter {
    GUID guid;
    std::string name;      // the property's name, "RadiusX"
    std::string longName;  // "Radius X"
    std::string option;    // "radius-x"
    VARTYPE type;
    double defaultValue;
    bool hasRange;
    double minimum, maximum;
    std::vector<std::string> listEntries;  // names of 0, 1, ... for a list
    bool animated;
    std::string unit;  // what a value measures, "" where the name says it all

    bool isFlag() const { return type == VT_BOOL; }
    bool isInteger() const { return type == VT_I4 || type == VT_UI4 || type == VT_UI8; }
    bool isList() const { return !listEntries.empty(); }
};

// The named (not hidden) properties of `map` and its parents, in map order.
std::vector<Parameter> readParameters(const CDSPropertiesMap* map);

// "RadiusX" -> "radius-x", "Bright Emphasis" -> "bright-emphasis",
// "RadiusPSF1" -> "radius-psf1": words and a capital after a small letter or
// digit start a new lower-case part.
std::string optionNameOf(const std::string& propertyName);

// The parameter named `name` by its property name or its option name (either
// case, dashes or spaces alike), or null.
const Parameter* findParameter(const std::vector<Parameter>& parameters, const std::string& name);

// The number `text` gives `parameter`: a list entry's name or index, a whole
// number for integers, "on"/"off"/"true"/"false"/1/0 for flags, a number
// otherwise; within the page range. UsageError naming `what` otherwise.
double parseParameterValue(const Parameter& parameter, const std::string& text, const std::string& what);

// `value` if it fits `parameter`: a whole number for integers, within the
// page range, finite. UsageError naming `what` otherwise.
double checkParameterValue(const Parameter& parameter, double value, const std::string& what);

// The value as the user writes it: a list entry's name, on/off, or a number.
std::string formatParameterValue(const Parameter& parameter, double value);

// "0 to 0.3", "circle|ellipse|polygon|image", "on|off", or "" without a range.
std::string describeRange(const Parameter& parameter);

// The shortest text that reads back as `value`.
std::string formatNumber(double value);

// The stem of a position's half, "Centre" for "CentreX" and "CentreY": the
// two halves are one position to a host. "" for other parameters.
std::string positionStem(const Parameter& parameter);
