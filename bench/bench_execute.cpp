// Plug::Execute on a full-HD frame, in float and 8-bit host formats, beside the
// engine's Run with the same kernel: the host path's own cost is the format
// conversions, the channel merge and the frames.
#include <benchmark/benchmark.h>

#include "effect/Lumenveil.h"
#include "host/LumenveilProperties.h"
#include "host/Plug.h"
#include "hostsdk/IDSImage.h"
#include "hostsdk/image_formats.h"

namespace {

constexpr int kWidth = 1920, kHeight = 1080;

struct HostScene {
    Plug* effect = new Plug();
    MemoryImage* input;
    MemoryImage* output;
    ImageEffectHost host;
    explicit HostScene(const GUID& format)
        : input(MemoryImage::Create(format, kWidth, kHeight)), output(MemoryImage::Create(format, kWidth, kHeight))
    {
        for (size_t i = 0; i < input->Bytes(); ++i)
            input->Data()[i] = static_cast<uint8_t>((i * 2654435761u) >> 26);
        if (format == MFIF_RGBA_FLOAT) {
            auto* f = reinterpret_cast<float*>(input->Data());
            for (size_t i = 0; i < input->Bytes() / 4; ++i)
                f[i] = static_cast<float>((i * 2654435761u) >> 20 & 1023) / 1023.0f;
        }
        effect->radiusX = 29.0 / (0.5 * kWidth);  // a disc of 29 px, S = 2048
        effect->brightEmphasis = 4.0;
        effect->SetEffectHost(&host);
        effect->SetInput(input);
        effect->SetOutput(output);
    }
    ~HostScene()
    {
        effect->Release();
        input->Release();
        output->Release();
    }
};

void BM_Execute(benchmark::State& state, const GUID* format)
{
    HostScene scene(*format);
    scene.effect->Execute(0.0);  // kernel and plans
    for (auto _ : state)
        scene.effect->Execute(0.0);
}
BENCHMARK_CAPTURE(BM_Execute, rgba_float, &MFIF_RGBA_FLOAT)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(BM_Execute, rgba_8bit, &MFIF_RGBA_RAW_32)->Unit(benchmark::kMillisecond)->UseRealTime();

// The engine's Run alone on the same kernel, as the baseline.
void BM_ExecuteBareRun(benchmark::State& state)
{
    HostScene scene(MFIF_RGBA_FLOAT);
    scene.effect->Execute(0.0);
    FftEngine& engine = *scene.effect->lumenveil->engine;
    ImageRec* frame = image_create(kWidth, kHeight, 4, IMAGE_U16, 1);
    ImageRec* out = image_clone(frame);
    engine.SetInput(frame);
    for (auto _ : state)
        engine.Run(out, FFT_MASK_COLOUR_ALPHA);
    image_free(frame);
    image_free(out);
}
BENCHMARK(BM_ExecuteBareRun)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
