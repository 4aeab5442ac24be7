#include "vzlibs/imagelib/imagelib.h"

#include <cstring>

#include "vzlibs/baselib/aligned.h"
#include "vzlibs/baselib/heap.h"

namespace {

// The library's parallel-for seam; empty unless a host fills it.
ImageRowHook rowHook = nullptr;
void* rowHookContext = nullptr;

constexpr const char* kSourceName = "vzlibs/imagelib/imagelib";

uint16_t bytesOfType(int32_t sampleType) { return sampleType == IMAGE_U8 ? 1 : sampleType == IMAGE_U16 ? 2 : 4; }

struct CloneJob {
    const unsigned char* from;
    unsigned char* to;
    uint32_t rowLength;
};

void cloneRows(void* arg, int first, int last)
{
    const CloneJob* job = static_cast<const CloneJob*>(arg);
    for (int r = first; r <= last; ++r)
        std::memcpy(job->to + static_cast<size_t>(r) * job->rowLength,
                    job->from + static_cast<size_t>(r) * job->rowLength, job->rowLength);
}

}  // namespace

ImageRec* image_create(int32_t width, int32_t height, int32_t channels, int32_t sampleType, int32_t allocPixels)
{
    if (width <= 0 || width >= 65536 || height <= 0 || height >= 65536)
        return nullptr;
    if (sampleType < 0 || sampleType > 3)
        return nullptr;
    const uint16_t sampleBytes = bytesOfType(sampleType);
    // Byte count in 32 bits with wrap-around; a count that reads as negative fails.
    const uint32_t count = static_cast<uint32_t>(width) * static_cast<uint32_t>(height) *
                           static_cast<uint32_t>(channels) * sampleBytes;
    if (static_cast<int32_t>(count) < 1)
        return nullptr;

    void* pixels = nullptr;
    if (allocPixels) {
        pixels = vz_aligned_malloc(count, -1, true);
        if (!pixels)
            return nullptr;
    }
    ImageRec* rec = static_cast<ImageRec*>(vz_malloc(sizeof(ImageRec), kSourceName, 148));
    if (!rec) {
        if (pixels)
            vz_aligned_free(pixels, true);
        return nullptr;
    }
    rec->width = static_cast<uint16_t>(width);
    rec->height = static_cast<uint16_t>(height);
    rec->channels = static_cast<uint16_t>(channels);
    rec->sampleType = static_cast<uint16_t>(sampleType);
    rec->reserved = 0;
    rec->ownsPixels = static_cast<uint16_t>(allocPixels & 0xFFFF);
    std::memset(rec->region, 0, sizeof rec->region);
    rec->regionSet = 0;
    rec->aspect = static_cast<double>(width) / static_cast<double>(height);
    rec->sampleBytes = sampleBytes;
    rec->pixelBytes = static_cast<uint16_t>(channels * sampleBytes);
    rec->rowBytes = static_cast<uint32_t>(width) * rec->pixelBytes;
    rec->pixels = pixels;
    return rec;
}

ImageRec* image_create_like(const ImageRec* source)
{
    if (!source)
        return nullptr;
    return image_create(source->width, source->height, source->channels, source->sampleType, 1);
}

int image_free(ImageRec* record)
{
    if (!record)
        return -1;
    if (record->pixels && record->ownsPixels)
        vz_aligned_free(record->pixels, true);
    vz_free(record, kSourceName, 191);
    return 0;
}

ImageRec* image_clone(const ImageRec* source)
{
    if (!source)
        return nullptr;
    ImageRec* copy = image_create_like(source);
    if (!copy)
        return nullptr;
    const uint32_t rowLength = static_cast<uint32_t>(source->width) * source->channels * source->sampleBytes;
    const int32_t count = static_cast<int32_t>(rowLength * source->height);
    if (!source->pixels) {
        // A header without pixels has nothing to copy; the clone keeps its own block.
    } else if (count >= 1048576) {
        CloneJob job{static_cast<const unsigned char*>(source->pixels), static_cast<unsigned char*>(copy->pixels),
                     rowLength};
        image_run_rows(cloneRows, source->height, &job);
    } else {
        std::memcpy(copy->pixels, source->pixels, static_cast<size_t>(count));
    }
    copy->regionSet = source->regionSet;
    if (source->regionSet)
        std::memcpy(copy->region, source->region, sizeof copy->region);
    return copy;
}

void image_run_rows(ImageRowFunction function, int rowCount, void* arg)
{
    if (rowHook)
        rowHook(rowHookContext, function, rowCount, arg);
    else
        function(arg, 0, rowCount - 1);
}

void image_set_row_hook(ImageRowHook hook, void* context)
{
    rowHook = hook;
    rowHookContext = context;
}
