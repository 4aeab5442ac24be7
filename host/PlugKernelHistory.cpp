// Plug's IDSKernelHistory: the kernel decisions of the frames before a
// render's first, tracked without rendering, and kernels built without
// rendering.
#include <mutex>

#include "effect/Lumenveil.h"
#include "host/Plug.h"
#include "vzlibs/fftlib/fft_modes.h"

HRESULT Plug::TrackKernel(double time, int32_t* builds)
{
    if (!builds)
        return E_POINTER;
    *builds = 0;
    if (!lumenveil || !host)
        return E_FAIL;
    std::lock_guard<std::mutex> turn(lumenveil->renderLock);
    if (FAILED(PrepareData()) || roiWidth < 1 || roiHeight < 1)
        return E_FAIL;
    // As Execute: a changed Engine property makes a new engine, which has no kernel.
    lumenveil->SelectEngine(fft_mode_at(engineMode));
    double aspect = 1.0;
    float scale = 1.0f;
    readFrameValues(&aspect, &scale);
    readParameters(time);
    // The frames' pixel aspect, as Execute gives it: x from the coordinate
    // manager, y 1.
    *builds = lumenveil->TrackKernel(roiWidth, roiHeight, static_cast<float>(aspect), 1.0f) ? 1 : 0;
    return S_OK;
}

HRESULT Plug::BuildKernel(double time, double* trace)
{
    if (!trace)
        return E_POINTER;
    *trace = 1.0;
    const HRESULT built = executeInTurn(time, true);
    if (SUCCEEDED(built) && lumenveil) {
        std::lock_guard<std::mutex> turn(lumenveil->renderLock);
        *trace = lumenveil->KernelTrace();
    }
    return built;
}

HRESULT Plug::ForgetKernel()
{
    if (!lumenveil)
        return E_FAIL;
    std::lock_guard<std::mutex> turn(lumenveil->renderLock);
    lumenveil->ForgetKernel();
    return S_OK;
}
