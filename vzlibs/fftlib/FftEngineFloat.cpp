// ConvolveFloat: one channel of float samples through the prepared kernel, as
// the samples are. The channel is loaded into the work plane with its margin
// filled by the edge rule, transformed, multiplied with the kernel spectrum,
// transformed back and stored, divided by the transform's size. Written once
// over the plane's sample type, as Run is.
#include <cstring>

#include "vzlibs/fftlib/FftEngine.h"
#include "vzlibs/fftlib/fft_plane_margin.h"
#include "vzlibs/fftlib/fft_planes.h"

namespace {

// The row counts of the load and store jobs are rounded up to a multiple of
// four, so that a runner that splits rows in four slices and drops the
// remainder still reaches every row; the jobs stop at the frame's last row.
constexpr int kRunnerSlices = 4;

int roundedRowCount(int height) { return (height + kRunnerSlices - 1) / kRunnerSlices * kRunnerSlices; }

inline int lastFrameRow(const FftEngine* e, int last)
{
    return last < e->jobFloatHeight - 1 ? last : e->jobFloatHeight - 1;
}

template <typename Real> void loadFloatRowsIn(FftEngine* e, int first, int last)
{
    const FftFloatChannel& source = e->jobFloatSource;
    const int width = e->kernelWidth;
    const int rowLength = e->paddedWidth;
    Real* const plane = planesOf<Real>(*e).workReal;
    last = lastFrameRow(e, last);
    for (int r = first; r <= last; ++r) {
        if (e->abortCheck && e->abortCheck(e->callbackContext))
            return;
        const float* in = source.samples + static_cast<ptrdiff_t>(r) * source.rowStride;
        Real* planeRow = plane + static_cast<size_t>(r + e->offsetY) * rowLength;
        Real* out = planeRow + e->offsetX;
        for (int x = 0; x < width; ++x)
            out[x] = static_cast<Real>(in[static_cast<ptrdiff_t>(x) * source.step]);
        if (e->jobFloatEdge == FFT_EDGE_REPEAT) {
            extendColumns(planeRow, e->offsetX, width, rowLength);
        } else {
            std::memset(planeRow, 0, static_cast<size_t>(e->offsetX) * sizeof(Real));
            std::memset(out + width, 0, static_cast<size_t>(rowLength - e->offsetX - width) * sizeof(Real));
        }
    }
}

template <typename Real> void storeFloatRowsIn(FftEngine* e, int first, int last)
{
    const FftFloatChannel& destination = e->jobFloatDestination;
    const int width = e->kernelWidth;
    const Real* const plane = planesOf<Real>(*e).workReal;
    // FFTW's transforms are unnormalised: forward then inverse multiplies by
    // the plane's sample count.
    const double scale = 1.0 / (static_cast<double>(e->paddedWidth) * static_cast<double>(e->paddedHeight));
    last = lastFrameRow(e, last);
    for (int r = first; r <= last; ++r) {
        if (e->abortCheck && e->abortCheck(e->callbackContext))
            return;
        const Real* in = plane + static_cast<size_t>(r + e->offsetY) * e->paddedWidth + e->offsetX;
        float* out = destination.samples + static_cast<ptrdiff_t>(r) * destination.rowStride;
        for (int x = 0; x < width; ++x)
            out[static_cast<ptrdiff_t>(x) * destination.step] = static_cast<float>(scale * static_cast<double>(in[x]));
    }
}

// Fills the plane rows above and below the frame by the edge rule.
template <typename Real> void fillMarginRows(Real* plane, int top, int height, int rowLength, int rows, int edge)
{
    if (edge == FFT_EDGE_REPEAT) {
        extendRowsOf(plane, top, height, rowLength, rowLength, rows);
        return;
    }
    const size_t rowBytes = static_cast<size_t>(rowLength) * sizeof(Real);
    std::memset(plane, 0, static_cast<size_t>(top) * rowBytes);
    const int bottom = top + height;
    std::memset(plane + static_cast<size_t>(bottom) * rowLength, 0, static_cast<size_t>(rows - bottom) * rowBytes);
}

}  // namespace

void FftEngine::loadFloatRows(FftEngine* e, int first, int last)
{
    e->status = FFT_OK;
    if (e->singlePrecision())
        loadFloatRowsIn<float>(e, first, last);
    else
        loadFloatRowsIn<double>(e, first, last);
}

void FftEngine::storeFloatRows(FftEngine* e, int first, int last)
{
    e->status = FFT_OK;
    if (e->singlePrecision())
        storeFloatRowsIn<float>(e, first, last);
    else
        storeFloatRowsIn<double>(e, first, last);
}

bool FftEngine::ConvolveFloat(const FftFloatChannel& source, const FftFloatChannel& destination, int width,
                              int height, FftEdge edge)
{
    if (width < 1 || height < 1 || !kernelServes(width, height)) {
        status = FFT_ERR_NOT_PREPARED;
        return false;
    }
    if (!source.samples || !destination.samples || (edge != FFT_EDGE_REPEAT && edge != FFT_EDGE_ZERO)) {
        status = FFT_ERR_ARGUMENT;
        return false;
    }
    jobFloatSource = source;
    jobFloatDestination = destination;
    jobFloatHeight = height;
    jobFloatEdge = edge;
    return singlePrecision() ? convolveFloatIn<float>() : convolveFloatIn<double>();
}

template <typename Real> bool FftEngine::convolveFloatIn()
{
    if (!ensureWorkPlanes<Real>())
        return false;
    FftPlanes<Real> planes = planesOf<Real>(*this);
    const int rowCount = roundedRowCount(jobFloatHeight);
    RunRowJob(loadFloatRows, rowCount);
    fillMarginRows(planes.workReal, offsetY, jobFloatHeight, paddedWidth, paddedHeight, jobFloatEdge);
    Fftw<Real>::execute(planes.workForwardPlan);
    RunRowJob(multiplySpectrumRows, spectrumJobCount());
    Fftw<Real>::execute(planes.workInversePlan);
    RunRowJob(storeFloatRows, rowCount);
    return true;
}
