// ImageSlot: one frame of the effect's parameter block and where it came from.
//
// The execute path fills the description and the frame before each render and
// deletes the frame after it; the render reads only `image`.
#pragma once

#include <cstdint>

class VZImage;
struct IDSImageEffectHost;

// Where a slot's frame was taken from in the host's buffer.
struct ImageSlotDescription {
    int32_t inputIndex;
    uint64_t executeContext;
    const double* sampleRatePointer;
    const void* baseDataA;
    const void* baseDataB;
    IDSImageEffectHost* host;
    int32_t bufferWidth;
    int32_t bufferHeight;
    int32_t roiWidth;
    int32_t roiHeight;
    int32_t roiX;
    int32_t roiY;
    int32_t formatCode;
    uint32_t spare[3];
};

struct ImageSlot {
    ImageSlotDescription description{};
    VZImage* image = nullptr;
};

// An input slot: a slot with a `required` word, 1 and read by nothing.
struct InputImageSlot : ImageSlot {
    int32_t required = 1;
};
