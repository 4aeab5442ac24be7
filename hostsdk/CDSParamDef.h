// The static description of an effect's properties: one CDSParamDef per
// property (identity, type, names, default and page range), tied to a key in a
// CDSPropertiesMapEntry; a CDSPropertiesMap descriptor holds the array. This map
// is the one declaration of a parameter: the container, presets, the property
// page and command-line hosts all read it.
#pragma once

#include <cstdint>

#include "hostsdk/guid.h"
#include "hostsdk/variant.h"

// Capability bits the system uses.
inline constexpr uint32_t DS_CAP_PLAIN = 0x4;        // stored, not animated
inline constexpr uint32_t DS_CAP_ANIMATED = 0x5;     // stored and animated
inline constexpr uint32_t DS_CAP_HIDDEN = 0x88;      // no name, no page field
inline constexpr uint32_t DS_CLASS_PARAMETER = 0x8000;

class CDSParamDef {
public:
    // Identity, classification, capabilities, type and the three name strings'
    // resource numbers, as the host's definitions take them; then the texts, the
    // default and the page range (min > max: no range). `listEntries`, when
    // non-null, names the values 0..listCount-1 of an integer list property.
    CDSParamDef(const GUID& guid, void* const* instance, uint32_t classification, uint32_t capabilities, VARTYPE type,
                uint16_t nameId, uint16_t shortNameId, uint16_t longNameId, const char* name, const char* longName,
                double defaultValue, double minimum, double maximum, const char* const* listEntries = nullptr,
                int listCount = 0);
    virtual ~CDSParamDef() = default;

    bool hasRange() const { return minimum <= maximum; }
    // Hidden properties have no name and no page field.
    bool hidden() const { return (capabilities & DS_CAP_HIDDEN) == DS_CAP_HIDDEN || !name; }
    bool animated() const { return capabilities == DS_CAP_ANIMATED; }

    GUID guid;
    void* const* instance;
    uint32_t classification;
    uint32_t capabilities;
    VARTYPE type;
    uint16_t nameId, shortNameId, longNameId;
    const char* name;      // null for hidden properties
    const char* longName;
    double defaultValue;
    double minimum;
    double maximum;
    const char* const* listEntries;
    int listCount;
};

struct CDSPropertiesMapEntry {
    CDSParamDef* definition;  // null in the end marker (and where an allocation failed)
    uint32_t key;             // 0xFFFF0000 with the stored member's position
    uint32_t count;           // 0xFFFFFFFF; 0 in the end marker
};

inline constexpr uint32_t DS_MAP_COUNT_UNSET = 0xFFFFFFFFu;

struct CDSPropertiesMap {
    const CDSPropertiesMap* parent;  // the base class's map, or null
    CDSPropertiesMapEntry* entries;  // ends with an entry whose count is 0
    uint32_t* count;                 // DS_MAP_COUNT_UNSET until initialised
    void* const* instance;
};
