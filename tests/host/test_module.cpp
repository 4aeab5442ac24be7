// The effect module driven as a host drives it: class objects, registration,
// defaults, then Execute with presets, formats, selectors, fields and clones.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "effect/Lumenveil.h"
#include "host/LumenveilProperties.h"
#include "host/Plug.h"
#include "hostsdk/IDSImage.h"
#include "hostsdk/IDSImageEffect.h"
#include "hostsdk/IDSImageEffectHost.h"
#include "hostsdk/IDSProperties.h"
#include "hostsdk/IDSRenderStatus.h"
#include "hostsdk/IDSTransformNeeds.h"
#include "hostsdk/com.h"
#include "hostsdk/image_format_geometry.h"
#include "hostsdk/image_formats.h"
#include "hostsdk/module_library.h"
#include "hostsdk/registration.h"
#include "vzlibs/fftlib/fft_modes.h"

namespace {

// Releases a COM reference when it goes.
template <typename T> struct Ref {
    T* p = nullptr;
    ~Ref() { if (p) p->Release(); }
    T* operator->() const { return p; }
    void** out() { return reinterpret_cast<void**>(&p); }
};

class Module : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        std::string error;
        module = ModuleLibrary::Open(LUMENVEIL_MODULE_PATH, &error).release();
        ASSERT_NE(module, nullptr) << error;
    }
    static void TearDownTestSuite() { delete module; }

    // A new effect through the factory, as its IDSImageEffect.
    IDSImageEffect* create()
    {
        Ref<IClassFactory> factory;
        EXPECT_EQ(module->DllGetClassObject(CLSID_Plug, IID_IClassFactory, factory.out()), S_OK);
        IDSImageEffect* effect = nullptr;
        EXPECT_EQ(factory->CreateInstance(nullptr, IID_IDSImageEffect, reinterpret_cast<void**>(&effect)), S_OK);
        return effect;
    }
    static IDSProperties* properties(IDSImageEffect* effect)
    {
        IDSProperties* props = nullptr;
        effect->QueryInterface(IID_IDSProperties, reinterpret_cast<void**>(&props));
        props->Release();  // the effect keeps it alive
        return props;
    }
    static void set(IDSImageEffect* effect, const GUID& guid, double value)
    {
        VARIANT v = VariantReal(value);
        ASSERT_EQ(properties(effect)->SetProperty(guid, &v), S_OK);
    }
    // A property as a number, whatever its type.
    static double get(IDSImageEffect* effect, const GUID& guid, double time = -1.0)
    {
        VARIANT v;
        VariantInit(&v);
        properties(effect)->GetProperty(guid, &v, time);
        return v.vt == VT_I4 ? v.lVal : v.vt == VT_BOOL ? v.boolVal != 0 : v.vt == VT_UI4 ? v.ulVal : v.dblVal;
    }
    // The effect's Lumenveil, through the handle property the page and tool read.
    static const Lumenveil* lumenveilOf(IDSImageEffect* effect)
    {
        VARIANT v;
        VariantInit(&v);
        properties(effect)->GetProperty(PROPID_LumenveilHandle, &v, -1.0);
        return reinterpret_cast<const Lumenveil*>(static_cast<uintptr_t>(v.ullVal));
    }

    static inline ModuleLibrary* module = nullptr;
};

TEST_F(Module, ClassObjectsHoldTheUnloadCount)
{
    EXPECT_EQ(module->DllCanUnloadNow(), S_OK);
    void* out = &out;
    const GUID unknownClass = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
    EXPECT_EQ(module->DllGetClassObject(unknownClass, IID_IClassFactory, &out), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(out, nullptr);
    IDSImageEffect* effect = nullptr;
    {
        Ref<IClassFactory> factory;
        ASSERT_EQ(module->DllGetClassObject(CLSID_Plug, IID_IClassFactory, factory.out()), S_OK);
        EXPECT_EQ(module->DllCanUnloadNow(), S_FALSE);
        // Aggregation is refused and the object made for it is gone again.
        out = &out;
        EXPECT_EQ(factory->CreateInstance(factory.p, IID_IDSImageEffect, &out), CLASS_E_NOAGGREGATION);
        EXPECT_EQ(out, nullptr);
        Ref<IUnknown> marshaler;
        EXPECT_EQ(factory->QueryInterface(IID_IMarshal, marshaler.out()), S_OK);
        ASSERT_EQ(factory->CreateInstance(nullptr, IID_IDSImageEffect, reinterpret_cast<void**>(&effect)), S_OK);
    }
    EXPECT_EQ(module->DllCanUnloadNow(), S_FALSE);  // the effect still holds a count
    effect->Release();
    EXPECT_EQ(module->DllCanUnloadNow(), S_OK);
}

TEST_F(Module, RegistersItsClassesAndFamilies)
{
    ASSERT_EQ(module->DllRegisterServer(), S_OK);
    EXPECT_EQ(DSListRegisteredEffects().size(), 6u);  // both effects, their pages and their tools
    const std::vector<RegisteredFamilies> families = DSListRegisteredFamilies();
    ASSERT_EQ(families.size(), 2u);  // both effects
    EXPECT_EQ(families[0].families.size(), 4u);
    EXPECT_EQ(families[0].flags, 1);
    EXPECT_EQ(module->DllUnregisterServer(), S_OK);
    EXPECT_TRUE(DSListRegisteredEffects().empty() && DSListRegisteredFamilies().empty());
}

TEST_F(Module, NewEffectHasTheDefaultsAndItsIdentity)
{
    Ref<IDSImageEffect> effect{create()};
    const std::pair<const GUID*, double> defaults[] = {
        {&PROPID_Shape, 0},     {&PROPID_MatchRadii, 1},  {&PROPID_RadiusX, 0.03},        {&PROPID_RadiusY, 0.03},
        {&PROPID_Sides, 6},     {&PROPID_Rotation, 0.0},  {&PROPID_BrightEmphasis, 50.0}, {&PROPID_EmphasiseAlpha, 0},
        {&PROPID_CentreX, 0.5}, {&PROPID_CentreY, 0.5},   {&PROPID_RadiusPSF1, 0.1},      {&PROPID_RadiusPSF2, 0.15},
        {&PROPID_ChangeCount, 0}, {&PROPID_ExtremePrecision, 0}, {&PROPID_Linear, 0},
        {&PROPID_HighlightEmphasis, 1.0}, {&PROPID_HighlightThreshold, 1.0}, {&PROPID_Engine, 0}};  // faithful
    for (const auto& [guid, value] : defaults)
        EXPECT_EQ(get(effect.p, *guid), value) << FormatGuid(*guid);
    EXPECT_NE(lumenveilOf(effect.p), nullptr);
    DSImgFxInfo image{};
    image.structId = DSIMGFXINFO_ID;
    ASSERT_EQ(effect->GetImageEffectInfo(&image), S_OK);
    EXPECT_EQ(image.value44, 8u);
    EXPECT_EQ(image.value72, 515u);
    // Verify wants an input as well as the output.
    Ref<MemoryImage> out{MemoryImage::Create(MFIF_RGBA_RAW_32, 8, 8)};
    effect->SetOutput(out.p);
    EXPECT_EQ(effect->Verify(), E_POINTER);
}

constexpr int W = 32, H = 24;

// An 8-bit R G B A image, top-down, filled by `pixel(x, y, channel)`.
template <typename F> MemoryImage* rgba8(F pixel)
{
    MemoryImage* image = MemoryImage::Create(MFIF_RGBA_RAW_32, W, H);
    for (int i = 0; i < W * H * 4; ++i)
        image->Data()[i] = static_cast<uint8_t>(pixel(i / 4 % W, i / 4 / W, i % 4));
    return image;
}

// An effect with a white dot on black and a radius of 0.2 x 0.5 x 32 = 3.2 px.
class Execute : public Module {
protected:
    void SetUp() override
    {
        effect.p = create();
        set(effect.p, PROPID_BrightEmphasis, 1.0);
        set(effect.p, PROPID_RadiusX, 0.2);
        input.p = rgba8([](int x, int y, int c) { return c == 3 || (x == 16 && y == 12) ? 255 : 0; });
        output.p = MemoryImage::Create(MFIF_RGBA_RAW_32, W, H);
        connect(effect.p, output.p);
    }
    void connect(IDSImageEffect* fx, MemoryImage* out)
    {
        fx->SetEffectHost(&host);
        fx->SetInput(input.p);
        fx->SetOutput(out);
    }
    std::vector<uint8_t> run(IDSImageEffect* fx, MemoryImage* out, double time = 0.0)
    {
        std::memset(out->Data(), 0, out->Bytes());
        EXPECT_EQ(fx->Execute(time), S_OK);
        return {out->Data(), out->Data() + out->Bytes()};
    }
    // A byte of the output after filling it with `fill` and executing.
    uint8_t untouched(HRESULT expected, uint8_t fill = 7)
    {
        std::memset(output->Data(), fill, output->Bytes());
        EXPECT_EQ(effect->Execute(0.0), expected);
        return output->Data()[100];
    }
    ImageEffectHost host;
    Ref<IDSImageEffect> effect;
    Ref<MemoryImage> input, output;
};

TEST_F(Execute, PresetRoundTripGivesTheSameFrameAndBadPresetsChangeNothing)
{
    set(effect.p, PROPID_Shape, 2);
    set(effect.p, PROPID_Sides, 5);
    set(effect.p, PROPID_BrightEmphasis, 1.25);
    set(effect.p, PROPID_Engine, 2);
    ASSERT_EQ(properties(effect.p)->SetPropertyKey(PROPID_Rotation, 0.0, 0.0), S_OK);
    ASSERT_EQ(properties(effect.p)->SetPropertyKey(PROPID_Rotation, 1.0, 72.0), S_OK);
    std::string saved, error, before, after;
    ASSERT_EQ(properties(effect.p)->SavePresetText(&saved), S_OK);
    const std::vector<uint8_t> original = run(effect.p, output.p, 0.3);

    Ref<IDSImageEffect> other{create()};
    Ref<MemoryImage> otherOut{MemoryImage::Create(MFIF_RGBA_RAW_32, W, H)};
    connect(other.p, otherOut.p);
    ASSERT_EQ(properties(other.p)->LoadPresetText(saved, &error), S_OK) << error;
    EXPECT_EQ(get(other.p, PROPID_Rotation, 0.5), 36.0);
    EXPECT_EQ(get(other.p, PROPID_Engine), 2);
    EXPECT_EQ(run(other.p, otherOut.p, 0.3), original);
    EXPECT_NE(lumenveilOf(other.p), lumenveilOf(effect.p));  // the handle is never loaded

    // Each kind of bad preset is refused whole.
    auto replaced = [&saved](const std::string& from, const std::string& to) {
        std::string text = saved;
        const size_t at = text.find(from);
        return at == std::string::npos ? std::string() : text.replace(at, from.size(), to);
    };
    const std::string bad[] = {
        saved.substr(0, saved.size() / 2),                                                              // malformed
        replaced("{CFC5802F-398D-437B-993F-52735F8AEBE0}", "{CFC5802F-398D-437B-993F-52735F8AEBE1}"),  // unknown
        replaced("\"value\": 0.2", "\"value\": \"wide\""),                                              // wrong type
        replaced("\"value\": 0.2", "\"value\": 0.5"),                                                   // RadiusX above 0.3
        replaced("\"value\": 5", "\"value\": 21"),                                                      // Sides above 20
        replaced("\"value\": 1.25", "\"value\": 0.5"),                                                  // Emphasis below 1
        replaced("\"keys\": [],\n      \"name\": \"Shape\"", "\"keys\": [[0.5, 2.6]], \"name\": \"Shape\""),  // a key between entries
        replaced("\"keys\": [],\n      \"name\": \"Sides\"", "\"keys\": [[0.5, 4.5]], \"name\": \"Sides\""),  // a key between whole numbers
    };
    properties(other.p)->SavePresetText(&before);
    for (const std::string& text : bad) {
        ASSERT_FALSE(text.empty());
        error.clear();
        EXPECT_EQ(properties(other.p)->LoadPresetText(text, &error), E_INVALIDARG);
        EXPECT_FALSE(error.empty());
        properties(other.p)->SavePresetText(&after);
        EXPECT_EQ(after, before);
    }
}

TEST_F(Execute, ParametersReachTheRenderAtTheFrameTimeAndAKeyedRadiusRebuildsOnlyWhereItChanges)
{
    const std::pair<const GUID*, double> values[] = {
        {&PROPID_Shape, 2},        {&PROPID_MatchRadii, 0},   {&PROPID_RadiusY, 0.15},  {&PROPID_Sides, 5},
        {&PROPID_Rotation, 12.5},  {&PROPID_BrightEmphasis, 3.5}, {&PROPID_CentreX, 0.25}, {&PROPID_CentreY, 0.75},
        {&PROPID_RadiusPSF1, 0.3}, {&PROPID_RadiusPSF2, 0.4}};
    for (const auto& [guid, value] : values)
        set(effect.p, *guid, value);
    // RadiusX still for frames 0 to 4, then 0.01 more each frame up to frame 9 (25 fps).
    for (const auto& [frame, value] : {std::pair{0, 0.05}, {4, 0.05}, {9, 0.10}})
        ASSERT_EQ(properties(effect.p)->SetPropertyKey(PROPID_RadiusX, frame / 25.0, value), S_OK);
    const Lumenveil* fx = lumenveilOf(effect.p);
    for (int frame = 0; frame < 10; ++frame) {
        run(effect.p, output.p, frame / 25.0);
        const double radiusX = frame <= 4 ? 0.05 : 0.05 + 0.01 * (frame - 4);
        EXPECT_NEAR(fx->radiusX.value, radiusX, 1e-12) << frame;
        EXPECT_EQ(fx->lastRadius1, float(radiusX * 0.5 * W)) << frame;
        EXPECT_EQ(fx->engine->kernelsPrepared, uint32_t(frame <= 4 ? 1 : frame - 3)) << frame;
    }
    const double read[] = {double(fx->shape.value), double(fx->matchRadii.value), fx->radiusY.value,
                           double(fx->sides.value), fx->rotation.value, fx->brightEmphasis.value, fx->centre.x,
                           fx->centre.y, fx->radiusPsf1.value, fx->radiusPsf2.value};
    for (size_t i = 0; i < std::size(values); ++i)
        EXPECT_EQ(read[i], values[i].second + (i == 0 ? 1 : 0)) << i;  // Shape codes count from 1
}

TEST_F(Execute, TransformNeedsFollowTheApertureAtItsTimeAndTheEngine)
{
    auto powerOfTwo = [](int64_t n) { int64_t s = 1; while (s < n) s *= 2; return s; };
    auto smooth = [](int64_t n) {  // the smallest number at or above n without a prime factor above 7
        for (;; ++n) {
            int64_t rest = n;
            for (int p : {2, 3, 5, 7})
                while (rest % p == 0)
                    rest /= p;
            if (rest == 1)
                return n;
        }
    };
    struct Case {
        int shape;
        double radiusX, radiusY, psf1, psf2;
        int w, h;
        float reach;  // radii are fractions of the width, x 0.5; image: inner + max(outer - inner, 1)
    } cases[] = {
        {0, 0.2, 0.3, 0.1, 0.1, 1000, 600, float(0.2 * 0.5 * 1000)},
        {2, 0.01, 0.3, 0.1, 0.1, 200, 150, float(0.3 * 0.5 * 200)},  // Match Radii off
        {0, 0.0, 0.3, 0.1, 0.1, 200, 150, 0.5f},                     // at least half a pixel
        {3, 0.2, 0.2, 0.3, 0.1, 100, 90, 5.0f + 10.0f},              // inner 5, softness 15 - 5
        {3, 0.2, 0.2, 0.2, 0.2, 100, 90, 10.0f + 1.0f},              // softness 0 counts as 1
        {0, 0.3, 0.3, 0.1, 0.1, 8000, 40, float(0.3 * 0.5 * 8000)},    // too large for the square transform
        {0, 0.3, 0.3, 0.1, 0.1, 15000, 40, float(0.3 * 0.5 * 15000)},  // too large for every engine
    };
    ComRef<IDSTransformNeeds> ask = ComRef<IDSTransformNeeds>::Query(effect.p, IID_IDSTransformNeeds);
    ASSERT_TRUE(ask);
    set(effect.p, PROPID_MatchRadii, 0);
    for (const Case& c : cases) {
        set(effect.p, PROPID_Shape, c.shape);
        // RadiusX keyed: c.radiusX at 1 s, twice that at 3 s; asked at 1 s.
        ASSERT_EQ(properties(effect.p)->SetPropertyKey(PROPID_RadiusX, 1.0, c.radiusX), S_OK);
        ASSERT_EQ(properties(effect.p)->SetPropertyKey(PROPID_RadiusX, 3.0, 2 * c.radiusX), S_OK);
        for (const auto& [guid, value] : {std::pair{&PROPID_RadiusY, c.radiusY}, {&PROPID_RadiusPSF1, c.psf1},
                                          {&PROPID_RadiusPSF2, c.psf2}})
            set(effect.p, *guid, value);
        const int64_t margin = int64_t(std::ceil(c.reach)) + 1;
        const int64_t side = powerOfTwo(std::max(c.w, c.h) + 2 * margin);
        for (int engine : {0, 1, DS_ENGINE_CURRENT}) {  // faithful, fast, and the property's (fast-float)
            set(effect.p, PROPID_Engine, 2);
            DSTransformNeeds n{};
            ASSERT_EQ(ask->GetTransformNeeds(c.w, c.h, 1.0, engine, &n), S_OK);
            EXPECT_EQ(n.reach, c.reach) << c.shape << " " << c.w;
            EXPECT_EQ(n.margin, margin);
            EXPECT_EQ(n.width, engine == 0 ? side : smooth(c.w + 2 * margin));
            EXPECT_EQ(n.height, engine == 0 ? side : smooth(c.h + 2 * margin));
            // The square transform's largest side is 8192, the fast modes' 16384.
            EXPECT_EQ(n.fits, std::max(n.width, n.height) <= (engine == 0 ? 8192 : 16384) ? 1 : 0);
            EXPECT_EQ(n.largestSide, engine == 0 ? 8192 : 16384);
        }
    }
    DSTransformNeeds n{};
    EXPECT_EQ(ask->GetTransformNeeds(0, 10, 0.0, 0, &n), E_INVALIDARG);
    EXPECT_EQ(ask->GetTransformNeeds(10, 10, 0.0, 3, &n), E_INVALIDARG);
    EXPECT_EQ(ask->GetTransformNeeds(10, 10, 0.0, 0, nullptr), E_POINTER);

    // The engine is made in the property's mode when the effect renders.
    for (const auto& [value, mode] : {std::pair{1, FFT_MODE_FAST}, {0, FFT_MODE_FFTW}, {2, FFT_MODE_FAST_FLOAT}}) {
        set(effect.p, PROPID_Engine, value);
        run(effect.p, output.p);
        EXPECT_EQ(lumenveilOf(effect.p)->engine->mode, uint32_t(mode));
    }
}

TEST_F(Execute, EveryKnownOutputFormatRendersAndBadFramesLeaveTheOutputUntouched)
{
    // A flat frame stays flat: every pixel unit of the output is the first one,
    // and the output is written.
    Ref<MemoryImage> flat{rgba8([](int, int, int c) { return c == 3 ? 255 : 60 + 50 * c; })};
    effect->SetInput(flat.p);
    for (int code = 1; code <= 15; ++code) {
        const HostFormatGeometry* f = hostFormatGeometry(code);
        Ref<MemoryImage> out{MemoryImage::Create(*f->guid, W, H)};
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
    }
    // The sixteenth format is refused as output.
    Ref<MemoryImage> last{MemoryImage::Create(MFIF_CbYCrY709A_FLOAT, W, H)};
    effect->SetOutput(last.p);
    EXPECT_EQ(effect->Execute(0.0), E_UNEXPECTED);
    // A Spread smaller than the region: refused for the Image shape, which reads
    // it; any other shape does not read it.
    effect->SetInput(input.p);
    effect->SetOutput(output.p);
    Ref<MemoryImage> small{MemoryImage::Create(MFIF_RGBA_RAW_32, W / 2, H)};
    host.SetInput(1, small.p);
    set(effect.p, PROPID_Shape, 3);
    EXPECT_EQ(untouched(E_FAIL), 7);
    set(effect.p, PROPID_Shape, 0);
    EXPECT_NE(untouched(S_OK), 7);
}

TEST_F(Execute, SelectorsKeepInputChannelsWithGreenAndBlueCrossedAndMatteByAlpha)
{
    const std::vector<uint8_t> all = run(effect.p, output.p);
    const size_t dot = (12 * W + 16) * 4;
    ASSERT_LT(all[dot], 255);  // the dot is spread
    // Selector n at 0 keeps channel n of the input, but 1 keeps blue and 2 green.
    const int kept[4] = {0, 2, 1, 3};
    for (int s = 0; s < 4; ++s) {
        int32_t selectors[4] = {1, 1, 1, 1};
        selectors[s] = 0;
        effect->SetChannelMask(selectors);
        run(effect.p, output.p);
        for (int c = 0; c < 4; ++c)
            EXPECT_EQ(output->Data()[dot + c], c == kept[s] ? 255 : all[dot + c]) << s << c;
    }
    // Matte, in 2.14 where one step of the blend shows, on columns lit in turn
    // left of 16 with alpha 0, and a dot at (24, 12) right of it with alpha 1:
    // alpha 0 keeps the input whole, full alpha takes the effect's colour and
    // the input's alpha.
    Ref<MemoryImage> matted{MemoryImage::Create(MFIF_RGBA_S2_14, W, H)};
    Ref<MemoryImage> mattedOut{MemoryImage::Create(MFIF_RGBA_S2_14, W, H)};
    const int code = hostFormatCodeOf(MFIF_RGBA_S2_14);
    auto sample = [&](MemoryImage* image, int x, int y, int c) -> int16_t& {
        return reinterpret_cast<int16_t*>(image->Data())[(size_t(hostBufferRow(code, H, y)) * W + x) * 4 + c];
    };
    constexpr int16_t kOne = 16384;
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x)
            for (int c = 0; c < 4; ++c)
                sample(matted.p, x, y, c) =
                    c == 3 ? (x < 16 ? 0 : kOne) : ((x < 16 && x % 2 == 0) || (x == 24 && y == 12)) ? kOne : 0;
    effect->SetInput(matted.p);
    effect->SetOutput(mattedOut.p);
    const int32_t matte[4] = {1, 1, 1, 2};
    effect->SetChannelMask(matte);
    ASSERT_EQ(effect->Execute(0.0), S_OK);
    for (int c = 0; c < 4; ++c) {
        EXPECT_EQ(sample(mattedOut.p, 8, 12, c), c < 3 ? kOne : 0);
        EXPECT_EQ(sample(mattedOut.p, 9, 12, c), 0);
    }
    EXPECT_EQ(sample(mattedOut.p, 17, 12, 3), kOne);
    for (int c = 0; c < 3; ++c) {
        EXPECT_LT(sample(mattedOut.p, 24, 12, c), kOne);
        EXPECT_GT(sample(mattedOut.p, 25, 12, c), 0);
    }
}

TEST_F(Execute, FieldMasksKeepOneFieldOrNone)
{
    // Even rows red 200, odd rows red 100, in a top-down buffer.
    Ref<MemoryImage> fields{rgba8([](int, int y, int c) { return c == 3 ? 255 : c == 0 ? (y % 2 ? 100 : 200) : 0; })};
    effect->SetInput(fields.p);
    for (uint32_t mask : {1u, 2u, 3u}) {
        effect->SetFieldMask(mask);
        run(effect.p, output.p);
        // Mask 1 writes the even rows, mask 2 the odd ones, both bits none.
        for (int y = 4; y < 8; ++y) {
            const bool written = mask != 3 && (y % 2 == 0) == (mask == 1);
            EXPECT_EQ(output->Data()[(y * W + 10) * 4], written ? (y % 2 ? 100 : 200) : 0) << mask << " row " << y;
        }
    }
}

TEST_F(Execute, StopOnEntryOrDuringTheRenderLeavesTheOutputUntouched)
{
    host.Stop();
    EXPECT_EQ(untouched(S_OK, 9), 9);
    // A host that, at its fourth poll (the first of the render's rows), has
    // another thread switch it to stop and waits until that is done.
    struct StoppingHost : ImageEffectHost {
        std::atomic<int> seen{0};
        int32_t ShouldContinue() override
        {
            if (++seen == 4)
                std::thread([this] { Stop(); }).join();
            return ImageEffectHost::ShouldContinue();
        }
    } stopping;
    effect->SetEffectHost(&stopping);
    untouched(S_OK, 9);
    for (size_t i = 0; i < output->Bytes(); ++i)
        ASSERT_EQ(output->Data()[i], 9);
}

TEST_F(Execute, ClonesShareTheRenderAndKeepTheirOwnAnimation)
{
    ASSERT_EQ(properties(effect.p)->SetPropertyKey(PROPID_Sides, 0.0, 7.0), S_OK);
    Ref<IDSImageEffect> clone;
    ASSERT_EQ(effect->Clone(IID_IDSImageEffect, clone.out()), S_OK);
    EXPECT_EQ(lumenveilOf(clone.p), lumenveilOf(effect.p));
    EXPECT_EQ(properties(clone.p)->IsPropertyAnimated(PROPID_Sides), S_OK);
    set(effect.p, PROPID_RadiusX, 0.1);
    EXPECT_EQ(get(clone.p, PROPID_RadiusX), 0.2);
}

// The render status of `fx`'s last Execute, and its reason.
std::pair<HRESULT, std::string> renderStatus(IDSImageEffect* fx)
{
    Ref<IDSRenderStatus> status;
    EXPECT_EQ(fx->QueryInterface(IID_IDSRenderStatus, status.out()), S_OK);
    HRESULT code = S_FALSE;
    const char* reason = nullptr;
    EXPECT_EQ(status->GetRenderStatus(&code, &reason), S_OK);
    return {code, reason ? reason : "(null)"};
}

// The failure hook of a test: planes (or plans) fail while `failing` is set.
int failPlanes(void* failing, FftResource resource)
{
    return *static_cast<bool*>(failing) && resource == FFT_RESOURCE_PLANE;
}

TEST_F(Execute, RenderStatusTellsWhetherTheFrameWasRenderedWhereExecuteSucceeds)
{
    EXPECT_EQ(renderStatus(effect.p), std::make_pair(E_FAIL, std::string("no frame has been rendered")));
    run(effect.p, output.p);
    EXPECT_EQ(renderStatus(effect.p), std::make_pair(S_OK, std::string()));

    // A stopped render returns S_OK and says it was stopped.
    host.Stop();
    EXPECT_EQ(untouched(S_OK), 7);
    EXPECT_EQ(renderStatus(effect.p).first, E_ABORT);
    host.Stop(false);

    // Keys at infinite times interpolate to a NaN radius: no kernel, no picture.
    const double forever = std::numeric_limits<double>::infinity();
    ASSERT_EQ(properties(effect.p)->SetPropertyKey(PROPID_RadiusX, -forever, 0.0), S_OK);
    ASSERT_EQ(properties(effect.p)->SetPropertyKey(PROPID_RadiusX, forever, 0.3), S_OK);
    untouched(S_OK);
    auto [code, reason] = renderStatus(effect.p);
    EXPECT_EQ(code, E_INVALIDARG);
    EXPECT_NE(reason.find("not a finite number"), std::string::npos) << reason;

    // A new effect whose engine cannot allocate its planes.
    Ref<IDSImageEffect> starved{create()};
    Ref<MemoryImage> starvedOut{MemoryImage::Create(MFIF_RGBA_RAW_32, W, H)};
    connect(starved.p, starvedOut.p);
    bool failing = true;
    lumenveilOf(starved.p)->engine->SetFailureHook(&failing, failPlanes);
    EXPECT_EQ(starved->Execute(0.0), S_OK);
    std::tie(code, reason) = renderStatus(starved.p);
    EXPECT_EQ(code, E_OUTOFMEMORY);
    EXPECT_NE(reason.find("memory"), std::string::npos) << reason;
    // The failed kernel stands while the aperture does; a new one renders.
    failing = false;
    starved->Execute(0.0);
    EXPECT_EQ(renderStatus(starved.p).first, E_OUTOFMEMORY);
    set(starved.p, PROPID_RadiusX, 0.25);
    run(starved.p, starvedOut.p);
    EXPECT_EQ(renderStatus(starved.p).first, S_OK);
    lumenveilOf(starved.p)->engine->SetFailureHook(nullptr, nullptr);
}

TEST_F(Execute, AnEffectAndItsCloneExecutedAtOnceRenderOneAtATime)
{
    Ref<IDSImageEffect> clone;
    ASSERT_EQ(effect->Clone(IID_IDSImageEffect, clone.out()), S_OK);
    set(clone.p, PROPID_RadiusX, 0.05);
    set(clone.p, PROPID_Shape, 2);
    Ref<MemoryImage> cloneOut{MemoryImage::Create(MFIF_RGBA_RAW_32, W, H)};
    connect(clone.p, cloneOut.p);
    const std::vector<uint8_t> alone = run(effect.p, output.p), cloneAlone = run(clone.p, cloneOut.p);
    ASSERT_NE(alone, cloneAlone);
    auto renders = [this](IDSImageEffect* fx, MemoryImage* out, const std::vector<uint8_t>& expected) {
        for (int i = 0; i < 40; ++i) {
            std::memset(out->Data(), 0, out->Bytes());
            fx->Execute(0.0);
            if (std::vector<uint8_t>(out->Data(), out->Data() + out->Bytes()) != expected)
                return false;
        }
        return true;
    };
    bool same = false, cloneSame = false;
    std::thread other([&] { cloneSame = renders(clone.p, cloneOut.p, cloneAlone); });
    same = renders(effect.p, output.p, alone);
    other.join();
    EXPECT_TRUE(same);
    EXPECT_TRUE(cloneSame);
}

// Scene-linear renders of float R G B A frames, a radius of 0.1 x 0.5 x 64 =
// 3.2 px, the fast engine. What they do to light is tested through the tool.
class LinearExecute : public Module {
protected:
    static constexpr int LW = 64, LH = 48;
    void SetUp() override
    {
        effect.p = create();
        set(effect.p, PROPID_Engine, fft_mode_index(FFT_MODE_FAST));
        set(effect.p, PROPID_Linear, 1);
        set(effect.p, PROPID_RadiusX, 0.1);
        input.p = MemoryImage::Create(MFIF_RGBA_FLOAT, LW, LH);
        output.p = MemoryImage::Create(MFIF_RGBA_FLOAT, LW, LH);
        for (int i = 0; i < LW * LH * 4; ++i)
            in()[i] = i % 4 == 3 ? 1.0f : 0.0f;
        effect->SetEffectHost(&host);
        effect->SetInput(input.p);
        effect->SetOutput(output.p);
    }
    float* in() const { return reinterpret_cast<float*>(input->Data()); }
    float* out() const { return reinterpret_cast<float*>(output->Data()); }
    // Pixel (x, y) of the frame in a buffer: this format keeps its rows bottom-up.
    static size_t at(int x, int y) { return size_t(hostBufferRow(hostFormatCodeOf(MFIF_RGBA_FLOAT), LH, y)) * LW + x; }
    ImageEffectHost host;
    Ref<IDSImageEffect> effect;
    Ref<MemoryImage> input, output;
};

TEST_F(LinearExecute, SelectorsAndFieldsActAsOnSixteenBitFrames)
{
    for (int i = 0; i < LW * LH * 4; ++i)  // odd rows of the frame one brighter
        in()[at(i / 4 % LW, i / 4 / LW) * 4 + i % 4] =
            i % 4 == 3 ? 1.0f : i % 4 == 0 ? 9.0f * (i / 4 % LW % 5 == 0) : 2.0f + (i % 4) + (i / 4 / LW) % 2;
    const int32_t keepRed[4] = {0, 1, 1, 1};
    effect->SetChannelMask(keepRed);
    effect->SetFieldMask(1);  // the even rows of the frame are written
    std::fill_n(out(), LW * LH * 4, -1.0f);
    ASSERT_EQ(effect->Execute(0.0), S_OK);
    for (int y = 8; y < 12; ++y) {
        const float* p = out() + at(20, y) * 4;
        EXPECT_EQ(p[0], y % 2 ? -1.0f : 9.0f) << y;  // red, sharp across the rows, kept from the input
        EXPECT_NEAR(p[1], y % 2 ? -1.0 : 3.0, 1e-5) << y;  // odd rows are read as the even ones above
    }
}

TEST_F(LinearExecute, RefusesTheFaithfulEngineAndOtherFormatsAndLeavesTheOutput)
{
    auto untouched = [&](IDSImageEffect* fx) {
        std::fill_n(out(), LW * LH * 4, 7.0f);
        EXPECT_EQ(fx->Execute(0.0), E_INVALIDARG);
        return std::all_of(out(), out() + LW * LH * 4, [](float v) { return v == 7.0f; });
    };
    Ref<IDSImageEffect> faithful{create()};
    set(faithful.p, PROPID_Engine, fft_mode_index(FFT_MODE_FFTW));
    set(faithful.p, PROPID_Linear, 1);
    faithful->SetEffectHost(&host);
    faithful->SetInput(input.p);
    faithful->SetOutput(output.p);
    EXPECT_TRUE(untouched(faithful.p));
    Ref<MemoryImage> eightBit{MemoryImage::Create(MFIF_RGBA_RAW_32, LW, LH)};
    effect->SetInput(eightBit.p);
    EXPECT_TRUE(untouched(effect.p));
}

}  // namespace
