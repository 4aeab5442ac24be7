// The demo's pictures, made by the tool itself: a night scene of small
// bright lights of several colours and sizes over darker buildings, where
// bokeh shows, and an aperture picture (a star) for the Image shape.
#pragma once

#include "tools/lumenveil/image_file.h"

ImageFrame makeNightScene(int width, int height);
// A five-pointed white star of `radius` pixels at the centre, on black.
ImageFrame makeStarAperture(int width, int height, float radius);
