#include "frei0r/filter_parameters.h"

extern "C" {
#include <frei0r.h>
}

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

FilterParameter named(std::string name, int type, std::string explanation)
{
    FilterParameter f;
    f.name = std::move(name);
    f.type = type;
    f.explanation = std::move(explanation);
    return f;
}

std::string fewDigits(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.4g", value);
    return text;
}

// Whether a range can be taken as frei0r's 0 to 1 in its own units.
bool withinUnit(const Parameter& p) { return p.hasRange && p.minimum >= 0.0 && p.maximum <= 1.0 && !p.isInteger(); }

std::string rangeText(const FilterParameter& f, const Parameter& p)
{
    const std::string own = describeRange(p);
    if (!f.mapped)
        return own + ", default " + formatParameterValue(p, p.defaultValue);
    return "0 to 1 maps linearly onto " + own + ", default " + formatParameterValue(p, p.defaultValue) + " at " +
           fewDigits(frei0rValueOf(f, p.defaultValue));
}

FilterParameter fromProperty(const Parameter& p, const std::map<std::string, std::string>& listDefaults)
{
    FilterParameter f = named(p.option, F0R_PARAM_DOUBLE, p.longName);
    f.property = &p;
    f.defaultValue = p.defaultValue;
    if (p.isList()) {
        f.type = F0R_PARAM_STRING;
        f.defaultText = formatParameterValue(p, p.defaultValue);
        if (const auto own = listDefaults.find(p.option); own != listDefaults.end())
            f.defaultText = own->second;
        f.explanation += ": " + describeRange(p) + ", default " + f.defaultText;
        return f;
    }
    if (p.isFlag()) {
        f.type = F0R_PARAM_BOOL;
        f.explanation += ": on or off, default " + formatParameterValue(p, p.defaultValue);
        return f;
    }
    if (p.hasRange) {
        f.minimum = p.minimum;
        f.maximum = p.maximum;
        f.mapped = !withinUnit(p);
    }
    f.explanation += ": " + rangeText(f, p) + (p.animated ? "; animatable" : "") + (p.unit.empty() ? "" : "; " + p.unit);
    return f;
}

FilterParameter position(const std::string& stem, const Parameter& x, const Parameter& y)
{
    FilterParameter f = named(optionNameOf(stem), F0R_PARAM_POSITION, stem + ": " + x.longName + " and " + y.longName);
    f.property = &x;
    f.propertyY = &y;
    f.minimum = x.minimum;
    f.maximum = x.maximum;
    f.defaultValue = x.defaultValue;
    f.defaultY = y.defaultValue;
    f.explanation += " as x/y, each " + describeRange(x) + ", default " + formatParameterValue(x, x.defaultValue) +
                     "/" + formatParameterValue(y, y.defaultValue) + "; animatable";
    return f;
}

}  // namespace

std::vector<FilterParameter> filterParameters(const std::vector<Parameter>& properties,
                                              const std::map<std::string, std::string>& listDefaults)
{
    std::vector<FilterParameter> list;
    FilterParameter preset = named("preset", F0R_PARAM_STRING,
                                   "Preset: path of a JSON preset of the effect (lumenveil render --save-preset); "
                                   "its values apply first and the parameters given override them. Default none");
    preset.setting = FilterSetting::Preset;
    list.push_back(preset);
    for (const Parameter& p : properties) {
        const std::string stem = positionStem(p);
        if (stem.empty()) {
            list.push_back(fromProperty(p, listDefaults));
            continue;
        }
        // The two halves of a position become one parameter, at the X's place.
        const Parameter* y = findParameter(properties, stem + "Y");
        if (p.name.back() == 'X' && y)
            list.push_back(position(stem, p, *y));
    }
    FilterParameter spread = named("spread", F0R_PARAM_STRING,
                           "Spread: path of the picture the Image shape cuts its aperture from, fitted into the "
                           "frame (centred, its aspect kept) when its size differs. Default none: the frame itself");
    spread.setting = FilterSetting::Spread;
    list.push_back(spread);
    FilterParameter aspect = named("pixel-aspect", F0R_PARAM_DOUBLE, "Pixel Aspect");
    aspect.setting = FilterSetting::PixelAspect;
    aspect.minimum = kLeastPixelAspect;
    aspect.maximum = kGreatestPixelAspect;
    aspect.mapped = true;
    aspect.defaultValue = 1.0;
    Parameter shown;
    shown.hasRange = true;
    shown.minimum = kLeastPixelAspect;
    shown.maximum = kGreatestPixelAspect;
    shown.defaultValue = 1.0;
    aspect.explanation += ": width over height of a pixel; " + rangeText(aspect, shown);
    list.push_back(aspect);
    return list;
}

double settingValueOf(const FilterParameter& p, double v)
{
    if (std::isnan(v))
        v = p.mapped ? frei0rValueOf(p, p.defaultValue) : p.defaultValue;
    double value = p.mapped ? p.minimum + std::clamp(v, 0.0, 1.0) * (p.maximum - p.minimum)
                            : std::clamp(v, p.minimum, p.maximum);
    if (p.property && p.property->isInteger())
        value = std::round(value);
    return value;
}

double frei0rValueOf(const FilterParameter& p, double value)
{
    if (!p.mapped || p.maximum <= p.minimum)
        return value;
    return (value - p.minimum) / (p.maximum - p.minimum);
}
