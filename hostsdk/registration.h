// The host's registry of effect classes and their object families, kept in
// memory for the life of the process (it lives in the host library, so a
// module and the host that loaded it see one registry). Every call takes a
// lock; the lists are copies.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "hostsdk/guid.h"
#include "hostsdk/hresult.h"

// One registered class.
struct RegisteredEffect {
    GUID clsid;
    void* instance;  // the registering module's handle, as given; not used
    std::string name;
};

// The families one class belongs to.
struct RegisteredFamilies {
    GUID clsid;
    std::vector<GUID> families;  // in order of registration, no repeats
    int32_t flags;               // as given by the last registration
    std::string name;            // as given by the last registration
    void* instance;
};

// Registers the class `clsid` under `name`; a class registered again is
// renamed in place. E_POINTER for a null name.
HRESULT DSRegisterCOMEffect(const GUID& clsid, void* instance, const char* name);
// Removes the class; S_FALSE if it was not registered.
HRESULT DSUnregisterCOMEffect(const GUID& clsid);
// Adds the `count` families of `families` to the class's list, and sets its
// flags, name and instance. E_INVALIDARG for a count of 0, E_POINTER for a null
// list or name; nothing changes then.
HRESULT DSRegisterObjectFamilies(const GUID& clsid, uint32_t count, const GUID* families, int32_t flags,
                                 const char* name, void* instance);
// Removes the `count` families of `families` from the class's list, and the
// class's entry when its list is empty. S_FALSE if none of them was listed.
// E_INVALIDARG for a count of 0, E_POINTER for a null list. `instance` is
// accepted and not used: entries are kept by class.
HRESULT DSUnregisterObjectFamilies(const GUID& clsid, uint32_t count, const GUID* families, void* instance);

// The registered classes, in order of first registration.
std::vector<RegisteredEffect> DSListRegisteredEffects();
// The classes with families, in order of first registration.
std::vector<RegisteredFamilies> DSListRegisteredFamilies();
