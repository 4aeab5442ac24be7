#include "embed/effect_host.h"

#include <cmath>

#include "embed/errors.h"

EffectHost::EffectHost(IDSImageEffect* fx, const HostSettings& settings)
    : effect(fx), coordinates(settings.pixelAspect), rate(settings.rate)
{
    effect->SetEffectHost(&link);
    effect->SetCoordMan(&coordinates);
    effect->SetSampleRate(settings.rate);
    effect->SetTimespan(settings.timespan);
    effect->SetChannelMask(settings.selectors.data());
    effect->SetFieldMask(settings.fieldMask);
}

EffectHost::~EffectHost()
{
    // The effect may outlive this object by its own references: it must not
    // keep pointers to the link and the coordinate manager.
    effect->SetEffectHost(nullptr);
    effect->SetCoordMan(nullptr);
}

void EffectHost::SetPixelAspect(double aspect)
{
    if (!(aspect > 0.0) || !std::isfinite(aspect))
        throw UsageError("the pixel aspect must be a number above 0");
    coordinates.pixelAspect = aspect;
}

void EffectHost::SetRate(double newRate)
{
    if (!(newRate > 0.0) || !std::isfinite(newRate))
        throw UsageError("the frame rate must be a number above 0");
    rate = newRate;
    effect->SetSampleRate(rate);
}
