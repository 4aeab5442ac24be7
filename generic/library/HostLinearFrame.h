// The scene-linear bridge to the host: a region of a float R G B A host buffer
// (MFIF_RGBA_FLOAT) read into a LinearFrameVZ and written back, the samples
// kept as they are, with no limit to 0 to 1. The host's float R G B A frames
// are taken as premultiplied (associated) colour here.
#pragma once

#include <cstdint>

#include "generic/library/LinearFrameVZ.h"

// The format code of the one host format the scene-linear road takes.
int32_t hostLinearFormatCode();

// Reads the roiWidth x roiHeight region at (roiX, roiY) of a host buffer of
// format `code` into `frame`, which must be of the region's size, then applies
// the field flags as hostToVzImage does (HostPixelFormat.h). Every NaN or
// infinity is replaced by 0, so that one bad sample cannot spread over the
// frame in the transform. Returns the number of samples replaced; -1, with the
// frame untouched, when the code is not hostLinearFormatCode(), a pointer is
// null, the frame has no pixels or another size, or the region does not lie
// inside the buffer.
int64_t hostToLinearFrame(const void* pixels, int32_t bufferWidth, int32_t bufferHeight, int32_t roiWidth,
                          int32_t roiHeight, int32_t roiX, int32_t roiY, int32_t code, uint32_t fieldFlags,
                          LinearFrameVZ* frame);

// Writes `frame` into the region of a host buffer of format `code`, skipping
// the rows the field flags leave out, as vzImageToHost does. False, with
// nothing written, for the cases hostToLinearFrame refuses.
bool linearFrameToHost(const LinearFrameVZ* frame, void* pixels, int32_t bufferWidth, int32_t bufferHeight,
                       int32_t roiWidth, int32_t roiHeight, int32_t roiX, int32_t roiY, int32_t code,
                       uint32_t fieldFlags);
