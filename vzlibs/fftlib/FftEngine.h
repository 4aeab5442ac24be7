// FftEngine: the defocus engine.
//
// Turns a point-spread image into a stored kernel spectrum (PrepareKernel) and
// convolves the channels of a frame with it (Run). Transforms are real FFTW
// transforms, out of place, of paddedWidth x paddedHeight samples, the larger
// side 2 to 8192 (16384 in the fast modes); the engine's mode chooses the sizes and the precision (see the
// FftMode). Calls return a boolean and leave the reason for a failure in
// `status` (FftStatus). Plans and planes are kept from frame to frame and remade
// only when the transform size changes.
//
// Per frame: SetRowRunner, SetAbortCheck, SetPixelAspect; a PSF builder (which
// ends in PrepareKernel) when the PSF has changed; SetInput; SetBrightEmphasis;
// SetAlphaEmphasis; Run. Float samples that must keep their values (scene-linear
// light, layers with coverage) go through ConvolveFloat instead of Run, once per
// channel, after the same kernel preparation.
#pragma once

#include <fftw3.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "vzlibs/fftlib/fft_codes.h"
#include "vzlibs/fftlib/fft_modes.h"
#include "vzlibs/fftlib/fft_single_planes.h"
#include "vzlibs/fftlib/fft_status.h"
#include "vzlibs/fftlib/fftw_precision.h"
#include "vzlibs/imagelib/imagelib.h"

class FftEngine;

// A row job does rows first..last (inclusive) of the job described by the
// engine's job fields.
typedef void (*FftRowJob)(FftEngine* engine, int first, int last);
// Runs a row job over rows 0..count-1, split over threads as it likes.
typedef void (*FftRowRunner)(void* context, FftRowJob job, int count, FftEngine* engine);
// Polled once a row by the pixel jobs; non-zero means stop. Called from several
// threads at once.
typedef int (*FftAbortCheck)(void* context);

// What a failure hook is asked about.
enum FftResource : int {
    FFT_RESOURCE_PLANE = 1,  // FFTW's malloc of a plane or spectrum
    FFT_RESOURCE_PLAN = 2,   // a call of FFTW's planner
};
// Test seam: asked before each plane allocation and each planner call; a
// non-zero answer makes that allocation or plan fail as if FFTW had refused it.
typedef int (*FftFailureHook)(void* context, FftResource resource);

// How a constructor takes its mode.
enum FftModeSource : int {
    FFT_MODE_FOLLOWS_ENVIRONMENT = 0,  // FFT_MODE_FFTW (and 5) become the mode VZ_FFT_MODE names
    FFT_MODE_AS_GIVEN = 1,             // the mode as given (5 is still taken as 4)
};

// One channel of float samples in memory: sample (x, y) at
// samples[y * rowStride + x * step]. The channels of an interleaved R G B A
// frame are four of these with step 4 and starting one float apart; a plane of
// its own has step 1.
struct FftFloatChannel {
    float* samples;
    ptrdiff_t step;
    ptrdiff_t rowStride;
};

// What ConvolveFloat puts into the transform's margin around the frame.
enum FftEdge : int {
    FFT_EDGE_REPEAT = 0,  // the frame's edge samples, repeated out to the plane's edges (as border mode 2)
    FFT_EDGE_ZERO = 1,    // zeros: nothing lies beyond the frame
};

class FftEngine {
public:
    // An engine asked for FFT_MODE_FFTW takes the mode that VZ_FFT_MODE names
    // instead, if any (fft_mode_from_environment), unless `source` says the
    // mode is meant as given; other modes are taken as given.
    explicit FftEngine(uint32_t mode = FFT_MODE_FFTW, FftModeSource source = FFT_MODE_FOLLOWS_ENVIRONMENT);
    virtual ~FftEngine();

    FftEngine(const FftEngine&) = delete;
    FftEngine& operator=(const FftEngine&) = delete;

    // Stores both, unchecked. Jobs go to the runner only when both are non-null.
    bool SetRowRunner(void* context, FftRowRunner runner);
    // Stores the check; the first argument is dropped: the check gets the
    // context of SetRowRunner.
    bool SetAbortCheck(void* ignored, FftAbortCheck check);
    // FFT_BORDER_LEAVE or FFT_BORDER_REPEAT (FftBorderMode). Else status 8.
    bool SetBorderMode(int mode);
    int GetStatus() const { return status; }

    // Turns `image` (borrowed; one 8-bit channel in practice) into the kernel
    // spectrum, with `margin` pixels of room kept around it.
    bool PrepareKernel(ImageRec* image, uint32_t margin);
    // Takes the frame to convolve; it must be of the PSF image's size.
    bool SetInput(ImageRec* image);
    // Convolves the input into `output` (a copy of the input, borrowed). `mask`
    // must hold 1, 2 and 4; 8 adds alpha.
    bool Run(ImageRec* output, uint32_t mask);
    // Convolves one channel of width x height float samples with the prepared
    // kernel and writes the result into `destination`, which may be the source
    // itself. The samples are taken as they are: no colour transform, no
    // emphasis, no clamp and no quantisation, so negative and above-1 values
    // keep their weight and a channel's sum is kept (the kernel sums to 1;
    // with FFT_EDGE_ZERO only what spreads beyond the frame is lost). Every
    // row of the frame is convolved, whatever the row runner's split. The
    // transforms are those of the engine's mode: single precision in
    // FFT_MODE_FAST_FLOAT, double otherwise. A NaN or infinity spreads over the
    // whole channel: the caller replaces them first.
    //
    // false with status FFT_ERR_NOT_PREPARED when no kernel is prepared for
    // frames of width x height, FFT_ERR_ARGUMENT for a null channel or an edge
    // outside FftEdge, FFT_ERR_MEMORY or FFT_ERR_PLAN when the work plane or
    // its plans cannot be made; the destination is then untouched. A stop by
    // the abort check returns true with the destination partly written.
    // Uses the work plane and spectrum that Run uses; the planes Run keeps
    // between its passes are not touched.
    bool ConvolveFloat(const FftFloatChannel& source, const FftFloatChannel& destination, int width, int height,
                       FftEdge edge = FFT_EDGE_REPEAT);
    // Clamped to 0..500.
    void SetBrightEmphasis(float emphasis);
    void SetAlphaEmphasis(int flag);
    bool SetPixelAspect(float x, float y);

    // Draws an aperture polygon into psfImage and prepares it as the kernel.
    bool BuildShapePsf(int width, int height, int shape, float radius1, float radius2, float rotation, int sides);
    // Cuts a soft-rimmed disc out of `source` into psfImage and prepares it.
    bool BuildImagePsf(const ImageRec* source, int centreX, int centreY, float radius, float softness);

    // Installs (or, with null, removes) the failure hook and its context.
    void SetFailureHook(void* context, FftFailureHook hook);

    // Runs `job` over rows 0..count-1 through the runner, or inline without one.
    void RunRowJob(FftRowJob job, int count);

    // The size rules, in one place for PrepareKernel, the PSF builders and any
    // caller that asks ahead what a frame will need.
    //
    // The largest side of a transform in `mode`: 8192 for mode 4, 16384 for
    // the fast modes.
    static int64_t LargestSide(uint32_t mode);
    // The transform of `mode` for a width x height image with `margin` pixels
    // kept on every side: mode 4 takes the next power of two of the larger of
    // width and height plus twice the margin for both sides; the fast modes
    // the next size of factors 2, 3, 5 and 7 for each side by itself. The
    // sides go to *sideX and *sideY (whether or not they fit); true when the
    // engine takes them (the larger side from 2 to LargestSide).
    static bool TransformSize(uint32_t mode, int64_t width, int64_t height, uint32_t margin, int64_t* sideX,
                              int64_t* sideY);
    // The blur's reach in pixels of a shape kernel (BuildShapePsf): radius1
    // when it is the greater, else radius2, before any clamp.
    static float ShapePsfReach(float radius1, float radius2);
    // The reach of an image kernel (BuildImagePsf): radius plus the softness,
    // which is at least 1.
    static float ImagePsfReach(float radius, float softness);
    // The margin a PSF builder keeps for a reach: (int)ceil(reach) + 1. A reach
    // too large to convert gives a margin beyond every transform side, and one
    // at or below -2 a negative margin, which as unsigned is huge too.
    static uint32_t PadMargin(float reach);

    // The smallest power of two at or above n (1 for n below 2); the exponent
    // goes to *exponent when asked.
    static int nextPowerOfTwo(int n, int* exponent = nullptr);
    // The smallest size at or above n whose only prime factors are 2, 3, 5 and 7
    // (1 for n below 2; n at most 2^30): the side of the fast modes.
    static int nextFastSize(int n);

    // Fields, in the engine's documented order. Public so that row jobs, PSF
    // builders and tests can see the state they work on.
    ImageRec* kernelSource;
    ImageRec* inputImage;
    fftw_plan kernelForwardPlan;
    fftw_plan workForwardPlan;
    fftw_plan workInversePlan;
    double* kernelReal;
    fftw_complex* kernelSpectrum;
    double* workReal;
    fftw_complex* workSpectrum;
    double* lumaPlane;
    double* chromaAPlane;
    double* chromaBPlane;
    uint32_t threadsReady;
    uint32_t processorCount;
    uint32_t useWisdom;
    uint32_t wisdomLoaded;
    int psfWidth;
    int psfHeight;
    int paddedWidth;
    int paddedHeight;
    int offsetX;
    int offsetY;
    int padMargin;
    double* jobBuffer;
    uint8_t jobNormalise;
    ImageRec* jobSource;
    int jobBorderMode;
    float brightEmphasis;
    uint8_t emphasiseAlpha;
    ImageRec* jobOutput;
    int jobChannelBit;
    int borderMode;
    ImageRec* psfImage;
    // Atomic: every row job sets it to FFT_OK on each of its four threads.
    std::atomic<int> status;
    void* callbackContext;
    FftRowRunner rowRunner;
    FftAbortCheck abortCheck;
    float pixelAspectX;
    float pixelAspectY;
    uint32_t mode;

    // Planner calls made by this engine; lets callers see that plans were kept.
    uint32_t plansMade;
    // PrepareKernel calls made on this engine; lets callers see that a kernel was kept.
    uint32_t kernelsPrepared;
    // The image size and transform size that the current kernel spectrum and
    // offsets were made for; -1 while no PrepareKernel has succeeded since the
    // last attempt. Run convolves only frames of this size.
    int kernelWidth;
    int kernelHeight;
    int kernelPaddedWidth;
    int kernelPaddedHeight;
    void* failureContext;
    FftFailureHook failureHook;
    // Planes and plans of FFT_MODE_FAST_FLOAT; null in the other modes.
    FftSinglePlanes single;
    // Row-job parameters of ConvolveFloat: the channels read and written, the
    // frame's height (the jobs stop there when their count is rounded up) and
    // the edge.
    FftFloatChannel jobFloatSource;
    FftFloatChannel jobFloatDestination;
    int jobFloatHeight;
    int jobFloatEdge;

    // Row jobs and passes of PrepareKernel and Run.
    static void loadKernelRows(FftEngine* engine, int first, int last);
    static void loadChannelRows(FftEngine* engine, int first, int last);
    static void multiplySpectrumRows(FftEngine* engine, int first, int last);
    static void storeFrameRows(FftEngine* engine, int first, int last);
    // ConvolveFloat's passes: the channel into the work plane with its margin
    // columns, and the work plane back into the channel, scaled.
    static void loadFloatRows(FftEngine* engine, int first, int last);
    static void storeFloatRows(FftEngine* engine, int first, int last);
    // Rotates the plane so that its centre sample moves to the origin, and scales
    // it to sum 1. Returns a status code.
    static int normaliseAndCentreKernel(double* plane, int width, int height);
    // Copies row `top` into the rows above it and the image's last row into the
    // rows below it.
    static void extendRows(const ImageRec* image, double* plane, int top, int stride, int rowLength, int rows);

private:
    enum class PlanKind { KernelForward, WorkForward, WorkInverse };

    // Whether the mode chooses width and height apart, and whether its planes
    // are single precision.
    bool fastSizes() const { return mode == FFT_MODE_FAST || mode == FFT_MODE_FAST_FLOAT; }
    bool singlePrecision() const { return mode == FFT_MODE_FAST_FLOAT; }
    // A plane is paddedHeight rows of paddedWidth samples; its spectrum, in
    // FFTW's 2-D r2c layout, paddedHeight rows of paddedWidth / 2 + 1 complex
    // samples. Mode 4's square gives its S x (S/2 + 1).
    size_t planeSamples() const { return static_cast<size_t>(paddedWidth) * paddedHeight; }
    int spectrumRows() const { return paddedHeight; }
    int spectrumRowLength() const { return paddedWidth / 2 + 1; }
    size_t spectrumSamples() const { return static_cast<size_t>(spectrumRows()) * spectrumRowLength(); }
    // The row count that the multiply job is run over.
    int spectrumJobCount() const;
    // Makes the plan of `kind`, of the mode's precision, if its field is null;
    // status 9 and false on failure.
    bool makePlan(PlanKind kind);
    template <typename Real> bool makePlanOf(PlanKind kind);
    // PrepareKernel after the size and resize rules: planes, plan, load, centring
    // and the forward transform, in planes of sample type Real.
    template <typename Real> bool preparePlanes(ImageRec* image);
    // Run after its checks, in planes of sample type Real.
    template <typename Real> bool runChannels(ImageRec* output, uint32_t mask, int channels);
    // ConvolveFloat after its checks, in planes of sample type Real.
    template <typename Real> bool convolveFloatIn();
    // The work plane and spectrum and their two plans, made if missing; false
    // with status 2 or 9 when they cannot be.
    template <typename Real> bool ensureWorkPlanes();
    // Planner flags: FFTW_ESTIMATE, or FFTW_MEASURE with wisdom.
    unsigned planFlags() const;
    // Frees the seven planes (of both precisions) and nulls their fields.
    void freePlanes();
    // Destroys the three plans (of both precisions) and nulls their fields.
    void destroyPlans();
    // True when the failure hook asks for `resource` to fail.
    bool injectedFailure(FftResource resource) const
    {
        return failureHook && failureHook(failureContext, resource) != 0;
    }
    // FFTW's malloc for planes of sample type Real, through the failure hook.
    template <typename Real> void* allocatePlane(size_t bytes) const
    {
        return injectedFailure(FFT_RESOURCE_PLANE) ? nullptr : Fftw<Real>::allocate(bytes);
    }
    // Allocates `field` with FFTW's malloc and clears it, if it is null. Status 2
    // and false when FFTW has no memory; an existing block is left as it is.
    template <typename Real, typename T> bool ensureCleared(T*& field, size_t bytes)
    {
        if (field)
            return true;
        field = static_cast<T*>(allocatePlane<Real>(bytes));
        if (!field) {
            status = FFT_ERR_MEMORY;
            return false;
        }
        std::memset(static_cast<void*>(field), 0, bytes);
        return true;
    }
    // True when the kernel in force was prepared for frames of width x height at
    // the present transform size, with all its planes and its plan in place.
    bool kernelServes(int width, int height) const;
    // Copies the work plane into `plane`, allocating it on first use.
    template <typename Real> bool keepPlane(Real*& plane);
    // Reads the wisdom file into FFTW's planner; true on success.
    bool loadWisdom();
    // Writes FFTW's wisdom to the wisdom file; false if it cannot be opened.
    bool saveWisdom();
    // Makes psfImage a one-channel 8-bit image of width x height, keeping the
    // current one when its size matches; status FFT_ERR_MEMORY and false when
    // it cannot be made. The pixels are left as they are.
    bool acquirePsfImage(int width, int height);
};
