// Frames as the host hands them to the effect: an ImageFrame put into a host
// image buffer of any format the effect takes, and the result read back.
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

// The number of columns handed to the effect: the frame's width, rounded up
// to an even number for the Cb Y Cr Y formats, which hold pixels in pairs.
int32_t hostFrameColumns(int32_t width, const HostFormatGeometry& format);

// A host image of `format`, hostFrameColumns x `rows`, holding `frame`;
// columns and rows beyond the frame repeat its last ones. Cb Y Cr Y formats
// get the colour through the format's matrix (ITU-R BT.601 or BT.709), in
// video range at 8 bits, with the chroma of each pair averaged. Failure when
// no memory.
ComRef<MemoryImage> makeHostImage(const ImageFrame& frame, const HostFormatGeometry& format, int32_t rows);

// The top-left frame.width x frame.height pixels of `image` (as made by
// makeHostImage) into `frame`. A format without alpha leaves frame's alpha.
void readHostImage(MemoryImage* image, const HostFormatGeometry& format, int32_t rows, ImageFrame& frame);
