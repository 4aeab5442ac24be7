#include "embed/effect_module.h"

#include <cstdio>

#include "hostsdk/registration.h"
#include "embed/errors.h"

namespace {

std::string hex(HRESULT status)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(status));
    return text;
}

}  // namespace

EffectModule::EffectModule(const std::string& path)
{
    std::string error;
    library = ModuleLibrary::Open(path, &error);
    if (!library)
        throw Failure("cannot load the effect module: " + error +
                      " (set LUMENVEIL_MODULE to the path of libLumenveilVZ.so)");
    const HRESULT status = library->DllRegisterServer();
    if (FAILED(status))
        throw Failure("the effect module " + path + " did not register its classes (" + hex(status) + ")");
}

EffectModule::~EffectModule() = default;

ComRef<IUnknown> EffectModule::CreateObject(const GUID& clsid, HRESULT* status) const
{
    ComRef<IClassFactory> factory;
    HRESULT result = library->DllGetClassObject(clsid, IID_IClassFactory, factory.out());
    ComRef<IUnknown> object;
    if (SUCCEEDED(result) && factory)
        result = factory->CreateInstance(nullptr, IID_IUnknown, object.out());
    if (status)
        *status = result;
    if (FAILED(result))
        object.reset();
    return object;
}

ComRef<IDSImageEffect> EffectModule::CreateEffect(const GUID& clsid) const
{
    HRESULT status = S_OK;
    ComRef<IUnknown> object = CreateObject(clsid, &status);
    ComRef<IDSImageEffect> effect;
    if (object)
        status = object->QueryInterface(IID_IDSImageEffect, effect.out());
    if (!effect)
        throw Failure("the module " + Path() + " makes no effect of class " + FormatGuid(clsid) + " (" +
                      hex(status) + ")");
    return effect;
}

std::string EffectModule::ClassName(const GUID& clsid) const
{
    for (const RegisteredEffect& entry : DSListRegisteredEffects())
        if (entry.clsid == clsid)
            return entry.name;
    return "";
}
