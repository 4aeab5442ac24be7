// Shared helpers of the engine suites: images, kernels and a direct convolution.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "vzlibs/fftlib/FftEngine.h"
#include "vzlibs/fftlib/emphasis.h"
#include "vzlibs/imagelib/imagelib.h"

namespace enginetest {

// Owns an ImageRec for the length of a test.
struct Image {
    ImageRec* rec = nullptr;
    Image(int w, int h, int channels, int type) : rec(image_create(w, h, channels, type, 1)) {}
    explicit Image(ImageRec* r) : rec(r) {}
    ~Image() { image_free(rec); }
    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;

    template <typename T> T* row(int y) const
    {
        return reinterpret_cast<T*>(static_cast<uint8_t*>(rec->pixels) + static_cast<size_t>(y) * rec->rowBytes);
    }
    // Sample as an unsigned integer, whatever the integer type.
    uint32_t get(int x, int y, int c) const
    {
        const size_t i = static_cast<size_t>(x) * rec->channels + c;
        switch (rec->sampleType) {
        case 0: return row<uint8_t>(y)[i];
        case 1: return row<uint16_t>(y)[i];
        default: return row<uint32_t>(y)[i];
        }
    }
    void set(int x, int y, int c, uint32_t v)
    {
        const size_t i = static_cast<size_t>(x) * rec->channels + c;
        switch (rec->sampleType) {
        case 0: row<uint8_t>(y)[i] = static_cast<uint8_t>(v); break;
        case 1: row<uint16_t>(y)[i] = static_cast<uint16_t>(v); break;
        default: row<uint32_t>(y)[i] = v; break;
        }
    }
    void fill(uint32_t v)
    {
        for (int y = 0; y < rec->height; ++y)
            for (int x = 0; x < rec->width; ++x)
                for (int c = 0; c < rec->channels; ++c)
                    set(x, y, c, v);
    }
};

inline double maxOfType(int type) { return type == 0 ? 255.0 : type == 1 ? 65535.0 : 4294967295.0; }

// A one-channel 8-bit PSF of the frame's size, all zero.
inline ImageRec* blankPsf(int w, int h)
{
    ImageRec* psf = image_create(w, h, 1, 0, 1);
    std::memset(psf->pixels, 0, static_cast<size_t>(psf->rowBytes) * h);
    return psf;
}

// A PSF with random weights within `reach` pixels of the centre (w/2, h/2).
inline ImageRec* randomPsf(int w, int h, int reach, std::mt19937& rng)
{
    ImageRec* psf = blankPsf(w, h);
    std::uniform_int_distribution<int> weight(0, 255);
    auto* p = static_cast<uint8_t*>(psf->pixels);
    for (int dy = -reach; dy <= reach; ++dy)
        for (int dx = -reach; dx <= reach; ++dx)
            p[(h / 2 + dy) * w + (w / 2 + dx)] = static_cast<uint8_t>(weight(rng));
    p[(h / 2) * w + w / 2] = 255;  // never an all-zero kernel
    return psf;
}

// Direct convolution of a frame with a PSF, edges repeated, in the engine's
// luma / chroma / alpha space, written from the colour equations.
inline std::vector<double> directConvolution(const Image& frame, const ImageRec* psf, double e, bool alphaEmphasis,
                                             bool withAlpha)
{
    const int w = frame.rec->width, h = frame.rec->height;
    const double k = 1.0 / maxOfType(frame.rec->sampleType);
    const double m = maxOfType(frame.rec->sampleType);
    const int planes = withAlpha ? 4 : 3;
    // Load.
    std::vector<double> q(static_cast<size_t>(w) * h * 4);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const double r = frame.get(x, y, 0) * k, g = frame.get(x, y, 1) * k, b = frame.get(x, y, 2) * k;
            double* o = &q[(static_cast<size_t>(y) * w + x) * 4];
            o[0] = emphasise(0.299 * r + 0.587 * g + 0.114 * b, e);
            o[1] = 0.5 * r - 0.418688 * g - 0.081312 * b + 0.5;
            o[2] = 0.617689 * b - 0.418688 * g - 0.213267 * r + 0.5;
            if (withAlpha) {
                const double a = frame.get(x, y, 3) * k;
                o[3] = alphaEmphasis ? emphasise(a, e) : a;
            }
        }
    // Convolve: out(x, y) = sum psf(u, v) * in(x - (u - w/2), y - (v - h/2)).
    const auto* kp = static_cast<const uint8_t*>(psf->pixels);
    double sum = 0;
    for (int i = 0; i < w * h; ++i)
        sum += kp[i];
    std::vector<double> c(q.size(), 0.0);
    for (int v = 0; v < h; ++v)
        for (int u = 0; u < w; ++u) {
            const double wt = kp[v * w + u] / sum;
            if (wt == 0)
                continue;
            const int dx = u - w / 2, dy = v - h / 2;
            for (int y = 0; y < h; ++y) {
                const int sy = std::clamp(y - dy, 0, h - 1);
                for (int x = 0; x < w; ++x) {
                    const int sx = std::clamp(x - dx, 0, w - 1);
                    for (int p = 0; p < planes; ++p)
                        c[(static_cast<size_t>(y) * w + x) * 4 + p] += wt * q[(static_cast<size_t>(sy) * w + sx) * 4 + p];
                }
            }
        }
    // Store.
    std::vector<double> out(static_cast<size_t>(w) * h * 4, 0.0);
    auto unit = [](double v) { return std::clamp(v, 0.0, 1.0); };
    for (size_t i = 0; i < static_cast<size_t>(w) * h; ++i) {
        const double Y = deemphasise(c[i * 4], e), A = c[i * 4 + 1] - 0.5, B = c[i * 4 + 2] - 0.5;
        out[i * 4 + 0] = unit(1.402 * A + Y) * m;
        out[i * 4 + 1] = unit(Y * 0.996036 - A * 0.714136 - B * 0.277836) * m;
        out[i * 4 + 2] = unit(B * 1.430612 + Y * 1.020408) * m;
        if (withAlpha)
            out[i * 4 + 3] = unit(alphaEmphasis ? deemphasise(c[i * 4 + 3], e) : c[i * 4 + 3]) * m;
    }
    return out;
}

}  // namespace enginetest
