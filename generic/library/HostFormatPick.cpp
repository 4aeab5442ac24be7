#include <cstring>

#include "generic/library/HostPixelFormat.h"
#include "hostsdk/image_formats.h"

bool guidEqual(const GUID& a, const GUID& b) { return std::memcmp(&a, &b, sizeof(GUID)) == 0; }

int pickHostFormat(const GUID& guid)
{
    // Codes 1..15 in order. MFIF_CbYCrY709A_FLOAT (16) is deliberately absent: a
    // host offering it is told the format is not recognised.
    static const GUID* const known[] = {
        &MFIF_RGBA_RAW_32,     &MFIF_BGRA_RAW_32_VIDEO, &MFIF_CbYCrY_16,       &MFIF_CbYCrY709_16,
        &MFIF_CbYCrYA_24,      &MFIF_CbYCrY709A_24,     &MFIF_RGBA_S2_14,      &MFIF_CbYCrY_S2_14,
        &MFIF_CbYCrY709_S2_14, &MFIF_CbYCrYA_S2_14,     &MFIF_CbYCrY709A_S2_14, &MFIF_RGBA_FLOAT,
        &MFIF_CbYCrY_FLOAT,    &MFIF_CbYCrY709_FLOAT,   &MFIF_CbYCrYA_FLOAT,
    };
    for (int i = 0; i < 15; ++i)
        if (guidEqual(guid, *known[i]))
            return i + 1;
    return 0;
}
