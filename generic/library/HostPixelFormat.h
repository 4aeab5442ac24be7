// Host pixel formats: naming a host layout by a small code, and converting a
// region of a host buffer into a VZImage and back.
//
// Codes 1..16 name the sixteen MFIF_ layouts (see HostFormatTables.h); 0 means not
// recognised. A buffer of `bufferWidth` x `bufferHeight` pixels has no padding:
// bufferWidth is also the row stride in pixels. Pair formats (Cb Y Cr Y) keep two
// pixels in two units, Cb Y0 then Cr Y1; formats with an alpha plane keep it right
// behind the colour plane, one sample a pixel, with the same row order. Row 0 of a
// frame is buffer row roiY, or bufferHeight - roiY - 1 in a bottom-up format.
#pragma once

#include <cstdint>

#include "generic/library/VZImage.h"
#include "hostsdk/guid.h"

// Field flags of the conversions, over rows of the frame counted from 0.
enum HostFieldFlag : uint32_t {
    HOST_FIELD_ODD_ONLY = 1,   // decoding: even rows take the next row; encoding: even rows skipped
    HOST_FIELD_EVEN_ONLY = 2,  // decoding: odd rows take the previous row; encoding: odd rows skipped
};

// True when the 16 bytes of a and b are equal.
bool guidEqual(const GUID& a, const GUID& b);

// Code of a host format: the identifiers of codes 1 to 15 are tested in that
// order and the first match wins; anything else gives 0. Code 16
// (MFIF_CbYCrY709A_FLOAT) is never returned, though both conversions handle it.
int pickHostFormat(const GUID& guid);

// Decodes the roiWidth x roiHeight region at (roiX, roiY) of a host buffer in
// format `code` into a new VZImage that owns its pixels (the
// caller deletes it), then applies the field flags. Null when the
// code is not 1..16, the buffer is null, the region is empty or does not lie
// inside the buffer, or the frame cannot be allocated.
VZImage* hostToVzImage(const void* pixels, int32_t bufferWidth, int32_t bufferHeight, int32_t roiWidth,
                       int32_t roiHeight, int32_t roiX, int32_t roiY, int32_t code, uint32_t fieldFlags);

// Encodes `image` into the roiWidth x roiHeight region at (roiX, roiY) of a host
// buffer in format `code`, skipping the rows the field flags leave out. Only the
// region's pixels are written. Does nothing when the code is not 1..16, a pointer
// is null, the region does not lie inside the buffer, or the frame is not
// roiWidth x roiHeight.
void vzImageToHost(const VZImage* image, void* pixels, int32_t bufferWidth, int32_t bufferHeight, int32_t roiWidth,
                   int32_t roiHeight, int32_t roiX, int32_t roiY, int32_t code, uint32_t fieldFlags);
