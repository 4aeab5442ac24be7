// The keyword arguments of `defocus` and `Effect`, made from the effect's
// parameters (its property map): one keyword a property, named after its
// option name with underscores ("radius_x", "bright_emphasis"); the two
// halves of a position also as one pair ("centre" for CentreX and CentreY);
// then the host's own settings, the pixel aspect, the aperture picture and
// a preset to start from.
#pragma once

#include <string>
#include <vector>

#include "embed/parameter_table.h"

enum class KeywordKind { Property, Position, PixelAspect, Aperture, Preset };

struct Keyword {
    std::string name;
    KeywordKind kind = KeywordKind::Property;
    const Parameter* property = nullptr;   // the property; X of a position
    const Parameter* propertyY = nullptr;  // Y of a position
    std::string choice;                    // a list's default entry as the module takes it ("fast" for the engine)
    std::string aliasOf;                   // the keyword this one is another name of, or ""
};

// Shorter names NumPy users reach for first, each another name of a
// property's keyword: (alias, the property's option name).
struct KeywordAlias {
    const char* alias;
    const char* option;
};
inline constexpr KeywordAlias kKeywordAliases[] = {{"radius", "radius-x"}};

// The engine a new effect of the Python module renders with, unless a preset
// or a keyword names another: the faster transforms, whose pictures differ
// from the faithful ones by at most a step or two of a 16-bit sample.
inline constexpr const char* kPythonEngine = "fast";

// The keywords for `properties`, which must outlive the result: the
// properties in map order, each position pair before its halves and each
// alias after its property, then pixel_aspect, aperture and preset.
std::vector<Keyword> keywordTable(const std::vector<Parameter>& properties);

// The keyword `name` stands for: its alias target, or `name` itself.
std::string canonicalKeyword(const std::string& name);

// "radius-x" -> "radius_x".
std::string keywordNameOf(const std::string& optionName);

// The keyword named exactly `name`, or null.
const Keyword* findKeyword(const std::vector<Keyword>& table, const std::string& name);
