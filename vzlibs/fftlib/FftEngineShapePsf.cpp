// BuildShapePsf: an aperture polygon around the centre of a frame-sized 8-bit
// picture, rasterised and prepared as the kernel.
#include <bit>
#include <cmath>
#include <cstring>

#include "vzlibs/fftlib/FftEngine.h"
#include "vzlibs/fftlib/polygon.h"

namespace {

// Single-precision constants, given by their bits.
constexpr float kDegreesToRadians = std::bit_cast<float>(0x3C8EFA35u);          // 0.017453292
constexpr float kNegDegreesToRadians = std::bit_cast<float>(0xBC8EFA35u);       // -0.017453292
constexpr float kEllipseStep = std::bit_cast<float>(0x3E00ADFDu);               // 2 pi / 50
constexpr float kTwoPi = std::bit_cast<float>(0x40C90FDBu);                     // 6.2831855
static_assert(kDegreesToRadians == 0.017453292f && kEllipseStep == 0.12566371f && kTwoPi == 6.2831855f);

inline float atLeastOne(float radius) { return radius < 1.0f ? 1.0f : radius; }

// `vertices` points around an ellipse of radii r1 (x) and r2 (y), turned by
// `angle` radians from +x towards +y, the pixel aspect divided out afterwards.
void roundPolygon(PolygonList& polygon, int vertices, float step, float r1, float r2, float angle, float ax, float ay,
                  float centreX, float centreY)
{
    const float cosA = std::cos(angle);
    const float sinA = std::sin(angle);
    for (int i = 0; i < vertices; ++i) {
        const float t = static_cast<float>(i) * step;
        const float a = std::cos(t) * r1;
        const float b = std::sin(t) * r2;
        polygon.points[i][0] = (cosA * a - sinA * b) * ax + centreX;
        polygon.points[i][1] = (sinA * a + cosA * b) * ay + centreY;
    }
    polygon.count = vertices;
}

// A rectangle of length r1 and thickness r2 from (centreX, centreY) outward;
// the angle turns the other way than for the round shapes.
void rectanglePolygon(PolygonList& polygon, bool bar, float r1, float r2, float rotation, float ax, float ay,
                      float centreX, float centreY)
{
    const float angle = rotation * kNegDegreesToRadians;
    const float s = std::sin(angle);
    const float c = std::cos(angle);
    r1 = atLeastOne(r1);
    r2 = atLeastOne(r2);
    const float h = r2 * 0.5f;
    if (bar) {
        // Shifted back along its length in x; the y shift uses the half
        // thickness, so the bar is centred along x only. Kept as required.
        centreX -= c * r1 * 0.5f;
        centreY -= s * h * 0.5f;
    }
    const float u = c * r1, v = s * r1, p = s * h, q = c * h;
    const float corners[4][2] = {
        {centreX + p * ax, centreY - q * ay},
        {centreX + (u + p) * ax, centreY + (v - q) * ay},
        {centreX + (u - p) * ax, centreY + (v + q) * ay},
        {centreX - p * ax, centreY + q * ay},
    };
    std::memcpy(polygon.points, corners, sizeof corners);
    polygon.count = 4;
}

}  // namespace

bool FftEngine::BuildShapePsf(int width, int height, int shape, float radius1, float radius2, float rotation,
                              int sides)
{
    const float ax = 1.0f / pixelAspectX;
    const float ay = 1.0f / pixelAspectY;
    // Values that would make the polygon's vertices infinite or not numbers are
    // refused before anything changes: such a polygon paints nothing, and the
    // empty picture would make a kernel of NaNs.
    if (shape >= FFT_SHAPE_ELLIPSE && shape <= FFT_SHAPE_BAR &&
        !(std::isfinite(radius1) && std::isfinite(radius2) && std::isfinite(rotation) && std::isfinite(ax) &&
          std::isfinite(ay))) {
        status = FFT_ERR_ARGUMENT;
        return false;
    }
    // The margin comes from the radii as they came in, before the clamps below.
    const uint32_t margin = PadMargin(ShapePsfReach(radius1, radius2));

    if (!acquirePsfImage(width, height))
        return false;
    std::memset(psfImage->pixels, 0, static_cast<size_t>(psfImage->rowBytes) * psfImage->height);

    // The middle of the image, not of a pixel.
    const float centreX = static_cast<float>(width) * 0.5f;
    const float centreY = static_cast<float>(height) * 0.5f;

    PolygonList polygon;
    polygon.count = 0;
    switch (shape) {
    case FFT_SHAPE_ELLIPSE:
        roundPolygon(polygon, POLYGON_MAX_VERTICES, kEllipseStep, atLeastOne(radius1), atLeastOne(radius2),
                     rotation * kDegreesToRadians, ax, ay, centreX, centreY);
        break;
    case FFT_SHAPE_POLYGON: {
        // Fewer than three sides make a triangle. More than the list's 50 places
        // (only the page limits Sides, to 20) are limited to 50: a 50-sided
        // polygon is already the round aperture the count tends to.
        const int n = sides < 3 ? 3 : sides > POLYGON_MAX_VERTICES ? POLYGON_MAX_VERTICES : sides;
        roundPolygon(polygon, n, kTwoPi / static_cast<float>(n), atLeastOne(radius1), atLeastOne(radius2),
                     rotation * kDegreesToRadians, ax, ay, centreX, centreY);
        break;
    }
    case FFT_SHAPE_STREAK:
    case FFT_SHAPE_BAR:
        rectanglePolygon(polygon, shape == FFT_SHAPE_BAR, radius1, radius2, rotation, ax, ay, centreX, centreY);
        break;
    default:
        break;  // no shape: the cleared image goes on
    }
    if (polygon.count > 0)
        rasterise_polygon(psfImage, &polygon);

    return PrepareKernel(psfImage, margin);
}
