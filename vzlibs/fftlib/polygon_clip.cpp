// Polygon clipping, area and pixel coverage: the exact rim values of the
// rasteriser.
#include <cmath>
#include <cstring>

#include "vzlibs/fftlib/polygon.h"

namespace {

// Trapezium sum with y measured from the last vertex, which keeps the float
// sums small for polygons far from the origin.
float areaOf(const float (*points)[2], int count)
{
    if (count < 1)
        return 0.0f;
    const float baseY = points[count - 1][1];
    float previousX = points[count - 1][0];
    float previousY = 0.0f;
    float sum = 0.0f;
    for (int i = 0; i < count; ++i) {
        const float x = points[i][0];
        const float y = points[i][1] - baseY;
        sum += (previousX - x) * (previousY + y);
        previousX = x;
        previousY = y;
    }
    return std::fabs(0.5f * sum);
}

void addVertex(PolygonClip* output, float x, float y)
{
    // A convex polygon gains at most one vertex a step; only rounding at edges
    // that run almost along the plane can ask for more, and those extra points
    // are dropped rather than written past the list.
    if (output->count >= POLYGON_CLIP_VERTICES)
        return;
    output->points[output->count][0] = x;
    output->points[output->count][1] = y;
    ++output->count;
}

}  // namespace

void clip_polygon_to_plane(const PolygonClip* input, PolygonClip* output, int axis, float sign, float offset)
{
    output->count = 0;
    const int count = input->count;
    if (count < 1 || count > POLYGON_CLIP_VERTICES || (axis != 0 && axis != 1))
        return;

    const float* previous = input->points[count - 1];
    float previousS = sign * previous[axis] - offset;
    for (int i = 0; i < count; ++i) {
        const float* current = input->points[i];
        const float currentS = sign * current[axis] - offset;
        const bool previousInside = previousS <= 0.0f;
        const bool currentInside = currentS <= 0.0f;
        if (previousInside != currentInside) {
            const float t = previousS / (previousS - currentS);
            addVertex(output, (current[0] - previous[0]) * t + previous[0],
                      (current[1] - previous[1]) * t + previous[1]);
        }
        if (currentInside)
            addVertex(output, current[0], current[1]);
        previous = current;
        previousS = currentS;
    }
}

int clip_polygon_to_box(PolygonClip* polygon, const PixelBox* box)
{
    const int count = polygon->count;
    if (count < 0 || count > POLYGON_CLIP_VERTICES) {
        polygon->count = 0;
        return POLYGON_CLIP_EMPTY;
    }

    // Vertices strictly beyond each side; one on a side counts as inside.
    int beyond[4] = {0, 0, 0, 0};
    for (int i = 0; i < count; ++i) {
        const float x = polygon->points[i][0];
        const float y = polygon->points[i][1];
        beyond[0] += x < box->left;
        beyond[1] += x > box->right;
        beyond[2] += y < box->top;
        beyond[3] += y > box->bottom;
    }
    if (beyond[0] == 0 && beyond[1] == 0 && beyond[2] == 0 && beyond[3] == 0)
        return POLYGON_CLIP_INSIDE;
    for (int side = 0; side < 4; ++side) {
        if (beyond[side] == count) {
            polygon->count = 0;
            return POLYGON_CLIP_EMPTY;
        }
    }

    // Left, right, top, bottom, each only if a vertex lies beyond it, passing
    // the polygon back and forth between the caller's list and a scratch list.
    const int axes[4] = {0, 0, 1, 1};
    const float signs[4] = {-1.0f, 1.0f, -1.0f, 1.0f};
    const float offsets[4] = {-box->left, box->right, -box->top, box->bottom};
    PolygonClip scratch;
    PolygonClip* from = polygon;
    PolygonClip* to = &scratch;
    for (int side = 0; side < 4; ++side) {
        if (beyond[side] == 0)
            continue;
        clip_polygon_to_plane(from, to, axes[side], signs[side], offsets[side]);
        if (to->count == 0) {
            polygon->count = 0;
            return POLYGON_CLIP_EMPTY;
        }
        PolygonClip* swap = from;
        from = to;
        to = swap;
    }
    if (from != polygon) {
        polygon->count = from->count;
        std::memcpy(polygon->points, from->points, sizeof(float) * 2 * static_cast<size_t>(from->count));
    }
    return POLYGON_CLIP_CUT;
}

float polygon_area(const PolygonClip* polygon)
{
    if (polygon->count > POLYGON_CLIP_VERTICES)
        return 0.0f;
    return areaOf(polygon->points, polygon->count);
}

float polygon_area(const PolygonList* polygon)
{
    if (polygon->count > POLYGON_MAX_VERTICES)
        return 0.0f;
    return areaOf(polygon->points, polygon->count);
}

float pixel_coverage(const PolygonList* polygon, int x, int y)
{
    const int count = polygon->count;
    if (count < 1 || count > POLYGON_MAX_VERTICES)
        return 0.0f;
    PolygonClip copy;
    copy.count = count;
    std::memcpy(copy.points, polygon->points, sizeof(float) * 2 * static_cast<size_t>(count));

    const float left = static_cast<float>(x);
    const float top = static_cast<float>(y);
    const PixelBox box = {left, left + 1.0f, top, top + 1.0f};
    switch (clip_polygon_to_box(&copy, &box)) {
    case POLYGON_CLIP_CUT:
        return polygon_area(&copy);
    case POLYGON_CLIP_INSIDE:
        // By intent: a polygon wholly inside one pixel covers all of it,
        // however small, so a tiny aperture still paints one full pixel.
        return 1.0f;
    default:
        return 0.0f;
    }
}
