// The host images of one Execute as the conversions need them, and the slot
// and frame values that Execute fills from them: shared by the 16-bit and the
// scene-linear roads of Plug::Execute.
#pragma once

#include "generic/library/HostPixelFormat.h"
#include "generic/library/ImageSlot.h"
#include "generic/library/VZImage.h"
#include "hostsdk/CDSImageEffect.h"
#include "hostsdk/IDSImage.h"

// A host image's buffer as the conversions need it.
struct HostBuffer {
    void* pixels = nullptr;
    GUID format{};
    int32_t code = 0;
    int32_t width = 0;
    int32_t height = 0;
};

inline HostBuffer readBuffer(IDSImage* image)
{
    HostBuffer b;
    image->GetPixels(&b.pixels);
    image->GetPixelFormat(&b.format);
    b.code = pickHostFormat(b.format);
    image->GetDimensions(&b.width, &b.height);
    return b;
}

inline void fillSlot(ImageSlot& slot, int32_t index, const CDSImageEffect& fx, const HostBuffer& b, int32_t roiX,
              int32_t roiY, VZImage* frame)
{
    ImageSlotDescription& d = slot.description;
    d.inputIndex = index;
    d.executeContext = fx.executeContext;
    d.sampleRatePointer = &fx.sampleRate;
    d.baseDataA = fx.baseDataA;
    d.baseDataB = fx.baseDataB;
    d.host = fx.host;
    d.bufferWidth = b.width;
    d.bufferHeight = b.height;
    d.roiWidth = fx.roiWidth;
    d.roiHeight = fx.roiHeight;
    d.roiX = roiX;
    d.roiY = roiY;
    d.formatCode = b.code;
    slot.image = frame;
}

inline void setHostValues(VZImage* frame, double aspect, float scale)
{
    frame->pixelAspect[0] = aspect;
    frame->pixelAspect[1] = 1.0;
    frame->scale = scale;
}

