// IDSTransformNeeds: what an effect's transform needs for a frame, asked
// before the frame is rendered: the blur's reach, the margin kept around the
// frame, the transform's size, and whether an engine takes it. The effect
// answers by its own parameter rules and its engine's size rules, for the
// engine it is set to or any other that it offers.
#pragma once

#include <cstdint>

#include "hostsdk/com.h"

inline constexpr GUID IID_IDSTransformNeeds = {0x4c560206, 0x6d66, 0x4966, {0x8a, 0x26, 0x54, 0x4e, 0x45, 0x44, 0x01, 0x06}};

// The engine the effect is set to, for GetTransformNeeds.
inline constexpr int32_t DS_ENGINE_CURRENT = -1;

struct DSTransformNeeds {
    double reach;         // the blur's reach in pixels
    int64_t margin;       // pixels kept on every side of the frame
    int64_t width;        // the transform's sides, in samples
    int64_t height;
    int64_t largestSide;  // the largest side the engine takes
    int32_t fits;         // 1 when the engine takes the frame, else 0
};

struct IDSTransformNeeds : IUnknown {
    // The needs of a width x height frame at `time` seconds, with the
    // parameters' values at that time, in engine `engine`: a value of the
    // effect's engine property (an index of its list) or DS_ENGINE_CURRENT.
    // E_POINTER for a null `needs`; E_INVALIDARG for a size below 1 or an
    // engine the effect does not offer.
    virtual HRESULT GetTransformNeeds(int32_t width, int32_t height, double time, int32_t engine,
                                      DSTransformNeeds* needs) = 0;
};
