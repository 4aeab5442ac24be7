// FftEngine: construction, teardown, setters, plans and the row-job seam.
#include "vzlibs/fftlib/FftEngine.h"

#include <fftw3.h>

#include <cstdlib>
#include <initializer_list>

#include "vzlibs/baselib/machine.h"
#include "vzlibs/fftlib/fft_planes.h"
#include "vzlibs/fftlib/fftw_process.h"

namespace {

// Mode 5 is taken as 4, and mode 4 may be turned into a fast mode by VZ_FFT_MODE.
uint32_t resolveMode(uint32_t requested, FftModeSource source)
{
    if (requested == 5)
        requested = FFT_MODE_FFTW;
    if (requested == FFT_MODE_FFTW && source == FFT_MODE_FOLLOWS_ENVIRONMENT)
        return fft_mode_from_environment();
    return requested;
}

FftwPrecision precisionOf(uint32_t mode)
{
    return mode == FFT_MODE_FAST_FLOAT ? FFTW_PRECISION_SINGLE : FFTW_PRECISION_DOUBLE;
}

}  // namespace

FftEngine::FftEngine(uint32_t engineMode, FftModeSource source)
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
      borderMode(FFT_BORDER_REPEAT),
      psfImage(nullptr),
      status(FFT_OK),
      callbackContext(nullptr),
      rowRunner(nullptr),
      abortCheck(nullptr),
      pixelAspectX(1.0f),
      pixelAspectY(1.0f),
      mode(resolveMode(engineMode, source)),
      plansMade(0),
      kernelsPrepared(0),
      kernelWidth(-1),
      kernelHeight(-1),
      kernelPaddedWidth(-1),
      kernelPaddedHeight(-1),
      failureContext(nullptr),
      failureHook(nullptr),
      jobFloatSource{nullptr, 0, 0},
      jobFloatDestination{nullptr, 0, 0},
      jobFloatHeight(0),
      jobFloatEdge(FFT_EDGE_REPEAT)
{
    // FFTW's threads are set up once for all live engines of the mode's precision.
    threadsReady = fftw_process_attach(precisionOf(mode)) ? 1u : 0u;
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
    fftw_process_detach(precisionOf(mode));
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
    if (newMode != FFT_BORDER_LEAVE && newMode != FFT_BORDER_REPEAT) {
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

// A runner may cut the count in four and drop the remainder, as the four-thread
// split does. Mode 4's count is S, a multiple of four from S = 4 on, and stays
// as it always was. A fast side may be odd: there the count is rounded up to a
// multiple of four and the job stops at the last spectrum row.
int FftEngine::spectrumJobCount() const
{
    if (!fastSizes())
        return paddedWidth;
    return (spectrumRows() + 3) / 4 * 4;
}

unsigned FftEngine::planFlags() const { return useWisdom ? FFTW_MEASURE : FFTW_ESTIMATE; }

bool FftEngine::makePlan(PlanKind kind)
{
    return singlePrecision() ? makePlanOf<float>(kind) : makePlanOf<double>(kind);
}

template <typename Real> bool FftEngine::makePlanOf(PlanKind kind)
{
    FftPlanes<Real> planes = planesOf<Real>(*this);
    typename Fftw<Real>::Plan* field = kind == PlanKind::KernelForward ? &planes.kernelForwardPlan
                                       : kind == PlanKind::WorkForward ? &planes.workForwardPlan
                                                                       : &planes.workInversePlan;
    if (*field)
        return true;
    // FFTW's planners and wisdom are shared by every engine in the process.
    std::lock_guard<std::mutex> guard(fftw_planner_mutex());
    Fftw<Real>::planWithThreads(static_cast<int>(processorCount));
    const unsigned flags = planFlags();
    // A failed read is tried again before the next plan; a good one not again.
    if (useWisdom && !wisdomLoaded)
        loadWisdom();
    if (injectedFailure(FFT_RESOURCE_PLAN)) {
        status = FFT_ERR_PLAN;
        return false;
    }
    // Rows first: a plane is paddedHeight rows of paddedWidth samples.
    const int rows = paddedHeight, rowLength = paddedWidth;
    switch (kind) {
    case PlanKind::KernelForward:
        *field = Fftw<Real>::planForward(rows, rowLength, planes.kernelReal, planes.kernelSpectrum, flags);
        break;
    case PlanKind::WorkForward:
        *field = Fftw<Real>::planForward(rows, rowLength, planes.workReal, planes.workSpectrum, flags);
        break;
    case PlanKind::WorkInverse:
        *field = Fftw<Real>::planInverse(rows, rowLength, planes.workSpectrum, planes.workReal, flags);
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

template <typename Real, typename T> void releaseBlock(T*& block)
{
    if (block)
        Fftw<Real>::release(block);
    block = nullptr;
}

template <typename Real> void freePlanesOf(FftPlanes<Real> p)
{
    releaseBlock<Real>(p.kernelReal);
    releaseBlock<Real>(p.kernelSpectrum);
    releaseBlock<Real>(p.workReal);
    releaseBlock<Real>(p.workSpectrum);
    releaseBlock<Real>(p.lumaPlane);
    releaseBlock<Real>(p.chromaAPlane);
    releaseBlock<Real>(p.chromaBPlane);
}

template <typename Real> void destroyPlansOf(FftPlanes<Real> p)
{
    for (typename Fftw<Real>::Plan* plan : {&p.kernelForwardPlan, &p.workForwardPlan, &p.workInversePlan}) {
        if (*plan)
            Fftw<Real>::destroy(*plan);
        *plan = nullptr;
    }
}

}  // namespace

void FftEngine::freePlanes()
{
    freePlanesOf(planesOf<double>(*this));
    freePlanesOf(planesOf<float>(*this));
}

void FftEngine::destroyPlans()
{
    std::lock_guard<std::mutex> guard(fftw_planner_mutex());
    destroyPlansOf(planesOf<double>(*this));
    destroyPlansOf(planesOf<float>(*this));
}
