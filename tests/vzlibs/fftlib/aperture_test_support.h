// Shared by the aperture suites: polygons from point lists, and reads of the
// one-channel 8-bit pictures that the rasteriser and the PSF builders draw.
#pragma once

#include <algorithm>
#include <initializer_list>
#include <utility>
#include <vector>

#include "vzlibs/fftlib/polygon.h"

namespace aperture_test {

template <typename List = PolygonList>
List makePolygon(std::initializer_list<std::pair<double, double>> points)
{
    List polygon{};
    for (const auto& [x, y] : points) {
        polygon.points[polygon.count][0] = float(x);
        polygon.points[polygon.count++][1] = float(y);
    }
    return polygon;
}

inline int at(const ImageRec* image, int x, int y)
{
    return static_cast<const unsigned char*>(image->pixels)[size_t(y) * image->rowBytes + x];
}

inline std::vector<unsigned char> picture(const ImageRec* image)
{
    const unsigned char* p = static_cast<const unsigned char*>(image->pixels);
    return {p, p + size_t(image->rowBytes) * image->height};
}

// Bounding box and count of the non-zero pixels, and their sum / 255.
struct Extent {
    int minX = 1 << 30, maxX = -1, minY = 1 << 30, maxY = -1, count = 0;
    double area = 0.0;
    int width() const { return maxX - minX + 1; }
    int height() const { return maxY - minY + 1; }
};

inline Extent measure(const ImageRec* image)
{
    Extent e;
    for (int y = 0; y < image->height; ++y)
        for (int x = 0; x < image->width; ++x)
            if (const int v = at(image, x, y)) {
                e.minX = std::min(e.minX, x), e.maxX = std::max(e.maxX, x);
                e.minY = std::min(e.minY, y), e.maxY = std::max(e.maxY, y);
                ++e.count, e.area += v / 255.0;
            }
    return e;
}

}  // namespace aperture_test
