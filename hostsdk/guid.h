// GUID: the host's 16-byte identifier, in the usual Data1..Data4 layout.
#pragma once

#include <cstdint>

struct GUID {
    uint32_t Data1;
    uint16_t Data2;
    uint16_t Data3;
    uint8_t Data4[8];
};

static_assert(sizeof(GUID) == 16, "a GUID is 16 bytes with no padding");
