// Replays a drawing record into an image, as a GL 1.x pipeline would draw it.
//
// - The image shows the rectangle of the last glViewport in the record (none:
//   0 x 0): image pixel (i, j) is window pixel (x + i, y + j).
// - State starts as GL's: both matrices identity, GL_MODELVIEW selected, colour
//   opaque white, line width 1. glPopMatrix on a stack of one does nothing, as
//   does a glOrtho with a zero extent.
// - A vertex is taken through projection x modelview (those in force at the
//   vertex) and the viewport in force to window coordinates; y grows upwards.
// - GL_LINES: each pair of vertices is a segment, anti-aliased by distance
//   (LineCoverage). GL_QUADS: each group of four is a filled polygon, edges
//   anti-aliased by exact area (PolygonCoverage). Left-over vertices are
//   dropped. A primitive has the colour in force at its last vertex.
// - Blending: straight-alpha "over"; a pixel's coverage scales the colour's
//   alpha. Channels go to 8 bits rounded to nearest.
#pragma once

#include <vector>

#include "hostsdk/gl.h"
#include "hostsdk/rgba_image.h"

RgbaImage RasteriseDrawing(const std::vector<DrawCall>& calls, RowOrder order);
