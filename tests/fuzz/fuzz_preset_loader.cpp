// Preset text loaded into a new effect made by the module's class factory,
// as a host loads a user's file. Input: one byte choosing the class (the
// effect or the depth effect), then the text. A refused preset must leave
// the effect unchanged with a reason; an accepted one must save to a text
// that loads again to the same state. Every property is then read at a few
// times, which interpolates any keys the preset brought, and must lie in its
// list or range.
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "host/CDsClassFactory.h"
#include "host/Plug.h"
#include "host/PlugDepth.h"
#include "hostsdk/IDSProperties.h"
#include "hostsdk/com.h"
#include "hostsdk/variant.h"
#include "fuzz_input.h"

namespace {

// Times the properties are read at, in seconds; -1 is the stored value.
constexpr double kReadTimes[] = {-1.0, 0.0, 0.5, 1e9};

template <typename T> IDSProperties* create()
{
    IClassFactory* factory = new CDsClassFactory<T>(nullptr);
    IDSProperties* properties = nullptr;
    if (factory->CreateInstance(nullptr, IID_IDSProperties, reinterpret_cast<void**>(&properties)) != S_OK)
        std::abort();
    factory->Release();
    return properties;
}

std::string saved(IDSProperties* properties)
{
    std::string text;
    if (properties->SavePresetText(&text) != S_OK)
        std::abort();
    return text;
}

// Whether a value read back lies where the property's definition allows:
// a list's entries, or its range.
bool withinRange(const CDSParamDef& definition, double value)
{
    if (std::isnan(value))
        return false;
    if (definition.listEntries && definition.listCount > 0)
        return value >= 0 && value < definition.listCount;
    return !definition.hasRange() || (value >= definition.minimum && value <= definition.maximum);
}

// Every property read at each of the times; each value must lie in its range.
void readAll(IDSProperties* properties)
{
    const CDSPropertiesMap* map = nullptr;
    if (properties->GetPropertiesMap(&map) != S_OK || !map)
        std::abort();
    for (; map; map = map->parent)
        for (const CDSPropertiesMapEntry* entry = map->entries; entry->count != 0; ++entry) {
            if (!entry->definition)
                continue;
            for (double time : kReadTimes) {
                VARIANT value;
                VariantInit(&value);
                if (properties->GetProperty(entry->definition->guid, &value, time) == S_OK &&
                    !withinRange(*entry->definition, VariantNumber(value)))
                    std::abort();
                VariantClear(&value);
            }
        }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzInput input{data, size};
    const bool depth = input.Byte() & 1;
    const std::string text = input.Rest();
    IDSProperties* properties = depth ? create<PlugDepth>() : create<Plug>();
    const std::string before = saved(properties);
    std::string error;
    if (properties->LoadPresetText(text, &error) == S_OK) {
        const std::string after = saved(properties);
        IDSProperties* other = depth ? create<PlugDepth>() : create<Plug>();
        if (other->LoadPresetText(after, &error) != S_OK || saved(other) != after)
            std::abort();
        other->Release();
        readAll(properties);
    } else if (error.empty() || saved(properties) != before) {
        std::abort();
    }
    properties->Release();
    return 0;
}
