// The demo's pictures, made by the tool itself: a night scene of small
// bright lights of several colours and sizes over darker buildings, where
// bokeh shows, and an aperture picture (a star) for the Image shape.
#pragma once

#include <vector>

#include "tools/lumenveil/image_file.h"

// With `lightLevels` the lights keep their energy in scene-linear light: each
// is its colour times a level of 4 to 40 (the street lamps 24), added
// without a limit, for a float file; otherwise every sample stays within 0
// to 1. The rest of the scene is the same either way.
// With `depth`, also the scene's depth map in metres, a float a pixel: the sky
// at infinity (0), the buildings each at a distance of its own from 12 to 60 m,
// the street running from 2 m at the bottom of the frame to 12 m at its far
// edge; a light lies at the depth of what it is on.
ImageFrame makeNightScene(int width, int height, bool lightLevels = false, std::vector<float>* depth = nullptr);
// A display picture of a scene-linear frame: values up to `knee` stay as
// they are, higher ones roll off smoothly towards 1,
//   knee + (1 - knee) (1 - exp(-(v - knee) / (1 - knee))),
// which meets the identity at the knee with slope 1. Alpha is kept.
void toneMap(ImageFrame& frame, float knee = 0.8f);
// A five-pointed white star of `radius` pixels at the centre, on black.
ImageFrame makeStarAperture(int width, int height, float radius);
