// The scene-linear render beside the 16-bit one, both through Plug::Execute on
// a full-HD float R G B A frame in the same engine: the linear road convolves
// the four channels as floats, the 16-bit one converts to 15-bit frames and
// convolves luma, chroma and alpha. Light reaches 40 in the frame.
#include <benchmark/benchmark.h>

#include "effect/Lumenveil.h"
#include "host/Plug.h"
#include "hostsdk/IDSImage.h"
#include "hostsdk/image_formats.h"
#include "vzlibs/fftlib/fft_modes.h"

namespace {

constexpr int kWidth = 1920, kHeight = 1080;

struct LinearScene {
    Plug* effect;
    MemoryImage* input = MemoryImage::Create(MFIF_RGBA_FLOAT, kWidth, kHeight);
    MemoryImage* output = MemoryImage::Create(MFIF_RGBA_FLOAT, kWidth, kHeight);
    ImageEffectHost host;
    LinearScene(uint32_t engine, bool linear, double highlightEmphasis) : effect(new Plug())
    {
        effect->engineMode = fft_mode_index(engine);
        auto* f = reinterpret_cast<float*>(input->Data());
        for (size_t i = 0; i < input->Bytes() / 4; ++i)
            f[i] = i % 4 == 3 ? 1.0f : static_cast<float>((i * 2654435761u) >> 20 & 1023) / 1023.0f;
        for (size_t i = 0; i < input->Bytes() / 4; i += 4 * 997)
            f[i] = f[i + 1] = f[i + 2] = 40.0f;  // scattered lights
        effect->radiusX = 29.0 / (0.5 * kWidth);  // a disc of 29 px
        effect->linear = linear ? 1 : 0;
        effect->highlightEmphasis = highlightEmphasis;
        effect->SetEffectHost(&host);
        effect->SetInput(input);
        effect->SetOutput(output);
    }
    ~LinearScene()
    {
        effect->Release();
        input->Release();
        output->Release();
    }
};

// range(0): 1 renders in scene-linear light, 0 through 16-bit frames (with the
// default Bright Emphasis of 50); range(1): the highlight emphasis.
void BM_LinearExecute(benchmark::State& state, uint32_t engine)
{
    LinearScene scene(engine, state.range(0) != 0, static_cast<double>(state.range(1)));
    if (scene.effect->Execute(0.0) != S_OK)  // kernel and plans
        state.SkipWithError("Execute failed");
    for (auto _ : state)
        scene.effect->Execute(0.0);
}
BENCHMARK_CAPTURE(BM_LinearExecute, fast_float, FFT_MODE_FAST_FLOAT)
    ->ArgNames({"linear", "highlight"})
    ->Args({0, 1})
    ->Args({1, 1})
    ->Args({1, 10})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(BM_LinearExecute, fast, FFT_MODE_FAST)
    ->ArgNames({"linear", "highlight"})
    ->Args({0, 1})
    ->Args({1, 1})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace
