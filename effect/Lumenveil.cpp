#include "effect/Lumenveil.h"

#include <cmath>
#include <new>

#include "generic/library/VZImage.h"

Lumenveil::Lumenveil()
    : pixelAspectX(0.0f),
      pixelAspectY(0.0f),
      lastRadius1(0.0f),
      lastRadius2(0.0f),
      lastRotation(0.0f),
      lastShape(0),
      lastSides(0),
      lastAspectX(0.0f),
      lastAspectY(0.0f),
      lastWidth(0),
      lastHeight(0),
      kernelValid(0),
      engine(new (std::nothrow) FftEngine(FFT_MODE_FFTW))
{
    crosshair.owner = innerCircle.owner = outerCircle.owner = this;
}

Lumenveil::~Lumenveil()
{
    delete engine;
    engine = nullptr;
}

void Lumenveil::UpdateControls()
{
    OnShapeChanged(&shape, 0.0);
    OnMatchRadiiChanged(&matchRadii, 0.0);
}

namespace {

// |a - b| < tolerance; false for a NaN on either side, which counts as a change.
bool within(double a, double b) { return std::fabs(a - b) < kKernelTolerance; }

}  // namespace

bool Lumenveil::kernelStands(int32_t shapeCode, int32_t width, int32_t height, float radius1, float radius2) const
{
    return kernelValid && shapeCode == lastShape && shapeCode != SHAPE_IMAGE && width == lastWidth &&
           height == lastHeight && within(rotation.value, lastRotation) &&
           within(radius1, lastRadius1) && within(radius2, lastRadius2) && sides.value == lastSides &&
           within(pixelAspectX, lastAspectX) && within(pixelAspectY, lastAspectY);
}

ApertureVZ Lumenveil::Aperture() const
{
    ApertureVZ aperture;
    aperture.shape = shape.value;
    aperture.matchRadii = matchRadii.value != 0;
    aperture.radiusX = radiusX.value;
    aperture.radiusY = radiusY.value;
    aperture.radiusPsf1 = radiusPsf1.value;
    aperture.radiusPsf2 = radiusPsf2.value;
    return aperture;
}

void Lumenveil::SelectEngine(uint32_t mode)
{
    if (!engine || engine->mode == mode)
        return;
    delete engine;
    engine = new (std::nothrow) FftEngine(mode, FFT_MODE_AS_GIVEN);
    kernelValid = 0;
    kernelFailed = false;
}

void Lumenveil::ForgetKernel()
{
    if (!engine)
        return;
    const uint32_t mode = engine->mode;
    delete engine;
    engine = new (std::nothrow) FftEngine(mode, FFT_MODE_AS_GIVEN);
    kernelValid = 0;
    kernelFailed = false;
}

void Lumenveil::buildImageKernel(const ApertureVZ& aperture, int32_t width, int32_t height)
{
    float a, b;
    aperture.ImageRadii(width, &a, &b);
    const int x = static_cast<int>(width * centre.x + 0.5);
    const int y = static_cast<int>(height * centre.y + 0.5);
    // Without a Spread record no kernel is built and the old one stays.
    ImageRec* spreadRec = image_from_vzimage(spread.image);
    if (!spreadRec)
        return;
    kernelFailed = !engine->BuildImagePsf(spreadRec, x, y, a, b - a);
    image_free(spreadRec);
}

void Lumenveil::buildKernel(const ApertureVZ& aperture, int32_t width, int32_t height, float radius1, float radius2)
{
    const float turn = static_cast<float>(rotation.value);
    // Circle and Ellipse pass 6 sides, which the ellipse ignores.
    constexpr int kIgnoredSides = 6;
    switch (aperture.shape) {
    case SHAPE_CIRCLE:
    case SHAPE_ELLIPSE:
        kernelFailed = !engine->BuildShapePsf(width, height, FFT_SHAPE_ELLIPSE, radius1, radius2, turn, kIgnoredSides);
        break;
    case SHAPE_POLYGON:
        kernelFailed = !engine->BuildShapePsf(width, height, FFT_SHAPE_POLYGON, radius1, radius2, turn, sides.value);
        break;
    case SHAPE_IMAGE:
        buildImageKernel(aperture, width, height);
        break;
    default:
        break;
    }
    // Set whether or not the build succeeded: failures stay in the engine,
    // and in kernelFailed for the render's outcome.
    kernelValid = 1;
    if (kernelFailed)
        kernelStatus = engine->GetStatus();
}

void Lumenveil::keepOrBuildKernel(int32_t width, int32_t height)
{
    const ApertureVZ aperture = Aperture();
    float pixelRadius1, pixelRadius2;
    aperture.ShapeRadii(width, &pixelRadius1, &pixelRadius2);
    engine->SetPixelAspect(pixelAspectX, pixelAspectY);

    if (kernelOnly || !kernelStands(aperture.shape, width, height, pixelRadius1, pixelRadius2))
        buildKernel(aperture, width, height, pixelRadius1, pixelRadius2);
    keepValues(aperture.shape, width, height, pixelRadius1, pixelRadius2);
}

void Lumenveil::keepValues(int32_t shapeCode, int32_t width, int32_t height, float radius1, float radius2)
{
    // Kept on every render, also when nothing was rebuilt: a drift below the
    // tolerance per frame never rebuilds the kernel.
    lastRadius1 = radius1;
    lastRadius2 = radius2;
    lastShape = shapeCode;
    lastRotation = static_cast<float>(rotation.value);
    lastSides = sides.value;
    lastAspectX = pixelAspectX;
    lastAspectY = pixelAspectY;
    lastWidth = width;
    lastHeight = height;
}

bool Lumenveil::TrackKernel(int32_t width, int32_t height, float aspectX, float aspectY)
{
    pixelAspectX = aspectX;
    pixelAspectY = aspectY;
    const ApertureVZ aperture = Aperture();
    float pixelRadius1, pixelRadius2;
    aperture.ShapeRadii(width, &pixelRadius1, &pixelRadius2);
    const bool builds = !kernelStands(aperture.shape, width, height, pixelRadius1, pixelRadius2);
    keepValues(aperture.shape, width, height, pixelRadius1, pixelRadius2);
    kernelValid = 1;
    return builds;
}

double Lumenveil::KernelTrace() const
{
    const ImageRec* psf = engine ? engine->psfImage : nullptr;
    if (!psf || !psf->pixels || !kernelValid)
        return 1.0;
    double sum = 0.0;
    for (int y = 0; y < psf->height; ++y) {
        const uint8_t* row = static_cast<const uint8_t*>(psf->pixels) + static_cast<size_t>(y) * psf->rowBytes;
        for (int x = 0; x < psf->width; ++x)
            sum += row[static_cast<size_t>(x) * psf->channels];
    }
    return 1.0 / (sum / 255.0 + 1.0);
}

void Lumenveil::settleKernelOnly()
{
    outcome = kernelFailed ? RenderOutcomeVZ{RENDER_KERNEL_FAILED, kernelStatus} : RenderOutcomeVZ{RENDER_DONE, 0};
}

void Lumenveil::Render()
{
    outcome = RenderOutcomeVZ{engine ? RENDER_NOT_RUN : RENDER_NO_ENGINE, 0};
    if (!engine)
        return;
    VZImage* in = input.image;
    VZImage* out = output.image;
    // Frames come from the caller; without both there is nothing to render.
    if (!in || !out)
        return;
    const int32_t width = static_cast<int32_t>(in->width);
    const int32_t height = in->height;
    pixelAspectX = static_cast<float>(out->pixelAspect[0]);
    pixelAspectY = static_cast<float>(out->pixelAspect[1]);
    if (kernelOnly) {
        engine->SetRowRunner(this, PluginVZ::RunRows);
        engine->SetAbortCheck(this, PluginVZ::ShouldAbort);
        keepOrBuildKernel(width, height);
        settleKernelOnly();
        return;
    }

    ImageRec* inputRec = image_from_vzimage(in);
    ImageRec* outputRec = inputRec ? image_clone(inputRec) : nullptr;

    engine->SetRowRunner(this, PluginVZ::RunRows);
    engine->SetAbortCheck(this, PluginVZ::ShouldAbort);
    keepOrBuildKernel(width, height);

    // Without the frame records the engine is not run and the output stays.
    if (inputRec && outputRec) {
        engine->SetInput(inputRec);
        engine->SetBrightEmphasis(static_cast<float>(brightEmphasis.value));
        uint32_t mask = FFT_MASK_COLOUR;
        if (alphaEnabled) {
            engine->SetAlphaEmphasis(emphasiseAlpha.value);
            mask = FFT_MASK_COLOUR_ALPHA;
        }
        const bool ran = engine->Run(outputRec, mask);
        image_store_to_vzimage(outputRec, out);
        outcome = kernelFailed ? RenderOutcomeVZ{RENDER_KERNEL_FAILED, kernelStatus}
                  : ran        ? RenderOutcomeVZ{RENDER_DONE, 0}
                               : RenderOutcomeVZ{RENDER_ENGINE_FAILED, engine->GetStatus()};
    } else {
        outcome = RenderOutcomeVZ{RENDER_NO_MEMORY, 0};
    }
    image_free(inputRec);
    image_free(outputRec);
    if (!alphaEnabled)
        out->CopyAlphaFrom(in);
}
