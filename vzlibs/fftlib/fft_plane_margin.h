// Filling the margin of a work plane around the frame loaded into it: edge
// samples repeated outward, column by column within a row and row by row
// above and below the frame. Internal to the engine's sources.
#pragma once

#include <cstddef>
#include <cstring>

// Fills the margin columns of one plane row from its first and last loaded sample.
template <typename Real> inline void extendColumns(Real* planeRow, int offsetX, int width, int rowLength)
{
    const Real left = planeRow[offsetX];
    const Real right = planeRow[offsetX + width - 1];
    for (int x = 0; x < offsetX; ++x)
        planeRow[x] = left;
    for (int x = offsetX + width; x < rowLength; ++x)
        planeRow[x] = right;
}

// Copies row `top` into the rows above it and the frame's last row (of
// `height` rows from `top`) into the rows below it, up to `rows`.
template <typename Real>
void extendRowsOf(Real* plane, int top, int height, int stride, int rowLength, int rows)
{
    const size_t bytes = static_cast<size_t>(rowLength) * sizeof(Real);
    const Real* topRow = plane + static_cast<size_t>(top) * stride;
    for (int r = 0; r < top; ++r)
        std::memcpy(plane + static_cast<size_t>(r) * stride, topRow, bytes);
    const int bottom = height + top;
    if (bottom < rows) {
        const Real* lastRow = plane + static_cast<size_t>(bottom - 1) * stride;
        for (int r = bottom; r < rows; ++r)
            std::memcpy(plane + static_cast<size_t>(r) * stride, lastRow, bytes);
    }
}
