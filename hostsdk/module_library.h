// ModuleLibrary: a plug-in module file loaded into the process, with its four
// entry points resolved.
//
// A module is a shared library that exports, with C linkage:
//   HRESULT DllGetClassObject(const GUID& clsid, const GUID& iid, void** out);
//   HRESULT DllCanUnloadNow();
//   HRESULT DllRegisterServer();
//   HRESULT DllUnregisterServer();
// The library stays loaded while the ModuleLibrary lives and is unloaded when
// it goes; objects the module handed out must be released before that.
#pragma once

#include <memory>
#include <string>

#include "hostsdk/guid.h"
#include "hostsdk/hresult.h"

class ModuleLibrary {
public:
    typedef HRESULT (*GetClassObjectFunction)(const GUID& clsid, const GUID& iid, void** out);
    typedef HRESULT (*ServerFunction)();

    // Loads the module at `path` and resolves its entry points. On failure
    // gives null and puts one line in `error` (if not null) saying which of
    // these it was: no file at the path; a file that does not load as a
    // shared library (with the loader's reason); the entry points it lacks.
    static std::unique_ptr<ModuleLibrary> Open(const std::string& path, std::string* error);

    ~ModuleLibrary();
    ModuleLibrary(const ModuleLibrary&) = delete;
    ModuleLibrary& operator=(const ModuleLibrary&) = delete;

    // The module's entry points, called as they are. An exception that one
    // throws (a module may throw from DllUnregisterServer) passes through.
    HRESULT DllGetClassObject(const GUID& clsid, const GUID& iid, void** out) const;
    HRESULT DllCanUnloadNow() const;
    HRESULT DllRegisterServer() const;
    HRESULT DllUnregisterServer() const;

    const std::string& Path() const { return path; }

private:
    ModuleLibrary(std::string path, void* handle);

    std::string path;
    void* handle;
    GetClassObjectFunction getClassObject = nullptr;
    ServerFunction canUnloadNow = nullptr;
    ServerFunction registerServer = nullptr;
    ServerFunction unregisterServer = nullptr;
};
