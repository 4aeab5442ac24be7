#include "embed/effect_instance.h"

#include "hostsdk/PropertiesOperator.h"
#include "embed/errors.h"

EffectInstance::EffectInstance(ComRef<IDSImageEffect> fx) : effect(std::move(fx))
{
    const CDSPropertiesMap* map = nullptr;
    if (FAILED(effect->QueryInterface(IID_IDSProperties, properties.out())) || !properties ||
        FAILED(properties->GetPropertiesMap(&map)) || !map)
        throw Failure("the effect has no property map");
    parameters = readParameters(map);
}

void EffectInstance::Set(const Parameter& parameter, double value)
{
    VARIANT v;
    VariantInit(&v);
    v.vt = parameter.type;
    VariantFromNumber(&v, value);
    if (FAILED(properties->SetProperty(parameter.guid, &v)))
        throw Failure("the effect refused " + parameter.name + " = " + formatParameterValue(parameter, value));
}

void EffectInstance::SetKey(const Parameter& parameter, double time, double value)
{
    if (FAILED(properties->SetPropertyKey(parameter.guid, time, value)))
        throw Failure("the effect refused a key of " + parameter.name);
}

double EffectInstance::Get(const Parameter& parameter, double time) const
{
    VARIANT v;
    VariantInit(&v);
    properties->GetProperty(parameter.guid, &v, time);
    return VariantNumber(v);
}

bool EffectInstance::IsAnimated(const Parameter& parameter) const
{
    return properties->IsPropertyAnimated(parameter.guid) == S_OK;
}

std::string EffectInstance::SavePreset() const
{
    std::string text;
    properties->SavePresetText(&text);
    return text;
}

void EffectInstance::LoadPreset(const std::string& text, const std::string& source)
{
    std::string error;
    if (FAILED(properties->LoadPresetText(text, &error)))
        throw Failure("preset " + source + " refused: " + error);
}
