// PrepareKernel: from a point-spread image to the spectrum of a centred kernel
// whose samples sum to one. One code path for every mode, over the plane's
// sample type.
#include <cstring>
#include <numeric>

#include "vzlibs/baselib/aligned.h"
#include "vzlibs/fftlib/FftEngine.h"
#include "vzlibs/fftlib/fft_planes.h"

namespace {

// Sample scales of the kernel read, single-precision constants widened to double.
constexpr double kKernelScaleU8 = static_cast<double>(1.0f / 255.0f);
constexpr double kKernelScaleU16 = static_cast<double>(1.0f / 65535.0f);
constexpr double kKernelScaleU32 = 2.3283064365386963e-10;

template <typename Sample, typename Real>
void loadKernelRowsOf(FftEngine* e, Real* plane, int first, int last, double scale)
{
    const ImageRec* image = e->jobSource;
    const int width = image->width;
    const int step = image->channels;
    const int stride = e->paddedWidth;
    for (int r = first; r <= last; ++r) {
        if (e->abortCheck && e->abortCheck(e->callbackContext))
            return;
        const Sample* in = reinterpret_cast<const Sample*>(static_cast<const unsigned char*>(image->pixels) +
                                                          static_cast<size_t>(r) * image->rowBytes);
        Real* out = plane + static_cast<size_t>(r + e->offsetY) * stride + e->offsetX;
        if (e->jobNormalise) {
            for (int x = 0; x < width; ++x)
                out[x] = static_cast<Real>(static_cast<double>(in[x * step]) * scale);
        } else {
            for (int x = 0; x < width; ++x)
                out[x] = static_cast<Real>(in[x * step]);
        }
    }
}

template <typename Real> void loadKernelRowsIn(FftEngine* e, int first, int last)
{
    Real* plane = planesOf<Real>(*e).jobBuffer;
    switch (e->jobSource->sampleType) {
    case IMAGE_U8:
        loadKernelRowsOf<uint8_t>(e, plane, first, last, kKernelScaleU8);
        break;
    case IMAGE_U16:
        loadKernelRowsOf<uint16_t>(e, plane, first, last, kKernelScaleU16);
        break;
    case IMAGE_I32:
        loadKernelRowsOf<uint32_t>(e, plane, first, last, kKernelScaleU32);
        break;
    default:
        // Float samples are taken as they are: the scale is 1.
        loadKernelRowsOf<float>(e, plane, first, last, 1.0);
        break;
    }
}

// Rotates the rows of a plane up by `shift`: row i takes what row (i + shift) mod
// height held. Each cycle of the permutation goes through the scratch row once,
// so every row is copied once; a shift of half an even height swaps row pairs.
template <typename Real> void rotateRowsUp(Real* plane, int width, int height, int shift, Real* scratch)
{
    if (shift <= 0)
        return;
    const size_t rowBytes = static_cast<size_t>(width) * sizeof(Real);
    auto row = [plane, width](int y) { return plane + static_cast<size_t>(y) * width; };
    const int cycles = std::gcd(height, shift);
    for (int start = 0; start < cycles; ++start) {
        std::memcpy(scratch, row(start), rowBytes);
        int at = start;
        for (int next = (at + shift) % height; next != start; next = (at + shift) % height) {
            std::memcpy(row(at), row(next), rowBytes);
            at = next;
        }
        std::memcpy(row(at), scratch, rowBytes);
    }
}

// Scales the plane to sum 1 and rotates it left by shiftX and up by shiftY, so
// that the sample at (shiftX, shiftY) moves to the origin. The sum is taken in
// double, row by row in memory order. Returns a status code.
template <typename Real> int centreKernel(Real* plane, int width, int height, int shiftX, int shiftY)
{
    const int longest = width > height ? width : height;
    Real* scratch = static_cast<Real*>(vz_aligned_malloc(static_cast<uint32_t>(longest) * sizeof(Real), -1, false));
    if (!scratch)
        return FFT_ERR_MEMORY;

    const size_t count = static_cast<size_t>(width) * height;
    double sum = 0.0;
    for (size_t i = 0; i < count; ++i)
        sum += plane[i];
    const double factor = 1.0 / sum;  // a zero sum is the caller's to avoid

    // Rows: rotate left by shiftX, scaling as we go.
    for (int y = 0; y < height; ++y) {
        Real* row = plane + static_cast<size_t>(y) * width;
        std::memcpy(scratch, row + shiftX, static_cast<size_t>(width - shiftX) * sizeof(Real));
        std::memcpy(scratch + (width - shiftX), row, static_cast<size_t>(shiftX) * sizeof(Real));
        for (int i = 0; i < width; ++i)
            row[i] = static_cast<Real>(factor * scratch[i]);
    }
    // Columns: all of them at once, by moving whole rows.
    rotateRowsUp(plane, width, height, shiftY, scratch);

    vz_aligned_free(scratch, false);
    return FFT_OK;
}

// The shift that brings the PSF's centre to the origin of a side of `padded`
// samples holding an image of `size` pixels at `offset`: the image's pixel
// ceil(size / 2) lands at the origin. With an even side this is padded / 2, as in
// mode 4, where for an odd image the pixel at size / 2 lands one sample left of
// the origin; an odd side keeps that same placement, so every mode gives mode 4's
// picture.
int centringShift(int padded, int size, int offset) { return (offset + (size + 1) / 2) % padded; }

}  // namespace

void FftEngine::loadKernelRows(FftEngine* e, int first, int last)
{
    e->status = FFT_OK;
    if (e->singlePrecision())
        loadKernelRowsIn<float>(e, first, last);
    else
        loadKernelRowsIn<double>(e, first, last);
}

int FftEngine::normaliseAndCentreKernel(double* plane, int width, int height)
{
    return centreKernel(plane, width, height, width / 2, height / 2);
}

bool FftEngine::PrepareKernel(ImageRec* image, uint32_t margin)
{
    ++kernelsPrepared;
    // A missing image or pixel block is refused as "not prepared"; nothing changes.
    if (!image || !image->pixels) {
        status = FFT_ERR_NOT_PREPARED;
        return false;
    }
    kernelSource = image;
    padMargin = static_cast<int>(margin);
    psfWidth = image->width;
    psfHeight = image->height;
    // Until this call succeeds no kernel serves any frame: a refusal below leaves
    // the old spectrum in place, but Run will not use it for the new size.
    kernelWidth = kernelHeight = kernelPaddedWidth = kernelPaddedHeight = -1;

    // Mode 4: one power-of-two side S for both. Fast modes: each side the smallest
    // size of factors 2, 3, 5 and 7. Either way the larger side must lie in range.
    int64_t sideX, sideY;
    if (!TransformSize(mode, image->width, image->height, margin, &sideX, &sideY)) {
        status = FFT_ERR_SIZE;
        kernelSource = nullptr;
        return false;
    }
    const int W = static_cast<int>(sideX), H = static_cast<int>(sideY);

    if (W != paddedWidth || H != paddedHeight) {
        freePlanes();
        destroyPlans();
        paddedWidth = W;
        paddedHeight = H;
    }
    offsetX = (paddedWidth - psfWidth) / 2;
    offsetY = (paddedHeight - psfHeight) / 2;

    if (!(singlePrecision() ? preparePlanes<float>(image) : preparePlanes<double>(image)))
        return false;
    kernelWidth = psfWidth;
    kernelHeight = psfHeight;
    kernelPaddedWidth = paddedWidth;
    kernelPaddedHeight = paddedHeight;
    return true;
}

template <typename Real> bool FftEngine::preparePlanes(ImageRec* image)
{
    FftPlanes<Real> planes = planesOf<Real>(*this);
    using Complex = typename FftPlanes<Real>::Complex;
    if (!ensureCleared<Real>(planes.kernelReal, planeSamples() * sizeof(Real)) ||
        !ensureCleared<Real>(planes.kernelSpectrum, spectrumSamples() * sizeof(Complex)))
        return false;
    if (!makePlan(PlanKind::KernelForward))
        return false;

    jobChannelBit = 1;
    jobNormalise = 1;
    jobBorderMode = 1;
    jobSource = kernelSource;
    planes.jobBuffer = planes.kernelReal;
    RunRowJob(loadKernelRows, image->height);

    status = centreKernel(planes.kernelReal, paddedWidth, paddedHeight,
                          centringShift(paddedWidth, psfWidth, offsetX),
                          centringShift(paddedHeight, psfHeight, offsetY));
    if (status != FFT_OK)
        return false;
    Fftw<Real>::execute(planes.kernelForwardPlan);
    return true;
}

bool FftEngine::kernelServes(int width, int height) const
{
    const bool planes = singlePrecision()
                            ? single.kernelReal && single.kernelSpectrum && single.kernelForwardPlan
                            : kernelReal && kernelSpectrum && kernelForwardPlan;
    return planes && width == kernelWidth && height == kernelHeight && kernelPaddedWidth == paddedWidth &&
           kernelPaddedHeight == paddedHeight;
}
