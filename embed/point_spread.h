// The point-spread picture of an effect's last frame: the image of one point
// of light through its aperture, as the effect gives it (IDSPointSpread).
#pragma once

#include <cstdint>
#include <vector>

#include "hostsdk/com.h"

// An 8-bit grey picture, rows top-down without gaps.
struct GreyPicture {
    int32_t width = 0;
    int32_t height = 0;
    std::vector<uint8_t> pixels;
};

// The picture of `effect`'s last frame; Failure when it has none to give.
GreyPicture pointSpreadPicture(IUnknown* effect);
