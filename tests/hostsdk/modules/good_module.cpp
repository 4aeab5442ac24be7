// A module with all four entry points. It serves one class, whose "object" is
// the address of a counter of the calls made to DllGetClassObject, answers
// S_FALSE to DllCanUnloadNow, and registers its class with the host.
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
    *out = nullptr;
    if (!(clsid == TEST_MODULE_CLASS))
        return CLASS_E_CLASSNOTAVAILABLE;
    ++classObjectCalls;
    *out = &classObjectCalls;
    return S_OK;
}

MODULE_EXPORT HRESULT DllCanUnloadNow() { return S_FALSE; }

MODULE_EXPORT HRESULT DllRegisterServer() { return DSRegisterCOMEffect(TEST_MODULE_CLASS, nullptr, TEST_MODULE_NAME); }

MODULE_EXPORT HRESULT DllUnregisterServer() { return DSUnregisterCOMEffect(TEST_MODULE_CLASS); }
