#include "hostsdk/pixel_coverage.h"

#include <algorithm>
#include <cmath>

namespace {

double distanceToSegment(WindowPoint p, WindowPoint a, WindowPoint b)
{
    const double dx = b.x - a.x, dy = b.y - a.y;
    const double lengthSquared = dx * dx + dy * dy;
    double t = 0.0;
    if (lengthSquared > 0.0)
        t = std::clamp(((p.x - a.x) * dx + (p.y - a.y) * dy) / lengthSquared, 0.0, 1.0);
    return std::hypot(p.x - (a.x + t * dx), p.y - (a.y + t * dy));
}

// Keeps the part of `polygon` on the inner side of one axis-aligned edge:
// coordinate `axis` (0 x, 1 y) at least `limit` if `keepAbove`, else at most.
std::vector<WindowPoint> clipAgainst(const std::vector<WindowPoint>& polygon, int axis, double limit, bool keepAbove)
{
    const auto coord = [axis](WindowPoint p) { return axis == 0 ? p.x : p.y; };
    const auto inside = [&](WindowPoint p) { return keepAbove ? coord(p) >= limit : coord(p) <= limit; };
    std::vector<WindowPoint> out;
    for (std::size_t k = 0; k < polygon.size(); ++k) {
        const WindowPoint from = polygon[k];
        const WindowPoint to = polygon[(k + 1) % polygon.size()];
        if (inside(from))
            out.push_back(from);
        if (inside(from) != inside(to)) {
            const double t = (limit - coord(from)) / (coord(to) - coord(from));
            out.push_back({from.x + t * (to.x - from.x), from.y + t * (to.y - from.y)});
        }
    }
    return out;
}

double area(const std::vector<WindowPoint>& polygon)
{
    double twice = 0.0;
    for (std::size_t k = 0; k < polygon.size(); ++k) {
        const WindowPoint p = polygon[k], q = polygon[(k + 1) % polygon.size()];
        twice += p.x * q.y - q.x * p.y;
    }
    return std::fabs(twice) / 2.0;
}

}  // namespace

double LineCoverage(WindowPoint centre, WindowPoint a, WindowPoint b, double width)
{
    return std::clamp(width / 2.0 + 0.5 - distanceToSegment(centre, a, b), 0.0, 1.0);
}

double PolygonCoverage(const std::vector<WindowPoint>& polygon, int i, int j)
{
    std::vector<WindowPoint> clipped = clipAgainst(polygon, 0, i, true);
    clipped = clipAgainst(clipped, 0, i + 1.0, false);
    clipped = clipAgainst(clipped, 1, j, true);
    clipped = clipAgainst(clipped, 1, j + 1.0, false);
    return std::min(area(clipped), 1.0);
}
