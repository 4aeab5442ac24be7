#include "effect/LumenveilDepth.h"

#include <algorithm>
#include <atomic>

#include "effect/ParallelRowsVZ.h"
#include "generic/library/VZImage.h"
#include "vzlibs/fftlib/emphasis.h"
#include "vzlibs/fftlib/engine_colour.h"

namespace {

// 16-bit samples as the engine reads and writes them.
constexpr double kRead = 1.0 / 65535.0;
constexpr double kWrite = 65535.0;
// The engine's limits of the bright emphasis.
constexpr float kMaxEmphasis = 500.0f;

double clampUnit(double v) { return v < 0.0 ? 0.0 : v > 1.0 ? 1.0 : v; }

// v x 65535 + 0.5, truncated, as the engine stores a sample; a NaN stores 0.
uint16_t toSample(double v)
{
    const double scaled = v * kWrite + 0.5;
    return scaled == scaled ? static_cast<uint16_t>(scaled) : 0;
}

const uint16_t* pixelRow(const ImageRec* image, int32_t y)
{
    return reinterpret_cast<const uint16_t*>(static_cast<const unsigned char*>(image->pixels) +
                                             static_cast<size_t>(y) * image->rowBytes);
}

}  // namespace

void LumenveilDepth::loadPlanes(const ImageRec* image, double e, bool alphaEmphasis)
{
    frame.width = image->width;
    frame.height = image->height;
    const size_t count = frame.PixelCount();
    for (auto& plane : frame.channel)
        plane.resize(count);
    frame.signedRadius.resize(count);
    const DepthLensVZ lens = depthSettings.Lens(frame.width);
    const uint16_t firstAlpha = pixelRow(image, 0)[3];
    std::atomic<bool> alphaVaries{false};
    forEachRowSlice(frame.height, [&](int first, int last) { loadRows(image, e, alphaEmphasis, lens, firstAlpha, &alphaVaries, first, last); });
    frame.alphaVaries = alphaVaries.load();
}

void LumenveilDepth::loadRows(const ImageRec* image, double e, bool alphaEmphasis, const DepthLensVZ& lens,
                              uint16_t firstAlpha, std::atomic<bool>* alphaVaries, int first, int last)
{
    bool varies = false;
    for (int32_t y = first; y <= last; ++y) {
        const uint16_t* p = pixelRow(image, y);
        const float* z = depth.samples + y * depth.rowStride;
        size_t i = static_cast<size_t>(y) * frame.width;
        for (int32_t x = 0; x < frame.width; ++x, ++i, p += 4) {
            const double r = p[0] * kRead, g = p[1] * kRead, b = p[2] * kRead, a = p[3] * kRead;
            frame.channel[0][i] = static_cast<float>(emphasise(engine_colour::luma(r, g, b), e));
            frame.channel[1][i] = static_cast<float>(engine_colour::chromaA(r, g, b));
            frame.channel[2][i] = static_cast<float>(engine_colour::chromaB(r, g, b));
            frame.channel[3][i] = static_cast<float>(alphaEmphasis ? emphasise(a, e) : a);
            varies |= p[3] != firstAlpha;
            frame.signedRadius[i] = lens.SignedRadius(z[x]);
        }
    }
    if (varies)
        alphaVaries->store(true);
}

void LumenveilDepth::storePlanes(ImageRec* image, double e, bool alphaEmphasis, bool withAlpha) const
{
    forEachRowSlice(frame.height, [&](int first, int last) {
    for (int32_t y = first; y <= last; ++y) {
        uint16_t* p = const_cast<uint16_t*>(pixelRow(image, y));
        size_t i = static_cast<size_t>(y) * frame.width;
        for (int32_t x = 0; x < frame.width; ++x, ++i, p += 4) {
            double r, g, b;
            engine_colour::rgbOf(deemphasise(result[0][i], e), result[1][i], result[2][i], &r, &g, &b);
            p[0] = toSample(clampUnit(r));
            p[1] = toSample(clampUnit(g));
            p[2] = toSample(clampUnit(b));
            if (withAlpha) {
                const double a = alphaEmphasis ? deemphasise(result[3][i], e) : result[3][i];
                p[3] = toSample(clampUnit(a));
            }
        }
    }
    });
}

DepthApertureVZ LumenveilDepth::apertureOf(int32_t width, int32_t height, const ImageRec* spreadRec) const
{
    DepthApertureVZ a;
    const ApertureVZ shapeValues = Aperture();
    a.shape = shapeValues.shape;
    const bool ownSecond = a.shape == SHAPE_ELLIPSE || (a.shape == SHAPE_POLYGON && !shapeValues.matchRadii);
    // The CoC is the first radius; the second keeps RadiusY's proportion to RadiusX.
    a.radiusRatio = ownSecond && shapeValues.radiusX > 0.0 ? static_cast<float>(shapeValues.radiusY / shapeValues.radiusX)
                                                            : 1.0f;
    a.rotation = static_cast<float>(rotation.value);
    a.sides = sides.value;
    a.aspectX = pixelAspectX;
    a.aspectY = pixelAspectY;
    a.mode = engine->mode;
    if (a.shape == SHAPE_IMAGE && spreadRec) {
        float inner, outer;
        shapeValues.ImageRadii(width, &inner, &outer);
        a.spread = spreadRec;
        a.centreX = static_cast<int32_t>(width * centre.x + 0.5);
        a.centreY = static_cast<int32_t>(height * centre.y + 0.5);
        a.cutRadius = std::max(outer, 0.5f);
        a.innerFraction = outer > 0.0f ? inner / outer : 1.0f;
    }
    return a;
}

void LumenveilDepth::Render()
{
    outcome = RenderOutcomeVZ{engine ? RENDER_NOT_RUN : RENDER_NO_ENGINE, 0};
    VZImage* in = input.image;
    VZImage* out = output.image;
    if (!engine || !in || !out || !depth.samples || depth.width != static_cast<int32_t>(in->width) ||
        depth.height != in->height)
        return;
    const int32_t width = static_cast<int32_t>(in->width);
    pixelAspectX = static_cast<float>(out->pixelAspect[0]);
    pixelAspectY = static_cast<float>(out->pixelAspect[1]);
    ImageRec* inputRec = image_from_vzimage(in);
    ImageRec* spreadRec = shape.value == SHAPE_IMAGE ? image_from_vzimage(spread.image) : nullptr;
    // The emphasis as the engine keeps it: a float limited to 0..500.
    const double e = std::clamp(static_cast<float>(brightEmphasis.value), 0.0f, kMaxEmphasis);
    const bool alphaEmphasis = alphaEnabled && emphasiseAlpha.value;
    lastStatus = FFT_ERR_MEMORY;
    if (inputRec) {
        loadPlanes(inputRec, e, alphaEmphasis);
        layers.Plan(frame.signedRadius.data(), frame.width, frame.height, depthSettings.layerSpacing);
        kernels.BeginFrame(apertureOf(width, in->height, spreadRec), this);
        const bool rendered = composite.Render(frame, layers, kernels, this, result, &lastStatus);
        kernels.EndFrame();
        if (rendered) {
            storePlanes(inputRec, e, alphaEmphasis, alphaEnabled);
            image_store_to_vzimage(inputRec, out);
        }
        outcome = rendered ? RenderOutcomeVZ{RENDER_DONE, 0} : RenderOutcomeVZ{RENDER_ENGINE_FAILED, lastStatus};
    } else {
        outcome = RenderOutcomeVZ{RENDER_NO_MEMORY, 0};
    }
    image_free(inputRec);
    image_free(spreadRec);
    if (!alphaEnabled)
        out->CopyAlphaFrom(in);
}
