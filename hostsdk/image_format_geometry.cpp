#include "hostsdk/image_format_geometry.h"

#include <cstring>

#include "hostsdk/image_formats.h"

namespace {

// code name guid samples-per-pixel sample-bytes alpha-plane bottom-up pairs 709 video-range
const HostFormatGeometry kFormats[kHostFormatCount] = {
    {1, "MFIF_RGBA_RAW_32", &MFIF_RGBA_RAW_32, 4, 1, false, false, false, false, false},
    {2, "MFIF_BGRA_RAW_32_VIDEO", &MFIF_BGRA_RAW_32_VIDEO, 4, 1, false, true, false, false, true},
    {3, "MFIF_CbYCrY_16", &MFIF_CbYCrY_16, 2, 1, false, true, true, false, false},
    {4, "MFIF_CbYCrY709_16", &MFIF_CbYCrY709_16, 2, 1, false, true, true, true, false},
    {5, "MFIF_CbYCrYA_24", &MFIF_CbYCrYA_24, 2, 1, true, true, true, false, false},
    {6, "MFIF_CbYCrY709A_24", &MFIF_CbYCrY709A_24, 2, 1, true, true, true, true, false},
    {7, "MFIF_RGBA_S2_14", &MFIF_RGBA_S2_14, 4, 2, false, true, false, false, false},
    {8, "MFIF_CbYCrY_S2_14", &MFIF_CbYCrY_S2_14, 2, 2, false, true, true, false, false},
    {9, "MFIF_CbYCrY709_S2_14", &MFIF_CbYCrY709_S2_14, 2, 2, false, true, true, true, false},
    {10, "MFIF_CbYCrYA_S2_14", &MFIF_CbYCrYA_S2_14, 2, 2, true, true, true, false, false},
    {11, "MFIF_CbYCrY709A_S2_14", &MFIF_CbYCrY709A_S2_14, 2, 2, true, true, true, true, false},
    {12, "MFIF_RGBA_FLOAT", &MFIF_RGBA_FLOAT, 4, 4, false, true, false, false, false},
    {13, "MFIF_CbYCrY_FLOAT", &MFIF_CbYCrY_FLOAT, 2, 4, false, true, true, false, false},
    {14, "MFIF_CbYCrY709_FLOAT", &MFIF_CbYCrY709_FLOAT, 2, 4, false, true, true, true, false},
    {15, "MFIF_CbYCrYA_FLOAT", &MFIF_CbYCrYA_FLOAT, 2, 4, true, true, true, false, false},
    {16, "MFIF_CbYCrY709A_FLOAT", &MFIF_CbYCrY709A_FLOAT, 2, 4, true, true, true, true, false},
};

}  // namespace

const HostFormatGeometry* hostFormatGeometry(int32_t code)
{
    return code >= 1 && code <= kHostFormatCount ? &kFormats[code - 1] : nullptr;
}

int32_t hostFormatCodeOf(const GUID& guid)
{
    for (const HostFormatGeometry& f : kFormats)
        if (std::memcmp(f.guid, &guid, sizeof(GUID)) == 0)
            return f.code;
    return 0;
}

const HostFormatGeometry* hostFormatNamed(const char* name)
{
    for (const HostFormatGeometry& f : kFormats)
        if (name && std::strcmp(f.name, name) == 0)
            return &f;
    return nullptr;
}

size_t hostColourPlaneBytes(int32_t code, int32_t width, int32_t height)
{
    const HostFormatGeometry* f = hostFormatGeometry(code);
    if (!f || width < 1 || height < 1)
        return 0;
    return static_cast<size_t>(width) * static_cast<size_t>(height) * static_cast<size_t>(f->samplesPerPixel) *
           static_cast<size_t>(f->sampleBytes);
}

size_t hostAlphaPlaneBytes(int32_t code, int32_t width, int32_t height)
{
    const HostFormatGeometry* f = hostFormatGeometry(code);
    if (!f || !f->alphaPlane || width < 1 || height < 1)
        return 0;
    return static_cast<size_t>(width) * static_cast<size_t>(height) * static_cast<size_t>(f->sampleBytes);
}

size_t hostBufferBytes(int32_t code, int32_t width, int32_t height)
{
    return hostColourPlaneBytes(code, width, height) + hostAlphaPlaneBytes(code, width, height);
}

int32_t hostBufferRow(int32_t code, int32_t height, int32_t y)
{
    const HostFormatGeometry* f = hostFormatGeometry(code);
    return f && f->bottomUp ? height - 1 - y : y;
}
