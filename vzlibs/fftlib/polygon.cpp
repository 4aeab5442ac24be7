// rasterise_polygon: one pass down the rows of a convex polygon. Two walkers go
// down the chains of edges from the top vertex; per row, the pixels that the
// chains cross get their coverage by clipping, the pixels between them 255.
#include <algorithm>
#include <cmath>
#include <utility>

#include "vzlibs/fftlib/polygon.h"

namespace {

// The scan counts rows in float steps of 1.0, which stay exact only below 2^24;
// coordinates are held well inside that, which also keeps every float-to-int
// conversion below defined. The largest image is 65535 pixels across.
constexpr float kCoordinateLimit = 8388608.0f;  // 2^23

// One chain of edges, walked from the top vertex towards the bottom one.
struct Walker {
    int current;
    int next;
    int step;  // -1: towards lower indices, +1: towards higher ones
};

inline void fold(float value, float& low, float& high)
{
    if (value < low)
        low = value;
    if (value > high)
        high = value;
}

// Steps 5 and 6 of a row for one chain: passes the vertices above `scanY`,
// folding their x into the bounds, then cuts the edge in work at `scanY`. At
// the bottom vertex `cut` keeps its value from the row before.
void walkChain(const PolygonList* polygon, int bottom, float scanY, Walker& w, float& low, float& high, float& cut)
{
    const int count = polygon->count;
    const float (*p)[2] = polygon->points;
    while (w.current != bottom && p[w.next][1] < scanY) {
        fold(p[w.next][0], low, high);
        w.current = w.next;
        w.next = (w.next + w.step + count) % count;
    }
    if (w.current != bottom) {
        const float slope = (p[w.next][0] - p[w.current][0]) / (p[w.next][1] - p[w.current][1]);
        cut = (scanY - p[w.current][1]) * slope + p[w.current][0];
        fold(cut, low, high);
    }
}

// A rim run: each pixel stored from its exact coverage.
void paintRim(const PolygonList* polygon, unsigned char* row, int y, int first, int last)
{
    for (int x = first; x <= last; ++x)
        row[x] = static_cast<unsigned char>(static_cast<int>(255.0f * pixel_coverage(polygon, x, y) + 0.5f));
}

// Beyond the documented contract (convex, 3 or more vertices), refuses what
// the scan could not walk safely: counts outside the list and coordinates
// that are not numbers or lie beyond the exact range of the float row steps.
bool scannable(const ImageRec* image, const PolygonList* polygon)
{
    if (!image || !polygon || image->channels != 1 || image->sampleType != IMAGE_U8 || !image->pixels)
        return false;
    const int count = polygon->count;
    if (count < 3 || count > POLYGON_MAX_VERTICES)
        return false;
    for (int i = 0; i < count; ++i) {
        const float* point = polygon->points[i];
        if (!(std::fabs(point[0]) <= kCoordinateLimit && std::fabs(point[1]) <= kCoordinateLimit))
            return false;
    }
    return true;
}

// The ends, by strict comparisons from vertex 0: among equals the lowest
// index wins at both ends.
void findEnds(const PolygonList* polygon, int* top, int* bottom)
{
    const float (*p)[2] = polygon->points;
    *top = *bottom = 0;
    for (int i = 1; i < polygon->count; ++i) {
        if (p[i][1] < p[*top][1])
            *top = i;
        if (p[i][1] > p[*bottom][1])
            *bottom = i;
    }
}

// Where the two chains' edges lie in one row: their least and greatest x.
struct RowRims {
    float leftMin, leftMax, rightMin, rightMax;
};

// Paints row `row` of `image`: the rims pixel by pixel by their coverage, the
// run between them full.
void paintRow(ImageRec* image, const PolygonList* polygon, int row, RowRims r)
{
    const int width = image->width;
    const float lastColumn = static_cast<float>(width - 1);
    // The left run is the left one in the picture, in either winding. Where
    // both chains start at the same x (the top or bottom vertex is the row's
    // leftmost point, as for a flat top edge) the smaller maximum decides: the
    // true left chain never reaches further right than the right one.
    // Comparing the minima alone would let the chain that runs along a flat
    // edge be taken as the left rim, and the pixels along that edge would be
    // lost in one winding.
    if (r.rightMin < r.leftMin || (r.rightMin == r.leftMin && r.rightMax < r.leftMax)) {
        std::swap(r.leftMin, r.rightMin);
        std::swap(r.leftMax, r.rightMax);
    }
    if (r.leftMax > r.rightMin)
        r.leftMax = r.rightMin;
    r.leftMin = std::floor(r.leftMin);
    r.leftMax = std::floor(r.leftMax);
    r.rightMin = std::floor(r.rightMin);
    r.rightMax = std::floor(r.rightMax);
    // The two rims never share a pixel.
    if (r.leftMax == r.rightMin)
        r.leftMax -= 1.0f;
    r.leftMin = std::max(r.leftMin, 0.0f);
    r.rightMin = std::max(r.rightMin, 0.0f);
    r.leftMax = std::min(r.leftMax, lastColumn);
    r.rightMax = std::min(r.rightMax, lastColumn);

    unsigned char* line = static_cast<unsigned char*>(image->pixels) + static_cast<size_t>(row) * image->rowBytes;
    paintRim(polygon, line, row, static_cast<int>(r.leftMin), static_cast<int>(r.leftMax));
    r.leftMax = std::max(r.leftMax, -1.0f);
    r.rightMin = std::min(r.rightMin, static_cast<float>(width));
    for (int x = static_cast<int>(r.leftMax) + 1; x <= static_cast<int>(r.rightMin) - 1; ++x)
        line[x] = 255;
    paintRim(polygon, line, row, static_cast<int>(r.rightMin), static_cast<int>(r.rightMax));
}

}  // namespace

void rasterise_polygon(ImageRec* image, const PolygonList* polygon)
{
    if (!scannable(image, polygon))
        return;
    const int count = polygon->count;
    const float (*p)[2] = polygon->points;
    int top, bottom;
    findEnds(polygon, &top, &bottom);
    const int height = image->height;
    const float bottomY = p[bottom][1];

    // scanY is the lower boundary of the row in work: the first whole number
    // strictly below the top vertex, so a top on a whole number y starts row y.
    float scanY = std::ceil(p[top][1]);
    if (scanY == p[top][1])
        scanY += 1.0f;

    Walker left = {top, (top - 1 + count) % count, -1};
    Walker right = {top, (top + 1) % count, +1};
    const float topX = p[top][0];
    float leftMin = topX, leftMax = topX, rightMin = topX, rightMax = topX;
    float leftCut = topX, rightCut = topX;

    for (;;) {
        const int row = static_cast<int>(scanY - 1.0f);
        walkChain(polygon, bottom, scanY, left, leftMin, leftMax, leftCut);
        walkChain(polygon, bottom, scanY, right, rightMin, rightMax, rightCut);
        if (row >= 0 && row < height)
            paintRow(image, polygon, row, {leftMin, leftMax, rightMin, rightMax});

        // The scan ends after the row in which both walkers reach the bottom
        // vertex: the first scanY strictly below it. Rows past the image's last
        // one cannot paint, so the scan stops there too. This also ends a
        // polygon with all its vertices at one y, which the contract excludes.
        if (scanY > bottomY || row >= height - 1)
            break;

        // The next row's bounds start where the edges cross the row boundary.
        leftMin = leftMax = leftCut;
        rightMin = rightMax = rightCut;
        scanY += 1.0f;
    }
}
