#include "hostsdk/CDSPPGControlMap.h"

CDSPPGControlMap::CDSPPGControlMap(const char* file, uint32_t value, const CDSPPGControlMap* chained,
                                   const CDSPPGControlMapEntry* rows)
    : helpFile(file), number(value), parent(chained), entries(rows)
{
}

void CDSPPGControlMap::Initialize()
{
    int n = 0;
    while (entries && entries[n].property)
        ++n;
    count = n;
}

const CDSPPGControlMapEntry* CDSPPGControlMap::ForControl(uint32_t id) const
{
    for (int i = 0; entries && entries[i].property; ++i)
        if (entries[i].control == id)
            return &entries[i];
    return parent ? parent->ForControl(id) : nullptr;
}

const CDSPPGControlMapEntry* CDSPPGControlMap::ForProperty(const GUID& guid) const
{
    for (int i = 0; entries && entries[i].property; ++i)
        if (*entries[i].property == guid)
            return &entries[i];
    return parent ? parent->ForProperty(guid) : nullptr;
}
