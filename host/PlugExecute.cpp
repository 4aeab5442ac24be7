// Plug::Execute: one frame from the host's images through the render and back,
// merged by the channel selectors, fields respected.
#include <cmath>
#include <cstring>
#include <new>

#include "effect/Lumenveil.h"
#include "generic/library/HostPixelFormat.h"
#include "generic/library/VZImage.h"
#include "host/LumenveilProperties.h"
#include "host/Plug.h"
#include "host/PlugHostBuffers.h"
#include "hostsdk/content.h"


void Plug::readParameters(double time)
{
    Lumenveil& fx = *lumenveil;
    fx.shape.value = GetValueDirect(KEY_SHAPE, shape, time) + 1;
    fx.matchRadii.value = matchRadii != 0;
    fx.radiusX.value = GetValueDirect(KEY_RADIUS_X, radiusX, time);
    fx.radiusY.value = GetValueDirect(KEY_RADIUS_Y, radiusY, time);
    fx.sides.value = GetValueDirect(KEY_SIDES, sides, time);
    fx.rotation.value = GetValueDirect(KEY_ROTATION, rotation, time);
    fx.brightEmphasis.value = GetValueDirect(KEY_BRIGHT_EMPHASIS, brightEmphasis, time);
    fx.emphasiseAlpha.value = emphasiseAlpha != 0;
    fx.extremePrecision.value = extremePrecision != 0;
    fx.centre.x = GetValueDirect(KEY_CENTRE_X, centreX, time);
    fx.centre.y = GetValueDirect(KEY_CENTRE_Y, centreY, time);
    fx.radiusPsf1.value = GetValueDirect(KEY_RADIUS_PSF1, radiusPsf1, time);
    fx.radiusPsf2.value = GetValueDirect(KEY_RADIUS_PSF2, radiusPsf2, time);
}

IDSImage* Plug::fetchSpread(double time)
{
    IUnknown* fetched = nullptr;
    IDSImage* spreadImage = nullptr;
    host->FetchInput(1, time, executeContext, &fetched);
    if (fetched) {
        fetched->QueryInterface(IID_IDSImage, reinterpret_cast<void**>(&spreadImage));
        fetched->Release();
    }
    return spreadImage;
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
    if (host->ShouldContinue() == 0)
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

HRESULT Plug::Execute(double time)
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
    if (host->ShouldContinue() == 0)
        return S_OK;
    if (FAILED(prepared))
        return prepared;

    // The field flags count rows of the frame, where row 0 is the top row: the
    // two bits of the host's mask change places here.
    const uint32_t fieldFlags = ((fieldMask & 2) ? uint32_t(HOST_FIELD_ODD_ONLY) : 0u) |
                                ((fieldMask & 1) ? uint32_t(HOST_FIELD_EVEN_ONLY) : 0u);
    if (linear)
        return executeLinear(time, position, fieldFlags);
    const HostBuffer out = readBuffer(outputImage);
    if (out.code == 0)
        return E_UNEXPECTED;
    const HostBuffer in = readBuffer(inputImage);

    IDSImage* spreadImage = fetchSpread(time);
    const HostBuffer spread = spreadImage ? readBuffer(spreadImage) : in;
    double aspect = 1.0;
    float scale = 1.0f;
    readFrameValues(&aspect, &scale);

    VZImage* inputFrame = hostToVzImage(in.pixels, in.width, in.height, roiWidth, roiHeight, inputRoiX, inputRoiY,
                                        in.code, fieldFlags);
    // Only the Image shape reads the Spread frame: for the others it is not
    // converted, and its slot stays empty.
    const bool spreadUsed = GetValueDirect(KEY_SHAPE, shape, time) + 1 == SHAPE_IMAGE;
    VZImage* spreadFrame = spreadUsed ? hostToVzImage(spread.pixels, spread.width, spread.height, roiWidth, roiHeight,
                                                      inputRoiX, inputRoiY, spread.code, fieldFlags)
                                      : nullptr;
    VZImage* outputFrame = new (std::nothrow) VZImage(roiWidth, roiHeight, 0, nullptr, 0u);
    // A frame that could not be made (an unknown input format, a region outside
    // a buffer, a Spread smaller than the region, no memory) ends the call with
    // the output image untouched: E_OUTOFMEMORY for the output frame, E_FAIL for
    // the inputs.
    auto release = [&]() {
        delete inputFrame;
        delete spreadFrame;
        delete outputFrame;
        if (spreadImage)
            spreadImage->Release();
    };
    HRESULT status = S_OK;
    if (!outputFrame || !outputFrame->pixels)
        status = E_OUTOFMEMORY;
    else if (!inputFrame || (spreadUsed && !spreadFrame))
        status = E_FAIL;
    if (FAILED(status)) {
        release();
        return status;
    }
    // Nothing stale reaches the host when the render does not run.
    std::memset(outputFrame->pixels, 0, static_cast<size_t>(roiWidth) * roiHeight * 4 * sizeof(uint16_t));
    for (VZImage* frame : {inputFrame, spreadFrame, outputFrame})
        if (frame)
            setHostValues(frame, aspect, scale);
    fillSlot(lumenveil->input, 0, *this, in, inputRoiX, inputRoiY, inputFrame);
    fillSlot(lumenveil->spread, 1, *this, spread, inputRoiX, inputRoiY, spreadFrame);
    fillSlot(lumenveil->output, 0, *this, out, outputRoiX, outputRoiY, outputFrame);

    readParameters(time);
    lumenveil->renderMonitor = host;
    status = runRender(position);

    if (host->ShouldContinue() != 0) {
        mergeChannels(inputFrame, outputFrame, channelSelect[0], channelSelect[2], channelSelect[1], channelSelect[3]);
        vzImageToHost(outputFrame, out.pixels, out.width, out.height, roiWidth, roiHeight, outputRoiX, outputRoiY,
                      out.code, fieldFlags);
    }
    release();
    return status;
}
