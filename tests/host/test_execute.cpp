// Execute through the module: presets, animation, every output format,
// channel selectors, fields, cancellation, clones and effects on two threads.
#include <condition_variable>
#include <mutex>
#include <thread>

#include "hostsdk/image_format_geometry.h"
#include "module_fixture.h"

namespace {

constexpr int W = 32, H = 24;

class Execute : public ModuleFixture {
protected:
    void SetUp() override
    {
        effect.p = create();
        set(effect.p, PROPID_BrightEmphasis, 1.0);
        set(effect.p, PROPID_RadiusX, 0.2);  // 0.2 x 0.5 x 32 = 3.2 px
        input.p = rgba8(W, H, [](int x, int y, int c) { return c == 3 ? 255 : (x == 16 && y == 12) ? 255 : 0; });
        output.p = MemoryImage::Create(MFIF_RGBA_RAW_32, W, H);
        connect(effect.p, input.p, output.p);
    }
    std::vector<uint8_t> run(IDSImageEffect* fx, MemoryImage* out, double time = 0.0)
    {
        std::memset(out->Data(), 0, out->Bytes());
        EXPECT_EQ(fx->Execute(time), S_OK);
        return {out->Data(), out->Data() + out->Bytes()};
    }
    Ref<IDSImageEffect> effect;
    Ref<MemoryImage> input, output;
};

TEST_F(Execute, PresetRoundTripGivesTheSameFrameAndBadPresetsChangeNothing)
{
    set(effect.p, PROPID_Shape, 2);
    set(effect.p, PROPID_Sides, 5);
    ASSERT_EQ(properties(effect.p)->SetPropertyKey(PROPID_Rotation, 0.0, 0.0), S_OK);
    ASSERT_EQ(properties(effect.p)->SetPropertyKey(PROPID_Rotation, 1.0, 72.0), S_OK);
    std::string saved;
    ASSERT_EQ(properties(effect.p)->SavePresetText(&saved), S_OK);
    const std::vector<uint8_t> original = run(effect.p, output.p, 0.3);

    Ref<IDSImageEffect> other(create());
    Ref<MemoryImage> otherOut(MemoryImage::Create(MFIF_RGBA_RAW_32, W, H));
    connect(other.p, input.p, otherOut.p);
    std::string error;
    ASSERT_EQ(properties(other.p)->LoadPresetText(saved, &error), S_OK) << error;
    EXPECT_EQ(get(other.p, PROPID_Rotation, 0.5), 36.0);
    EXPECT_EQ(run(other.p, otherOut.p, 0.3), original);
    EXPECT_NE(lumenveilOf(other.p), lumenveilOf(effect.p));  // the handle is never loaded

    // Each kind of bad preset is refused whole.
    const std::string radiusX = "\"key\": \"0xFFFF0368\"";
    auto replaced = [&saved](const std::string& from, const std::string& to) {
        std::string text = saved;
        const size_t at = text.find(from);
        return at == std::string::npos ? std::string() : text.replace(at, from.size(), to);
    };
    const std::string bad[] = {
        saved.substr(0, saved.size() / 2),                                       // malformed
        replaced("{CFC5802F-398D-437B-993F-52735F8AEBE0}", "{CFC5802F-398D-437B-993F-52735F8AEBE1}"),  // unknown
        replaced("\"value\": 0.2", "\"value\": \"wide\""),                       // wrong type
        replaced("\"value\": 0.2", "\"value\": 0.5"),                            // above 0.3
        replaced("\"value\": 5", "\"value\": 21"),                               // Sides above 20
    };
    std::string before;
    properties(other.p)->SavePresetText(&before);
    for (const std::string& text : bad) {
        ASSERT_FALSE(text.empty());
        error.clear();
        EXPECT_EQ(properties(other.p)->LoadPresetText(text, &error), E_INVALIDARG);
        EXPECT_FALSE(error.empty());
        std::string after;
        properties(other.p)->SavePresetText(&after);
        EXPECT_EQ(after, before);
    }
}

TEST_F(Execute, KeyedRadiusIsInterpolatedAndRebuildsOnlyWhereItChanges)
{
    // Still for frames 0 to 4, then 0.01 more each frame up to frame 9 (25 fps).
    IDSProperties* props = properties(effect.p);
    ASSERT_EQ(props->SetPropertyKey(PROPID_RadiusX, 0.0, 0.05), S_OK);
    ASSERT_EQ(props->SetPropertyKey(PROPID_RadiusX, 4.0 / 25, 0.05), S_OK);
    ASSERT_EQ(props->SetPropertyKey(PROPID_RadiusX, 9.0 / 25, 0.10), S_OK);
    const Lumenveil* fx = lumenveilOf(effect.p);
    for (int frame = 0; frame < 10; ++frame) {
        run(effect.p, output.p, frame / 25.0);
        const double radiusX = frame <= 4 ? 0.05 : 0.05 + 0.01 * (frame - 4);
        EXPECT_NEAR(fx->radiusX.value, radiusX, 1e-12) << frame;
        EXPECT_EQ(fx->lastRadius1, float(radiusX * 0.5 * W)) << frame;
        EXPECT_EQ(fx->engine->kernelsPrepared, uint32_t(frame <= 4 ? 1 : frame - 3)) << frame;
    }
}

TEST_F(Execute, EveryKnownOutputFormatRendersAndTheLastIsRefused)
{
    // A flat frame stays flat: every pixel unit of the output is the first one,
    // and the output is written.
    Ref<MemoryImage> flat(rgba8(W, H, [](int, int, int c) { return c == 3 ? 255 : 60 + 50 * c; }));
    effect->SetInput(flat.p);
    for (int code = 1; code <= 15; ++code) {
        const HostFormatGeometry* f = hostFormatGeometry(code);
        Ref<MemoryImage> out(MemoryImage::Create(*f->guid, W, H));
        effect->SetOutput(out.p);
        ASSERT_EQ(effect->Execute(0.0), S_OK) << f->name;
        const size_t unit = size_t(f->samplesPerPixel) * f->sampleBytes * (f->pairs ? 2 : 1);
        const size_t colour = hostColourPlaneBytes(code, W, H);
        bool written = false;
        for (size_t i = 0; i < colour; ++i) {
            ASSERT_EQ(out->Data()[i], out->Data()[i % unit]) << f->name << " byte " << i;
            written = written || out->Data()[i] != 0;
        }
        EXPECT_TRUE(written) << f->name;
        for (size_t i = colour + f->sampleBytes; i < out->Bytes(); ++i)
            ASSERT_EQ(out->Data()[i], out->Data()[colour + i % f->sampleBytes]) << f->name;
    }
    Ref<MemoryImage> last(MemoryImage::Create(MFIF_CbYCrY709A_FLOAT, W, H));
    effect->SetOutput(last.p);
    EXPECT_EQ(effect->Execute(0.0), E_UNEXPECTED);
    // An input the effect does not render from, with a known output: refused,
    // output untouched.
    Ref<MemoryImage> odd(MemoryImage::Create(MFIF_CbYCrY709A_FLOAT, W, H));
    effect->SetInput(odd.p);
    effect->SetOutput(output.p);
    std::memset(output->Data(), 7, output->Bytes());
    EXPECT_EQ(effect->Execute(0.0), E_FAIL);
    EXPECT_EQ(output->Data()[100], 7);
    // A Spread smaller than the region: refused for the Image shape, which reads
    // it, output untouched; any other shape does not read it. A region outside
    // the buffers: refused.
    effect->SetInput(input.p);
    Ref<MemoryImage> small(MemoryImage::Create(MFIF_RGBA_RAW_32, W / 2, H));
    host.SetInput(1, small.p);
    set(effect.p, PROPID_Shape, 3);
    EXPECT_EQ(effect->Execute(0.0), E_FAIL);
    EXPECT_EQ(output->Data()[100], 7);
    set(effect.p, PROPID_Shape, 0);
    EXPECT_EQ(effect->Execute(0.0), S_OK);
    std::memset(output->Data(), 7, output->Bytes());
    host.SetInput(1, nullptr);
    effect->SetROI(0, 0, 8, 0, W, H);
    EXPECT_EQ(effect->Execute(0.0), E_INVALIDARG);
    EXPECT_EQ(output->Data()[100], 7);
}

TEST_F(Execute, SelectorsKeepInputChannelsWithGreenAndBlueCrossedAndMatteByAlpha)
{
    const std::vector<uint8_t> all = run(effect.p, output.p);
    ASSERT_LT(all[(12 * W + 16) * 4], 255);  // the dot is spread
    // Selector n at 0 keeps channel n of the input, but 1 keeps blue and 2 green.
    const int kept[4] = {0, 2, 1, 3};
    for (int s = 0; s < 4; ++s) {
        int32_t selectors[4] = {1, 1, 1, 1};
        selectors[s] = 0;
        effect->SetChannelMask(selectors);
        run(effect.p, output.p);
        for (int c = 0; c < 4; ++c)
            EXPECT_EQ(at8(output.p, W, 16, 12, c), c == kept[s] ? 255 : all[(12 * W + 16) * 4 + c]) << s << c;
    }
    // Matte, in 2.14 where one step of the blend shows: where the input's alpha
    // is 0 the input stands whole; where it is full the effect's colour and the
    // input's alpha.
    Ref<MemoryImage> matted(MemoryImage::Create(MFIF_RGBA_S2_14, W, H));
    Ref<MemoryImage> mattedOut(MemoryImage::Create(MFIF_RGBA_S2_14, W, H));
    const int code = hostFormatCodeOf(MFIF_RGBA_S2_14);
    auto sample = [&](MemoryImage* image, int x, int y, int c) -> int16_t& {
        return reinterpret_cast<int16_t*>(image->Data())[(size_t(hostBufferRow(code, H, y)) * W + x) * 4 + c];
    };
    constexpr int16_t kOne = 16384;
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x) {
            const bool lit = x < 16 || (x == 24 && y == 12);
            for (int c = 0; c < 3; ++c)
                sample(matted.p, x, y, c) = lit ? kOne : 0;
            sample(matted.p, x, y, 3) = x < 16 ? 0 : kOne;
        }
    effect->SetInput(matted.p);
    effect->SetOutput(mattedOut.p);
    const int32_t matte[4] = {1, 1, 1, 2};
    effect->SetChannelMask(matte);
    ASSERT_EQ(effect->Execute(0.0), S_OK);
    for (int c = 0; c < 3; ++c) {
        EXPECT_EQ(sample(mattedOut.p, 8, 12, c), kOne);
        EXPECT_LT(sample(mattedOut.p, 24, 12, c), kOne);
        EXPECT_GT(sample(mattedOut.p, 25, 12, c), 0);
    }
    EXPECT_EQ(sample(mattedOut.p, 8, 12, 3), 0);
    EXPECT_EQ(sample(mattedOut.p, 24, 12, 3), kOne);
}

TEST_F(Execute, FieldMasksKeepOneFieldOrNone)
{
    // Even rows red 200, odd rows red 100, in a top-down buffer.
    Ref<MemoryImage> fields(rgba8(W, H, [](int, int y, int c) { return c == 3 ? 255 : c == 0 ? (y % 2 ? 100 : 200) : 0; }));
    effect->SetInput(fields.p);
    for (uint32_t mask : {1u, 2u, 3u}) {
        effect->SetFieldMask(mask);
        run(effect.p, output.p);
        for (int y = 4; y < 8; ++y) {
            // Mask 1 keeps the even rows, mask 2 the odd ones; rows of the other
            // field are not written; with both bits nothing is.
            const bool written = mask != 3 && (y % 2 == 0) == (mask == 1);
            EXPECT_EQ(at8(output.p, W, 10, y, 0), written ? (y % 2 ? 100 : 200) : 0) << mask << " row " << y;
        }
    }
}

// A host that, at one poll from inside the render, has another thread switch it
// to stop and waits until that is done.
class StoppingHost : public ImageEffectHost {
public:
    explicit StoppingHost(int poll) : stopAt(poll) {}
    int32_t ShouldContinue() override
    {
        if (++seen == stopAt) {
            std::thread([this] { Stop(); }).join();
        }
        return ImageEffectHost::ShouldContinue();
    }

private:
    std::atomic<int> seen{0};
    int stopAt;
};

TEST_F(Execute, StopOnEntryOrDuringTheRenderLeavesTheOutputUntouched)
{
    host.Stop();
    std::memset(output->Data(), 9, output->Bytes());
    EXPECT_EQ(effect->Execute(0.0), S_OK);
    EXPECT_EQ(output->Data()[0], 9);
    EXPECT_EQ(output->Data()[output->Bytes() - 1], 9);

    // Polls: on entry, before the render, then the render's rows.
    StoppingHost stopping(4);
    effect->SetEffectHost(&stopping);
    std::memset(output->Data(), 9, output->Bytes());
    EXPECT_EQ(effect->Execute(0.0), S_OK);
    for (size_t i = 0; i < output->Bytes(); ++i)
        ASSERT_EQ(output->Data()[i], 9);
}

TEST_F(Execute, ClonesShareTheRenderAndKeepTheirOwnAnimation)
{
    ASSERT_EQ(properties(effect.p)->SetPropertyKey(PROPID_Sides, 0.0, 7.0), S_OK);
    Ref<IDSImageEffect> clone;
    ASSERT_EQ(effect->Clone(IID_IDSImageEffect, clone.out()), S_OK);
    EXPECT_EQ(lumenveilOf(clone.p), lumenveilOf(effect.p));
    EXPECT_EQ(get(clone.p, PROPID_RadiusX), 0.2);
    EXPECT_EQ(properties(clone.p)->IsPropertyAnimated(PROPID_Sides), S_OK);
    set(effect.p, PROPID_RadiusX, 0.1);
    EXPECT_EQ(get(clone.p, PROPID_RadiusX), 0.2);
    ASSERT_EQ(properties(clone.p)->SetPropertyKey(PROPID_Rotation, 0.0, 5.0), S_OK);
    EXPECT_EQ(properties(clone.p)->IsPropertyAnimated(PROPID_Rotation), S_OK);
    EXPECT_EQ(properties(effect.p)->IsPropertyAnimated(PROPID_Rotation), S_FALSE);
    // The clone's Execute sets the shared Lumenveil's values.
    Ref<MemoryImage> out(MemoryImage::Create(MFIF_RGBA_RAW_32, W, H));
    connect(clone.p, input.p, out.p);
    run(clone.p, out.p);
    EXPECT_EQ(lumenveilOf(effect.p)->rotation.value, 5.0);
}

TEST_F(Execute, TwoEffectsRenderOnTwoThreadsAtOnce)
{
    Ref<IDSImageEffect> second(create());
    set(second.p, PROPID_Shape, 2);
    set(second.p, PROPID_BrightEmphasis, 20.0);
    Ref<MemoryImage> out2(MemoryImage::Create(MFIF_RGBA_RAW_32, W, H));
    ImageEffectHost host2;
    second->SetEffectHost(&host2);
    second->SetInput(input.p);
    second->SetOutput(out2.p);
    const std::vector<uint8_t> alone1 = run(effect.p, output.p), alone2 = run(second.p, out2.p);
    ASSERT_NE(alone1, alone2);
    for (int round = 0; round < 3; ++round) {
        std::vector<uint8_t> got1, got2;
        std::thread t1([&] { got1 = run(effect.p, output.p); });
        std::thread t2([&] { got2 = run(second.p, out2.p); });
        t1.join();
        t2.join();
        EXPECT_EQ(got1, alone1);
        EXPECT_EQ(got2, alone2);
    }
}

}  // namespace
