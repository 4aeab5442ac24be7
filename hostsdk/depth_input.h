// The depth input of a depth-of-field effect: the effect's third input
// (after Input and Spread), fetched through IDSImageEffectHost::FetchInput by
// this index. Its image is float R G B A (MFIF_RGBA_FLOAT) of at least the
// frame's region; the depth of each pixel is its R sample, G, B and A are not
// read.
#pragma once

#include <cstdint>

inline constexpr int32_t DS_INPUT_DEPTH = 2;
