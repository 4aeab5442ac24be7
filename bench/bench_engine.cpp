// Steady-state FftEngine::Run on a full-HD, four-channel, 16-bit frame with a disc
// kernel of radius 29 (S = 2048), against the bare FFTW transforms the run needs:
// three r2c + c2r pairs for mask 7, four for mask 15.
#include <benchmark/benchmark.h>
#include <fftw3.h>

#include <cstring>
#include <memory>

#include "generic/library/PluginVZ.h"
#include "vzlibs/baselib/machine.h"
#include "vzlibs/fftlib/FftEngine.h"
#include "vzlibs/imagelib/imagelib.h"

namespace {

constexpr int kWidth = 1920, kHeight = 1080, kRadius = 29;

struct ImageDeleter {
    void operator()(ImageRec* rec) const { image_free(rec); }
};
using ImagePtr = std::unique_ptr<ImageRec, ImageDeleter>;

ImagePtr discPsf()
{
    ImagePtr psf(image_create(kWidth, kHeight, 1, 0, 1));
    auto* p = static_cast<uint8_t*>(psf->pixels);
    std::memset(p, 0, static_cast<size_t>(kWidth) * kHeight);
    for (int dy = -kRadius; dy <= kRadius; ++dy)
        for (int dx = -kRadius; dx <= kRadius; ++dx)
            if (dx * dx + dy * dy <= kRadius * kRadius)
                p[(kHeight / 2 + dy) * kWidth + kWidth / 2 + dx] = 255;
    return psf;
}

ImagePtr testFrame()
{
    ImagePtr frame(image_create(kWidth, kHeight, 4, 1, 1));
    auto* p = static_cast<uint16_t*>(frame->pixels);
    for (size_t i = 0; i < static_cast<size_t>(kWidth) * kHeight * 4; ++i)
        p[i] = static_cast<uint16_t>((i * 2654435761u) >> 16);
    return frame;
}

// The bare transforms at S, planned as the engine plans them.
class BareTransforms {
public:
    explicit BareTransforms(int S)
        : real(static_cast<double*>(fftw_malloc(sizeof(double) * S * S))),
          spectrum(static_cast<fftw_complex*>(fftw_malloc(sizeof(fftw_complex) * S * (S / 2 + 1))))
    {
        std::memset(real, 0, sizeof(double) * S * S);
        fftw_plan_with_nthreads(get_processor_count());
        forward = fftw_plan_dft_r2c_2d(S, S, real, spectrum, FFTW_ESTIMATE);
        inverse = fftw_plan_dft_c2r_2d(S, S, spectrum, real, FFTW_ESTIMATE);
    }
    ~BareTransforms()
    {
        fftw_destroy_plan(forward);
        fftw_destroy_plan(inverse);
        fftw_free(real);
        fftw_free(spectrum);
    }
    void run(int pairs)
    {
        for (int p = 0; p < pairs; ++p) {
            fftw_execute(forward);
            fftw_execute(inverse);
        }
    }
    // Seconds per run(pairs), averaged over `repeats` after one warm-up.
    double seconds(int pairs, int repeats)
    {
        run(pairs);
        const double start = get_time_seconds();
        for (int r = 0; r < repeats; ++r)
            run(pairs);
        return (get_time_seconds() - start) / repeats;
    }

private:
    double* real;
    fftw_complex* spectrum;
    fftw_plan forward = nullptr;
    fftw_plan inverse = nullptr;
};

void BM_EngineRun(benchmark::State& state)
{
    const uint32_t mask = static_cast<uint32_t>(state.range(0));
    const bool fourThreads = state.range(1) != 0;
    const int pairs = mask == 15 ? 4 : 3;
    ImagePtr psf = discPsf();
    ImagePtr frame = testFrame();
    ImagePtr out(image_clone(frame.get()));

    FftEngine engine;
    PluginVZ context;
    if (fourThreads)
        engine.SetRowRunner(&context, PluginVZ::RunRows);
    if (!engine.PrepareKernel(psf.get(), kRadius + 1) || !engine.SetInput(frame.get())) {
        state.SkipWithError("engine set-up failed");
        return;
    }
    engine.SetBrightEmphasis(4.0f);
    // First frame at this size: plans and planes are made here.
    if (!engine.Run(out.get(), mask)) {
        state.SkipWithError("first Run failed");
        return;
    }
    const double* planes[] = {engine.workReal, engine.lumaPlane, engine.chromaAPlane, engine.chromaBPlane};
    const uint32_t plans = engine.plansMade;

    const double start = get_time_seconds();
    int64_t runs = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(engine.Run(out.get(), mask));
        ++runs;
    }
    const double runSeconds = (get_time_seconds() - start) / static_cast<double>(runs);

    // Steady state: nothing allocated and nothing planned after the first frame.
    const double* after[] = {engine.workReal, engine.lumaPlane, engine.chromaAPlane, engine.chromaBPlane};
    if (std::memcmp(planes, after, sizeof planes) != 0 || engine.plansMade != plans)
        state.SkipWithError("Run reallocated or replanned in the steady state");

    BareTransforms bare(engine.paddedWidth);
    const double bareSeconds = bare.seconds(pairs, 5);
    state.counters["S"] = engine.paddedWidth;
    state.counters["pairs"] = pairs;
    state.counters["bare_ms"] = bareSeconds * 1e3;
    state.counters["run_over_bare"] = runSeconds / bareSeconds;
}
// Arguments: channel mask; row jobs on the four-thread runner (1) or inline (0).
BENCHMARK(BM_EngineRun)->ArgNames({"mask", "threads"})->Args({7, 1})->Args({15, 1})->Args({7, 0})->Args({15, 0})->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2.0);

void BM_BareTransformPairs(benchmark::State& state)
{
    const int pairs = static_cast<int>(state.range(0));
    BareTransforms bare(2048);
    bare.run(1);
    for (auto _ : state)
        bare.run(pairs);
}
BENCHMARK(BM_BareTransformPairs)->Arg(3)->Arg(4)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2.0);

}  // namespace
