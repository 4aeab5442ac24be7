// FftEngine: construction, teardown, setters, plans and the row-job seam.
#include "vzlibs/fftlib/FftEngine.h"

#include <fftw3.h>

#include <cstdlib>
#include <initializer_list>

#include "vzlibs/baselib/machine.h"
#include "vzlibs/fftlib/fftw_process.h"

FftEngine::FftEngine(uint32_t engineMode)
    : kernelSource(nullptr),
      inputImage(nullptr),
      kernelForwardPlan(nullptr),
      workForwardPlan(nullptr),
      workInversePlan(nullptr),
      kernelReal(nullptr),
      kernelSpectrum(nullptr),
      workReal(nullptr),
      workSpectrum(nullptr),
      lumaPlane(nullptr),
      chromaAPlane(nullptr),
      chromaBPlane(nullptr),
      threadsReady(0),
      processorCount(0),
      useWisdom(0),
      wisdomLoaded(0),
      psfWidth(-1),
      psfHeight(-1),
      paddedWidth(-1),
      paddedHeight(-1),
      offsetX(-1),
      offsetY(-1),
      padMargin(-1),
      jobBuffer(nullptr),
      jobNormalise(0),
      jobSource(nullptr),
      jobBorderMode(0),
      brightEmphasis(0.0f),
      emphasiseAlpha(0),
      jobOutput(nullptr),
      jobChannelBit(0),
      borderMode(2),
      psfImage(nullptr),
      status(FFT_OK),
      callbackContext(nullptr),
      rowRunner(nullptr),
      abortCheck(nullptr),
      pixelAspectX(1.0f),
      pixelAspectY(1.0f),
      mode(engineMode == 5 ? FFT_MODE_FFTW : engineMode),
      plansMade(0),
      kernelsPrepared(0),
      kernelWidth(-1),
      kernelHeight(-1),
      kernelSide(-1),
      failureContext(nullptr),
      failureHook(nullptr)
{
    // FFTW's threads are set up once for all live engines.
    threadsReady = fftw_process_attach() ? 1u : 0u;
    if (!threadsReady)
        status = FFT_ERR_THREADS;  // construction goes on; FFTW retries on planning
    processorCount = static_cast<uint32_t>(get_processor_count());
    useWisdom = std::getenv("VZ_USE_FFTW_WISDOM") != nullptr ? 1u : 0u;  // any value, even empty
    wisdomLoaded = 0;
}

FftEngine::~FftEngine()
{
    if (psfImage)
        image_free(psfImage);
    if (useWisdom) {
        std::lock_guard<std::mutex> guard(fftw_planner_mutex());
        saveWisdom();
    }
    destroyPlans();
    freePlanes();
    // FFTW's thread clean-up runs only when this is the last live engine.
    fftw_process_detach();
}

void FftEngine::SetFailureHook(void* context, FftFailureHook hook)
{
    failureContext = context;
    failureHook = hook;
}

bool FftEngine::SetRowRunner(void* context, FftRowRunner runner)
{
    callbackContext = context;
    rowRunner = runner;
    return true;
}

bool FftEngine::SetAbortCheck(void*, FftAbortCheck check)
{
    abortCheck = check;
    return true;
}

bool FftEngine::SetBorderMode(int newMode)
{
    if (newMode != 1 && newMode != 2) {
        status = FFT_ERR_ARGUMENT;
        return false;
    }
    borderMode = newMode;
    return true;
}

bool FftEngine::SetInput(ImageRec* image)
{
    if (!image || image->width != psfWidth || image->height != psfHeight) {
        status = FFT_ERR_INPUT_SIZE;
        inputImage = nullptr;
        return false;
    }
    inputImage = image;
    return true;
}

void FftEngine::SetBrightEmphasis(float emphasis)
{
    if (emphasis < 0.0f)
        brightEmphasis = 0.0f;
    else if (emphasis > 500.0f)
        brightEmphasis = 500.0f;
    else
        brightEmphasis = emphasis;
}

void FftEngine::SetAlphaEmphasis(int flag) { emphasiseAlpha = flag != 0 ? 1 : 0; }

bool FftEngine::SetPixelAspect(float x, float y)
{
    pixelAspectX = x;
    pixelAspectY = y;
    return true;
}

void FftEngine::RunRowJob(FftRowJob job, int count)
{
    if (rowRunner && callbackContext)
        rowRunner(callbackContext, job, count, this);
    else
        job(this, 0, count - 1);
}

int FftEngine::nextPowerOfTwo(int n, int* exponent)
{
    int value = 1;
    int bits = 0;
    while (value < n && value < (1 << 30)) {
        value <<= 1;
        ++bits;
    }
    if (exponent)
        *exponent = bits;
    return value;
}

unsigned FftEngine::planFlags() const { return useWisdom ? FFTW_MEASURE : FFTW_ESTIMATE; }

bool FftEngine::makePlan(PlanKind kind)
{
    fftw_plan* field = kind == PlanKind::KernelForward ? &kernelForwardPlan
                       : kind == PlanKind::WorkForward ? &workForwardPlan
                                                       : &workInversePlan;
    if (*field)
        return true;
    // FFTW's planner and wisdom are shared by every engine in the process.
    std::lock_guard<std::mutex> guard(fftw_planner_mutex());
    fftw_plan_with_nthreads(static_cast<int>(processorCount));
    const unsigned flags = planFlags();
    // A failed read is tried again before the next plan; a good one not again.
    if (useWisdom && !wisdomLoaded)
        loadWisdom();
    if (injectedFailure(FFT_RESOURCE_PLAN)) {
        status = FFT_ERR_PLAN;
        return false;
    }
    switch (kind) {
    case PlanKind::KernelForward:
        *field = fftw_plan_dft_r2c_2d(paddedWidth, paddedHeight, kernelReal, kernelSpectrum, flags);
        break;
    case PlanKind::WorkForward:
        *field = fftw_plan_dft_r2c_2d(paddedWidth, paddedHeight, workReal, workSpectrum, flags);
        break;
    case PlanKind::WorkInverse:
        *field = fftw_plan_dft_c2r_2d(paddedWidth, paddedHeight, workSpectrum, workReal, flags);
        break;
    }
    ++plansMade;
    if (!*field) {
        status = FFT_ERR_PLAN;
        return false;
    }
    if (useWisdom)
        saveWisdom();  // after every plan made, so a crash later keeps the work
    return true;
}

namespace {

template <typename T> void releaseBlock(T*& block)
{
    if (block)
        fftw_free(block);
    block = nullptr;
}

}  // namespace

void FftEngine::freePlanes()
{
    releaseBlock(kernelReal);
    releaseBlock(kernelSpectrum);
    releaseBlock(workReal);
    releaseBlock(workSpectrum);
    releaseBlock(lumaPlane);
    releaseBlock(chromaAPlane);
    releaseBlock(chromaBPlane);
}

void FftEngine::destroyPlans()
{
    std::lock_guard<std::mutex> guard(fftw_planner_mutex());
    for (fftw_plan* plan : {&kernelForwardPlan, &workForwardPlan, &workInversePlan}) {
        if (*plan)
            fftw_destroy_plan(*plan);
        *plan = nullptr;
    }
}
