// The engine's size rules: the transform a frame needs in each mode, and the
// margin a PSF builder keeps for the blur's reach.
#include <cmath>

#include "vzlibs/fftlib/FftEngine.h"

namespace {

// The range of either side of a transform: up to 8192 for the square
// transforms of mode 4, twice that for the fast modes, whose sides are sized
// apart (a frame of 7,680 x 4,320 with a wide blur still fits).
constexpr int64_t kSmallestSide = 2;
constexpr int64_t kLargestSquareSide = 8192;
constexpr int64_t kLargestFastSide = 16384;

// Largest margin handed on from a reach; any margin this large is beyond
// every transform side, so PrepareKernel refuses it with FFT_ERR_SIZE.
constexpr float kMarginCeiling = 16777216.0f;  // 2^24

int64_t powerOfTwoAtLeast(int64_t n)
{
    int64_t value = 1;
    while (value < n)
        value <<= 1;
    return value;
}

// The smallest number at or above n (at least 1) whose only prime factors
// are 2, 3, 5 and 7, found among the products of their powers.
int64_t fastSideAtLeast(int64_t n)
{
    if (n <= 1)
        return 1;
    int64_t best = powerOfTwoAtLeast(n);
    for (int64_t p7 = 1; p7 < best; p7 *= 7)
        for (int64_t p5 = p7; p5 < best; p5 *= 5)
            for (int64_t p3 = p5; p3 < best; p3 *= 3) {
                int64_t size = p3;
                while (size < n)
                    size *= 2;
                if (size < best)
                    best = size;
            }
    return best;
}

}  // namespace

int FftEngine::nextPowerOfTwo(int n, int* exponent)
{
    int value = 1;
    int bits = 0;
    while (value < n && value < (1 << 30)) {
        value <<= 1;
        ++bits;
    }
    if (exponent)
        *exponent = bits;
    return value;
}

int FftEngine::nextFastSize(int n) { return static_cast<int>(fastSideAtLeast(n)); }

int64_t FftEngine::LargestSide(uint32_t mode)
{
    return mode == FFT_MODE_FAST || mode == FFT_MODE_FAST_FLOAT ? kLargestFastSide : kLargestSquareSide;
}

bool FftEngine::TransformSize(uint32_t mode, int64_t width, int64_t height, uint32_t margin, int64_t* sideX,
                              int64_t* sideY)
{
    const int64_t needX = width + 2 * static_cast<int64_t>(margin);
    const int64_t needY = height + 2 * static_cast<int64_t>(margin);
    int64_t x, y;
    if (mode == FFT_MODE_FAST || mode == FFT_MODE_FAST_FLOAT) {
        x = fastSideAtLeast(needX);
        y = fastSideAtLeast(needY);
    } else {
        x = y = powerOfTwoAtLeast(needX > needY ? needX : needY);
    }
    *sideX = x;
    *sideY = y;
    const int64_t larger = x > y ? x : y;
    return larger >= kSmallestSide && larger <= LargestSide(mode);
}

float FftEngine::ShapePsfReach(float radius1, float radius2) { return radius1 > radius2 ? radius1 : radius2; }

float FftEngine::ImagePsfReach(float radius, float softness) { return radius + (softness < 1.0f ? 1.0f : softness); }

uint32_t FftEngine::PadMargin(float reach)
{
    const float up = std::ceil(reach);
    if (!(up < kMarginCeiling && up > -kMarginCeiling))
        return static_cast<uint32_t>(kMarginCeiling);
    return static_cast<uint32_t>(static_cast<int32_t>(up) + 1);
}
