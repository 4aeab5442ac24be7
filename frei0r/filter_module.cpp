#include "frei0r/filter_module.h"

#include <dlfcn.h>

#include <filesystem>

#include "embed/effect_instance.h"
#include "embed/errors.h"
#include "embed/module_locator.h"
#include "embed/settings_directory.h"

namespace {

// The directory of the filter's own file.
std::string filterDirectory()
{
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&FilterModule::Get), &info) == 0 || !info.dli_fname)
        return "";
    return std::filesystem::path(info.dli_fname).parent_path().string();
}

}  // namespace

FilterModule::FilterModule()
{
    try {
        module = std::make_unique<EffectModule>(locateModule("", filterDirectory()));
        properties = EffectInstance(module->CreateEffect()).Parameters();
        prepareSettingsDirectory();
    } catch (const std::exception& e) {
        module.reset();
        properties.clear();
        problem = e.what();
    }
    parameters = filterParameters(properties, {{"engine", kFilterEngine}});
}

const FilterModule& FilterModule::Get()
{
    // Never destroyed: see the header.
    static const FilterModule* const instance = new FilterModule();
    return *instance;
}
