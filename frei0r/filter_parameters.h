// The filter's parameters in frei0r's terms, made from the effect's parameter
// list (its property map) and three settings of the host's own: a preset to
// start from, the Spread picture and the pixel aspect.
//
//   list property      string, the entry's name in lower case ("polygon")
//   switch             bool
//   X and Y of a stem  position ("CentreX", "CentreY" become "centre")
//   number, integer    double. A range within 0 to 1 (radii, fractions of the
//                      width) is taken in its own units; any other range is
//                      mapped linearly from frei0r's 0 to 1, and integers
//                      rounded. Values outside are limited to the range.
//
// The preset comes first, so that a host that sets parameters in order (as
// ffmpeg does) can give it alone; the properties follow in map order, then the
// Spread picture and the pixel aspect.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "embed/parameter_table.h"

enum class FilterSetting { Property, Preset, Spread, PixelAspect };

struct FilterParameter {
    std::string name;         // "radius-x": the property's option name
    int type = 0;             // F0R_PARAM_BOOL, _DOUBLE, _POSITION or _STRING
    std::string explanation;  // what it means, its units and its default
    FilterSetting setting = FilterSetting::Property;
    const Parameter* property = nullptr;   // the property it sets (X of a position)
    const Parameter* propertyY = nullptr;  // Y of a position
    double minimum = 0.0, maximum = 1.0;   // the value's range in its own units
    bool mapped = false;                   // frei0r's 0..1 is mapped onto the range
    double defaultValue = 0.0;             // in its own units, X of a position
    double defaultY = 0.0;
    std::string defaultText;               // of a string
};

// The pixel aspects the filter takes (width over height of a pixel), mapped
// from frei0r's 0 to 1.
inline constexpr double kLeastPixelAspect = 0.5;
inline constexpr double kGreatestPixelAspect = 2.5;

// The filter's parameters for `properties`, which must outlive the result.
// `listDefaults` gives list properties, by option name, a default of the
// filter's own ({"engine", "fast"}).
std::vector<FilterParameter> filterParameters(const std::vector<Parameter>& properties,
                                              const std::map<std::string, std::string>& listDefaults);

// A frei0r double or position half to the value in its own units (limited,
// mapped, rounded for integers), and back.
double settingValueOf(const FilterParameter& p, double frei0rValue);
double frei0rValueOf(const FilterParameter& p, double settingValue);
