// Host buffer to VZImage: one loop per depth and layout, chosen once per call.
#include <cstring>
#include <new>

#include "generic/library/HostBufferLayout.h"
#include "generic/library/HostFormatTables.h"
#include "generic/library/HostPixelFormat.h"
#include "generic/library/HostSampleRules.h"

using namespace host_samples;

namespace {

// R G B A in order, every sample by the depth's colour rule.
template <class Depth>
void decodeRgbaRow(const uint8_t* from, uint16_t* to, int32_t width)
{
    using Sample = typename Depth::Sample;
    const int32_t count = width * 4;
    for (int32_t i = 0; i < count; ++i)
        to[i] = Depth::decodeColour(load<Sample>(from + i * sizeof(Sample)));
}

// B G R A, colour in video range, alpha full range.
void decodeVideoBgraRow(const uint8_t* from, uint16_t* to, int32_t width)
{
    for (int32_t x = 0; x < width; ++x, from += 4, to += 4) {
        to[0] = decodeVideoLevel(from[2]);
        to[1] = decodeVideoLevel(from[1]);
        to[2] = decodeVideoLevel(from[0]);
        to[3] = Depth8::decodeAlpha(from[3]);
    }
}

// A Y or chroma sample less its depth's offset.
template <class Depth>
float lumaAt(const uint8_t* at)
{
    return static_cast<float>(load<typename Depth::Sample>(at)) - Depth::lumaOffset;
}

template <class Depth>
float chromaAt(const uint8_t* at)
{
    return static_cast<float>(load<typename Depth::Sample>(at)) - Depth::chromaOffset;
}

// The Cb and Cr parts of R, G and B, shared by the pixels of a pair.
struct ChromaTerms {
    float r, g, b;
};

inline ChromaTerms chromaTerms(float cb, float cr, const float* m)
{
    return {cb * m[1] + cr * m[2], cr * m[5] + cb * m[4], cr * m[8] + cb * m[7]};
}

// One pixel from its Y and its pair's chroma terms, alpha opaque.
inline void decodePairPixel(float y, const ChromaTerms& t, const float* m, uint16_t* to)
{
    to[0] = toFrameSample(t.r + y * m[0]);
    to[1] = toFrameSample(t.g + y * m[3]);
    to[2] = toFrameSample(t.b + y * m[6]);
    to[3] = 32767;
}

// Cb Y0 Cr Y1 per pair of pixels, chroma terms once per pair, alpha opaque. With
// an odd width the last pixel is decoded alone from its own Cb Y0 and the Cr of
// the unit after it; the pixel beyond the row is not written. When that unit lies
// outside the colour plane (the region reaches the end of the plane) the Cr is
// taken as neutral instead of read.
template <class Depth>
void decodePairRow(const uint8_t* from, uint16_t* to, int32_t width, const float* m, bool tailCrReadable)
{
    constexpr size_t step = sizeof(typename Depth::Sample);
    const int32_t pairs = width / 2;
    for (int32_t p = 0; p < pairs; ++p, from += 4 * step, to += 8) {
        const ChromaTerms t = chromaTerms(chromaAt<Depth>(from), chromaAt<Depth>(from + 2 * step), m);
        decodePairPixel(lumaAt<Depth>(from + step), t, m, to);
        decodePairPixel(lumaAt<Depth>(from + 3 * step), t, m, to + 4);
    }
    if (width & 1) {
        const float cr = tailCrReadable ? chromaAt<Depth>(from + 2 * step) : 0.0f;
        decodePairPixel(lumaAt<Depth>(from + step), chromaTerms(chromaAt<Depth>(from), cr, m), m, to);
    }
}

template <class Depth>
void decodeAlphaRow(const uint8_t* from, uint16_t* to, int32_t width)
{
    using Sample = typename Depth::Sample;
    for (int32_t x = 0; x < width; ++x)
        to[4 * x + 3] = Depth::decodeAlpha(load<Sample>(from + x * sizeof(Sample)));
}

template <class Depth>
void decodeRgba(const uint8_t* buffer, const HostBufferLayout& layout, VZImage* image)
{
    for (int32_t y = 0; y < layout.roiHeight; ++y)
        decodeRgbaRow<Depth>(buffer + layout.colourOffset(y), image->rows[y], layout.roiWidth);
}

void decodeVideoBgra(const uint8_t* buffer, const HostBufferLayout& layout, VZImage* image)
{
    for (int32_t y = 0; y < layout.roiHeight; ++y)
        decodeVideoBgraRow(buffer + layout.colourOffset(y), image->rows[y], layout.roiWidth);
}

// A row's colour first, then its alpha plane samples over the opaque alpha.
template <class Depth, bool AlphaPlane>
void decodePairs(const uint8_t* buffer, const HostBufferLayout& layout, VZImage* image)
{
    const float* m = hostDecodeMatrix[layout.family];
    const bool oddWidth = (layout.roiWidth & 1) != 0;
    for (int32_t y = 0; y < layout.roiHeight; ++y) {
        const bool tailCrReadable = oddWidth && layout.unitAfterRowInColourPlane(y);
        decodePairRow<Depth>(buffer + layout.colourOffset(y), image->rows[y], layout.roiWidth, m, tailCrReadable);
        if constexpr (AlphaPlane)
            decodeAlphaRow<Depth>(buffer + layout.alphaOffset(y), image->rows[y], layout.roiWidth);
    }
}

// In place and top to bottom, so a row sees the replacements above it: flag 1
// gives an even row the next row (the last row keeps itself), flag 2 gives an odd
// row the previous one.
void applyFieldFlags(VZImage* image, uint32_t fieldFlags)
{
    if ((fieldFlags & (HOST_FIELD_ODD_ONLY | HOST_FIELD_EVEN_ONLY)) == 0)
        return;
    const size_t rowBytes = static_cast<size_t>(image->width) * 8;
    const int32_t height = image->height;
    for (int32_t y = 0; y < height; ++y) {
        int32_t from = y;
        if ((y & 1) == 0 && (fieldFlags & HOST_FIELD_ODD_ONLY))
            from = y + 1 < height ? y + 1 : height - 1;
        else if ((y & 1) == 1 && (fieldFlags & HOST_FIELD_EVEN_ONLY))
            from = y - 1;
        if (from != y)
            std::memcpy(image->rows[y], image->rows[from], rowBytes);
    }
}

}  // namespace

VZImage* hostToVzImage(const void* pixels, int32_t bufferWidth, int32_t bufferHeight, int32_t roiWidth,
                       int32_t roiHeight, int32_t roiX, int32_t roiY, int32_t code, uint32_t fieldFlags)
{
    HostBufferLayout layout;
    if (!pixels || !hostBufferLayout(code, bufferWidth, bufferHeight, roiWidth, roiHeight, roiX, roiY, &layout))
        return nullptr;
    VZImage* image = new (std::nothrow) VZImage(roiWidth, roiHeight, 0, static_cast<uint16_t*>(nullptr), 0u);
    if (!image)
        return nullptr;
    if (!image->pixels || !image->rows) {
        delete image;
        return nullptr;
    }

    const uint8_t* buffer = static_cast<const uint8_t*>(pixels);
    switch (code) {
    case 1: decodeRgba<Depth8>(buffer, layout, image); break;
    case 2: decodeVideoBgra(buffer, layout, image); break;
    case 3:
    case 4: decodePairs<Depth8, false>(buffer, layout, image); break;
    case 5:
    case 6: decodePairs<Depth8, true>(buffer, layout, image); break;
    case 7: decodeRgba<Depth214>(buffer, layout, image); break;
    case 8:
    case 9: decodePairs<Depth214, false>(buffer, layout, image); break;
    case 10:
    case 11: decodePairs<Depth214, true>(buffer, layout, image); break;
    case 12: decodeRgba<DepthFloat>(buffer, layout, image); break;
    case 13:
    case 14: decodePairs<DepthFloat, false>(buffer, layout, image); break;
    default: decodePairs<DepthFloat, true>(buffer, layout, image); break;  // 15, 16
    }
    applyFieldFlags(image, fieldFlags);
    return image;
}
