// VZImage to host buffer: one loop per depth and layout, chosen once per call.
// Only the region's pixels are written.
#include "generic/library/HostBufferLayout.h"
#include "generic/library/HostFormatTables.h"
#include "generic/library/HostPixelFormat.h"
#include "generic/library/HostSampleRules.h"

using namespace host_samples;

namespace {

template <class Depth>
void encodeRgbaRow(const uint16_t* from, uint8_t* to, int32_t width)
{
    using Sample = typename Depth::Sample;
    const int32_t count = width * 4;
    for (int32_t i = 0; i < count; ++i)
        store<Sample>(to + i * sizeof(Sample), Depth::encodeColour(from[i]));
}

void encodeVideoBgraRow(const uint16_t* from, uint8_t* to, int32_t width)
{
    for (int32_t x = 0; x < width; ++x, from += 4, to += 4) {
        to[0] = encodeVideoLevel(from[2]);
        to[1] = encodeVideoLevel(from[1]);
        to[2] = encodeVideoLevel(from[0]);
        to[3] = Depth8::encodeAlpha(from[3]);
    }
}

// Cb Y0 Cr Y1 per pair: chroma from the first pixel only, the second pixel's
// chroma dropped. With an odd width the last pixel writes its own unit (Cb Y0)
// and nothing more: its Cr would land on the pixel after the region.
template <class Depth>
void encodePairRow(const uint16_t* from, uint8_t* to, int32_t width, const float* e)
{
    using Sample = typename Depth::Sample;
    constexpr size_t step = sizeof(Sample);
    const int32_t pairs = width / 2;
    for (int32_t p = 0; p < pairs; ++p, from += 8, to += 4 * step) {
        const float r0 = from[0], g0 = from[1], b0 = from[2];
        const float r1 = from[4], g1 = from[5], b1 = from[6];
        const float y0 = e[0] * r0 + e[1] * g0 + e[2] * b0;
        const float cb = e[3] * r0 + e[4] * g0 + e[5] * b0;
        const float cr = e[6] * r0 + e[7] * g0 + e[8] * b0;
        const float y1 = e[0] * r1 + e[1] * g1 + e[2] * b1;
        store<Sample>(to, Depth::quantiseChroma(cb));
        store<Sample>(to + step, Depth::quantiseLuma(y0));
        store<Sample>(to + 2 * step, Depth::quantiseChroma(cr));
        store<Sample>(to + 3 * step, Depth::quantiseLuma(y1));
    }
    if (width & 1) {
        const float r0 = from[0], g0 = from[1], b0 = from[2];
        const float y0 = e[0] * r0 + e[1] * g0 + e[2] * b0;
        const float cb = e[3] * r0 + e[4] * g0 + e[5] * b0;
        store<Sample>(to, Depth::quantiseChroma(cb));
        store<Sample>(to + step, Depth::quantiseLuma(y0));
    }
}

template <class Depth>
void encodeAlphaRow(const uint16_t* from, uint8_t* to, int32_t width)
{
    using Sample = typename Depth::Sample;
    for (int32_t x = 0; x < width; ++x)
        store<Sample>(to + x * sizeof(Sample), Depth::encodeAlpha(from[4 * x + 3]));
}

// Field flag 1 skips even rows, flag 2 odd rows; a skipped row still takes its
// place in the buffer.
inline bool skipRow(int32_t y, uint32_t fieldFlags)
{
    return (y & 1) == 0 ? (fieldFlags & HOST_FIELD_ODD_ONLY) != 0 : (fieldFlags & HOST_FIELD_EVEN_ONLY) != 0;
}

template <class Depth>
void encodeRgba(const VZImage* image, uint8_t* buffer, const HostBufferLayout& layout, uint32_t fieldFlags)
{
    for (int32_t y = 0; y < layout.roiHeight; ++y)
        if (!skipRow(y, fieldFlags))
            encodeRgbaRow<Depth>(image->rows[y], buffer + layout.colourOffset(y), layout.roiWidth);
}

void encodeVideoBgra(const VZImage* image, uint8_t* buffer, const HostBufferLayout& layout, uint32_t fieldFlags)
{
    for (int32_t y = 0; y < layout.roiHeight; ++y)
        if (!skipRow(y, fieldFlags))
            encodeVideoBgraRow(image->rows[y], buffer + layout.colourOffset(y), layout.roiWidth);
}

template <class Depth, bool AlphaPlane>
void encodePairs(const VZImage* image, uint8_t* buffer, const HostBufferLayout& layout, uint32_t fieldFlags)
{
    const float* e = hostEncodeMatrix[layout.family];
    for (int32_t y = 0; y < layout.roiHeight; ++y) {
        if (skipRow(y, fieldFlags))
            continue;
        encodePairRow<Depth>(image->rows[y], buffer + layout.colourOffset(y), layout.roiWidth, e);
        if constexpr (AlphaPlane)
            encodeAlphaRow<Depth>(image->rows[y], buffer + layout.alphaOffset(y), layout.roiWidth);
    }
}

}  // namespace

void vzImageToHost(const VZImage* image, void* pixels, int32_t bufferWidth, int32_t bufferHeight, int32_t roiWidth,
                   int32_t roiHeight, int32_t roiX, int32_t roiY, int32_t code, uint32_t fieldFlags)
{
    HostBufferLayout layout;
    if (!image || !pixels || !hostBufferLayout(code, bufferWidth, bufferHeight, roiWidth, roiHeight, roiX, roiY, &layout))
        return;
    if (!image->pixels || !image->rows || image->width != static_cast<uint32_t>(roiWidth) || image->height != roiHeight)
        return;

    uint8_t* buffer = static_cast<uint8_t*>(pixels);
    switch (code) {
    case 1: encodeRgba<Depth8>(image, buffer, layout, fieldFlags); break;
    case 2: encodeVideoBgra(image, buffer, layout, fieldFlags); break;
    case 3:
    case 4: encodePairs<Depth8, false>(image, buffer, layout, fieldFlags); break;
    case 5:
    case 6: encodePairs<Depth8, true>(image, buffer, layout, fieldFlags); break;
    case 7: encodeRgba<Depth214>(image, buffer, layout, fieldFlags); break;
    case 8:
    case 9: encodePairs<Depth214, false>(image, buffer, layout, fieldFlags); break;
    case 10:
    case 11: encodePairs<Depth214, true>(image, buffer, layout, fieldFlags); break;
    case 12: encodeRgba<DepthFloat>(image, buffer, layout, fieldFlags); break;
    case 13:
    case 14: encodePairs<DepthFloat, false>(image, buffer, layout, fieldFlags); break;
    default: encodePairs<DepthFloat, true>(image, buffer, layout, fieldFlags); break;  // 15, 16
    }
}
