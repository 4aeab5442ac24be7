// The effect module as the filter's process holds it: loaded once, on first
// need, from $LUMENVEIL_MODULE or beside the filter's own file, and kept until
// the process ends (the transform library's threads may still be winding
// down when a host unloads the filter). With the filter's parameters.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "embed/effect_module.h"
#include "frei0r/filter_parameters.h"

class FilterModule {
public:
    // The process's one object; thread-safe.
    static const FilterModule& Get();

    // Null when the module could not be loaded; Problem() then says why.
    const EffectModule* Module() const { return module.get(); }
    const std::string& Problem() const { return problem; }
    // The parameters: the host's settings alone without a module.
    const std::vector<FilterParameter>& Parameters() const { return parameters; }

private:
    FilterModule();

    std::unique_ptr<EffectModule> module;
    std::vector<Parameter> properties;
    std::vector<FilterParameter> parameters;
    std::string problem;
};

// The engine a new filter renders with: 8-bit frames cannot show the
// faithful engine's difference.
inline constexpr const char* kFilterEngine = "fast";
