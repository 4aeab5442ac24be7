// PrepareKernel: from a point-spread image to the spectrum of a centred kernel
// whose samples sum to one.
#include <cstring>

#include "vzlibs/baselib/aligned.h"
#include "vzlibs/fftlib/FftEngine.h"

namespace {

// Sample scales of the kernel read, single-precision constants widened to double.
constexpr double kKernelScaleU8 = static_cast<double>(1.0f / 255.0f);
constexpr double kKernelScaleU16 = static_cast<double>(1.0f / 65535.0f);
constexpr double kKernelScaleU32 = 2.3283064365386963e-10;

template <typename Sample>
void loadKernelRowsOf(FftEngine* e, int first, int last, double scale)
{
    const ImageRec* image = e->jobSource;
    const int width = image->width;
    const int step = image->channels;
    const int S = e->paddedWidth;
    for (int r = first; r <= last; ++r) {
        if (e->abortCheck && e->abortCheck(e->callbackContext))
            return;
        const Sample* in = reinterpret_cast<const Sample*>(static_cast<const unsigned char*>(image->pixels) +
                                                          static_cast<size_t>(r) * image->rowBytes);
        double* out = e->jobBuffer + static_cast<size_t>(r + e->offsetY) * S + e->offsetX;
        if (e->jobNormalise) {
            for (int x = 0; x < width; ++x)
                out[x] = static_cast<double>(in[x * step]) * scale;
        } else {
            for (int x = 0; x < width; ++x)
                out[x] = static_cast<double>(in[x * step]);
        }
    }
}

}  // namespace

void FftEngine::loadKernelRows(FftEngine* e, int first, int last)
{
    e->status = FFT_OK;
    switch (e->jobSource->sampleType) {
    case IMAGE_U8:
        loadKernelRowsOf<uint8_t>(e, first, last, kKernelScaleU8);
        break;
    case IMAGE_U16:
        loadKernelRowsOf<uint16_t>(e, first, last, kKernelScaleU16);
        break;
    case IMAGE_I32:
        loadKernelRowsOf<uint32_t>(e, first, last, kKernelScaleU32);
        break;
    default:
        // Float samples are taken as they are: the scale is 1.
        loadKernelRowsOf<float>(e, first, last, 1.0);
        break;
    }
}

int FftEngine::normaliseAndCentreKernel(double* plane, int width, int height)
{
    const int longest = width > height ? width : height;
    double* scratch = static_cast<double*>(vz_aligned_malloc(static_cast<uint32_t>(longest) * 8u, -1, false));
    if (!scratch)
        return FFT_ERR_MEMORY;

    const size_t count = static_cast<size_t>(width) * height;
    double sum = 0.0;
    for (size_t i = 0; i < count; ++i)
        sum += plane[i];
    const double factor = 1.0 / sum;  // a zero sum is the caller's to avoid

    // Rows: rotate left by width / 2, scaling as we go.
    const int shiftX = width / 2;
    for (int y = 0; y < height; ++y) {
        double* row = plane + static_cast<size_t>(y) * width;
        for (int i = 0; i < width; ++i)
            scratch[i] = row[(shiftX + i) % width];
        for (int i = 0; i < width; ++i)
            row[i] = factor * scratch[i];
    }

    // Columns: rotate up by height / 2. Done a whole row at a time through the
    // scratch row, which gives the same plane as a column-by-column rotation.
    const int shiftY = height / 2;
    const size_t rowBytes = static_cast<size_t>(width) * sizeof(double);
    if (shiftY > 0 && height % 2 == 0) {
        // Rotating by half the height swaps row y with row y + height / 2.
        for (int y = 0; y < shiftY; ++y) {
            double* a = plane + static_cast<size_t>(y) * width;
            double* b = plane + static_cast<size_t>(y + shiftY) * width;
            std::memcpy(scratch, a, rowBytes);
            std::memcpy(a, b, rowBytes);
            std::memcpy(b, scratch, rowBytes);
        }
    } else if (shiftY > 0) {
        for (int x = 0; x < width; ++x) {
            for (int i = 0; i < height; ++i)
                scratch[i] = plane[static_cast<size_t>((shiftY + i) % height) * width + x];
            for (int i = 0; i < height; ++i)
                plane[static_cast<size_t>(i) * width + x] = scratch[i];
        }
    }

    vz_aligned_free(scratch, false);
    return FFT_OK;
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
    kernelWidth = kernelHeight = kernelSide = -1;

    const int64_t wideMargin = 2 * static_cast<int64_t>(margin);
    const int64_t needW = image->width + wideMargin;
    const int64_t needH = image->height + wideMargin;
    if (needW > 8192 || needH > 8192) {
        status = FFT_ERR_SIZE;
        kernelSource = nullptr;
        return false;
    }
    const int a = nextPowerOfTwo(static_cast<int>(needW));
    const int b = nextPowerOfTwo(static_cast<int>(needH));
    const int S = a > b ? a : b;
    if (S < 2 || S > 8192) {
        status = FFT_ERR_SIZE;
        kernelSource = nullptr;
        return false;
    }

    if (S != paddedWidth || S != paddedHeight) {
        freePlanes();
        destroyPlans();
        paddedWidth = S;
        paddedHeight = S;
    }
    offsetX = (paddedWidth - psfWidth) / 2;
    offsetY = (paddedHeight - psfHeight) / 2;

    const size_t planeBytes = static_cast<size_t>(S) * S * sizeof(double);
    const size_t spectrumBytes = static_cast<size_t>(S) * (S / 2 + 1) * sizeof(fftw_complex);
    if (!ensureCleared(kernelReal, planeBytes) || !ensureCleared(kernelSpectrum, spectrumBytes))
        return false;
    if (!makePlan(PlanKind::KernelForward))
        return false;

    jobChannelBit = 1;
    jobNormalise = 1;
    jobBorderMode = 1;
    jobSource = kernelSource;
    jobBuffer = kernelReal;
    RunRowJob(loadKernelRows, image->height);

    status = normaliseAndCentreKernel(kernelReal, paddedWidth, paddedHeight);
    if (status != FFT_OK)
        return false;
    fftw_execute(kernelForwardPlan);
    kernelWidth = psfWidth;
    kernelHeight = psfHeight;
    kernelSide = paddedWidth;
    return true;
}

bool FftEngine::kernelServes(int width, int height) const
{
    return kernelReal && kernelSpectrum && kernelForwardPlan && width == kernelWidth && height == kernelHeight &&
           kernelSide == paddedWidth && kernelSide == paddedHeight;
}
