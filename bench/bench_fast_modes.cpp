// The engine's three back ends side by side on a full-HD, four-channel, 16-bit
// frame (mask 15) with circle apertures of radius 28.8 and 96 px, row jobs on the
// four-thread runner, in the steady state:
//
//   FastModes/<mode>/r<radius>   mode: faithful (4), fast, fast-float
//     time          one Run (the first frame, which plans, is left out)
//     prepare_ms    one PrepareKernel of the builder's picture, plans made
//     planes_MiB    the seven planes a frame with alpha keeps
//     heap_MiB      what the engine's first frame took from the heap in all
//                   (planes, FFTW's plans and their buffers, the PSF picture)
//     W, H          the transform's sides
//
// Planner flags are the same for every mode: quick plans, or measured ones when
// VZ_USE_FFTW_WISDOM is set at start-up. VZ_FFT_MODE must be unset, or the
// faithful engine would not be mode 4.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstring>
#include <memory>

#include "generic/library/PluginVZ.h"
#include "vzlibs/baselib/machine.h"
#include "vzlibs/fftlib/FftEngine.h"
#include "vzlibs/imagelib/imagelib.h"

namespace {

constexpr int kWidth = 1920, kHeight = 1080;
constexpr int kShapeCircle = 1;
constexpr uint32_t kMaskWithAlpha = 15;
constexpr int kPrepareRepeats = 2;

struct ImageDeleter {
    void operator()(ImageRec* rec) const { image_free(rec); }
};
using ImagePtr = std::unique_ptr<ImageRec, ImageDeleter>;

ImagePtr testFrame()
{
    ImagePtr frame(image_create(kWidth, kHeight, 4, IMAGE_U16, 1));
    auto* p = static_cast<uint16_t*>(frame->pixels);
    for (size_t i = 0; i < static_cast<size_t>(kWidth) * kHeight * 4; ++i)
        p[i] = static_cast<uint16_t>((i * 2654435761u) >> 16);
    return frame;
}

double heapBytes()
{
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

// The bytes of the planes the engine holds: real planes of W x H samples,
// spectra of H x (W/2 + 1) complex samples, in the mode's precision.
double planeBytes(const FftEngine& e)
{
    const bool single = e.mode == FFT_MODE_FAST_FLOAT;
    const FftSinglePlanes& s = e.single;
    const void* planes[] = {single ? static_cast<const void*>(s.kernelReal) : e.kernelReal,
                            single ? static_cast<const void*>(s.workReal) : e.workReal,
                            single ? static_cast<const void*>(s.lumaPlane) : e.lumaPlane,
                            single ? static_cast<const void*>(s.chromaAPlane) : e.chromaAPlane,
                            single ? static_cast<const void*>(s.chromaBPlane) : e.chromaBPlane};
    const void* spectra[] = {single ? static_cast<const void*>(s.kernelSpectrum) : e.kernelSpectrum,
                             single ? static_cast<const void*>(s.workSpectrum) : e.workSpectrum};
    const double sample = single ? 4.0 : 8.0;
    const double plane = sample * e.paddedWidth * e.paddedHeight;
    const double spectrum = 2.0 * sample * e.paddedHeight * (e.paddedWidth / 2 + 1);
    double bytes = 0.0;
    for (const void* p : planes)
        bytes += p ? plane : 0.0;
    for (const void* p : spectra)
        bytes += p ? spectrum : 0.0;
    return bytes;
}

void BM_ModeRun(benchmark::State& state, uint32_t mode, float radius)
{
    ImagePtr frame = testFrame();
    ImagePtr out(image_clone(frame.get()));
    const double heapBefore = heapBytes();
    FftEngine engine(mode);
    if (engine.mode != mode) {
        state.SkipWithError("VZ_FFT_MODE is set: unset it to compare the modes");
        return;
    }
    PluginVZ context;
    engine.SetRowRunner(&context, PluginVZ::RunRows);
    engine.SetBrightEmphasis(4.0f);
    // First frame: picture, planes and plans are made here.
    if (!engine.BuildShapePsf(kWidth, kHeight, kShapeCircle, radius, radius, 0.0f, 0) ||
        !engine.SetInput(frame.get()) || !engine.Run(out.get(), kMaskWithAlpha)) {
        state.SkipWithError("first frame failed");
        return;
    }
    const double heapGrowth = heapBytes() - heapBefore;

    // Kernel preparation alone, on the picture the builder drew, plans made.
    const double start = get_time_seconds();
    for (int i = 0; i < kPrepareRepeats; ++i)
        if (!engine.PrepareKernel(engine.psfImage, static_cast<uint32_t>(engine.padMargin))) {
            state.SkipWithError("PrepareKernel failed");
            return;
        }
    const double prepareSeconds = (get_time_seconds() - start) / kPrepareRepeats;
    const uint32_t plans = engine.plansMade;

    for (auto _ : state)
        benchmark::DoNotOptimize(engine.Run(out.get(), kMaskWithAlpha));

    if (engine.plansMade != plans)
        state.SkipWithError("planned again in the steady state");
    state.counters["W"] = engine.paddedWidth;
    state.counters["H"] = engine.paddedHeight;
    state.counters["prepare_ms"] = prepareSeconds * 1e3;
    state.counters["planes_MiB"] = planeBytes(engine) / (1024.0 * 1024.0);
    state.counters["heap_MiB"] = heapGrowth / (1024.0 * 1024.0);
}

const bool registered = [] {
    struct Mode {
        const char* name;
        uint32_t mode;
    } modes[] = {{"faithful", FFT_MODE_FFTW}, {"fast", FFT_MODE_FAST}, {"fast-float", FFT_MODE_FAST_FLOAT}};
    struct Radius {
        const char* name;
        float pixels;
    } radii[] = {{"r28.8", 28.8f}, {"r96", 96.0f}};
    for (const Radius& r : radii)
        for (const Mode& m : modes) {
            const std::string name = std::string("FastModes/") + m.name + "/" + r.name;
            benchmark::RegisterBenchmark(name.c_str(), BM_ModeRun, m.mode, r.pixels)
                ->Unit(benchmark::kMillisecond)
                ->UseRealTime()
                ->Iterations(4);
        }
    return true;
}();

}  // namespace
