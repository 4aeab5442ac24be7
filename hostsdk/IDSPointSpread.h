// IDSPointSpread: an effect's point-spread picture, the image of one point of
// light through its aperture, as the last frame used it.
#pragma once

#include <cstdint>

#include "hostsdk/com.h"

inline constexpr GUID IID_IDSPointSpread = {0x4c560205, 0x6d66, 0x4966, {0x8a, 0x25, 0x50, 0x53, 0x46, 0x01, 0x02, 0x05}};

struct IDSPointSpread : IUnknown {
    // One 8-bit grey channel, rows `rowBytes` apart, valid until the effect's
    // next Execute. E_FAIL before any frame has built one.
    virtual HRESULT GetPointSpreadImage(int32_t* width, int32_t* height, int32_t* rowBytes,
                                        const uint8_t** pixels) = 0;
};
