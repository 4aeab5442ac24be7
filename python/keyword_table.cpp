#include "python/keyword_table.h"

#include <algorithm>

std::string keywordNameOf(const std::string& optionName)
{
    std::string name = optionName;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

std::vector<Keyword> keywordTable(const std::vector<Parameter>& properties)
{
    std::vector<Keyword> table;
    for (const Parameter& p : properties) {
        const std::string stem = positionStem(p);
        const Parameter* y = stem.empty() ? nullptr : findParameter(properties, stem + "Y");
        if (p.name.back() == 'X' && y)
            table.push_back({keywordNameOf(optionNameOf(stem)), KeywordKind::Position, &p, y, "", ""});
        Keyword k{keywordNameOf(p.option), KeywordKind::Property, &p, nullptr, "", ""};
        if (p.isList())
            k.choice = p.option == "engine" ? kPythonEngine : formatParameterValue(p, p.defaultValue);
        table.push_back(k);
        for (const KeywordAlias& a : kKeywordAliases)
            if (p.option == a.option) {
                Keyword alias = k;
                alias.name = a.alias;
                alias.aliasOf = k.name;
                table.push_back(alias);
            }
    }
    table.push_back({"pixel_aspect", KeywordKind::PixelAspect, nullptr, nullptr, "", ""});
    table.push_back({"aperture", KeywordKind::Aperture, nullptr, nullptr, "", ""});
    table.push_back({"preset", KeywordKind::Preset, nullptr, nullptr, "", ""});
    return table;
}

std::string canonicalKeyword(const std::string& name)
{
    for (const KeywordAlias& a : kKeywordAliases)
        if (name == a.alias)
            return keywordNameOf(a.option);
    return name;
}

const Keyword* findKeyword(const std::vector<Keyword>& table, const std::string& name)
{
    for (const Keyword& k : table)
        if (k.name == name)
            return &k;
    return nullptr;
}
