// The effect module as a Python process holds it: loaded when `lumenveil` is
// imported, from $LUMENVEIL_MODULE, from where `make install` puts it beside
// this extension, or from the build tree; kept until the process ends (the
// transform library's threads may still be winding down at exit), with the
// parameters read from its property map.
#pragma once

#include <string>
#include <vector>

#include "embed/effect_module.h"
#include "embed/parameter_table.h"

class ProcessModule {
public:
    // The process's one object, loaded on the first call (under the GIL);
    // Failure with the loader's reason when the module cannot be loaded.
    static const ProcessModule& Get();

    const EffectModule& Module() const { return *module; }
    const std::vector<Parameter>& Properties() const { return properties; }

private:
    ProcessModule();

    EffectModule* module;
    std::vector<Parameter> properties;
};
