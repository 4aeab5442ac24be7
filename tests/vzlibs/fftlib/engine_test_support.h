// Shared helpers of the engine suites: images, kernels and a direct convolution.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "vzlibs/fftlib/FftEngine.h"
#include "vzlibs/fftlib/emphasis.h"
#include "vzlibs/imagelib/imagelib.h"

namespace enginetest {

// Owns an ImageRec for the length of a test; samples read and written as
// unsigned integers whatever the integer type.
struct Image {
    ImageRec* rec = nullptr;
    Image(int w, int h, int channels, int type) : rec(image_create(w, h, channels, type, 1)) {}
    explicit Image(ImageRec* r) : rec(r) {}
    ~Image() { image_free(rec); }
    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;

    uint8_t* at(int x, int y, int c) const
    {
        return static_cast<uint8_t*>(rec->pixels) + static_cast<size_t>(y) * rec->rowBytes +
               (static_cast<size_t>(x) * rec->channels + c) * rec->sampleBytes;
    }
    uint32_t get(int x, int y, int c) const
    {
        uint32_t v = 0;
        std::memcpy(&v, at(x, y, c), rec->sampleBytes);  // little-endian
        return v;
    }
    void set(int x, int y, int c, uint32_t v) { std::memcpy(at(x, y, c), &v, rec->sampleBytes); }
    void fill(uint32_t v)
    {
        for (int y = 0; y < rec->height; ++y)
            for (int x = 0; x < rec->width; ++x)
                for (int c = 0; c < rec->channels; ++c)
                    set(x, y, c, v);
    }
};

// An environment variable, put back as it was when the object goes.
struct SavedVariable {
    const char* name;
    const std::optional<std::string> value =
        std::getenv(name) ? std::optional<std::string>(std::getenv(name)) : std::nullopt;
    ~SavedVariable() { value ? setenv(name, value->c_str(), 1) : unsetenv(name); }
};

// Fails the `failAt`-th request (counting from 1) of one resource kind, through
// the engine's failure hook.
struct FailureScript {
    FftResource kind;
    int failAt;
    int seen = 0;
};

inline int scriptedFailure(void* context, FftResource resource)
{
    auto* script = static_cast<FailureScript*>(context);
    return resource == script->kind && ++script->seen == script->failAt;
}

inline double maxOfType(int type) { return type == 0 ? 255.0 : type == 1 ? 65535.0 : 4294967295.0; }

// Fills every sample of a frame with random values of its type.
inline void randomise(Image& frame, std::mt19937& rng)
{
    std::uniform_int_distribution<uint32_t> sample(0, static_cast<uint32_t>(maxOfType(frame.rec->sampleType)));
    for (int y = 0; y < frame.rec->height; ++y)
        for (int x = 0; x < frame.rec->width; ++x)
            for (int c = 0; c < frame.rec->channels; ++c)
                frame.set(x, y, c, sample(rng));
}

// A one-channel 8-bit PSF of the frame's size, all zero.
inline ImageRec* blankPsf(int w, int h)
{
    ImageRec* psf = image_create(w, h, 1, 0, 1);
    std::memset(psf->pixels, 0, static_cast<size_t>(psf->rowBytes) * h);
    return psf;
}

// A single white pixel `dx` columns right of the centre (w/2, h/2).
inline ImageRec* dotPsf(int w, int h, int dx = 0)
{
    ImageRec* psf = blankPsf(w, h);
    static_cast<uint8_t*>(psf->pixels)[(h / 2) * w + w / 2 + dx] = 255;
    return psf;
}

// Random weights within `reach` pixels of the centre, the centre itself white.
inline ImageRec* randomPsf(int w, int h, int reach, std::mt19937& rng)
{
    ImageRec* psf = dotPsf(w, h);
    std::uniform_int_distribution<int> weight(0, 255);
    auto* p = static_cast<uint8_t*>(psf->pixels);
    for (int dy = -reach; dy <= reach; ++dy)
        for (int dx = -reach; dx <= reach; ++dx)
            if (dx || dy)
                p[(h / 2 + dy) * w + (w / 2 + dx)] = static_cast<uint8_t>(weight(rng));
    return psf;
}

// Direct convolution of a frame with a PSF, edges repeated, in luma / chroma /
// alpha, written from the colour equations. Returns R, G, B, A per pixel on the
// frame's sample scale.
inline std::vector<double> directConvolution(const Image& frame, const ImageRec* psf, double e, bool alphaEmphasis,
                                             bool withAlpha)
{
    const int w = frame.rec->width, h = frame.rec->height;
    const double m = maxOfType(frame.rec->sampleType);
    const size_t n = static_cast<size_t>(w) * h;
    std::vector<double> q(n * 4), c(n * 4, 0.0), out(n * 4, 0.0);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const double r = frame.get(x, y, 0) / m, g = frame.get(x, y, 1) / m, b = frame.get(x, y, 2) / m;
            const double a = withAlpha ? frame.get(x, y, 3) / m : 0.0;
            double* o = &q[(static_cast<size_t>(y) * w + x) * 4];
            o[0] = emphasise(0.299 * r + 0.587 * g + 0.114 * b, e);
            o[1] = 0.5 * r - 0.418688 * g - 0.081312 * b + 0.5;
            o[2] = 0.617689 * b - 0.418688 * g - 0.213267 * r + 0.5;
            o[3] = alphaEmphasis ? emphasise(a, e) : a;
        }
    // out(x, y) = sum of psf(u, v) * in(x - (u - w/2), y - (v - h/2)), normalised.
    const auto* kp = static_cast<const uint8_t*>(psf->pixels);
    double sum = 0;
    for (size_t i = 0; i < n; ++i)
        sum += kp[i];
    for (int v = 0; v < h; ++v)
        for (int u = 0; u < w; ++u) {
            const double wt = kp[v * w + u] / sum;
            for (int y = 0; wt != 0 && y < h; ++y)
                for (int x = 0; x < w; ++x) {
                    const int sx = std::clamp(x - (u - w / 2), 0, w - 1), sy = std::clamp(y - (v - h / 2), 0, h - 1);
                    for (int p = 0; p < 4; ++p)
                        c[(static_cast<size_t>(y) * w + x) * 4 + p] += wt * q[(static_cast<size_t>(sy) * w + sx) * 4 + p];
                }
        }
    auto unit = [](double v) { return std::clamp(v, 0.0, 1.0); };
    for (size_t i = 0; i < n; ++i) {
        const double Y = deemphasise(c[i * 4], e), A = c[i * 4 + 1] - 0.5, B = c[i * 4 + 2] - 0.5;
        out[i * 4 + 0] = unit(1.402 * A + Y) * m;
        out[i * 4 + 1] = unit(Y * 0.996036 - A * 0.714136 - B * 0.277836) * m;
        out[i * 4 + 2] = unit(B * 1.430612 + Y * 1.020408) * m;
        out[i * 4 + 3] = unit(alphaEmphasis ? deemphasise(c[i * 4 + 3], e) : c[i * 4 + 3]) * m;
    }
    return out;
}

}  // namespace enginetest
