// Plug::Execute: one frame from the host's images through the render and back,
// merged by the channel selectors, fields respected.
#include <cmath>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>

#include "effect/Lumenveil.h"
#include "generic/library/HostPixelFormat.h"
#include "generic/library/VZImage.h"
#include "host/LumenveilProperties.h"
#include "host/Plug.h"
#include "host/PlugHostBuffers.h"
#include "hostsdk/content.h"
#include "vzlibs/fftlib/fft_modes.h"
#include "vzlibs/fftlib/fft_status.h"


namespace {

// The conversions' field flags count rows of the frame, where row 0 is the
// top row; the host's mask names the field to process, so its two bits change
// places here: processing the even rows means leaving the odd ones out.
uint32_t conversionFieldFlags(uint32_t fieldMask)
{
    return ((fieldMask & DS_FIELD_ODD) ? uint32_t(HOST_FIELD_ODD_ONLY) : 0u) |
           ((fieldMask & DS_FIELD_EVEN) ? uint32_t(HOST_FIELD_EVEN_ONLY) : 0u);
}

}  // namespace

ApertureVZ Plug::apertureAt(double time)
{
    ApertureVZ aperture;
    aperture.shape = shapeOfProperty(GetValueDirect(KEY_SHAPE, shape, time));
    aperture.matchRadii = matchRadii != 0;
    aperture.radiusX = GetValueDirect(KEY_RADIUS_X, radiusX, time);
    aperture.radiusY = GetValueDirect(KEY_RADIUS_Y, radiusY, time);
    aperture.radiusPsf1 = GetValueDirect(KEY_RADIUS_PSF1, radiusPsf1, time);
    aperture.radiusPsf2 = GetValueDirect(KEY_RADIUS_PSF2, radiusPsf2, time);
    return aperture;
}

void Plug::readParameters(double time)
{
    Lumenveil& fx = *lumenveil;
    const ApertureVZ aperture = apertureAt(time);
    fx.shape.value = aperture.shape;
    fx.matchRadii.value = aperture.matchRadii;
    fx.radiusX.value = aperture.radiusX;
    fx.radiusY.value = aperture.radiusY;
    fx.sides.value = GetValueDirect(KEY_SIDES, sides, time);
    fx.rotation.value = GetValueDirect(KEY_ROTATION, rotation, time);
    fx.brightEmphasis.value = GetValueDirect(KEY_BRIGHT_EMPHASIS, brightEmphasis, time);
    fx.emphasiseAlpha.value = emphasiseAlpha != 0;
    fx.extremePrecision.value = extremePrecision != 0;
    fx.centre.x = GetValueDirect(KEY_CENTRE_X, centreX, time);
    fx.centre.y = GetValueDirect(KEY_CENTRE_Y, centreY, time);
    fx.radiusPsf1.value = aperture.radiusPsf1;
    fx.radiusPsf2.value = aperture.radiusPsf2;
}

HRESULT Plug::GetTransformNeeds(int32_t width, int32_t height, double time, int32_t engine, DSTransformNeeds* needs)
{
    if (!needs)
        return E_POINTER;
    const int32_t index = engine == DS_ENGINE_CURRENT ? engineMode : engine;
    if (width < 1 || height < 1 || !fft_mode_name(index))
        return E_INVALIDARG;
    const TransformVZ t = apertureAt(time).Transform(width, height, fft_mode_at(index));
    needs->reach = t.reach;
    needs->margin = t.margin;
    needs->width = t.width;
    needs->height = t.height;
    needs->largestSide = t.largestSide;
    needs->fits = t.fits ? 1 : 0;
    return S_OK;
}

ComRef<IDSImage> Plug::fetchSpread(double time)
{
    ComRef<IUnknown> fetched;
    host->FetchInput(1, time, executeContext, reinterpret_cast<IUnknown**>(fetched.out()));
    return ComRef<IDSImage>::Query(fetched.get(), IID_IDSImage);
}

void Plug::readFrameValues(double* aspect, float* scale)
{
    if (coordMan) {
        double ax = 1.0, ay = 1.0;
        coordMan->MapVector(1.0, 1.0, &ax, &ay);
        *aspect = ax / ay;
        double ox = 0.0, oy = 0.0, px = 0.0, py = 0.0;
        inputImage->GetOrigin(&ox, &oy);
        coordMan->MapPoint(ox, oy, &px, &py);
    }
    VARIANT sizeX, sizeY;
    VariantInit(&sizeX);
    VariantInit(&sizeY);
    DSContentGetProperty(kProjectFrameWidth, &sizeX);
    DSContentGetProperty(kProjectFrameHeight, &sizeY);  // read and not used
    *scale = static_cast<float>(static_cast<long double>(sizeX.dblVal) / roiWidth);
}

HRESULT Plug::runRender(double position)
{
    if (!host || !preparedValues[0] || !preparedValues[1] || !preparedValues[2] || roiWidth < 1 || roiHeight < 1)
        return E_FAIL;
    if (hostStopped())
        return S_OK;
    lumenveil->time = position;
    lumenveil->colourEnabled = 1;
    lumenveil->alphaEnabled = 1;
    static_cast<PluginVZ*>(lumenveil)->Render();
    return S_OK;
}

void Plug::mergeChannels(const VZImage* input, VZImage* output, int32_t s0, int32_t s1, int32_t s2, int32_t s3)
{
    const int32_t selector[4] = {s0, s1, s2, s3};
    // Every channel processed and no matte: the output stands as rendered.
    if (s0 != 0 && s1 != 0 && s2 != 0 && s3 != 0 && s3 != 2)
        return;
    for (int32_t y = 0; y < input->height; ++y) {
        const uint16_t* in = input->rows[y];
        uint16_t* out = output->rows[y];
        for (uint32_t x = 0; x < input->width; ++x, in += 4, out += 4) {
            if (s3 != 2) {
                for (int c = 0; c < 4; ++c)
                    if (selector[c] == 0)
                        out[c] = in[c];
                continue;
            }
            const uint32_t a = in[3];
            if (a == 0) {
                std::memcpy(out, in, 4 * sizeof(uint16_t));
                continue;
            }
            for (int c = 0; c < 3; ++c)
                out[c] = selector[c] == 0 ? in[c]
                                          : static_cast<uint16_t>((in[c] * (32767u - a) + out[c] * a) >> 15);
            out[3] = in[3];
        }
    }
}

HRESULT Plug::executeFrames(double time, double position, const HostBuffer& in, const HostBuffer& spread,
                            const HostBuffer& out, uint32_t fieldFlags)
{
    double aspect = 1.0;
    float scale = 1.0f;
    readFrameValues(&aspect, &scale);
    std::unique_ptr<VZImage> inputFrame(hostToVzImage(in.pixels, in.width, in.height, roiWidth, roiHeight, inputRoiX,
                                                      inputRoiY, in.code, fieldFlags));
    // Only the Image shape reads the Spread frame: for the others it is not
    // converted, and its slot stays empty.
    const bool spreadUsed = shapeOfProperty(GetValueDirect(KEY_SHAPE, shape, time)) == SHAPE_IMAGE;
    std::unique_ptr<VZImage> spreadFrame(spreadUsed ? hostToVzImage(spread.pixels, spread.width, spread.height,
                                                                    roiWidth, roiHeight, inputRoiX, inputRoiY,
                                                                    spread.code, fieldFlags)
                                                    : nullptr);
    std::unique_ptr<VZImage> outputFrame(new (std::nothrow) VZImage(roiWidth, roiHeight, 0, nullptr, 0u));
    // A frame that could not be made (an unknown input format, a region outside
    // a buffer, a Spread smaller than the region, no memory) ends the call with
    // the output image untouched: E_OUTOFMEMORY for the output frame, E_FAIL for
    // the inputs.
    if (!outputFrame || !outputFrame->pixels)
        return E_OUTOFMEMORY;
    if (!inputFrame || (spreadUsed && !spreadFrame))
        return E_FAIL;
    // Nothing stale reaches the host when the render does not run.
    std::memset(outputFrame->pixels, 0, static_cast<size_t>(roiWidth) * roiHeight * 4 * sizeof(uint16_t));
    for (VZImage* frame : {inputFrame.get(), spreadFrame.get(), outputFrame.get()})
        if (frame)
            setHostValues(frame, aspect, scale);
    fillSlot(lumenveil->input, 0, *this, in, inputRoiX, inputRoiY, inputFrame.get());
    fillSlot(lumenveil->spread, 1, *this, spread, inputRoiX, inputRoiY, spreadFrame.get());
    fillSlot(lumenveil->output, 0, *this, out, outputRoiX, outputRoiY, outputFrame.get());

    readParameters(time);
    lumenveil->renderMonitor = host;
    const HRESULT status = runRender(position);
    // A kernel-only render leaves the host's output image as it is.
    if (!lumenveil->kernelOnly && !hostStopped()) {
        // The selectors' places cross green and blue; the merge takes R, G, B, A.
        mergeChannels(inputFrame.get(), outputFrame.get(), channelSelect[DS_PLACE_RED], channelSelect[DS_PLACE_GREEN],
                      channelSelect[DS_PLACE_BLUE], channelSelect[DS_PLACE_ALPHA]);
        vzImageToHost(outputFrame.get(), out.pixels, out.width, out.height, roiWidth, roiHeight, outputRoiX,
                      outputRoiY, out.code, fieldFlags);
    }
    return status;
}

bool Plug::hostStopped()
{
    if (host->ShouldContinue() != 0)
        return false;
    stopped = true;
    return true;
}

HRESULT Plug::GetRenderStatus(HRESULT* status, const char** reason)
{
    if (!status || !reason)
        return E_POINTER;
    *status = renderStatus;
    *reason = renderReason;
    return S_OK;
}

void Plug::settleRenderStatus(HRESULT executed)
{
    const RenderOutcomeVZ outcome = lumenveil ? lumenveil->outcome : RenderOutcomeVZ{RENDER_NO_ENGINE, 0};
    if (FAILED(executed)) {
        renderStatus = executed;
        renderReason = failureReason                 ? failureReason
                       : executed == E_OUTOFMEMORY ? "out of memory for the frame"
                                                   : "the host's images do not fit the effect";
    } else if (stopped) {
        renderStatus = E_ABORT;
        renderReason = "the host stopped the render";
    } else if (outcome.Done()) {
        renderStatus = S_OK;
        renderReason = "";
    } else {
        const bool memory = outcome.result == RENDER_NO_MEMORY || outcome.engineStatus == FFT_ERR_MEMORY;
        renderStatus = memory                                     ? E_OUTOFMEMORY
                       : outcome.engineStatus == FFT_ERR_ARGUMENT ? E_INVALIDARG
                                                                  : E_FAIL;
        renderReason = outcome.Reason();
    }
}

HRESULT Plug::Execute(double time) { return executeInTurn(time, false); }

HRESULT Plug::executeInTurn(double time, bool kernelOnly)
{
    std::unique_lock<std::mutex> turn;
    if (lumenveil) {
        turn = std::unique_lock<std::mutex>(lumenveil->renderLock);
        lumenveil->outcome = RenderOutcomeVZ{};
        lumenveil->kernelOnly = kernelOnly;
    }
    stopped = false;
    failureReason = nullptr;
    const HRESULT executed = executeSteps(time);
    if (lumenveil)
        lumenveil->kernelOnly = false;
    settleRenderStatus(executed);
    return executed;
}

HRESULT Plug::executeSteps(double time)
{
    const HRESULT prepared = PrepareData();
    // Without its Lumenveil or a host link to poll the effect cannot render:
    // nothing is touched.
    if (!lumenveil)
        return E_OUTOFMEMORY;
    if (!host)
        return E_FAIL;
    lumenveil->frame = static_cast<double>(static_cast<int64_t>(timespanLength * sampleRate));
    const double position = sampleRate * time;
    if (hostStopped())
        return S_OK;
    if (FAILED(prepared))
        return prepared;
    // The engine takes the mode of the Engine property; a changed property
    // makes a new one.
    lumenveil->SelectEngine(fft_mode_at(engineMode));

    const uint32_t fieldFlags = conversionFieldFlags(fieldMask);
    if (linear)
        return executeLinear(time, position, fieldFlags);
    const HostBuffer out = readBuffer(outputImage);
    if (out.code == 0)
        return E_UNEXPECTED;
    const HostBuffer in = readBuffer(inputImage);
    // The Spread image is held until the end of the call.
    const ComRef<IDSImage> spreadImage = fetchSpread(time);
    const HostBuffer spread = spreadImage ? readBuffer(spreadImage.get()) : in;
    return executeFrames(time, position, in, spread, out, fieldFlags);
}
