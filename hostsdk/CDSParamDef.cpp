#include "hostsdk/CDSParamDef.h"

CDSParamDef::CDSParamDef(const GUID& id, void* const* moduleInstance, uint32_t classificationValue,
                         uint32_t capabilityBits, VARTYPE variantType, uint16_t nameString, uint16_t shortNameString,
                         uint16_t longNameString, const char* nameText, const char* longNameText, double defaultNumber,
                         double low, double high, const char* const* entries, int entryCount)
    : guid(id),
      instance(moduleInstance),
      classification(classificationValue),
      capabilities(capabilityBits),
      type(variantType),
      nameId(nameString),
      shortNameId(shortNameString),
      longNameId(longNameString),
      name(nameText),
      longName(longNameText),
      defaultValue(defaultNumber),
      minimum(low),
      maximum(high),
      listEntries(entries),
      listCount(entryCount)
{
}
