// A shared library with only two of a module's four entry points.
#include "hostsdk/guid.h"
#include "hostsdk/hresult.h"

#define MODULE_EXPORT extern "C" __attribute__((visibility("default")))

MODULE_EXPORT HRESULT DllGetClassObject(const GUID&, const GUID&, void** out)
{
    if (out)
        *out = nullptr;
    return CLASS_E_CLASSNOTAVAILABLE;
}

MODULE_EXPORT HRESULT DllCanUnloadNow() { return S_OK; }
