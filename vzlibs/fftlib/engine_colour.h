// The engine's colour transform: R G B to luma and two chroma differences
// before a blur, and back after it. The weights are single-precision constants
// widened to double; chroma B's three weights do not sum to zero, and are the
// row that goes with the inverse. Every pass that loads or stores frames in
// the engine's colour uses these, in this order of operations.
#pragma once

namespace engine_colour {

constexpr double W_R = static_cast<double>(0.299f);
constexpr double W_G = static_cast<double>(0.587f);
constexpr double W_B = static_cast<double>(0.114f);
constexpr double A_R = static_cast<double>(0.5f);
constexpr double A_G = static_cast<double>(0.418688f);
constexpr double A_B = static_cast<double>(0.081312f);
constexpr double B_B = static_cast<double>(0.617689f);
constexpr double B_G = static_cast<double>(0.418688f);
constexpr double B_R = static_cast<double>(0.213267f);
constexpr double INV_RA = static_cast<double>(1.402f);
constexpr double INV_GY = static_cast<double>(0.996036f);
constexpr double INV_GA = static_cast<double>(0.714136f);
constexpr double INV_GB = static_cast<double>(0.277836f);
constexpr double INV_BB = static_cast<double>(1.430612f);
constexpr double INV_BY = static_cast<double>(1.020408f);
// The offset both chroma differences carry in a plane; the kernel sums to
// one, so it passes a blur unchanged.
constexpr double CHROMA_OFFSET = 0.5;

// Luma, chroma A and chroma B of R, G, B on a 0..1 scale.
inline double luma(double r, double g, double b) { return b * W_B + g * W_G + r * W_R; }
inline double chromaA(double r, double g, double b) { return r * A_R - g * A_G - b * A_B + CHROMA_OFFSET; }
inline double chromaB(double r, double g, double b) { return b * B_B - (g * B_G + r * B_R) + CHROMA_OFFSET; }

// R, G, B (not yet limited to 0..1) from luma and the offset chroma differences.
inline void rgbOf(double y, double a, double b, double* r, double* g, double* bl)
{
    a -= CHROMA_OFFSET;
    b -= CHROMA_OFFSET;
    *r = INV_RA * a + y;
    *g = y * INV_GY - a * INV_GA - b * INV_GB;
    *bl = b * INV_BB + y * INV_BY;
}

}  // namespace engine_colour
