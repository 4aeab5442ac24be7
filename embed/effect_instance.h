// EffectInstance: one effect object as the tool drives it: its image-effect
// interface, its properties by parameter, keys and presets.
#pragma once

#include <string>
#include <vector>

#include "hostsdk/IDSImageEffect.h"
#include "hostsdk/IDSProperties.h"
#include "hostsdk/com.h"
#include "embed/parameter_table.h"

class EffectInstance {
public:
    // Takes the effect's reference; Failure if it has no properties.
    explicit EffectInstance(ComRef<IDSImageEffect> effect);

    IDSImageEffect* Effect() const { return effect.get(); }
    IUnknown* Object() const { return effect.get(); }
    // The parameters read from the effect's property map.
    const std::vector<Parameter>& Parameters() const { return parameters; }

    // Sets the stored value; Failure if the effect refuses it.
    void Set(const Parameter& parameter, double value);
    // Adds a key at `time` seconds; Failure if the effect refuses it.
    void SetKey(const Parameter& parameter, double time, double value);
    // The value at `time` seconds (-1.0: the stored value).
    double Get(const Parameter& parameter, double time) const;
    bool IsAnimated(const Parameter& parameter) const;

    std::string SavePreset() const;
    // Loads a preset's text; Failure with the effect's reason when refused
    // (the effect is then unchanged). `source` names the text in the message.
    void LoadPreset(const std::string& text, const std::string& source);

private:
    ComRef<IDSImageEffect> effect;
    ComRef<IDSProperties> properties;
    std::vector<Parameter> parameters;
};
