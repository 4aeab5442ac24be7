// Run: the channel passes of one frame. Each channel index is loaded into
// workReal as emphasised luma, chroma A, chroma B or alpha, transformed,
// multiplied with the kernel spectrum and transformed back; a store pass turns
// the kept planes into pixels. Sample-type and channel branches stand outside
// the pixel loops: each combination is its own instantiation. The passes are
// written once over the plane's sample type (Real: double, or float in the
// single-precision mode) and any width and height: a plane is paddedHeight rows
// of paddedWidth samples. Pixel arithmetic is double in every mode.
#include <cstring>

#include "vzlibs/fftlib/FftEngine.h"
#include "vzlibs/fftlib/emphasis.h"
#include "vzlibs/fftlib/engine_colour.h"
#include "vzlibs/fftlib/fft_plane_margin.h"
#include "vzlibs/fftlib/fft_planes.h"

namespace {

using namespace engine_colour;

// Per sample type: the sample, its read factor k and write factor m.
template <int Type> struct SampleTraits;
template <> struct SampleTraits<IMAGE_U8> {
    using Sample = uint8_t;
    static constexpr double k = 1.0 / 255.0;
    static constexpr double m = 255.0;
};
template <> struct SampleTraits<IMAGE_U16> {
    using Sample = uint16_t;
    static constexpr double k = 1.0 / 65535.0;
    static constexpr double m = 65535.0;
};
template <> struct SampleTraits<IMAGE_I32> {
    using Sample = uint32_t;
    static constexpr double k = 2.3283064365386963e-10;
    static constexpr double m = 4294967295.0;
};

inline double clampUnit(double v)
{
    if (v < 0.0)
        return 0.0;
    if (v > 1.0)
        return 1.0;
    return v;
}

// v * m + 0.5 truncated towards zero; the caller keeps the type's width of it.
// A NaN (from an empty kernel) stores as zero bits, as an integer conversion of
// the lowest representable value would leave them.
inline int64_t toInteger(double v, double m)
{
    const double scaled = v * m + 0.5;
    if (!(scaled == scaled))
        return 0;
    return static_cast<int64_t>(scaled);
}

template <int Type> const typename SampleTraits<Type>::Sample* rowOf(const ImageRec* image, int r)
{
    return reinterpret_cast<const typename SampleTraits<Type>::Sample*>(static_cast<const unsigned char*>(image->pixels) +
                                                                        static_cast<size_t>(r) * image->rowBytes);
}

// Float frames are neither read nor written: the job only polls.
void pollOnly(FftEngine* eng, int first, int last)
{
    for (int r = first; r <= last; ++r)
        if (eng->abortCheck && eng->abortCheck(eng->callbackContext))
            return;
}

template <typename Real, int Type, int Bit> void loadChannelRowsOf(FftEngine* eng, int first, int last)
{
    using T = SampleTraits<Type>;
    const ImageRec* image = eng->jobSource;
    const int width = image->width;
    const int step = image->channels;
    const int S = eng->paddedWidth;
    Real* const plane = planesOf<Real>(*eng).jobBuffer;
    const double e = static_cast<double>(eng->brightEmphasis);
    const bool alphaEmphasis = eng->emphasiseAlpha != 0;
    const double k = T::k;
    for (int r = first; r <= last; ++r) {
        if (eng->abortCheck && eng->abortCheck(eng->callbackContext))
            return;
        const typename T::Sample* in = rowOf<Type>(image, r);
        Real* planeRow = plane + static_cast<size_t>(r + eng->offsetY) * S;
        Real* out = planeRow + eng->offsetX;
        if constexpr (Bit == 1 && Type == IMAGE_I32) {
            // 32-bit luma reads bytes 0, 1 and 2 of the row's first pixel and fills
            // the row with that one value.
            const unsigned char* bytes = reinterpret_cast<const unsigned char*>(in);
            const double c0 = static_cast<double>(bytes[0]) * k;
            const double c1 = static_cast<double>(bytes[1]) * k;
            const double c2 = static_cast<double>(bytes[2]) * k;
            const Real value = static_cast<Real>(emphasise(c2 * W_B + c1 * W_G + c0 * W_R, e));
            for (int x = 0; x < width; ++x)
                out[x] = value;
        } else {
            for (int x = 0; x < width; ++x) {
                const typename T::Sample* p = in + static_cast<size_t>(x) * step;
                double v;
                if constexpr (Bit == 1) {
                    const double c0 = static_cast<double>(p[0]) * k;
                    const double c1 = static_cast<double>(p[1]) * k;
                    const double c2 = static_cast<double>(p[2]) * k;
                    v = emphasise(c2 * W_B + c1 * W_G + c0 * W_R, e);
                } else if constexpr (Bit == 2) {
                    const double c0 = static_cast<double>(p[0]) * k;
                    const double c1 = static_cast<double>(p[1]) * k;
                    const double c2 = static_cast<double>(p[2]) * k;
                    v = c0 * A_R - c1 * A_G - c2 * A_B + 0.5;
                } else if constexpr (Bit == 4) {
                    const double c0 = static_cast<double>(p[0]) * k;
                    const double c1 = static_cast<double>(p[1]) * k;
                    const double c2 = static_cast<double>(p[2]) * k;
                    v = c2 * B_B - (c1 * B_G + c0 * B_R) + 0.5;
                } else {
                    const double c3 = static_cast<double>(p[3]) * k;
                    v = alphaEmphasis ? emphasise(c3, e) : c3;
                }
                out[x] = static_cast<Real>(v);
            }
        }
        if (eng->jobBorderMode == 2)
            extendColumns(planeRow, eng->offsetX, width, S);
    }
}

template <typename Real, int Type> void loadChannelRowsOfType(FftEngine* eng, int first, int last)
{
    switch (eng->jobChannelBit) {
    case 1:
        loadChannelRowsOf<Real, Type, 1>(eng, first, last);
        break;
    case 2:
        loadChannelRowsOf<Real, Type, 2>(eng, first, last);
        break;
    case 4:
        loadChannelRowsOf<Real, Type, 4>(eng, first, last);
        break;
    default:
        loadChannelRowsOf<Real, Type, 8>(eng, first, last);
        break;
    }
}

template <typename Real> void loadChannelRowsIn(FftEngine* eng, int first, int last)
{
    switch (eng->jobSource->sampleType) {
    case IMAGE_U8:
        loadChannelRowsOfType<Real, IMAGE_U8>(eng, first, last);
        break;
    case IMAGE_U16:
        loadChannelRowsOfType<Real, IMAGE_U16>(eng, first, last);
        break;
    case IMAGE_I32:
        loadChannelRowsOfType<Real, IMAGE_I32>(eng, first, last);
        break;
    default:
        pollOnly(eng, first, last);
        break;
    }
}

template <typename Real, int Type> void storeFrameRowsOf(FftEngine* eng, int first, int last)
{
    const FftPlanes<Real> planes = planesOf<Real>(*eng);
    using T = SampleTraits<Type>;
    using Sample = typename T::Sample;
    ImageRec* image = eng->jobOutput;
    const int width = image->width;
    const int step = image->channels;
    const int S = eng->paddedWidth;
    const double scale = 1.0 / static_cast<double>(static_cast<int32_t>(eng->paddedHeight * eng->paddedWidth));
    const double e = static_cast<double>(eng->brightEmphasis);
    const bool alphaEmphasis = eng->emphasiseAlpha != 0;
    const bool storeAlpha = (eng->jobChannelBit & 0xFF) == 8;
    const double m = T::m;
    for (int r = first; r <= last; ++r) {
        if (eng->abortCheck && eng->abortCheck(eng->callbackContext))
            return;
        Sample* out = const_cast<Sample*>(rowOf<Type>(image, r));
        const size_t base = static_cast<size_t>(r + eng->offsetY) * S + eng->offsetX;
        const Real* luma = planes.lumaPlane + base;
        const Real* chromaA = planes.chromaAPlane + base;
        const Real* chromaB = planes.chromaBPlane + base;
        for (int x = 0; x < width; ++x) {
            const double Y = deemphasise(scale * static_cast<double>(luma[x]), e);
            const double A = scale * static_cast<double>(chromaA[x]) - 0.5;
            const double B = scale * static_cast<double>(chromaB[x]) - 0.5;
            const double R = clampUnit(INV_RA * A + Y);
            const double G = clampUnit(Y * INV_GY - A * INV_GA - B * INV_GB);
            const double Bl = clampUnit(B * INV_BB + Y * INV_BY);
            Sample* p = out + static_cast<size_t>(x) * step;
            p[0] = static_cast<Sample>(toInteger(R, m));
            p[1] = static_cast<Sample>(toInteger(G, m));
            p[2] = static_cast<Sample>(toInteger(Bl, m));
        }
        if (storeAlpha) {
            const Real* alpha = planes.jobBuffer + base;
            for (int x = 0; x < width; ++x) {
                double v = scale * static_cast<double>(alpha[x]);
                if (alphaEmphasis)
                    v = deemphasise(v, e);
                const int64_t stored = toInteger(clampUnit(v), m);
                Sample* p = out + static_cast<size_t>(x) * step;
                if constexpr (Type == IMAGE_I32)
                    p[3] = static_cast<uint32_t>(stored & 0xFFFF);  // 32-bit alpha keeps its low 16 bits
                else
                    p[3] = static_cast<Sample>(stored);
            }
        }
    }
}

template <typename Real> void storeFrameRowsIn(FftEngine* eng, int first, int last)
{
    switch (eng->jobOutput->sampleType) {
    case IMAGE_U8:
        storeFrameRowsOf<Real, IMAGE_U8>(eng, first, last);
        break;
    case IMAGE_U16:
        storeFrameRowsOf<Real, IMAGE_U16>(eng, first, last);
        break;
    case IMAGE_I32:
        storeFrameRowsOf<Real, IMAGE_I32>(eng, first, last);
        break;
    default:
        pollOnly(eng, first, last);
        break;
    }
}

// Spectrum rows first..last, stopping at the spectrum's last row: the job's
// count may be rounded up (FftEngine::spectrumJobCount).
template <typename Real> void multiplySpectrumRowsIn(FftEngine* eng, int first, int last, int rows, int rowLength)
{
    using Complex = typename FftPlanes<Real>::Complex;
    const FftPlanes<Real> planes = planesOf<Real>(*eng);
    if (last > rows - 1)
        last = rows - 1;
    for (int r = first; r <= last; ++r) {
        const Complex* kernel = planes.kernelSpectrum + static_cast<size_t>(r) * rowLength;
        Complex* work = planes.workSpectrum + static_cast<size_t>(r) * rowLength;
        for (int k = 0; k < rowLength; ++k) {
            const Real a = kernel[k][0], b = kernel[k][1];
            const Real c = work[k][0], d = work[k][1];
            work[k][0] = a * c - b * d;
            work[k][1] = a * d + b * c;
        }
    }
}

}  // namespace

void FftEngine::loadChannelRows(FftEngine* eng, int first, int last)
{
    eng->status = FFT_OK;
    if (eng->singlePrecision())
        loadChannelRowsIn<float>(eng, first, last);
    else
        loadChannelRowsIn<double>(eng, first, last);
}

void FftEngine::storeFrameRows(FftEngine* eng, int first, int last)
{
    eng->status = FFT_OK;
    if (eng->singlePrecision())
        storeFrameRowsIn<float>(eng, first, last);
    else
        storeFrameRowsIn<double>(eng, first, last);
}

void FftEngine::multiplySpectrumRows(FftEngine* eng, int first, int last)
{
    eng->status = FFT_OK;
    const int rows = eng->spectrumRows(), rowLength = eng->spectrumRowLength();
    if (eng->singlePrecision())
        multiplySpectrumRowsIn<float>(eng, first, last, rows, rowLength);
    else
        multiplySpectrumRowsIn<double>(eng, first, last, rows, rowLength);
}

void FftEngine::extendRows(const ImageRec* image, double* plane, int top, int stride, int rowLength, int rows)
{
    extendRowsOf(plane, top, image->height, stride, rowLength, rows);
}

template <typename Real> bool FftEngine::keepPlane(Real*& plane)
{
    const size_t bytes = planeSamples() * sizeof(Real);
    if (!plane) {
        plane = static_cast<Real*>(allocatePlane<Real>(bytes));
        if (!plane) {
            status = FFT_ERR_MEMORY;
            return false;
        }
    }
    std::memcpy(plane, planesOf<Real>(*this).workReal, bytes);
    return true;
}

bool FftEngine::Run(ImageRec* output, uint32_t mask)
{
    // The kernel must have been prepared for this frame's size at the present
    // transform side: after a refused or failed PrepareKernel the planes may be of
    // another size than the frame now taken by SetInput.
    if (!inputImage || !kernelServes(inputImage->width, inputImage->height)) {
        status = FFT_ERR_NOT_PREPARED;
        return false;
    }
    // A missing output (or pixel block) is refused as a mismatch with the input.
    if (!output || !output->pixels || !inputImage->pixels || output->width != inputImage->width ||
        output->height != inputImage->height || output->sampleType != inputImage->sampleType) {
        status = FFT_ERR_IMAGE_MISMATCH;
        return false;
    }
    const int channels = output->channels < inputImage->channels ? output->channels : inputImage->channels;
    if (channels < 3 || (mask & 7u) != 7u) {
        status = FFT_ERR_CHANNELS;
        return false;
    }

    return singlePrecision() ? runChannels<float>(output, mask, channels) : runChannels<double>(output, mask, channels);
}

template <typename Real> bool FftEngine::ensureWorkPlanes()
{
    using Complex = typename FftPlanes<Real>::Complex;
    FftPlanes<Real> planes = planesOf<Real>(*this);
    if (!ensureCleared<Real>(planes.workReal, planeSamples() * sizeof(Real)) ||
        !ensureCleared<Real>(planes.workSpectrum, spectrumSamples() * sizeof(Complex)))
        return false;
    return makePlan(PlanKind::WorkForward) && makePlan(PlanKind::WorkInverse);
}

template bool FftEngine::ensureWorkPlanes<double>();
template bool FftEngine::ensureWorkPlanes<float>();

template <typename Real> bool FftEngine::runChannels(ImageRec* output, uint32_t mask, int channels)
{
    FftPlanes<Real> planes = planesOf<Real>(*this);
    const size_t planeBytes = planeSamples() * sizeof(Real);
    if (!ensureWorkPlanes<Real>())
        return false;

    Real** kept[3] = {&planes.lumaPlane, &planes.chromaAPlane, &planes.chromaBPlane};
    // Channel indices past 3 have no quantity of their own and are not run.
    for (int i = 0; i < channels && i < 4; ++i) {
        const int bit = 1 << i;
        if (!(mask & static_cast<uint32_t>(bit)))
            continue;
        jobChannelBit = bit;
        jobBorderMode = borderMode;
        jobNormalise = 0;
        jobSource = inputImage;
        planes.jobBuffer = planes.workReal;
        jobOutput = output;

        RunRowJob(loadChannelRows, inputImage->height);
        if (status != FFT_OK)
            return false;
        if (borderMode == 2)
            extendRowsOf(planes.workReal, offsetY, inputImage->height, paddedWidth, paddedWidth, paddedHeight);
        Fftw<Real>::execute(planes.workForwardPlan);
        RunRowJob(multiplySpectrumRows, spectrumJobCount());
        Fftw<Real>::execute(planes.workInversePlan);
        if (i < 3) {
            if (!keepPlane(*kept[i]))
                return false;
            if (i > 0)
                std::memset(planes.workReal, 0, planeBytes);
        }
    }

    planes.jobBuffer = planes.workReal;
    jobOutput = output;
    RunRowJob(storeFrameRows, output->height);
    return status == FFT_OK;
}
