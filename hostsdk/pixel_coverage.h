// Pixel coverage of the drawing layer's primitives. Pixel (i, j) is the unit
// square [i, i + 1] x [j, j + 1] of window coordinates, its centre at
// (i + 0.5, j + 0.5).
#pragma once

#include <vector>

struct WindowPoint {
    double x;
    double y;
};

// Coverage of a line of `width` pixels at the pixel whose centre is `centre`:
// with d the distance from the centre to the segment a-b (round ends),
// clamp(width / 2 + 0.5 - d, 0, 1). So a 1-pixel line gives 1 on its axis,
// falling linearly to 0 one pixel away.
double LineCoverage(WindowPoint centre, WindowPoint a, WindowPoint b, double width);

// Exact area of the simple polygon `polygon` inside pixel (i, j), 0 to 1.
double PolygonCoverage(const std::vector<WindowPoint>& polygon, int i, int j);
