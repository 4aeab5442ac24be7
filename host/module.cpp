// The module's four exports: class objects, the unload test, and registration
// of its classes and families with the host.
#include <exception>

#include "host/CDsClassFactory.h"
#include "host/DepthIT.h"
#include "host/LumenveilProperties.h"
#include "host/IT.h"
#include "host/LumenveilStrings.h"
#include "host/PPG_DepthPage.h"
#include "host/PPG_PageOne.h"
#include "host/Plug.h"
#include "host/PlugDepth.h"
#include "hostsdk/registration.h"

#define LUMENVEIL_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

// Makes a class factory queried for `iid`.
typedef HRESULT (*FactoryMaker)(const GUID& iid, void** out);

template <typename T> HRESULT makeFactory(const GUID& iid, void** out)
{
    auto* factory = new (std::nothrow) CDsClassFactory<T>(g_serverLockCount);
    if (!factory)
        return E_OUTOFMEMORY;
    const HRESULT status = factory->QueryInterface(iid, out);
    factory->Release();
    return status;
}

struct ClassRow {
    const GUID* clsid;
    uint32_t nameString;
    FactoryMaker maker;
};

const ClassRow kClasses[] = {
    {&CLSID_Plug, IDS_EFFECT_NAME, makeFactory<Plug>},
    {&CLSID_PPG_PageOne, IDS_PAGE_NAME, makeFactory<PPG_PageOne>},
    {&CLSID_IT, IDS_TOOL_NAME, makeFactory<IT>},
    {&CLSID_PlugDepth, IDS_DEPTH_EFFECT_NAME, makeFactory<PlugDepth>},
    {&CLSID_PPG_DepthPage, IDS_DEPTH_PAGE_NAME, makeFactory<PPG_DepthPage>},
    {&CLSID_DepthIT, IDS_FOCUS_PICKER_NAME, makeFactory<DepthIT>},
};

// The host's families the effect belongs to, ending in a null GUID.
const GUID* familyList()
{
    static const GUID families[] = {
        {0xAE0D7C31, 0x95AA, 0x11D0, {0xB6, 0x85, 0x00, 0xA0, 0x24, 0x19, 0x1A, 0xE0}},
        {0x183E3834, 0xD79D, 0x11D0, {0xA7, 0xAE, 0x00, 0xA0, 0xC9, 0x06, 0x81, 0x07}},
        {0x95F7E8A0, 0x8B84, 0x11D1, {0x94, 0xA3, 0x00, 0xA0, 0xC9, 0x11, 0xC6, 0x25}},
        {0xAE0D7C33, 0x95AA, 0x11D0, {0xB6, 0x85, 0x00, 0xA0, 0x24, 0x19, 0x1A, 0xE0}},
        {0, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0}},
    };
    return families;
}

struct FamilyRow {
    const GUID* clsid;
    int32_t flags;
    uint32_t nameString;
    const GUID* (*list)();
};

const FamilyRow kFamilies[] = {{&CLSID_Plug, 1, IDS_EFFECT_NAME, familyList},
                               {&CLSID_PlugDepth, 1, IDS_DEPTH_EFFECT_NAME, familyList}};

uint32_t countFamilies(const GUID* list)
{
    uint32_t n = 0;
    while (!(list[n] == GUID{}))
        ++n;
    return n;
}

// The row's name string, at most 64 characters.
std::string familyName(uint32_t id)
{
    const char* text = LumenveilStringText(id);
    std::string name = text ? text : "";
    return name.substr(0, 64);
}

HRESULT unregisterAll()
{
    HRESULT status = S_OK;
    for (const ClassRow& row : kClasses) {
        status = DSUnregisterCOMEffect(*row.clsid);
        if (FAILED(status))
            throw status;  // out of the first walk, as the host's unregistration expects
    }
    status = S_OK;
    for (const FamilyRow& row : kFamilies) {
        const GUID* list = row.list();
        const uint32_t count = countFamilies(list);
        if (count == 0)
            continue;
        status = DSUnregisterObjectFamilies(*row.clsid, count, list, g_moduleInstance);
        if (FAILED(status))
            break;
    }
    return status;
}

}  // namespace

static HRESULT getClassObject(const GUID& clsid, const GUID& iid, void** out);

// Makes the module's classes known to CoCreateInstance while it is loaded, so
// that the page can create its tool.
static struct InProcessServer {
    InProcessServer() { CoRegisterInProcessServer(getClassObject); }
    ~InProcessServer() { CoRevokeInProcessServer(getClassObject); }
} g_inProcessServer;

LUMENVEIL_EXPORT HRESULT DllCanUnloadNow() { return *g_serverLockCount == 0 ? S_OK : S_FALSE; }

LUMENVEIL_EXPORT HRESULT DllGetClassObject(const GUID& clsid, const GUID& iid, void** out)
{
    if (!out)
        return E_POINTER;
    *out = nullptr;
    for (const ClassRow& row : kClasses)
        if (*row.clsid == clsid)
            return row.maker(iid, out);
    return CLASS_E_CLASSNOTAVAILABLE;
}

static HRESULT getClassObject(const GUID& clsid, const GUID& iid, void** out) { return DllGetClassObject(clsid, iid, out); }

LUMENVEIL_EXPORT HRESULT DllRegisterServer()
{
    for (const ClassRow& row : kClasses) {
        const HRESULT status = DSRegisterCOMEffect(*row.clsid, g_moduleInstance, LumenveilStringText(row.nameString));
        if (FAILED(status))
            return status;
    }
    HRESULT status = S_OK;
    for (const FamilyRow& row : kFamilies) {
        const GUID* list = row.list();
        const uint32_t count = countFamilies(list);
        if (count == 0)
            continue;
        const std::string name = familyName(row.nameString);
        status = DSRegisterObjectFamilies(*row.clsid, count, list, row.flags, name.c_str(), g_moduleInstance);
        if (FAILED(status))
            break;
    }
    return status;
}

// A failure of the first walk travels as an exception inside the module and is
// caught here, at the C boundary, so that nothing unwinds into a host.
LUMENVEIL_EXPORT HRESULT DllUnregisterServer()
{
    try {
        return unregisterAll();
    } catch (HRESULT status) {
        return status;
    } catch (...) {
        return E_FAIL;
    }
}
