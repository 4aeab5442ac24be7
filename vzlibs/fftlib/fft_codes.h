// Named codes of FftEngine's calls: the aperture shapes of BuildShapePsf, the
// border modes of SetBorderMode and the channel masks of Run.
#pragma once

#include <cstdint>

// Shape codes of BuildShapePsf; any other code draws nothing.
enum FftShape : int {
    FFT_SHAPE_ELLIPSE = 1,  // 50-sided polygon; a circle when both radii are equal
    FFT_SHAPE_POLYGON = 2,  // regular polygon of `sides` sides, at least 3
    FFT_SHAPE_STREAK = 3,   // rectangle that starts at the centre and runs outward
    FFT_SHAPE_BAR = 4,      // rectangle shifted back along its length
};

// What fills the transform's margin around the image, SetBorderMode's values.
enum FftBorderMode : int {
    FFT_BORDER_LEAVE = 1,   // the margin is left as it is
    FFT_BORDER_REPEAT = 2,  // the image's edge pixels are repeated out to the plane's edges (the default)
};

// Channel bits of Run's mask: the three colour channels are required.
enum FftChannel : uint32_t {
    FFT_CHANNEL_LUMA = 1,      // channel index 0, loaded as emphasised luma
    FFT_CHANNEL_CHROMA_A = 2,  // channel index 1
    FFT_CHANNEL_CHROMA_B = 4,  // channel index 2
    FFT_CHANNEL_ALPHA = 8,     // channel index 3
};
inline constexpr uint32_t FFT_MASK_COLOUR = FFT_CHANNEL_LUMA | FFT_CHANNEL_CHROMA_A | FFT_CHANNEL_CHROMA_B;  // 7
inline constexpr uint32_t FFT_MASK_COLOUR_ALPHA = FFT_MASK_COLOUR | FFT_CHANNEL_ALPHA;                        // 15
