// Plug::Execute with Linear on: float R G B A host frames, taken as
// premultiplied light, through Lumenveil::RenderLinear and back, the samples
// never limited to 0 to 1 nor quantised. Fields and channel selectors act as on
// the 16-bit road.
#include <algorithm>
#include <memory>
#include <new>

#include "effect/Lumenveil.h"
#include "generic/library/HostLinearFrame.h"
#include "host/LumenveilProperties.h"
#include "host/Plug.h"
#include "host/PlugHostBuffers.h"
#include "vzlibs/baselib/log.h"

namespace {

// Whether the selectors leave every channel as the effect rendered it.
bool mergeNeeded(const int32_t* select) { return !(select[0] && select[1] && select[2] && select[3] && select[3] != DS_CHANNEL_MATTE); }

}  // namespace

void Plug::mergeLinearChannels(const LinearFrameVZ& input, LinearFrameVZ& output, int32_t s0, int32_t s1, int32_t s2,
                               int32_t s3)
{
    const int32_t selector[4] = {s0, s1, s2, s3};
    const size_t count = input.PixelCount();
    for (size_t i = 0; i < count; ++i) {
        const float* in = input.pixels + i * kLinearChannels;
        float* out = output.pixels + i * kLinearChannels;
        if (s3 != 2) {
            for (int c = 0; c < kLinearChannels; ++c)
                if (selector[c] == 0)
                    out[c] = in[c];
            continue;
        }
        const float a = std::clamp(in[3], 0.0f, 1.0f);
        for (int c = 0; c < 3; ++c)
            out[c] = selector[c] == 0 || a == 0.0f ? in[c] : in[c] * (1.0f - a) + out[c] * a;
        out[3] = in[3];
    }
}

// Frames in another format, or an engine in the faithful mode, are refused
// before anything is read: the scene-linear road has no 16-bit fallback.
HRESULT Plug::executeLinear(double time, double position, uint32_t fieldFlags)
{
    const HostBuffer out = readBuffer(outputImage);
    const HostBuffer in = readBuffer(inputImage);
    if (out.code != hostLinearFormatCode() || in.code != hostLinearFormatCode()) {
        failureReason = "Linear renders float R G B A frames (MFIF_RGBA_FLOAT) only";
        lib_log(LOG_ERROR, "%s", failureReason);
        return E_INVALIDARG;
    }
    if (!lumenveil->engine || lumenveil->engine->mode == FFT_MODE_FFTW) {
        failureReason = "Linear needs the fast or fast-float engine: the faithful one renders in 16 bits";
        lib_log(LOG_ERROR, "%s", failureReason);
        return E_INVALIDARG;
    }
    const ComRef<IDSImage> spreadImage = fetchSpread(time);
    const HostBuffer spread = spreadImage ? readBuffer(spreadImage.get()) : in;
    double aspect = 1.0;
    float scale = 1.0f;
    readFrameValues(&aspect, &scale);

    auto frame = std::unique_ptr<LinearFrameVZ>(new (std::nothrow) LinearFrameVZ(roiWidth, roiHeight));
    const int64_t replaced = frame && frame->pixels ? hostToLinearFrame(in.pixels, in.width, in.height, roiWidth,
                                                                        roiHeight, inputRoiX, inputRoiY, in.code,
                                                                        fieldFlags, frame.get())
                                                    : -2;
    // The input as read, for the channel selectors to take samples from.
    std::unique_ptr<LinearFrameVZ> kept;
    if (replaced >= 0 && mergeNeeded(channelSelect)) {
        kept.reset(new (std::nothrow) LinearFrameVZ(roiWidth, roiHeight));
        if (!kept || !kept->CopyFrom(*frame))
            kept.reset();
    }
    const bool spreadUsed = shapeOfProperty(GetValueDirect(KEY_SHAPE, shape, time)) == SHAPE_IMAGE;
    std::unique_ptr<VZImage> spreadFrame(spreadUsed ? hostToVzImage(spread.pixels, spread.width, spread.height,
                                                                    roiWidth, roiHeight, inputRoiX, inputRoiY,
                                                                    spread.code, fieldFlags)
                                                    : nullptr);
    HRESULT status = S_OK;
    if (replaced == -2 || (mergeNeeded(channelSelect) && !kept))
        status = E_OUTOFMEMORY;
    else if (replaced < 0 || (spreadUsed && !spreadFrame))
        status = E_FAIL;
    else if (replaced > 0)
        lib_log(LOG_WARN, "%lld non-finite input samples (NaN or infinity) were replaced by 0",
                static_cast<long long>(replaced));
    if (SUCCEEDED(status)) {
        frame->pixelAspect[0] = aspect;
        if (spreadFrame)
            setHostValues(spreadFrame.get(), aspect, scale);
        fillSlot(lumenveil->input, 0, *this, in, inputRoiX, inputRoiY, nullptr);
        fillSlot(lumenveil->spread, 1, *this, spread, inputRoiX, inputRoiY, spreadFrame.get());
        fillSlot(lumenveil->output, 0, *this, out, outputRoiX, outputRoiY, nullptr);
        status = renderLinear(*frame, kept.get(), out, time, position, fieldFlags);
        lumenveil->spread.image = nullptr;
    }
    return status;
}

// The render and the write-back: nothing reaches the host unless the render
// ran to its end and the host still wants the frame.
HRESULT Plug::renderLinear(LinearFrameVZ& frame, const LinearFrameVZ* input, const HostBuffer& out, double time,
                           double position, uint32_t fieldFlags)
{
    readParameters(time);
    lumenveil->renderMonitor = host;
    if (!preparedValues[0] || !preparedValues[1] || !preparedValues[2] || roiWidth < 1 || roiHeight < 1)
        return E_FAIL;
    if (hostStopped())
        return S_OK;
    lumenveil->time = position;
    lumenveil->colourEnabled = 1;
    lumenveil->alphaEnabled = 1;
    const double emphasis = GetValueDirect(KEY_HIGHLIGHT_EMPHASIS, highlightEmphasis, time);
    const double threshold = GetValueDirect(KEY_HIGHLIGHT_THRESHOLD, highlightThreshold, time);
    if (!lumenveil->RenderLinear(frame, emphasis, threshold)) {
        lib_log(LOG_ERROR, "the scene-linear render failed (engine status %d)", lumenveil->engine->GetStatus());
        failureReason = lumenveil->outcome.Reason();
        return lumenveil->engine->GetStatus() == FFT_ERR_MEMORY ? E_OUTOFMEMORY : E_FAIL;
    }
    if (lumenveil->kernelOnly || hostStopped())
        return S_OK;
    if (input)
        mergeLinearChannels(*input, frame, channelSelect[DS_PLACE_RED], channelSelect[DS_PLACE_GREEN],
                            channelSelect[DS_PLACE_BLUE], channelSelect[DS_PLACE_ALPHA]);
    linearFrameToHost(&frame, out.pixels, out.width, out.height, roiWidth, roiHeight, outputRoiX, outputRoiY, out.code,
                      fieldFlags);
    return S_OK;
}
