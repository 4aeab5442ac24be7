#include "embed/parameter_table.h"

#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <sstream>

#include "embed/errors.h"

namespace {

std::string lowered(std::string text)
{
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

// Lower case, with spaces and underscores as dashes, for comparing names.
std::string normalisedName(const std::string& text)
{
    std::string out = lowered(text);
    for (char& c : out)
        if (c == ' ' || c == '_')
            c = '-';
    return out;
}

// Shortest text that reads back as the same double.
std::string shortNumber(double value)
{
    if (value == std::floor(value) && std::fabs(value) < 1e15)
        return std::to_string(static_cast<long long>(value));
    for (int digits = 1; digits <= 17; ++digits) {
        std::ostringstream text;
        text.precision(digits);
        text << value;
        if (std::strtod(text.str().c_str(), nullptr) == value)
            return text.str();
    }
    return std::to_string(value);
}

bool parseDouble(const std::string& text, double* value)
{
    if (text.empty() || std::isspace(static_cast<unsigned char>(text[0])))
        return false;
    char* end = nullptr;
    errno = 0;
    *value = std::strtod(text.c_str(), &end);
    return errno == 0 && end && *end == '\0' && std::isfinite(*value);
}

// A number in form that strtod cannot hold (1e309, 1e-400).
bool beyondDoubles(const std::string& text)
{
    char* end = nullptr;
    errno = 0;
    std::strtod(text.c_str(), &end);
    return errno == ERANGE && end && *end == '\0' && !text.empty();
}

}  // namespace

namespace {

// The units of the effect's parameters, by property name: the radii are
// fractions of half the frame's width, as the effect takes them.
constexpr const char* kHalfWidth = "a fraction of half the frame's width: 0.05 on a 1920-wide frame is 48 pixels";
constexpr struct {
    const char* name;
    const char* unit;
} kUnits[] = {
    {"RadiusX", kHalfWidth},    {"RadiusY", kHalfWidth}, {"RadiusPSF1", kHalfWidth},
    {"RadiusPSF2", kHalfWidth}, {"Rotation", "degrees"},
};

std::string unitOf(const std::string& name)
{
    for (const auto& u : kUnits)
        if (name == u.name)
            return u.unit;
    return "";
}

}  // namespace

std::vector<Parameter> readParameters(const CDSPropertiesMap* map)
{
    std::vector<Parameter> parameters;
    for (; map; map = map->parent) {
        for (const CDSPropertiesMapEntry* entry = map->entries; entry && entry->count != 0; ++entry) {
            const CDSParamDef* d = entry->definition;
            if (!d || d->hidden())
                continue;
            Parameter p{d->guid, d->name, d->longName ? d->longName : d->name, optionNameOf(d->name), d->type,
                        d->defaultValue, d->hasRange(), d->minimum, d->maximum, {}, d->animated(), unitOf(d->name)};
            for (int i = 0; d->listEntries && i < d->listCount; ++i)
                p.listEntries.emplace_back(d->listEntries[i]);
            parameters.push_back(std::move(p));
        }
    }
    return parameters;
}

std::string optionNameOf(const std::string& propertyName)
{
    std::string option;
    char previous = ' ';
    for (char c : propertyName) {
        const unsigned char u = static_cast<unsigned char>(c);
        if (c == ' ' || c == '_' || c == '-') {
            if (!option.empty() && option.back() != '-')
                option += '-';
        } else {
            const bool startsPart = std::isupper(u) && (std::islower(static_cast<unsigned char>(previous)) ||
                                                        std::isdigit(static_cast<unsigned char>(previous)));
            if (startsPart && !option.empty() && option.back() != '-')
                option += '-';
            option += static_cast<char>(std::tolower(u));
        }
        previous = c;
    }
    return option;
}

const Parameter* findParameter(const std::vector<Parameter>& parameters, const std::string& name)
{
    const std::string wanted = normalisedName(name);
    for (const Parameter& p : parameters)
        if (normalisedName(p.name) == wanted || p.option == wanted)
            return &p;
    return nullptr;
}

double parseParameterValue(const Parameter& p, const std::string& text, const std::string& what)
{
    const std::string word = lowered(text);
    double value = 0.0;
    bool read = false;
    if (p.isList())
        for (size_t i = 0; i < p.listEntries.size() && !read; ++i)
            if (lowered(p.listEntries[i]) == word) {
                value = static_cast<double>(i);
                read = true;
            }
    if (!read && p.isFlag()) {
        if (word == "on" || word == "true" || word == "yes" || word == "1") {
            value = 1.0;
            read = true;
        } else if (word == "off" || word == "false" || word == "no" || word == "0") {
            value = 0.0;
            read = true;
        } else {
            throw UsageError(what + ": \"" + text + "\" is not on or off");
        }
    }
    if (!read && !parseDouble(text, &value) && beyondDoubles(text))
        throw UsageError(what + ": " + text + " is beyond the range of numbers");
    if (!read && !parseDouble(text, &value))
        throw UsageError(what + ": \"" + text + "\" is not " +
                         (p.isList() ? "one of " + describeRange(p) : p.isInteger() ? "a whole number" : "a number"));
    return checkParameterValue(p, value, what);
}

double checkParameterValue(const Parameter& p, double value, const std::string& what)
{
    if (!std::isfinite(value))
        throw UsageError(what + ": " + shortNumber(value) + " is not a finite number");
    if (p.isInteger() && value != std::floor(value))
        throw UsageError(what + ": \"" + shortNumber(value) + "\" is not a whole number");
    if (p.hasRange && (value < p.minimum || value > p.maximum))
        throw UsageError(what + ": " + shortNumber(value) + " is outside " + describeRange(p));
    return value;
}

std::string formatParameterValue(const Parameter& p, double value)
{
    if (p.isList()) {
        const double index = std::floor(value);
        if (index == value && index >= 0 && index < static_cast<double>(p.listEntries.size()))
            return lowered(p.listEntries[static_cast<size_t>(index)]);
    }
    if (p.isFlag())
        return value != 0.0 ? "on" : "off";
    return shortNumber(value);
}

std::string describeRange(const Parameter& p)
{
    if (p.isList()) {
        std::string names;
        for (const std::string& entry : p.listEntries)
        {
            if (!names.empty())
                names += '|';
            names += lowered(entry);
        }
        return names;
    }
    if (p.isFlag())
        return "on|off";
    if (!p.hasRange)
        return "";
    return shortNumber(p.minimum) + " to " + shortNumber(p.maximum);
}

std::string formatNumber(double value) { return shortNumber(value); }

std::string positionStem(const Parameter& p)
{
    // Stems whose X and Y properties are one position.
    static const char* const kPositionStems[] = {"Centre"};
    for (const char* stem : kPositionStems) {
        const std::string s = stem;
        if (p.name.size() == s.size() + 1 && p.name.compare(0, s.size(), s) == 0 &&
            (p.name.back() == 'X' || p.name.back() == 'Y'))
            return s;
    }
    return "";
}
