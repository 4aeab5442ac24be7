// EffectHost: what a host gives one effect besides its frames, kept per
// effect so that effects of different sizes and settings can render on
// different threads at once: its own host link (its Spread input, whether to
// go on), its own coordinate manager (the pixel aspect), the frame rate, the
// time span, the channel selectors and the fields.
#pragma once

#include <array>
#include <cstdint>

#include "hostsdk/IDSCoordMan.h"
#include "hostsdk/IDSImageEffect.h"
#include "hostsdk/IDSImageEffectHost.h"

// The effect's result in every channel, as a host asks by default.
inline constexpr std::array<int32_t, DS_CHANNEL_PLACES> kEveryChannel = {DS_CHANNEL_EFFECT, DS_CHANNEL_EFFECT,
                                                                         DS_CHANNEL_EFFECT, DS_CHANNEL_EFFECT};

struct HostSettings {
    double rate = 25.0;      // frames per second; a frame f lies at f / rate seconds
    double timespan = 0.0;   // the effect's length in seconds
    double pixelAspect = 1.0;
    std::array<int32_t, DS_CHANNEL_PLACES> selectors = kEveryChannel;
    uint32_t fieldMask = DS_FIELDS_BOTH;
};

class EffectHost {
public:
    // Connects `effect` (borrowed; it must not outlive this host) to the host
    // link and coordinate manager of this object, with `settings`.
    EffectHost(IDSImageEffect* effect, const HostSettings& settings);
    ~EffectHost();
    EffectHost(const EffectHost&) = delete;
    EffectHost& operator=(const EffectHost&) = delete;

    ImageEffectHost& Link() { return link; }
    // Width over height of a pixel, above 0; UsageError otherwise.
    void SetPixelAspect(double aspect);
    // Frames per second, above 0; UsageError otherwise.
    void SetRate(double rate);
    double Rate() const { return rate; }

private:
    IDSImageEffect* effect;
    ImageEffectHost link;
    CoordMan coordinates;
    double rate;
};
