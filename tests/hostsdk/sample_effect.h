// A small effect for the container, preset, effect and operator tests: one
// property of each kind, values in members bound by key 0xFFFF0000 + position.
#pragma once

#include <vector>

#include "hostsdk/CDSImageEffect.h"

namespace sample {

constexpr GUID id(uint8_t n) { return {0x5A000000u + n, 1, 2, {0, 0, 0, 0, 0, 0, 0, n}}; }
inline constexpr GUID SHAPE = id(1), ENABLED = id(2), RADIUS = id(3), SIDES = id(4), HANDLE = id(5), CLASS = id(16);
constexpr uint32_t key(int position) { return 0xFFFF0000u + position; }
inline const char* const kShapes[] = {"Circle", "Polygon", "Image"};
inline CDSParamDef defs[] = {
    {SHAPE, nullptr, DS_CLASS_PARAMETER, DS_CAP_PLAIN, VT_I4, 1, 2, 3, "Shape", "Shape", 1, 0, -1, kShapes, 3},
    {ENABLED, nullptr, DS_CLASS_PARAMETER, DS_CAP_PLAIN, VT_BOOL, 4, 5, 6, "Enabled", "Enabled", 1, 0, -1},
    {RADIUS, nullptr, DS_CLASS_PARAMETER, DS_CAP_ANIMATED, VT_R8, 7, 8, 9, "Radius", "Radius", 10, 0, 100},
    {SIDES, nullptr, DS_CLASS_PARAMETER, DS_CAP_ANIMATED, VT_I4, 10, 11, 12, "Sides", "Sides", 6, 3, 20},
    {HANDLE, nullptr, DS_CLASS_PARAMETER, DS_CAP_HIDDEN, VT_UI8, 0, 0, 0, nullptr, nullptr, 0, 0, -1}};
constexpr uint32_t kUnset = DS_MAP_COUNT_UNSET;
inline CDSPropertiesMapEntry entries[] = {{&defs[0], key(0), kUnset}, {&defs[1], key(1), kUnset},
                                          {&defs[2], key(2), kUnset}, {&defs[3], key(3), kUnset},
                                          {&defs[4], key(4), kUnset}, {nullptr, 0, 0}};
inline uint32_t entryCount = kUnset;
inline CDSPropertiesMap map{nullptr, entries, &entryCount, nullptr};

// Notes each change; a copy (by the base's rule) binds nothing.
struct Effect : CDSImageEffect {
    Effect()
    {
        void* members[] = {&shape, &enabled, &radius, &sides, &handle};
        for (int i = 0; i < 5; ++i)
            BindStoredValue(key(i), members[i]);
    }
    const CDSPropertiesMap* GetStaticPropertiesMap() override { return InitStaticPropertyMap(&map), &map; }
    uint32_t GetStaticEntryCount() override { return *GetStaticPropertiesMap()->count; }
    GUID PresetClassId() const override { return CLASS; }
    HRESULT OnPropertyChanged(const GUID& guid, const VARIANT* value, void*, void*, int32_t, uint32_t) override
    {
        return changes.push_back({guid, *value}), S_OK;
    }
    int32_t shape = 1, enabled = 1, sides = 6;
    double radius = 10.0;
    uint64_t handle = 0;
    std::vector<std::pair<GUID, VARIANT>> changes;
};

inline VARIANT var(VARTYPE type, double v = 0)
{
    VARIANT out{type, {}};
    if (type == VT_I4)
        out.lVal = static_cast<int32_t>(v);
    else
        out.dblVal = v;
    return out;
}

// The object's reference count, left as it was.
inline uint32_t references(IUnknown* object) { return object->AddRef(), object->Release(); }

}  // namespace sample
