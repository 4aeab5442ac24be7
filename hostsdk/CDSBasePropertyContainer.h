// CDSBasePropertyContainer: the properties of an object, driven by its static
// map. Each property's stored value lives in a member of the object, bound by
// its key; an animated property also has keys in time, linear between keys
// and constant before the first and after the last. The whole state (values and
// keys of every named property, in map order) saves to and loads from a
// readable JSON preset.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "hostsdk/CDSParamDef.h"
#include "hostsdk/hresult.h"

class CDSBasePropertyContainer {
public:
    // One key of an animation: a value at a time (seconds).
    struct Keyframe {
        double time;
        double value;
    };

    CDSBasePropertyContainer() = default;
    // A copy starts with no bindings and no animation: the copy binds its own
    // members and takes the animation with CopyAnimation.
    CDSBasePropertyContainer(const CDSBasePropertyContainer&) {}
    CDSBasePropertyContainer& operator=(const CDSBasePropertyContainer&) = delete;
    virtual ~CDSBasePropertyContainer() = default;

    // Counts the map's entries (up to the end marker) into its count word.
    static void InitStaticPropertyMap(CDSPropertiesMap* map);
    // The object's map, initialised.
    virtual const CDSPropertiesMap* GetStaticPropertiesMap() = 0;
    // Its number of entries.
    virtual uint32_t GetStaticEntryCount() = 0;

    // The entry of a property, by GUID or by key; null when the map has none.
    const CDSPropertiesMapEntry* FindEntry(const GUID& guid);
    const CDSPropertiesMapEntry* FindEntry(uint32_t key);

    // Ties a property's key to the member holding its stored value (int32_t for
    // VT_I4 and VT_BOOL, uint32_t for VT_UI4, uint64_t for VT_UI8, double for VT_R8).
    void BindStoredValue(uint32_t key, void* member);

    // The value at `time` (seconds): the animation's where it has keys, else the
    // stored value; time -1.0 asks for the stored value. `value->vt` is set to the
    // property's type. E_INVALIDARG for an unknown or unbound property.
    HRESULT GetValue(const GUID& guid, VARIANT* value, double time = -1.0);
    // Sets the stored value (converted to the property's type), then calls
    // OnPropertyChanged.
    HRESULT SetValue(const GUID& guid, const VARIANT& value);
    // Adds or replaces the key at `time` of an animated property.
    HRESULT SetKey(const GUID& guid, double time, double value);
    // Removes all keys of a property.
    void ClearKeys(const GUID& guid);
    bool IsAnimated(const GUID& guid) const;
    const std::vector<Keyframe>* Keys(uint32_t key) const;

    // The value of the property `key` at `time`: interpolated keys if it has
    // any, else `stored`. Integers are rounded to the nearest whole number.
    int32_t GetValueDirect(uint32_t key, int32_t stored, double time) const;
    double GetValueDirect(uint32_t key, double stored, double time) const;

    // Takes over the animation (not the stored values) of `source`.
    void CopyAnimation(const CDSBasePropertyContainer& source);
    // Every bound property but the hidden ones to its default; all animation removed.
    virtual HRESULT SetDefaults();

    // The state as a JSON preset: class identifier text, then for each named
    // property in map order its GUID, key, name, value and keys.
    std::string SavePreset();
    // Loads a preset; on malformed JSON, an unknown GUID, a wrong type or a value
    // outside the property's range it returns false with a message in *error and
    // leaves the object exactly as it was. `classId` must match the preset's.
    bool LoadPreset(const std::string& text, std::string* error);

    // Told of every change made through SetValue and SetDefaults.
    virtual HRESULT OnPropertyChanged(const GUID& guid, const VARIANT* value, void* sender, void* params,
                                      int32_t reserved, uint32_t flags);
    // The object's class identifier, written into presets.
    virtual GUID PresetClassId() const;

protected:
    // Stored value as a double / from a double, by the entry's type.
    double readStored(const CDSPropertiesMapEntry& entry) const;
    void writeStored(const CDSPropertiesMapEntry& entry, double value);

private:
    std::map<uint32_t, void*> stored;
    std::map<uint32_t, std::vector<Keyframe>> animation;
};

// Interpolates `keys` (sorted by time) at `time`; constant outside.
double interpolateKeys(const std::vector<CDSBasePropertyContainer::Keyframe>& keys, double time);
