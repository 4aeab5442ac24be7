#include "python/process_module.h"

#include <dlfcn.h>

#include <filesystem>

#include "embed/effect_instance.h"
#include "embed/module_locator.h"
#include "embed/settings_directory.h"

namespace {

// Where the effect module lies when installed: LUMENVEIL_PYTHON_TO_MODULE
// from the folder of this extension's own file.
std::string installedModuleDirectory()
{
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&ProcessModule::Get), &info) == 0 || !info.dli_fname)
        return "";
    return (std::filesystem::path(info.dli_fname).parent_path() / LUMENVEIL_PYTHON_TO_MODULE).string();
}

}  // namespace

ProcessModule::ProcessModule()
    : module(new EffectModule(locateModule("", installedModuleDirectory())))
{
    properties = EffectInstance(module->CreateEffect()).Parameters();
    prepareSettingsDirectory();
}

const ProcessModule& ProcessModule::Get()
{
    // Never destroyed: see the header.
    static const ProcessModule* const instance = new ProcessModule();
    return *instance;
}
