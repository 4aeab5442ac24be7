// The effect's channel selectors from --keep and --matte.
#pragma once

#include <array>
#include <cstdint>
#include <string>

// Selectors for SetChannelMask: 1 (processed) for every channel but those
// named in `keep` ("r,g,b,a", any subset), which are 0 (taken unchanged from
// the input); with `matte` the fourth is 2 (the input's alpha is the
// effect's matte). The effect reads red from the first selector, green from
// the third, blue from the second, alpha from the fourth. UsageError for an
// unknown channel name, or keeping alpha together with --matte.
std::array<int32_t, 4> channelSelectors(const std::string& keep, bool matte);
