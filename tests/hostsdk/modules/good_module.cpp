// A module serving one class, whose "object" is the address of a counter of
// the calls made for it; it answers S_FALSE to DllCanUnloadNow and registers
// its class with the host. Built with LV_TEST_PARTIAL it lacks the last two.
#include "hostsdk/hresult.h"
#include "hostsdk/registration.h"
#include "test_module_ids.h"

#define MODULE_EXPORT extern "C" __attribute__((visibility("default")))

namespace {
int classObjectCalls = 0;
}

MODULE_EXPORT HRESULT DllGetClassObject(const GUID& clsid, const GUID&, void** out)
{
    if (!out)
        return E_POINTER;
    *out = clsid == TEST_MODULE_CLASS ? (++classObjectCalls, &classObjectCalls) : nullptr;
    return *out ? S_OK : CLASS_E_CLASSNOTAVAILABLE;
}

MODULE_EXPORT HRESULT DllCanUnloadNow() { return S_FALSE; }

#ifndef LV_TEST_PARTIAL
MODULE_EXPORT HRESULT DllRegisterServer() { return DSRegisterCOMEffect(TEST_MODULE_CLASS, nullptr, TEST_MODULE_NAME); }
MODULE_EXPORT HRESULT DllUnregisterServer() { return DSUnregisterCOMEffect(TEST_MODULE_CLASS); }
#endif
