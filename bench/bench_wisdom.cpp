// Planning cost and steady-state speed of the engine, quick plans against
// measured ones, on a 1920 x 1080 frame (transform side S = 2048).
//
//   Wisdom/FirstFrame/estimate    a new engine's first frame: three quick plans,
//                                 kernel preparation and one Run
//   Wisdom/SteadyRun/estimate     Run alone, plans made
// With VZ_USE_FFTW_WISDOM set (any value) at start-up, also:
//   Wisdom/FirstFrame/measured_cold       no wisdom anywhere: the planner measures
//   Wisdom/FirstFrame/measured_from_file  a new start reading the wisdom file
//   Wisdom/SteadyRun/measured             Run alone, measured plans
// The wisdom file is the one in the settings directory (VZ_HOME_DIR); the cold
// case moves it aside and puts it back afterwards.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>

#include "generic/library/PluginVZ.h"
#include "vzlibs/baselib/machine.h"
#include "vzlibs/baselib/paths.h"
#include "vzlibs/fftlib/FftEngine.h"
#include "vzlibs/imagelib/imagelib.h"

namespace {

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr uint32_t kMargin = 5;  // 1920 + 10 rounds up to S = 2048

struct ImageDeleter {
    void operator()(ImageRec* image) const { image_free(image); }
};
using ImagePtr = std::unique_ptr<ImageRec, ImageDeleter>;

// A disc of radius 24 px as the PSF, and a 16-bit four-channel frame of gradients.
struct Scene {
    ImagePtr psf{image_create(kWidth, kHeight, 1, IMAGE_U8, 1)};
    ImagePtr input{image_create(kWidth, kHeight, 4, IMAGE_U16, 1)};
    ImagePtr output{image_create(kWidth, kHeight, 4, IMAGE_U16, 1)};
    PluginVZ runner;
    Scene()
    {
        auto* p = static_cast<uint8_t*>(psf->pixels);
        std::memset(p, 0, static_cast<size_t>(psf->rowBytes) * kHeight);
        for (int y = -24; y <= 24; ++y)
            for (int x = -24; x <= 24; ++x)
                if (x * x + y * y <= 24 * 24)
                    p[(kHeight / 2 + y) * kWidth + kWidth / 2 + x] = 255;
        for (int y = 0; y < kHeight; ++y) {
            auto* row = reinterpret_cast<uint16_t*>(static_cast<uint8_t*>(input->pixels) +
                                                    static_cast<size_t>(y) * input->rowBytes);
            for (int x = 0; x < kWidth; ++x) {
                row[4 * x + 0] = static_cast<uint16_t>((x * 17) & 0x7FFF);
                row[4 * x + 1] = static_cast<uint16_t>((y * 29) & 0x7FFF);
                row[4 * x + 2] = static_cast<uint16_t>(((x + y) * 11) & 0x7FFF);
                row[4 * x + 3] = 32767;
            }
        }
        std::memcpy(output->pixels, input->pixels, static_cast<size_t>(input->rowBytes) * kHeight);
    }
};

Scene& scene()
{
    static Scene s;
    return s;
}

// Engines are made with or without wisdom by hiding the variable for a moment.
std::unique_ptr<FftEngine> makeEngine(bool wisdom)
{
    const char* value = std::getenv("VZ_USE_FFTW_WISDOM");
    const std::string saved = value ? value : "";
    if (!wisdom && value)
        unsetenv("VZ_USE_FFTW_WISDOM");
    auto engine = std::make_unique<FftEngine>(FFT_MODE_FFTW);
    if (!wisdom && value)
        setenv("VZ_USE_FFTW_WISDOM", saved.c_str(), 1);
    engine->SetRowRunner(&scene().runner, PluginVZ::RunRows);
    return engine;
}

// One first frame: prepare (kernel plan) and run (two work plans), timed apart.
bool firstFrame(FftEngine& engine, double& prepareSeconds, double& runSeconds)
{
    Scene& s = scene();
    const double t0 = get_time_seconds();
    if (!engine.PrepareKernel(s.psf.get(), kMargin))
        return false;
    const double t1 = get_time_seconds();
    if (!engine.SetInput(s.input.get()) || !engine.Run(s.output.get(), 7))
        return false;
    prepareSeconds += t1 - t0;
    runSeconds += get_time_seconds() - t1;
    return true;
}

// Puts the wisdom of a file moved aside back, together with what was just
// learnt, so that a person's file loses nothing to the benchmark.
void mergeAsideIntoFile(const std::filesystem::path& aside, const std::filesystem::path& file)
{
    fftw_forget_wisdom();
    for (const auto& path : {file, aside})
        if (FILE* in = std::fopen(path.c_str(), "r")) {
            fftw_import_wisdom_from_file(in);
            std::fclose(in);
        }
    if (FILE* out = std::fopen(file.c_str(), "w")) {
        fftw_export_wisdom_to_file(out);
        std::fclose(out);
        std::filesystem::remove(aside);
    }
    fftw_forget_wisdom();
}

enum class Planning { Estimate, MeasuredCold, MeasuredFromFile };

void BM_FirstFrame(benchmark::State& state, Planning planning)
{
    const std::filesystem::path file =
        std::filesystem::path(get_standard_directory(VZ_DIR_SETTINGS)) / "fftw3_wisdom_vz.dat";
    const std::filesystem::path aside = file.string() + ".bench-aside";
    std::error_code ignored;
    if (planning == Planning::MeasuredCold && std::filesystem::exists(file))
        std::filesystem::rename(file, aside, ignored);
    if (planning == Planning::MeasuredFromFile && !std::filesystem::exists(file)) {
        state.SkipWithError("no wisdom file: run measured_cold first, or check the settings directory");
        return;
    }

    double prepareSeconds = 0.0, runSeconds = 0.0;
    for (auto _ : state) {
        state.PauseTiming();
        fftw_forget_wisdom();  // a new start: FFTW knows nothing but what it reads
        if (planning == Planning::MeasuredCold)
            std::filesystem::remove(file, ignored);
        state.ResumeTiming();

        auto engine = makeEngine(planning != Planning::Estimate);
        if (!firstFrame(*engine, prepareSeconds, runSeconds)) {
            state.SkipWithError("engine failed");
            break;
        }
        state.PauseTiming();
        engine.reset();  // teardown writes the file; not part of the first frame
        state.ResumeTiming();
    }
    const double n = static_cast<double>(state.iterations() ? state.iterations() : 1);
    state.counters["prepare_ms"] = 1e3 * prepareSeconds / n;
    state.counters["first_run_ms"] = 1e3 * runSeconds / n;

    if (planning == Planning::MeasuredCold && std::filesystem::exists(aside))
        mergeAsideIntoFile(aside, file);
}

void BM_SteadyRun(benchmark::State& state, bool wisdom)
{
    fftw_forget_wisdom();
    auto engine = makeEngine(wisdom);
    double prepareSeconds = 0.0, runSeconds = 0.0;
    if (!firstFrame(*engine, prepareSeconds, runSeconds)) {
        state.SkipWithError("engine failed");
        return;
    }
    Scene& s = scene();
    for (auto _ : state) {
        if (!engine->SetInput(s.input.get()) || !engine->Run(s.output.get(), 7)) {
            state.SkipWithError("Run failed");
            break;
        }
    }
    state.counters["plans_made"] = engine->plansMade;
    state.counters["wisdom_loaded"] = engine->wisdomLoaded;
}

// Registered at start-up; the measured cases only when wisdom is switched on.
const bool registered = [] {
    using benchmark::RegisterBenchmark;
    auto common = [](benchmark::internal::Benchmark* b, int iterations) {
        b->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(iterations);
    };
    common(RegisterBenchmark("Wisdom/FirstFrame/estimate", BM_FirstFrame, Planning::Estimate), 3);
    common(RegisterBenchmark("Wisdom/SteadyRun/estimate", BM_SteadyRun, false), 5);
    if (std::getenv("VZ_USE_FFTW_WISDOM")) {
        common(RegisterBenchmark("Wisdom/FirstFrame/measured_cold", BM_FirstFrame, Planning::MeasuredCold), 1);
        common(RegisterBenchmark("Wisdom/FirstFrame/measured_from_file", BM_FirstFrame, Planning::MeasuredFromFile),
               3);
        common(RegisterBenchmark("Wisdom/SteadyRun/measured", BM_SteadyRun, true), 5);
    }
    return true;
}();

}  // namespace
