// Drawing primitives of the overlay, in frame pixels, on the host's drawing
// layer (lines and quads in immediate mode).
#pragma once

#include <cstdint>

// Sets the colour from four 0..65535 channels.
void DrawColour(uint32_t red, uint32_t green, uint32_t blue, uint32_t alpha);
// One line from (x1, y1) to (x2, y2).
void DrawLine(float x1, float y1, float x2, float y2);
// A square handle of half-size `halfSize` around (x, y): white when highlighted,
// else mid-grey. Leaves the colour changed.
void DrawHandle(float x, float y, bool highlighted, float halfSize);
// The outline of an ellipse of full widths widthX, widthY around (x, y), turned
// by `rotation` degrees, walked from startAngle to endAngle in steps of about
// segmentLength pixels; dashed draws every second segment. Nothing below 5
// pixels of width. A full turn closes with one solid segment.
void DrawEllipse(float x, float y, float widthX, float widthY, float rotation, bool dashed, float segmentLength,
                 float startAngle, float endAngle);
// Four strokes from `inner` to `outer` pixels out from (x, y) on each axis; with
// diagonals, four more at half the offsets on both axes.
void DrawCrosshair(float x, float y, bool diagonals, float inner, float outer);

// The point at `angleRadians` on an ellipse of radii (rx, ry) around (cx, cy),
// turned by the angle whose cosine and sine are given.
void EllipsePoint(float cx, float cy, float rx, float ry, float cosR, float sinR, float angleRadians, float* x,
                  float* y);
