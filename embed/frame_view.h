// A frame in the caller's memory, and its way into and out of a host image.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "hostsdk/IDSImage.h"
#include "hostsdk/image_format_geometry.h"

enum class SampleType { U8, U16, Float };

// A caller's frame: `height` rows of `width` pixels of `channels` samples of
// `type` (1 grey, 2 grey + alpha, 3 R G B, 4 R G B A), interleaved, the top
// row first and each row `rowBytes` after the one above it. Integer samples
// run from 0 to their full scale, float ones from 0.0 to 1.0.
struct FrameView {
    void* pixels = nullptr;
    ptrdiff_t rowBytes = 0;
    int32_t width = 0;
    int32_t height = 0;
    int32_t channels = 0;
    SampleType type = SampleType::U8;
};

// The bytes of one sample of `type`.
size_t sampleBytes(SampleType type);

// "" when `frame` can be handed over: pixels given, a size of at least 1 x 1,
// 1 to 4 channels, rows at least a row of pixels apart; else why not, naming
// the frame as `what`.
std::string frameProblem(const FrameView& frame, const std::string& what);

// Fills `image`, a host image of `format` for a frame of the view's size with
// `rows` rows, with the frame: as storeHostImage does (host_frame.h) with the
// pixels of the view expanded to R G B A (pixel_samples.h). Rows below the
// frame repeat its last one. With `keepRange`, float samples go into
// MFIF_RGBA_FLOAT as they are, not limited to 0 to 1 (scene-linear frames).
void storeFrame(MemoryImage* image, const HostFormatGeometry& format, int32_t rows, const FrameView& frame,
                bool keepRange = false);

// The top rows of such an image into `frame`, packed to its channels and type.
void loadFrame(MemoryImage* image, const HostFormatGeometry& format, int32_t rows, const FrameView& frame);
