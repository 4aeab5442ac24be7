// The demo's pictures, made by the tool itself: a night scene of small
// bright lights of several colours and sizes over darker buildings, where
// bokeh shows, and an aperture picture (a star) for the Image shape.
#pragma once

#include "tools/lumenveil/image_file.h"

// With `lightLevels` the lights keep their energy in scene-linear light: each
// is its colour times a level of 4 to 40 (the street lamps 24), added
// without a limit, for a float file; otherwise every sample stays within 0
// to 1. The rest of the scene is the same either way.
ImageFrame makeNightScene(int width, int height, bool lightLevels = false);
// A display picture of a scene-linear frame: values up to `knee` stay as
// they are, higher ones roll off smoothly towards 1,
//   knee + (1 - knee) (1 - exp(-(v - knee) / (1 - knee))),
// which meets the identity at the knee with slope 1. Alpha is kept.
void toneMap(ImageFrame& frame, float knee = 0.8f);
// A five-pointed white star of `radius` pixels at the centre, on black.
ImageFrame makeStarAperture(int width, int height, float radius);
