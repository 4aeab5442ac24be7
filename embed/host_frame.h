// Frames as the host hands them to the effect: rows of a frame put into a host
// image buffer of any format the effect takes, and the result read back.
#pragma once

#include <cstdint>
#include <functional>

#include "hostsdk/IDSImage.h"
#include "hostsdk/image_format_geometry.h"
#include "hostsdk/com.h"

// The number of rows handed to the effect: the frame's height, or with
// `wholeRows` that height rounded up to a multiple of four, because the
// effect convolves rows in four equal slices and leaves a remainder as it is.
int32_t hostFrameRows(int32_t height, bool wholeRows);

// The number of columns handed to the effect: the frame's width, rounded up
// to an even number for the Cb Y Cr Y formats, which hold pixels in pairs.
int32_t hostFrameColumns(int32_t width, const HostFormatGeometry& format);

// The format frames are handed over in unless a host says otherwise:
// MFIF_RGBA_RAW_32 for 8-bit samples, MFIF_RGBA_FLOAT for deeper ones, so
// that no precision is lost before the effect's 15-bit frame.
const HostFormatGeometry& defaultHostFormat(bool eightBitSamples);

// Whether images of `format` carry alpha: all RGBA formats, and the Cb Y Cr Y
// ones with an alpha plane.
bool hostFormatHasAlpha(const HostFormatGeometry& format);

// Rows y to y + count - 1 of a frame (0 is the top row), four floats a pixel,
// handed to a source to fill or to a sink to take, which may change them.
using FrameRows = std::function<void(int32_t y, int32_t count, float* rgba)>;

// Fills `image`, a host image of `format` hostFrameColumns x `rows`, with the
// width x height frame that `source` gives; columns and rows beyond the frame
// repeat its last ones. Cb Y Cr Y formats get the colour through the format's
// matrix (ITU-R BT.601 or BT.709), in video range at 8 bits, with the chroma
// of each pair averaged. Samples are limited to 0 to 1, except, with
// `keepRange`, those of MFIF_RGBA_FLOAT, which are stored as they are (the
// scene-linear frames).
void storeHostImage(MemoryImage* image, const HostFormatGeometry& format, int32_t width, int32_t height,
                    int32_t rows, const FrameRows& source, bool keepRange = false);

// Hands the top-left width x height pixels of such an image to `sink`, a few
// rows at a time; a format without alpha gives full alpha.
void loadHostImage(MemoryImage* image, const HostFormatGeometry& format, int32_t width, int32_t height,
                   int32_t rows, const FrameRows& sink);

// A new host image of `format` for a frame `width` pixels wide; Failure when no memory.
ComRef<MemoryImage> newHostImage(const HostFormatGeometry& format, int32_t width, int32_t rows);
