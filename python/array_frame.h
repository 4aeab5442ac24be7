// NumPy arrays as the frames of the embedding library (frame_view.h): H x W
// (grey), H x W x C (C of 1 to 4: grey, grey + alpha, RGB, RGBA) of uint8,
// uint16 or float32 samples.
#pragma once

#include <pybind11/numpy.h>

#include "embed/frame_view.h"

// An array held as a frame: `array` keeps the memory `view` points into.
struct ArrayFrame {
    pybind11::array array;
    FrameView view;
};

// `object` as a frame named `what` in messages. Rows may lie anywhere (any
// row stride, also negative); when the pixels of a row are not packed
// samples the array is copied into a C-contiguous one. Never written to.
// TypeError for what is no array of uint8, uint16 or float32; ValueError
// for other shapes.
ArrayFrame arrayFrame(const pybind11::handle& object, const char* what);

// A new C-contiguous array of the frame's shape and type, and its view.
ArrayFrame newArrayFrame(const FrameView& like, bool grey);

// `frame` with its memory copied into a new C-contiguous array, so that it
// stays as it is whatever happens to the caller's array.
ArrayFrame ownedCopy(const ArrayFrame& frame);
