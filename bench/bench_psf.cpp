// Shape PSF build on a full-HD frame: the whole BuildShapePsf (clear, polygon,
// rasterise, PrepareKernel at S = 2048) for a circle and a hexagon, and the
// drawing alone (clear and rasterise), at radii of 29 and 96 pixels.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>

#include "generic/library/PluginVZ.h"
#include "vzlibs/fftlib/FftEngine.h"
#include "vzlibs/fftlib/polygon.h"
#include "vzlibs/imagelib/imagelib.h"

namespace {

constexpr int kWidth = 1920, kHeight = 1080;

// Steady state: the first call makes the image, planes and plan; the timed
// calls reuse them, as frames after the first do.
void BM_BuildShapePsf(benchmark::State& state)
{
    const int shape = static_cast<int>(state.range(0));
    const float radius = static_cast<float>(state.range(1));
    FftEngine engine;
    PluginVZ context;
    engine.SetRowRunner(&context, PluginVZ::RunRows);
    if (!engine.BuildShapePsf(kWidth, kHeight, shape, radius, radius, 0.0f, 6)) {
        state.SkipWithError("BuildShapePsf failed");
        return;
    }
    for (auto _ : state) {
        const bool ok = engine.BuildShapePsf(kWidth, kHeight, shape, radius, radius, 0.0f, 6);
        benchmark::DoNotOptimize(ok);
    }
    state.SetLabel(shape == 1 ? "circle" : "hexagon");
}
BENCHMARK(BM_BuildShapePsf)
    ->ArgNames({"shape", "radius"})
    ->Args({1, 29})
    ->Args({1, 96})
    ->Args({2, 29})
    ->Args({2, 96})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

// The drawing part alone: clearing the frame-sized picture and rasterising the
// 50-sided circle into it.
void BM_RasteriseCircle(benchmark::State& state)
{
    const float radius = static_cast<float>(state.range(0));
    ImageRec* image = image_create(kWidth, kHeight, 1, IMAGE_U8, 1);
    PolygonList circle{};
    const float step = 6.2831855f / POLYGON_MAX_VERTICES;
    for (int i = 0; i < POLYGON_MAX_VERTICES; ++i) {
        circle.points[i][0] = std::cos(static_cast<float>(i) * step) * radius + kWidth * 0.5f;
        circle.points[i][1] = std::sin(static_cast<float>(i) * step) * radius + kHeight * 0.5f;
    }
    circle.count = POLYGON_MAX_VERTICES;
    for (auto _ : state) {
        std::memset(image->pixels, 0, static_cast<size_t>(image->rowBytes) * kHeight);
        rasterise_polygon(image, &circle);
        benchmark::ClobberMemory();
    }
    image_free(image);
}
BENCHMARK(BM_RasteriseCircle)->ArgName("radius")->Arg(29)->Arg(96)->Unit(benchmark::kMicrosecond);

}  // namespace
