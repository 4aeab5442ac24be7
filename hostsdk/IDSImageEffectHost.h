// IDSImageEffectHost: the host's side of a running effect.
#pragma once

#include <cstdint>

struct IDSImageEffectHost {
    virtual ~IDSImageEffectHost() = default;
    // Zero means stop; a positive value, go on.
    virtual int32_t ShouldContinue() = 0;
};
