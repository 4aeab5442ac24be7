// How a picture's colour stands to its alpha, by file format and by frame,
// and the conversions between the two conventions on rows of RGBA floats.
#pragma once

#include <cstddef>
#include <string>

enum class AlphaConvention {
    Unassociated,  // colour as seen, alpha beside it (PNG, TIFF, DPX, ...)
    Associated,    // colour already multiplied by alpha (OpenEXR; scene-linear frames)
};

// The convention of files of an OpenImageIO format name: OpenEXR stores
// associated alpha, every other format unassociated; `unassociatedExr` takes
// OpenEXR as unassociated too.
AlphaConvention fileAlphaConvention(const std::string& formatName, bool unassociatedExr);

// Converts `pixels` RGBA pixels from one convention to the other: colour is
// multiplied by alpha, or divided by it where alpha is not 0 (where it is 0
// the colour is left as it is). Nothing happens when the two are the same.
void convertAlpha(float* rgba, size_t pixels, AlphaConvention from, AlphaConvention to);

// Multiplies the colour (not alpha) of `pixels` RGBA pixels by `factor`.
void scaleColour(float* rgba, size_t pixels, float factor);
