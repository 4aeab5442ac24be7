#include "effect/DepthKernelsVZ.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "generic/library/PluginVZ.h"
#include "hostsdk/lumenveil_shape.h"

namespace {

// Circle and Ellipse pass 6 sides, which the ellipse ignores.
constexpr int kIgnoredSides = 6;

// A picture of width x height, one 8-bit channel, holding `spread` scaled by
// `scale` about (centreX, centreY), which lands on its pixel (width/2,
// height/2); nearest samples, black outside the picture.
ImageRec* scaledCutOut(const ImageRec* spread, int32_t centreX, int32_t centreY, double scale, int32_t width,
                       int32_t height)
{
    ImageRec* cut = image_create(width, height, 1, IMAGE_U8, 1);
    if (!cut)
        return nullptr;
    const unsigned char* pixels = static_cast<const unsigned char*>(spread->pixels) + (spread->sampleBytes - 1);
    for (int32_t y = 0; y < height; ++y) {
        unsigned char* row = static_cast<unsigned char*>(cut->pixels) + static_cast<size_t>(y) * cut->rowBytes;
        const long sy = std::lround(centreY + (y - height / 2) / scale);
        for (int32_t x = 0; x < width; ++x) {
            const long sx = std::lround(centreX + (x - width / 2) / scale);
            const bool inside = sx >= 0 && sy >= 0 && sx < static_cast<long>(spread->width) && sy < static_cast<long>(spread->height);
            row[x] = inside ? pixels[static_cast<size_t>(sy) * spread->rowBytes +
                                     static_cast<size_t>(sx) * spread->channels * spread->sampleBytes]
                            : 0;
        }
    }
    return cut;
}

}  // namespace

bool DepthApertureVZ::SameKernels(const DepthApertureVZ& o) const
{
    return shape == o.shape && shape != SHAPE_IMAGE && radiusRatio == o.radiusRatio && rotation == o.rotation &&
           sides == o.sides && aspectX == o.aspectX && aspectY == o.aspectY && mode == o.mode;
}

DepthKernelsVZ::~DepthKernelsVZ() = default;

void DepthKernelsVZ::BeginFrame(const DepthApertureVZ& next, PluginVZ* monitor)
{
    if (!aperture.SameKernels(next) || monitor != runner)
        entries.clear();
    aperture = next;
    runner = monitor;
    for (Entry& e : entries)
        e.used = false;
}

void DepthKernelsVZ::EndFrame()
{
    std::erase_if(entries, [](const Entry& e) { return !e.used; });
    aperture.spread = nullptr;
}

void DepthKernelsVZ::shapeRadii(float radius, float* first, float* second) const
{
    *first = std::max(radius, 0.5f);
    *second = std::max(radius * aperture.radiusRatio, 0.5f);
}

float DepthKernelsVZ::Reach(float radius) const
{
    if (aperture.shape == SHAPE_IMAGE)
        return FftEngine::ImagePsfReach(radius * aperture.innerFraction, radius * (1.0f - aperture.innerFraction));
    float a, b;
    shapeRadii(radius, &a, &b);
    return FftEngine::ShapePsfReach(a, b);
}

bool DepthKernelsVZ::build(FftEngine& engine, float radius, int32_t width, int32_t height)
{
    engine.SetRowRunner(runner, PluginVZ::RunRows);
    engine.SetAbortCheck(runner, PluginVZ::ShouldAbort);
    engine.SetPixelAspect(aperture.aspectX, aperture.aspectY);
    if (aperture.shape == SHAPE_IMAGE) {
        if (!aperture.spread)
            return false;
        const double scale = radius / std::max(aperture.cutRadius, 0.5f);
        ImageRec* cut = scaledCutOut(aperture.spread, aperture.centreX, aperture.centreY, scale, width, height);
        if (!cut)
            return false;
        const float inner = radius * aperture.innerFraction;
        const bool built = engine.BuildImagePsf(cut, width / 2, height / 2, inner, radius - inner);
        image_free(cut);
        return built;
    }
    float a, b;
    shapeRadii(radius, &a, &b);
    const int shapeCode = aperture.shape == SHAPE_POLYGON ? FFT_SHAPE_POLYGON : FFT_SHAPE_ELLIPSE;
    const int sides = aperture.shape == SHAPE_POLYGON ? aperture.sides : kIgnoredSides;
    return engine.BuildShapePsf(width, height, shapeCode, a, b, aperture.rotation, sides);
}

FftEngine* DepthKernelsVZ::Kernel(float radius, int32_t width, int32_t height, int* status)
{
    for (Entry& e : entries)
        if (e.radius == radius && e.width == width && e.height == height) {
            e.used = true;
            return e.engine.get();
        }
    std::unique_ptr<FftEngine> engine(new (std::nothrow) FftEngine(aperture.mode, FFT_MODE_AS_GIVEN));
    if (!engine) {
        *status = FFT_ERR_MEMORY;
        return nullptr;
    }
    if (!build(*engine, radius, width, height)) {
        *status = engine->GetStatus();
        return nullptr;
    }
    ++prepared;
    entries.push_back(Entry{radius, width, height, true, std::move(engine)});
    return entries.back().engine.get();
}
