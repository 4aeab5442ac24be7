// Lumenveil::Render on a full-HD frame beside the bare engine Run it wraps:
// still aperture (kernel kept) and moving aperture (kernel rebuilt each frame).
// The render's own work is the frame conversions and, with alpha off, the
// alpha copy.
#include <benchmark/benchmark.h>

#include <memory>

#include "effect/Lumenveil.h"
#include "generic/library/VZImage.h"

namespace {

constexpr int kWidth = 1920, kHeight = 1080;
constexpr double kRadiusX = 29.0 / (0.5 * kWidth);  // a disc of 29 px, S = 2048

std::unique_ptr<VZImage> frame()
{
    auto image = std::make_unique<VZImage>(kWidth, kHeight, 0, nullptr, 0u);
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth * 4; ++x)
            image->rows[y][x] = static_cast<uint16_t>(((y * 7919u + x * 104729u) >> 3) & 0x7FFF);
    return image;
}

struct Scene {
    std::unique_ptr<VZImage> in = frame(), out = frame();
    Lumenveil fx;
    explicit Scene(bool alpha)
    {
        fx.shape.value = SHAPE_CIRCLE;
        fx.radiusX.value = kRadiusX;
        fx.brightEmphasis.value = 4.0;
        fx.alphaEnabled = alpha ? 1 : 0;
        fx.input.image = in.get();
        fx.output.image = out.get();
    }
};

// range(0): 1 moves the aperture every frame; range(1): 1 renders alpha (mask 15).
void BM_Render(benchmark::State& state)
{
    Scene scene(state.range(1) != 0);
    const bool moving = state.range(0) != 0;
    scene.fx.Render();  // the first frame builds the kernel and the plans
    int frameNumber = 0;
    for (auto _ : state) {
        if (moving)
            scene.fx.rotation.value = (++frameNumber % 2) * 0.5;
        scene.fx.Render();
    }
    state.counters["kernels"] = scene.fx.engine->kernelsPrepared;
}
BENCHMARK(BM_Render)
    ->ArgNames({"moving", "alpha"})
    ->Args({0, 1})
    ->Args({0, 0})
    ->Args({1, 1})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

// The engine's Run alone, with the render's kernel and runner, as the baseline.
void BM_RenderBareRun(benchmark::State& state)
{
    Scene scene(true);
    scene.fx.Render();
    ImageRec* input = image_from_vzimage(scene.in.get());
    ImageRec* output = image_clone(input);
    FftEngine& engine = *scene.fx.engine;
    engine.SetInput(input);
    for (auto _ : state)
        engine.Run(output, FFT_MASK_COLOUR_ALPHA);
    image_free(input);
    image_free(output);
}
BENCHMARK(BM_RenderBareRun)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
