// Presets of a property container: its state as readable JSON, and loading it
// back all or nothing.
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <optional>

#include "hostsdk/CDSBasePropertyContainer.h"

using nlohmann::json;

namespace {

std::string keyText(uint32_t key)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", key);
    return text;
}

// A JSON value as the number a property of `type` takes, or nothing when the
// type does not fit.
std::optional<double> numberFor(const json& value, VARTYPE type)
{
    switch (type) {
    case VT_BOOL:
        if (value.is_boolean())
            return value.get<bool>() ? 1.0 : 0.0;
        if (value.is_number_integer() && (value.get<int64_t>() == 0 || value.get<int64_t>() == 1))
            return static_cast<double>(value.get<int64_t>());
        return std::nullopt;
    case VT_I4:
    case VT_UI4:
    case VT_UI8:
        if (value.is_number_integer())
            return static_cast<double>(value.get<int64_t>());
        return std::nullopt;
    default:
        if (value.is_number())
            return value.get<double>();
        return std::nullopt;
    }
}

bool inRange(const CDSParamDef& def, double v)
{
    if (!std::isfinite(v))
        return false;
    // Lists, switches and whole numbers are stored as integers: a fraction
    // would be rounded to some other value.
    const bool whole = def.listEntries || def.type == VT_I4 || def.type == VT_BOOL || def.type == VT_UI4;
    if (whole && v != std::floor(v))
        return false;
    if (def.listEntries && def.listCount > 0)
        return v >= 0 && v < def.listCount;
    return !def.hasRange() || (v >= def.minimum && v <= def.maximum);
}

// The value and keys of one property's item of a preset, checked against its
// entry: "" when they can be taken, else why not (after the property's name).
std::string readItem(const json& item, const CDSPropertiesMapEntry& entry, double* value,
                     std::vector<CDSBasePropertyContainer::Keyframe>* keys)
{
    const CDSParamDef& def = *entry.definition;
    if (item.contains("key") && (!item["key"].is_string() || item["key"].get<std::string>() != keyText(entry.key)))
        return "has the wrong key";
    if (!item.contains("value"))
        return "has no value";
    const std::optional<double> number = numberFor(item["value"], def.type);
    if (!number)
        return "has a value of the wrong type";
    if (!inRange(def, *number))
        return "is out of range";
    *value = *number;
    if (!item.contains("keys"))
        return "";
    if (!item["keys"].is_array())
        return "has malformed keys";
    if (!item["keys"].empty() && !def.animated())
        return "cannot be animated";
    for (const json& key : item["keys"]) {
        if (!key.is_array() || key.size() != 2 || !key[0].is_number() || !std::isfinite(key[0].get<double>()))
            return "has a malformed key";
        const std::optional<double> keyValue = numberFor(key[1], VT_R8);
        if (!keyValue || !inRange(def, *keyValue))
            return "has a key out of range";
        keys->push_back({key[0].get<double>(), *keyValue});
    }
    std::sort(keys->begin(), keys->end(), [](const auto& a, const auto& b) { return a.time < b.time; });
    return "";
}

}  // namespace

std::string CDSBasePropertyContainer::SavePreset()
{
    json properties = json::array();
    const CDSPropertiesMap* map = GetStaticPropertiesMap();
    for (const CDSPropertiesMapEntry* e = map ? map->entries : nullptr; e && e->count != 0; ++e) {
        const CDSParamDef* def = e->definition;
        if (!def || def->hidden() || !stored.count(e->key))
            continue;
        json item;
        item["guid"] = FormatGuid(def->guid);
        item["key"] = keyText(e->key);
        item["name"] = def->name ? def->name : "";
        const double v = readStored(*e);
        if (def->type == VT_BOOL)
            item["value"] = v != 0.0;
        else if (def->type == VT_R8)
            item["value"] = v;
        else
            item["value"] = static_cast<int64_t>(v);
        json keys = json::array();
        if (const std::vector<Keyframe>* list = Keys(e->key))
            for (const Keyframe& k : *list)
                keys.push_back(json::array({k.time, k.value}));
        item["keys"] = keys;
        properties.push_back(item);
    }
    json preset;
    preset["class"] = FormatGuid(PresetClassId());
    preset["properties"] = properties;
    return preset.dump(2) + "\n";
}

bool CDSBasePropertyContainer::LoadPreset(const std::string& text, std::string* error)
{
    auto fail = [error](const std::string& message) {
        if (error)
            *error = message;
        return false;
    };
    json preset = json::parse(text, nullptr, false);
    if (preset.is_discarded())
        return fail("the preset is not valid JSON");
    if (!preset.is_object() || !preset.contains("properties") || !preset["properties"].is_array())
        return fail("the preset has no \"properties\" list");
    if (preset.contains("class")) {
        const std::optional<GUID> id =
            preset["class"].is_string() ? ParseGuid(preset["class"].get<std::string>()) : std::nullopt;
        if (!id || !(*id == PresetClassId()))
            return fail("the preset belongs to another class of object");
    }

    // Everything is checked before anything changes.
    struct Change {
        const CDSPropertiesMapEntry* entry;
        double value;
        std::vector<Keyframe> keys;
    };
    std::vector<Change> changes;
    for (const json& item : preset["properties"]) {
        if (!item.is_object() || !item.contains("guid") || !item["guid"].is_string())
            return fail("a property of the preset has no GUID");
        const std::string guidString = item["guid"].get<std::string>();
        const std::optional<GUID> guid = ParseGuid(guidString);
        if (!guid)
            return fail("malformed GUID " + guidString);
        const CDSPropertiesMapEntry* entry = FindEntry(*guid);
        if (!entry || entry->definition->hidden() || !stored.count(entry->key))
            return fail("unknown property " + guidString);
        const std::string label = entry->definition->name ? entry->definition->name : guidString;
        Change change{entry, 0.0, {}};
        if (const std::string why = readItem(item, *entry, &change.value, &change.keys); !why.empty())
            return fail("property " + label + " " + why);
        changes.push_back(std::move(change));
    }
    for (const Change& change : changes) {
        writeStored(*change.entry, change.value);
        if (change.keys.empty())
            animation.erase(change.entry->key);
        else
            animation[change.entry->key] = change.keys;
    }
    return true;
}
