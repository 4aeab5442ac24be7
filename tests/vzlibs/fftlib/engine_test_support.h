// Shared helpers of the engine suites: images, kernels, a direct convolution,
// polygons and reads of one-channel 8-bit pictures.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <numeric>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "vzlibs/fftlib/FftEngine.h"
#include "vzlibs/fftlib/emphasis.h"
#include "vzlibs/fftlib/polygon.h"
#include "vzlibs/imagelib/imagelib.h"

namespace enginetest {

// Owns an ImageRec for the length of a test; samples read and written as
// unsigned integers (little-endian) whatever the integer type.
struct Image {
    ImageRec* rec = nullptr;
    Image(int w, int h, int channels, int type) : rec(image_create(w, h, channels, type, 1)) {}
    explicit Image(ImageRec* r) : rec(r) {}
    ~Image() { image_free(rec); }
    Image(const Image&) = delete;

    uint8_t* at(int x, int y, int c) const
    {
        return static_cast<uint8_t*>(rec->pixels) + size_t(y) * rec->rowBytes + (size_t(x) * rec->channels + c) * rec->sampleBytes;
    }
    uint32_t get(int x, int y, int c) const
    {
        uint32_t v = 0;
        return std::memcpy(&v, at(x, y, c), rec->sampleBytes), v;
    }
    void set(int x, int y, int c, uint32_t v) { std::memcpy(at(x, y, c), &v, rec->sampleBytes); }
    template <typename F> void each(F f) const  // f(x, y, c) over every sample
    {
        for (int i = 0; i < rec->width * rec->height * rec->channels; ++i)
            f(i / rec->channels % rec->width, i / rec->channels / rec->width, i % rec->channels);
    }
    void fill(uint32_t v) { each([&](int x, int y, int c) { set(x, y, c, v); }); }
    bool sameBytes(const Image& o) const { return std::memcmp(rec->pixels, o.rec->pixels, size_t(rec->rowBytes) * rec->height) == 0; }
};

// An environment variable, put back as it was when the object goes.
struct SavedVariable {
    const char* name;
    const std::optional<std::string> value = std::getenv(name) ? std::optional<std::string>(std::getenv(name)) : std::nullopt;
    ~SavedVariable() { value ? setenv(name, value->c_str(), 1) : unsetenv(name); }
};

// Fails the `failAt`-th request (from 1) of one resource kind through the failure hook.
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

inline void randomise(Image& frame, std::mt19937& rng)
{
    std::uniform_int_distribution<uint32_t> sample(0, uint32_t(maxOfType(frame.rec->sampleType)));
    frame.each([&](int x, int y, int c) { frame.set(x, y, c, sample(rng)); });
}

// A one-channel 8-bit PSF of the frame's size: a single white pixel `dx`
// columns right of the centre (w/2, h/2).
inline ImageRec* dotPsf(int w, int h, int dx = 0)
{
    ImageRec* psf = image_create(w, h, 1, 0, 1);
    std::memset(psf->pixels, 0, size_t(psf->rowBytes) * h);
    static_cast<uint8_t*>(psf->pixels)[(h / 2) * w + w / 2 + dx] = 255;
    return psf;
}

// Random weights within `reach` pixels of the centre, the centre itself white.
inline ImageRec* randomPsf(int w, int h, int reach, std::mt19937& rng)
{
    ImageRec* psf = dotPsf(w, h);
    for (int dy = -reach; dy <= reach; ++dy)
        for (int dx = -reach; dx <= reach; ++dx)
            if (dx || dy)
                static_cast<uint8_t*>(psf->pixels)[(h / 2 + dy) * w + (w / 2 + dx)] = uint8_t(rng() % 256);
    return psf;
}

// Direct convolution of one plane (w x h, row-major) with the PSF, normalised,
// the PSF's centre at (ceil(w / 2), ceil(h / 2)); outside the frame the edge
// samples repeat, or there is nothing.
template <typename Sample>
std::vector<double> directPlane(const std::vector<Sample>& in, int w, int h, const ImageRec* psf, bool repeat = true)
{
    const auto* k = static_cast<const uint8_t*>(psf->pixels);
    const double sum = std::accumulate(k, k + size_t(w) * h, 0.0);
    std::vector<double> out(size_t(w) * h, 0.0);
    for (int v = 0; v < h; ++v)
        for (int u = 0; u < w; ++u)
            for (int i = 0; k[v * w + u] && i < w * h; ++i) {
                const int sx = i % w - (u - (w + 1) / 2), sy = i / w - (v - (h + 1) / 2);
                if (repeat || (sx >= 0 && sy >= 0 && sx < w && sy < h))
                    out[i] += k[v * w + u] / sum * in[std::clamp(sy, 0, h - 1) * w + std::clamp(sx, 0, w - 1)];
            }
    return out;
}

// Direct convolution of a frame with a PSF, edges repeated, in luma / chroma /
// alpha, written from the colour equations. R, G, B, A per pixel on the
// frame's sample scale.
inline std::vector<double> directConvolution(const Image& frame, const ImageRec* psf, double e, bool alphaEmphasis,
                                             bool withAlpha)
{
    const int w = frame.rec->width, h = frame.rec->height;
    const double m = maxOfType(frame.rec->sampleType);
    const size_t n = size_t(w) * h;
    std::vector<double> q[4], c[4], out(n * 4);
    for (size_t i = 0; i < n; ++i) {
        auto in = [&](int ch) { return frame.get(int(i % w), int(i / w), ch) / m; };
        const double r = in(0), g = in(1), b = in(2), a = withAlpha ? in(3) : 0.0;
        q[0].push_back(emphasise(0.299 * r + 0.587 * g + 0.114 * b, e));
        q[1].push_back(0.5 * r - 0.418688 * g - 0.081312 * b + 0.5);
        q[2].push_back(0.617689 * b - 0.418688 * g - 0.213267 * r + 0.5);
        q[3].push_back(alphaEmphasis ? emphasise(a, e) : a);
    }
    for (int p = 0; p < 4; ++p)
        c[p] = directPlane(q[p], w, h, psf);
    auto unit = [](double v) { return std::clamp(v, 0.0, 1.0); };
    for (size_t i = 0; i < n; ++i) {
        const double Y = deemphasise(c[0][i], e), A = c[1][i] - 0.5, B = c[2][i] - 0.5;
        out[i * 4 + 0] = unit(1.402 * A + Y) * m;
        out[i * 4 + 1] = unit(Y * 0.996036 - A * 0.714136 - B * 0.277836) * m;
        out[i * 4 + 2] = unit(B * 1.430612 + Y * 1.020408) * m;
        out[i * 4 + 3] = unit(alphaEmphasis ? deemphasise(c[3][i], e) : c[3][i]) * m;
    }
    return out;
}

template <typename List = PolygonList> List makePolygon(std::initializer_list<std::pair<double, double>> points)
{
    List polygon{};
    for (const auto& [x, y] : points)
        polygon.points[polygon.count][0] = float(x), polygon.points[polygon.count++][1] = float(y);
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
    for (int i = 0; i < image->width * image->height; ++i)
        if (const int v = at(image, i % image->width, i / image->width)) {
            e.minX = std::min(e.minX, i % image->width), e.maxX = std::max(e.maxX, i % image->width);
            e.minY = std::min(e.minY, i / image->width), e.maxY = std::max(e.maxY, i / image->width);
            ++e.count, e.area += v / 255.0;
        }
    return e;
}

}  // namespace enginetest
