// Frames as the host hands them to the effect: an ImageFrame put into a host
// image buffer of an RGBA format, and the result read back.
#pragma once

#include <cstdint>

#include "hostsdk/IDSImage.h"
#include "hostsdk/image_format_geometry.h"
#include "tools/lumenveil/com_ref.h"
#include "tools/lumenveil/image_file.h"

// The number of rows handed to the effect: the frame's height, or with
// `wholeRows` that height rounded up to a multiple of four, because the
// effect convolves rows in four equal slices and leaves a remainder as it is.
int32_t hostFrameRows(int32_t height, bool wholeRows);

// A host image of `format`, frame.width x `rows`, holding `frame`; rows below
// the frame repeat its last row. Failure when no memory.
ComRef<MemoryImage> makeHostImage(const ImageFrame& frame, const HostFormatGeometry& format, int32_t rows);

// The top frame.height rows of `image` (as made by makeHostImage) into `frame`.
void readHostImage(MemoryImage* image, const HostFormatGeometry& format, int32_t rows, ImageFrame& frame);
