// The control map of a property page: which property each control shows, the
// page field it is bound to, the handler of a user change, flags and tooltip.
#pragma once

#include <cstdint>

#include "hostsdk/guid.h"
#include "hostsdk/variant.h"

class CDSPropertyPage;

// Rows' flags.
inline constexpr uint32_t DS_PPG_BOUND = 1;   // a property shown by a control
inline constexpr uint32_t DS_PPG_BUTTON = 2;  // a button or the terminator
inline constexpr uint32_t DS_PPG_NONE = 0xFFFFFFFFu;

struct CDSPPGControlMapEntry {
    const GUID* property;                         // null in the terminator
    VARTYPE propertyType;
    VARTYPE fieldType;
    void* (*field)(CDSPropertyPage* page);        // the bound page field, or null
    uint32_t control;                             // control id, or DS_PPG_NONE
    void (*handler)(CDSPropertyPage* page);       // called after a user change, or null
    uint32_t flags;
    uint32_t tooltip;                             // string id, or DS_PPG_NONE
    int32_t last;                                 // -1
};

class CDSPPGControlMap {
public:
    CDSPPGControlMap(const char* helpFile, uint32_t number, const CDSPPGControlMap* parent,
                     const CDSPPGControlMapEntry* entries);
    // Counts the rows up to the terminator; safe to call again.
    void Initialize();
    int Count() const { return count; }
    const CDSPPGControlMapEntry* Entries() const { return entries; }
    // The row of control `id`, or of property `guid`; null when none.
    const CDSPPGControlMapEntry* ForControl(uint32_t id) const;
    const CDSPPGControlMapEntry* ForProperty(const GUID& guid) const;

    const char* helpFile;
    uint32_t number;
    const CDSPPGControlMap* parent;

private:
    const CDSPPGControlMapEntry* entries;
    int count = -1;
};
