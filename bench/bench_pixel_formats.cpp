// Host pixel-format conversions of a 1920 x 1080 frame: decode of the whole
// buffer into a new VZImage, and encode of a frame back, for 8-bit RGBA (1),
// 8-bit Cb Y Cr Y 601 (3), 2.14 RGBA (7) and float RGBA (12).
#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "generic/library/HostPixelFormat.h"

namespace {

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;

size_t bufferBytes(int code)
{
    switch (code) {
    case 1: return size_t{kWidth} * kHeight * 4;
    case 3: return size_t{kWidth} * kHeight * 2;
    case 7: return size_t{kWidth} * kHeight * 8;
    default: return size_t{kWidth} * kHeight * 16;  // 12
    }
}

// A smooth colour frame with some alpha, and the buffer it encodes to.
struct Scene {
    explicit Scene(int code) : frame(kWidth, kHeight, 0, static_cast<uint16_t*>(nullptr), 0u), buffer(bufferBytes(code))
    {
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x) {
                uint16_t* p = frame.rows[y] + 4 * x;
                p[0] = static_cast<uint16_t>(x * 17);
                p[1] = static_cast<uint16_t>(y * 30);
                p[2] = static_cast<uint16_t>((x + y) * 11);
                p[3] = static_cast<uint16_t>(32767 - y * 10);
            }
        vzImageToHost(&frame, buffer.data(), kWidth, kHeight, kWidth, kHeight, 0, 0, code, 0);
    }
    VZImage frame;
    std::vector<uint8_t> buffer;
};

void BM_HostDecode(benchmark::State& state)
{
    const int code = static_cast<int>(state.range(0));
    Scene scene(code);
    for (auto _ : state) {
        std::unique_ptr<VZImage> image(
            hostToVzImage(scene.buffer.data(), kWidth, kHeight, kWidth, kHeight, 0, 0, code, 0));
        benchmark::DoNotOptimize(image->pixels);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(scene.buffer.size()));
}

void BM_HostEncode(benchmark::State& state)
{
    const int code = static_cast<int>(state.range(0));
    Scene scene(code);
    for (auto _ : state) {
        vzImageToHost(&scene.frame, scene.buffer.data(), kWidth, kHeight, kWidth, kHeight, 0, 0, code, 0);
        benchmark::DoNotOptimize(scene.buffer.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(scene.buffer.size()));
}

BENCHMARK(BM_HostDecode)->ArgName("code")->Arg(1)->Arg(3)->Arg(7)->Arg(12)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_HostEncode)->ArgName("code")->Arg(1)->Arg(3)->Arg(7)->Arg(12)->Unit(benchmark::kMillisecond);

}  // namespace
