#include "hostsdk/module_library.h"

#include <dlfcn.h>
#include <sys/stat.h>

namespace {

constexpr const char* GET_CLASS_OBJECT = "DllGetClassObject";
constexpr const char* CAN_UNLOAD_NOW = "DllCanUnloadNow";
constexpr const char* REGISTER_SERVER = "DllRegisterServer";
constexpr const char* UNREGISTER_SERVER = "DllUnregisterServer";

bool fileExists(const std::string& path)
{
    struct stat info;
    return stat(path.c_str(), &info) == 0;
}

// The address of `name` in `handle`, adding the name to `missing` if absent.
void* resolve(void* handle, const char* name, std::string& missing)
{
    void* address = dlsym(handle, name);
    if (!address)
        missing += (missing.empty() ? "" : ", ") + std::string(name);
    return address;
}

void setError(std::string* error, std::string text)
{
    if (error)
        *error = std::move(text);
}

}  // namespace

ModuleLibrary::ModuleLibrary(std::string path, void* handle) : path(std::move(path)), handle(handle) {}

ModuleLibrary::~ModuleLibrary() { dlclose(handle); }

std::unique_ptr<ModuleLibrary> ModuleLibrary::Open(const std::string& path, std::string* error)
{
    if (!fileExists(path)) {
        setError(error, "no module file at " + path);
        return nullptr;
    }
    void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle) {
        const char* reason = dlerror();
        setError(error, path + " is not a loadable module: " + (reason ? reason : "unknown reason"));
        return nullptr;
    }
    std::unique_ptr<ModuleLibrary> module(new ModuleLibrary(path, handle));
    std::string missing;
    module->getClassObject = reinterpret_cast<GetClassObjectFunction>(resolve(handle, GET_CLASS_OBJECT, missing));
    module->canUnloadNow = reinterpret_cast<ServerFunction>(resolve(handle, CAN_UNLOAD_NOW, missing));
    module->registerServer = reinterpret_cast<ServerFunction>(resolve(handle, REGISTER_SERVER, missing));
    module->unregisterServer = reinterpret_cast<ServerFunction>(resolve(handle, UNREGISTER_SERVER, missing));
    if (!missing.empty()) {
        setError(error, path + " is not a module: it lacks " + missing);
        return nullptr;
    }
    return module;
}

HRESULT ModuleLibrary::DllGetClassObject(const GUID& clsid, const GUID& iid, void** out) const
{
    return getClassObject(clsid, iid, out);
}

HRESULT ModuleLibrary::DllCanUnloadNow() const { return canUnloadNow(); }
HRESULT ModuleLibrary::DllRegisterServer() const { return registerServer(); }
HRESULT ModuleLibrary::DllUnregisterServer() const { return unregisterServer(); }
