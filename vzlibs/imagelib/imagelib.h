// ImageRec: the plain image record of the engine, and its free functions.
//
// One header and one block of interleaved samples, rows without gaps: channel c
// of pixel (x, y) lies at byte y * rowBytes + x * pixelBytes + c * sampleBytes.
#pragma once

#include <cstdint>

// Sample type codes.
enum ImageSampleType : uint16_t {
    IMAGE_U8 = 0,   // unsigned 8-bit, 0..255
    IMAGE_U16 = 1,  // unsigned 16-bit
    IMAGE_I32 = 2,  // 32-bit integer, little-endian
    IMAGE_F32 = 3,  // 32-bit float, 0.0..1.0
};

struct ImageRec {
    uint16_t width;       // 1..65535
    uint16_t height;      // 1..65535
    uint16_t channels;    // interleaved samples per pixel
    uint16_t sampleType;  // ImageSampleType
    uint16_t reserved;    // 0
    uint16_t ownsPixels;  // non-zero: pixels is released with the record
    uint32_t region[4];   // carried by image_clone, otherwise unused
    uint32_t regionSet;
    double aspect;        // width / height
    uint32_t rowBytes;    // width * channels * sampleBytes
    uint16_t pixelBytes;  // channels * sampleBytes
    uint16_t sampleBytes; // 1, 2 or 4
    void* pixels;         // first sample of row 0, or null
};

// A row function does rows first..last, both inclusive, of a job described by arg.
typedef void (*ImageRowFunction)(void* arg, int first, int last);
// A parallel-for hook: runs function over rows 0..rowCount-1, split as it likes.
typedef void (*ImageRowHook)(void* context, ImageRowFunction function, int rowCount, void* arg);

// New record, or null. With allocPixels non-zero the pixel block (page-aligned,
// uninitialised) is allocated too and owned by the record.
ImageRec* image_create(int32_t width, int32_t height, int32_t channels, int32_t sampleType, int32_t allocPixels);
// New record of the same shape and type with its own uninitialised pixels; null
// for a null source.
ImageRec* image_create_like(const ImageRec* source);
// Releases owned pixels and the header. 0, or -1 for null.
int image_free(ImageRec* record);
// Deep copy, or null. Copies of 1 MiB or more run as a row job.
ImageRec* image_clone(const ImageRec* source);

// Runs function over rows 0..rowCount-1: through the hook if one is set, else in
// one direct call.
void image_run_rows(ImageRowFunction function, int rowCount, void* arg);
// Fills the process-wide hook slots; a null hook restores the direct call.
void image_set_row_hook(ImageRowHook hook, void* context);
