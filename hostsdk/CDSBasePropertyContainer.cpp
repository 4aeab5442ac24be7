#include "hostsdk/CDSBasePropertyContainer.h"

#include <algorithm>
#include <cmath>

#include "hostsdk/com.h"

void CDSBasePropertyContainer::InitStaticPropertyMap(CDSPropertiesMap* map)
{
    if (!map || !map->entries || !map->count)
        return;
    uint32_t n = 0;
    while (map->entries[n].count != 0)
        ++n;
    *map->count = n;
}

const CDSPropertiesMapEntry* CDSBasePropertyContainer::FindEntry(const GUID& guid)
{
    const CDSPropertiesMap* map = GetStaticPropertiesMap();
    for (; map; map = map->parent)
        for (const CDSPropertiesMapEntry* e = map->entries; e && e->count != 0; ++e)
            if (e->definition && IsEqualGUID(e->definition->guid, guid))
                return e;
    return nullptr;
}

const CDSPropertiesMapEntry* CDSBasePropertyContainer::FindEntry(uint32_t key)
{
    const CDSPropertiesMap* map = GetStaticPropertiesMap();
    for (; map; map = map->parent)
        for (const CDSPropertiesMapEntry* e = map->entries; e && e->count != 0; ++e)
            if (e->definition && e->key == key)
                return e;
    return nullptr;
}

void CDSBasePropertyContainer::BindStoredValue(uint32_t key, void* member) { stored[key] = member; }

double CDSBasePropertyContainer::readStored(const CDSPropertiesMapEntry& entry) const
{
    auto it = stored.find(entry.key);
    return it == stored.end() || !it->second ? 0.0 : ReadTypedNumber(it->second, entry.definition->type);
}

void CDSBasePropertyContainer::writeStored(const CDSPropertiesMapEntry& entry, double value)
{
    auto it = stored.find(entry.key);
    if (it != stored.end() && it->second)
        WriteTypedNumber(it->second, entry.definition->type, value);
}


double interpolateKeys(const std::vector<CDSBasePropertyContainer::Keyframe>& keys, double time)
{
    if (time <= keys.front().time)
        return keys.front().value;
    if (time >= keys.back().time)
        return keys.back().value;
    auto after = std::upper_bound(keys.begin(), keys.end(), time,
                                  [](double t, const CDSBasePropertyContainer::Keyframe& k) { return t < k.time; });
    auto before = after - 1;
    const double f = (time - before->time) / (after->time - before->time);
    return before->value + (after->value - before->value) * f;
}

HRESULT CDSBasePropertyContainer::GetValue(const GUID& guid, VARIANT* value, double time)
{
    if (!value)
        return E_POINTER;
    const CDSPropertiesMapEntry* entry = FindEntry(guid);
    if (!entry || !stored.count(entry->key))
        return E_INVALIDARG;
    double number = readStored(*entry);
    auto it = animation.find(entry->key);
    const bool keyed = time != -1.0 && it != animation.end() && !it->second.empty();
    if (keyed)
        number = interpolateKeys(it->second, time);
    value->vt = entry->definition->type;
    VariantFromNumber(value, number);
    // A 64-bit handle travels whole: a double keeps only 53 of its bits.
    void* member = stored.at(entry->key);
    if (entry->definition->type == VT_UI8 && !keyed && member)
        value->ullVal = *static_cast<const uint64_t*>(member);
    return S_OK;
}

HRESULT CDSBasePropertyContainer::SetValue(const GUID& guid, const VARIANT& value)
{
    const CDSPropertiesMapEntry* entry = FindEntry(guid);
    if (!entry || !stored.count(entry->key))
        return E_INVALIDARG;
    void* member = stored.at(entry->key);
    if (entry->definition->type == VT_UI8 && value.vt == VT_UI8 && member)
        *static_cast<uint64_t*>(member) = value.ullVal;
    else
        writeStored(*entry, VariantNumber(value));
    VARIANT now;
    GetValue(guid, &now, -1.0);
    return OnPropertyChanged(guid, &now, nullptr, nullptr, 0, 0);
}

HRESULT CDSBasePropertyContainer::SetKey(const GUID& guid, double time, double value)
{
    const CDSPropertiesMapEntry* entry = FindEntry(guid);
    if (!entry || !entry->definition->animated())
        return E_INVALIDARG;
    std::vector<Keyframe>& keys = animation[entry->key];
    auto at = std::lower_bound(keys.begin(), keys.end(), time, [](const Keyframe& k, double t) { return k.time < t; });
    if (at != keys.end() && at->time == time)
        at->value = value;
    else
        keys.insert(at, Keyframe{time, value});
    return S_OK;
}

void CDSBasePropertyContainer::ClearKeys(const GUID& guid)
{
    if (const CDSPropertiesMapEntry* entry = FindEntry(guid))
        animation.erase(entry->key);
}

bool CDSBasePropertyContainer::IsAnimated(const GUID& guid) const
{
    auto* self = const_cast<CDSBasePropertyContainer*>(this);
    const CDSPropertiesMapEntry* entry = self->FindEntry(guid);
    if (!entry)
        return false;
    auto it = animation.find(entry->key);
    return it != animation.end() && !it->second.empty();
}

const std::vector<CDSBasePropertyContainer::Keyframe>* CDSBasePropertyContainer::Keys(uint32_t key) const
{
    auto it = animation.find(key);
    return it == animation.end() || it->second.empty() ? nullptr : &it->second;
}

int32_t CDSBasePropertyContainer::GetValueDirect(uint32_t key, int32_t storedValue, double time) const
{
    const std::vector<Keyframe>* keys = Keys(key);
    return keys ? static_cast<int32_t>(std::lround(interpolateKeys(*keys, time))) : storedValue;
}

double CDSBasePropertyContainer::GetValueDirect(uint32_t key, double storedValue, double time) const
{
    const std::vector<Keyframe>* keys = Keys(key);
    return keys ? interpolateKeys(*keys, time) : storedValue;
}

void CDSBasePropertyContainer::CopyAnimation(const CDSBasePropertyContainer& source) { animation = source.animation; }

HRESULT CDSBasePropertyContainer::SetDefaults()
{
    animation.clear();
    const CDSPropertiesMap* map = GetStaticPropertiesMap();
    for (const CDSPropertiesMapEntry* e = map ? map->entries : nullptr; e && e->count != 0; ++e)
        if (e->definition && !e->definition->hidden() && stored.count(e->key))
            writeStored(*e, e->definition->defaultValue);
    return S_OK;
}

HRESULT CDSBasePropertyContainer::OnPropertyChanged(const GUID&, const VARIANT*, void*, void*, int32_t, uint32_t)
{
    return S_OK;
}

GUID CDSBasePropertyContainer::PresetClassId() const { return GUID{}; }
