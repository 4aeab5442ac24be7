// Lumenveil Depth on a full-HD 16-bit RGB frame whose depth is a ramp from
// the focus (radius 0) at the left to a radius of 30 pixels at the right,
// against the plain effect at radius 30, both in the fast-float engine. The
// depth render's kernels stay cached from frame to frame, as the plain
// effect's kernel does; `DepthFirstFrame` builds them all anew each time.
#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

#include "effect/LumenveilDepth.h"
#include "generic/library/VZImage.h"

namespace {

constexpr int kWidth = 1920, kHeight = 1080;
constexpr double kRadius = 30.0;
// Focus 1; depth z at column x gives r_inf (z - 1) / z, from 0 to 30 px with r_inf = 60.
constexpr double kRadiusInfinity = 2.0 * kRadius;

std::unique_ptr<VZImage> frame()
{
    auto image = std::make_unique<VZImage>(kWidth, kHeight, 0, nullptr, 0u);
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth * 4; ++x)
            image->rows[y][x] = x % 4 == 3 ? 32767 : static_cast<uint16_t>(((y * 7919u + x * 104729u) >> 3) & 0x7FFF);
    return image;
}

struct Scene {
    std::unique_ptr<VZImage> in = frame(), out = frame();
    std::vector<float> depth;
    LumenveilDepth depthFx;
    Lumenveil plain;
    Scene()
    {
        for (Lumenveil* fx : {static_cast<Lumenveil*>(&depthFx), &plain}) {
            fx->SelectEngine(FFT_MODE_FAST_FLOAT);
            fx->shape.value = SHAPE_CIRCLE;
            fx->radiusX.value = fx->radiusY.value = kRadius / (0.5 * kWidth);
            fx->brightEmphasis.value = 50.0;
            fx->alphaEnabled = 1;
            fx->input.image = in.get();
            fx->output.image = out.get();
        }
        // Radius r at column x: r = 30 x / (W - 1) = 60 (z - 1) / z, so z = 60 / (60 - r).
        depth.resize(static_cast<size_t>(kWidth) * kHeight);
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x) {
                const double r = kRadius * x / (kWidth - 1);
                depth[static_cast<size_t>(y) * kWidth + x] = static_cast<float>(kRadiusInfinity / (kRadiusInfinity - r));
            }
        depthFx.depthSettings.radiusInfinity = kRadiusInfinity / (0.5 * kWidth);
        depthFx.depthSettings.focus = 1.0;
        depthFx.depthSettings.maxRadius = 0.3;
        depthFx.depth = DepthSamplesVZ{depth.data(), kWidth, kHeight, kWidth};
    }
};

void BM_DepthRamp(benchmark::State& state)
{
    Scene scene;
    scene.depthFx.Render();  // the first frame builds the kernels and plans
    for (auto _ : state)
        scene.depthFx.Render();
    state.counters["layers"] = scene.depthFx.layers.Count();
    state.counters["kernels"] = static_cast<double>(scene.depthFx.kernels.Count());
}
BENCHMARK(BM_DepthRamp)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_DepthFirstFrame(benchmark::State& state)
{
    Scene scene;
    for (auto _ : state) {
        scene.depthFx.SelectEngine(FFT_MODE_FAST);  // drops the cached kernels
        scene.depthFx.SelectEngine(FFT_MODE_FAST_FLOAT);
        scene.depthFx.Render();
    }
}
BENCHMARK(BM_DepthFirstFrame)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

void BM_PlainAtRadius30(benchmark::State& state)
{
    Scene scene;
    scene.plain.Render();
    for (auto _ : state)
        scene.plain.Render();
}
BENCHMARK(BM_PlainAtRadius30)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
