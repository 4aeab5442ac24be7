// The effect's channel selectors from --keep and --matte.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "hostsdk/IDSImageEffect.h"

// Selectors for SetChannelMask, in its places (DSChannelPlace): the effect's
// result for every channel but those named in `keep` ("r,g,b,a", any
// subset), which are kept as the input has them; with `matte` the input's
// alpha is the effect's matte. UsageError for an unknown channel name, or
// keeping alpha together with --matte.
std::array<int32_t, DS_CHANNEL_PLACES> channelSelectors(const std::string& keep, bool matte);
