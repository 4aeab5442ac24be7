#include "effect/RenderOutcomeVZ.h"

#include "vzlibs/fftlib/fft_status.h"

namespace {

const char* engineReason(int status)
{
    switch (status) {
    case FFT_ERR_SIZE:
        return "the transform is larger than the engine takes";
    case FFT_ERR_MEMORY:
        return "the engine could not allocate memory for the transform";
    case FFT_ERR_ARGUMENT:
        return "a radius, rotation or pixel aspect is not a finite number";
    case FFT_ERR_PLAN:
        return "the engine could not plan the transform";
    case FFT_ERR_THREADS:
        return "the engine could not start its threads";
    case FFT_ERR_PSF_TYPE:
        return "the aperture picture has float samples";
    default:
        return "the engine refused the frame";
    }
}

}  // namespace

const char* RenderOutcomeVZ::Reason() const
{
    switch (result) {
    case RENDER_DONE:
        return "";
    case RENDER_NOT_RUN:
        return "the frame was not rendered";
    case RENDER_NO_ENGINE:
        return "the engine could not be made";
    case RENDER_NO_MEMORY:
        return "out of memory for the frame";
    case RENDER_KERNEL_FAILED:
    case RENDER_ENGINE_FAILED:
        return engineReason(engineStatus);
    }
    return "the frame was not rendered";
}
