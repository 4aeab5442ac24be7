#include "generic/library/VZImage.h"

#include <bit>
#include <cstddef>
#include <cstring>

#include "generic/library/RunFourThreads.h"
#include "vzlibs/baselib/heap.h"

namespace {

// The heap's bookkeeping names this file and fixed lines for the frame's blocks.
constexpr const char* kSourceName = "generic/library/VZImage";

// 1/32767 in single precision (bits 0x38000100): 32767 maps to exactly 1.0.
constexpr float kInverseFullScale = std::bit_cast<float>(0x38000100u);
static_assert(kInverseFullScale == 3.0518509e-05f);

constexpr uint16_t expand8(uint8_t v) { return static_cast<uint16_t>((v << 7) | (v >> 1)); }

void copyAlphaRows(void* object, int first, int last)
{
    VZImage* image = static_cast<VZImage*>(object);
    const VZImage* source = image->alphaSource;
    for (int y = first; y <= last; ++y) {
        uint16_t* to = image->rows[y];
        const uint16_t* from = source->rows[y];
        for (uint32_t x = 0; x < image->width; ++x)
            to[4 * x + 3] = from[4 * x + 3];
    }
}

size_t sampleCount(const VZImage* image)
{
    return static_cast<size_t>(image->width) * static_cast<size_t>(image->height) * 4;
}

}  // namespace

VZImage::VZImage(uint32_t width, int32_t height, int32_t, uint16_t* pixels, uint32_t userValue)
{
    build(width, height, pixels, userValue, 177, 181);
}

VZImage::VZImage(int32_t width, int32_t height, int32_t, uint16_t* pixels, uint32_t userValue)
{
    build(width < 0 ? 0u : static_cast<uint32_t>(width), height, pixels, userValue, 224, 228);
}

void VZImage::build(uint32_t width, int32_t height, uint16_t* pixels, uint32_t userValue, int pixelLine, int rowLine)
{
    this->pixels = pixels;
    ownsPixels = 0;
    alphaSource = nullptr;
    std::memset(description, 0, sizeof description);
    rows = nullptr;
    this->width = width;
    this->height = height;
    pixelAspect[0] = pixelAspect[1] = 1.0;
    offset[0] = offset[1] = 0.0;
    // An empty width keeps a scale of 0 rather than an infinity.
    scale = width ? 720.0f / static_cast<float>(width) : 0.0f;
    this->userValue = userValue;
    extra = nullptr;
    std::memset(reservedSamples, 0, sizeof reservedSamples);

    const uint64_t rowCount = height > 0 ? static_cast<uint64_t>(height) : 0;
    const uint64_t bytes = static_cast<uint64_t>(width) * rowCount * 8;
    if (!pixels) {
        ownsPixels = 1;
        // An empty frame takes no block; a block the heap's 32-bit size cannot
        // express is refused and leaves `pixels` null, like a failed allocation.
        if (bytes > 0 && bytes <= UINT32_MAX)
            this->pixels = static_cast<uint16_t*>(vz_image_malloc(static_cast<uint32_t>(bytes), kSourceName, pixelLine));
    }
    // No rows, no table: `rows` stays null for a height of 0 or less.
    if (rowCount == 0 || rowCount * sizeof(uint16_t*) > UINT32_MAX)
        return;
    rows = static_cast<uint16_t**>(vz_malloc(static_cast<uint32_t>(rowCount * sizeof(uint16_t*)), kSourceName, rowLine));
    if (!rows)
        return;
    for (uint64_t y = 0; y < rowCount; ++y)
        rows[y] = this->pixels ? this->pixels + y * width * 4 : nullptr;
}

VZImage::~VZImage()
{
    if (pixels && ownsPixels)
        vz_image_free(pixels, kSourceName, 269);
    if (rows)
        vz_free(rows, kSourceName, 272);
    delete extra;
}

bool VZImage::CopyAlphaFrom(VZImage* source)
{
    if (!source || source->width != width || source->height < height)
        return false;
    if (height > 0 && (!pixels || !rows || !source->pixels || !source->rows))
        return false;
    alphaSource = source;
    RunFourThreads(this, copyAlphaRows, height);
    return true;
}

ImageRec* image_from_vzimage(const VZImage* vzImage)
{
    if (!vzImage || vzImage->width > INT32_MAX)
        return nullptr;
    ImageRec* record = image_create(static_cast<int32_t>(vzImage->width), vzImage->height, 4, IMAGE_U16, 1);
    if (!record)
        return nullptr;
    if (!image_fill_from_vzimage(record, vzImage)) {
        image_free(record);
        return nullptr;
    }
    return record;
}

bool image_fill_from_vzimage(ImageRec* record, const VZImage* vzImage)
{
    if (!record || !vzImage || !record->pixels || !vzImage->pixels)
        return false;
    if (record->width != vzImage->width || static_cast<int32_t>(record->height) != vzImage->height ||
        record->channels != 4)
        return false;
    const size_t count = sampleCount(vzImage);
    const uint16_t* from = vzImage->pixels;
    if (record->sampleType == IMAGE_U16) {
        uint16_t* to = static_cast<uint16_t*>(record->pixels);
        for (size_t i = 0; i < count; ++i)
            to[i] = static_cast<uint16_t>(from[i] * 2);
        return true;
    }
    if (record->sampleType == IMAGE_F32) {
        float* to = static_cast<float*>(record->pixels);
        for (size_t i = 0; i < count; ++i)
            to[i] = static_cast<float>(from[i]) * kInverseFullScale;
        return true;
    }
    return false;
}

bool image_store_to_vzimage(const ImageRec* record, VZImage* vzImage)
{
    if (!record || !vzImage || !record->pixels || !vzImage->pixels || !vzImage->rows)
        return false;
    if ((record->channels != 3 && record->channels != 4) || record->width != vzImage->width ||
        static_cast<int32_t>(record->height) != vzImage->height)
        return false;
    if (record->sampleType != IMAGE_U8 && record->sampleType != IMAGE_U16)
        return false;

    const uint32_t width = vzImage->width;
    const int32_t height = vzImage->height;
    if (record->channels == 4) {
        if (record->sampleType == IMAGE_U16) {
            const size_t count = sampleCount(vzImage);
            uint16_t* to = vzImage->pixels;
            const uint16_t* from = static_cast<const uint16_t*>(record->pixels);
            for (size_t i = 0; i < count; ++i)
                to[i] = static_cast<uint16_t>(from[i] >> 1);
            return true;
        }
        const uint8_t* from = static_cast<const uint8_t*>(record->pixels);
        for (int32_t y = 0; y < height; ++y) {
            uint16_t* to = vzImage->rows[y];
            for (uint32_t i = 0; i < width * 4; ++i)
                to[i] = expand8(*from++);
        }
        return true;
    }

    // Three channels: colour sample by sample, then an opaque alpha.
    if (record->sampleType == IMAGE_U16) {
        const uint16_t* from = static_cast<const uint16_t*>(record->pixels);
        for (int32_t y = 0; y < height; ++y) {
            uint16_t* to = vzImage->rows[y];
            for (uint32_t x = 0; x < width; ++x, from += 3, to += 4) {
                to[0] = static_cast<uint16_t>(from[0] >> 1);
                to[1] = static_cast<uint16_t>(from[1] >> 1);
                to[2] = static_cast<uint16_t>(from[2] >> 1);
                to[3] = 32767;
            }
        }
        return true;
    }
    const uint8_t* from = static_cast<const uint8_t*>(record->pixels);
    for (int32_t y = 0; y < height; ++y) {
        uint16_t* to = vzImage->rows[y];
        for (uint32_t x = 0; x < width; ++x, from += 3, to += 4) {
            to[0] = expand8(from[0]);
            to[1] = expand8(from[1]);
            to[2] = expand8(from[2]);
            to[3] = 32767;
        }
    }
    return true;
}
