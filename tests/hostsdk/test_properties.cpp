// The effect base and its host link, the property container, presets, the
// autokey operator and the property page.
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <nlohmann/json.hpp>
#include <thread>
#include <vector>

#include "hostsdk/CDSBasePropertyPage.h"
#include "hostsdk/CDSImageEffect.h"
#include "hostsdk/CDSInteractiveTool.h"
#include "hostsdk/PropertiesOperator.h"
#include "hostsdk/content.h"
#include "hostsdk/image_formats.h"

namespace {

using nlohmann::json;

// A small effect: one property of each kind, values in members bound by key
// 0xFFFF0000 + position.
constexpr GUID id(uint8_t n) { return {0x5A000000u + n, 1, 2, {0, 0, 0, 0, 0, 0, 0, n}}; }
constexpr GUID SHAPE = id(1), ENABLED = id(2), RADIUS = id(3), SIDES = id(4), HANDLE = id(5), CLASS = id(16);
constexpr uint32_t key(int position) { return 0xFFFF0000u + position; }
const char* const kShapes[] = {"Circle", "Polygon", "Image"};
CDSParamDef defs[] = {
    {SHAPE, nullptr, DS_CLASS_PARAMETER, DS_CAP_PLAIN, VT_I4, 1, 2, 3, "Shape", "Shape", 1, 0, -1, kShapes, 3},
    {ENABLED, nullptr, DS_CLASS_PARAMETER, DS_CAP_PLAIN, VT_BOOL, 4, 5, 6, "Enabled", "Enabled", 1, 0, -1},
    {RADIUS, nullptr, DS_CLASS_PARAMETER, DS_CAP_ANIMATED, VT_R8, 7, 8, 9, "Radius", "Radius", 10, 0, 100},
    {SIDES, nullptr, DS_CLASS_PARAMETER, DS_CAP_ANIMATED, VT_I4, 10, 11, 12, "Sides", "Sides", 6, 3, 20},
    {HANDLE, nullptr, DS_CLASS_PARAMETER, DS_CAP_HIDDEN, VT_UI8, 0, 0, 0, nullptr, nullptr, 0, 0, -1}};
constexpr uint32_t kUnset = DS_MAP_COUNT_UNSET;
CDSPropertiesMapEntry entries[] = {{&defs[0], key(0), kUnset}, {&defs[1], key(1), kUnset},
                                          {&defs[2], key(2), kUnset}, {&defs[3], key(3), kUnset},
                                          {&defs[4], key(4), kUnset}, {nullptr, 0, 0}};
uint32_t entryCount = kUnset;
CDSPropertiesMap map{nullptr, entries, &entryCount, nullptr};

// Notes each change; a copy (by the base's rule) binds nothing.
struct Effect : CDSImageEffect {
    Effect()
    {
        void* members[] = {&shape, &enabled, &radius, &sides, &handle};
        for (int i = 0; i < 5; ++i)
            BindStoredValue(key(i), members[i]);
    }
    const CDSPropertiesMap* GetStaticPropertiesMap() override { return InitStaticPropertyMap(&map), &map; }
    uint32_t GetStaticEntryCount() override { return *GetStaticPropertiesMap()->count; }
    GUID PresetClassId() const override { return CLASS; }
    HRESULT OnPropertyChanged(const GUID& guid, const VARIANT* value, void*, void*, int32_t, uint32_t) override
    {
        return changes.push_back({guid, *value}), S_OK;
    }
    int32_t shape = 1, enabled = 1, sides = 6;
    double radius = 10.0;
    uint64_t handle = 0;
    std::vector<std::pair<GUID, VARIANT>> changes;
};

VARIANT var(VARTYPE type, double v = 0)
{
    VARIANT out{type, {}};
    if (type == VT_I4)
        out.lVal = static_cast<int32_t>(v);
    else
        out.dblVal = v;
    return out;
}

// The object's reference count, left as it was.
uint32_t references(IUnknown* object) { return object->AddRef(), object->Release(); }

class EffectBase : public ::testing::Test {
protected:
    void TearDown() override
    {
        EXPECT_EQ(effect->Release(), 0u);
        EXPECT_EQ(input->Release() + output->Release(), 0u) << "the effect let go of its images";
    }
    Effect* effect = new Effect;
    MemoryImage* input = MemoryImage::Create(MFIF_RGBA_RAW_32, 10, 10);
    MemoryImage* output = MemoryImage::Create(MFIF_RGBA_RAW_32, 8, 6);
};

TEST_F(EffectBase, OneObjectWithOneCountAnswersThreeInterfaces)
{
    void* out[3] = {};
    const GUID* iids[3] = {&IID_IUnknown, &IID_IDSImageEffect, &IID_IDSProperties};
    for (int i = 0; i < 3; ++i)
        ASSERT_EQ(effect->QueryInterface(*iids[i], &out[i]), S_OK);
    EXPECT_EQ(out[1], static_cast<IDSImageEffect*>(effect));
    EXPECT_EQ(out[2], static_cast<IDSProperties*>(effect));
    EXPECT_EQ(static_cast<IDSProperties*>(out[2])->Release(), 3u);
    effect->Release(), effect->Release();
    EXPECT_EQ(effect->IsFormatSupported(MFIF_CbYCrY709A_FLOAT), 0);
    EXPECT_EQ(effect->IsFormatSupported(IID_IDSImage), 1);
}

TEST_F(EffectBase, ImagesAreHeldAndReleasedAndTheRegionIsChecked)
{
    effect->SetInput(output);
    EXPECT_EQ(effect->PrepareData(), E_POINTER) << "no output";
    effect->SetInput(input);
    EXPECT_EQ(std::pair(references(input), references(output)), std::pair(2u, 1u)) << "the replaced one released";
    effect->SetOutput(output);
    ASSERT_EQ(effect->PrepareData(), S_OK);
    EXPECT_EQ(std::pair(effect->roiWidth, effect->roiHeight), std::pair(8, 6)) << "the whole output";
    EXPECT_NE(effect->preparedValues[0] * effect->preparedValues[1] * effect->preparedValues[2], 0u);
    // Input 10 x 10, output 8 x 6: input x, y, output x, y, width, height; the first two fit.
    const int32_t regions[][6] = {{2, 4, 0, 0, 8, 6}, {0, 0, 3, 2, 5, 4}, {0, 0, 0, 0, 0, 6},  {0, 0, 0, 0, 4, 0},
                                  {3, 0, 0, 0, 8, 6}, {0, 5, 0, 0, 8, 6}, {0, 0, 1, 0, 8, 6},  {0, 0, 0, 1, 8, 6},
                                  {0, 0, 0, -1, 4, 4}, {-1, 0, 0, 0, 4, 4}};
    for (const auto& r : regions) {
        const bool fits = &r < &regions[2];
        effect->SetROI(r[0], r[1], r[2], r[3], r[4], r[5]);
        EXPECT_EQ(effect->PrepareData(), fits ? S_OK : E_INVALIDARG) << r[0] << r[1] << r[2] << r[3] << r[4] << r[5];
        EXPECT_EQ(effect->preparedValues[2] != 0, fits);
    }
}

TEST_F(EffectBase, ACopyTakesSettingsButNoImagesBindingsOrAnimation)
{
    ImageEffectHost link;
    const int32_t selectors[4] = {0, 1, 0, 2};
    effect->SetSampleRate(29.97), effect->SetFieldMask(2), effect->SetChannelMask(selectors);
    effect->SetROI(1, 2, 3, 4, 5, 6), effect->SetEffectHost(&link), effect->SetInput(input);
    effect->SetKey(RADIUS, 1.0, 30.0);
    Effect* copy = new Effect(*effect);
    for (Effect* e : {effect, copy})
        EXPECT_EQ(std::tuple(e->sampleRate, e->fieldMask, e->channelSelect[3], e->inputRoiY, e->roiHeight, e->host),
                  std::tuple(29.97, 2u, 2, 2, 6, static_cast<IDSImageEffectHost*>(&link)));
    EXPECT_EQ(copy->inputImage, nullptr);
    EXPECT_EQ(references(input), 2u);
    VARIANT v{};
    EXPECT_EQ(copy->GetValue(RADIUS, &v), E_INVALIDARG) << "no bindings";
    EXPECT_FALSE(copy->IsAnimated(RADIUS));
    // The copy keeps the region set: its output rows 4..9 do not fit in 6.
    copy->SetInput(input), copy->SetOutput(output);
    EXPECT_EQ(copy->PrepareData(), E_INVALIDARG);
    copy->SetTimespan(2.5);
    EXPECT_EQ(copy->GetProperty(DSPROPID_TimespanLength, &v, -1.0), S_OK);
    EXPECT_EQ(std::pair(v.vt, v.dblVal), std::pair(VARTYPE(VT_R8), 2.5));
    EXPECT_EQ(copy->Release(), 0u);
}

// The link holds its inputs until it goes; the fixture checks they were released.
TEST_F(EffectBase, HostLinkCountsInputsAndSeesAStopFromAnotherThread)
{
    ImageEffectHost link;
    link.SetInput(1, input);
    IUnknown* fetched = nullptr;
    ASSERT_EQ(link.FetchInput(1, 0.0, 0, &fetched), S_OK);
    EXPECT_EQ(fetched, static_cast<IUnknown*>(input));
    EXPECT_EQ(fetched->Release(), 2u) << "the fetch counted the caller's reference";
    std::thread stopper([&] { link.Stop(); });
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    int32_t answer = 1, polls = 0;
    for (; answer != 0 && std::chrono::steady_clock::now() < deadline; ++polls)
        answer = link.ShouldContinue();
    stopper.join();
    EXPECT_EQ(std::pair(answer, link.Polls()), std::pair(0, polls));
}

TEST(ProjectAndCoordinates, FrameSizeAndPixelAspect)
{
    VARIANT w{}, h{};
    ASSERT_EQ(DSContentGetProperty(kProjectFrameWidth, &w), S_OK);
    ASSERT_EQ(DSContentGetProperty(kProjectFrameHeight, &h), S_OK);
    EXPECT_EQ(std::tuple(w.vt, w.dblVal, h.dblVal), std::tuple(VARTYPE(VT_R8), 720.0, 486.0));
    double x = 0, y = 0;
    ASSERT_EQ(CoordMan(0.9).MapVector(1.0, 1.0, &x, &y), S_OK);
    EXPECT_EQ(std::pair(x, y), std::pair(0.9, 1.0));
}

class Container : public ::testing::Test {
protected:
    VARIANT get(const GUID& guid, double time = -1.0)
    {
        VARIANT v{};
        EXPECT_EQ(effect.GetValue(guid, &v, time), S_OK);
        return v;
    }
    Effect effect;
};

TEST_F(Container, MapIsCountedAndValuesGoThroughTheBoundMembers)
{
    EXPECT_EQ(effect.GetStaticEntryCount(), 5u);
    EXPECT_EQ(std::tuple(effect.FindEntry(RADIUS), effect.FindEntry(key(3)), effect.FindEntry(CLASS)),
              std::tuple(&entries[2], &entries[3], nullptr));
    EXPECT_EQ(effect.SetValue(RADIUS, var(VT_I4, 7)), S_OK);
    ASSERT_EQ(effect.changes.size(), 1u);
    EXPECT_EQ(std::tuple(effect.radius, effect.changes[0].first, effect.changes[0].second.dblVal),
              std::tuple(7.0, RADIUS, 7.0));
    // Whole numbers are rounded to the nearest; true reads as -1.
    EXPECT_EQ(effect.SetValue(SHAPE, var(VT_R8, 1.6)) | effect.SetValue(ENABLED, var(VT_R8, 0)), S_OK);
    EXPECT_EQ(std::tuple(get(SHAPE).lVal, get(ENABLED).vt, effect.enabled), std::tuple(2, VARTYPE(VT_BOOL), 0));
    effect.enabled = 1;
    EXPECT_EQ(get(ENABLED).boolVal, -1);
    VARIANT handle{VT_UI8, {}};
    handle.ullVal = 0x0123456789ABCDEFull;  // more bits than a double holds
    EXPECT_EQ(effect.SetValue(HANDLE, handle), S_OK);
    EXPECT_EQ(std::pair(effect.handle, get(HANDLE).ullVal), std::pair(handle.ullVal, handle.ullVal));
    EXPECT_EQ(effect.SetValue(CLASS, handle), E_INVALIDARG);
    EXPECT_EQ(effect.changes.size(), 4u);
}

TEST_F(Container, KeysInterpolateLinearlyHoldOutsideTheirSpanAndCopyAlone)
{
    for (auto [time, value] : {std::pair{5.0, 0.0}, {3.0, 60.0}, {1.0, 20.0}, {3.0, 40.0}})  // 60 is replaced
        ASSERT_EQ(effect.SetKey(RADIUS, time, value), S_OK);
    EXPECT_EQ(effect.SetKey(SHAPE, 1.0, 2.0), E_INVALIDARG) << "a plain property has no keys";
    EXPECT_EQ(std::tuple(effect.IsAnimated(RADIUS), effect.IsAnimated(SHAPE), effect.IsAnimated(SIDES)),
              std::tuple(true, false, false));
    // 20 at 1, 40 at 3, 0 at 5.
    for (auto [time, value] : {std::pair{0.0, 20.0}, {1, 20}, {2, 30}, {2.5, 35}, {3, 40}, {4.5, 10}, {5, 0}, {9, 0}}) {
        EXPECT_DOUBLE_EQ(get(RADIUS, time).dblVal, value) << "at " << time;
        EXPECT_DOUBLE_EQ(effect.GetValueDirect(key(2), 99.0, time), value) << "at " << time;
    }
    EXPECT_EQ(get(RADIUS, -1.0).dblVal, 10.0) << "time -1 asks for the stored value";
    effect.SetKey(SIDES, 0.0, 3.0);
    effect.SetKey(SIDES, 1.0, 6.0);
    // Rounded to the nearest: 4.8 and 3.6.
    EXPECT_EQ(std::pair(effect.GetValueDirect(key(3), 99, 0.6), effect.GetValueDirect(key(3), 99, 0.2)), std::pair(5, 4));
    EXPECT_EQ(get(SIDES, 0.6).lVal, 5);

    Effect other;
    other.CopyAnimation(effect);
    EXPECT_DOUBLE_EQ(other.GetValueDirect(key(2), 0.0, 2.0), 30.0);
    effect.shape = effect.enabled = 0, effect.radius = 1, effect.sides = 12, effect.handle = 42;
    EXPECT_EQ(effect.SetDefaults(), S_OK);
    EXPECT_EQ(std::tuple(effect.shape, effect.enabled, effect.radius, effect.sides), std::tuple(1, 1, 10.0, 6));
    EXPECT_EQ(effect.handle, 42u) << "hidden properties keep their value";
    EXPECT_FALSE(effect.IsAnimated(RADIUS));
    EXPECT_TRUE(other.IsAnimated(RADIUS)) << "the copy's keys are its own";
}

class Presets : public ::testing::Test {
protected:
    void SetUp() override
    {
        source.shape = 2, source.enabled = 0, source.radius = 25.5, source.sides = 20, source.handle = 99;
        source.SetKey(RADIUS, 3.0, 40.0);
        source.SetKey(RADIUS, 1.0, 20.0);
        source.SetKey(SIDES, 2.0, 9.0);
        text = source.SavePreset();
    }
    Effect source, target;
    std::string text, error;
};

TEST_F(Presets, SaveWritesNamedPropertiesInMapOrderAndLoadGivesThemBack)
{
    EXPECT_NE(text.find("\n  \"properties\": [\n"), std::string::npos) << "indented, a field a line:\n" << text;
    const json expected = {
        {"class", "{5A000010-0001-0002-0000-000000000010}"},
        {"properties",
         {{{"guid", "{5A000001-0001-0002-0000-000000000001}"}, {"key", "0xFFFF0000"}, {"name", "Shape"}, {"value", 2},
           {"keys", json::array()}},
          {{"guid", "{5A000002-0001-0002-0000-000000000002}"}, {"key", "0xFFFF0001"}, {"name", "Enabled"},
           {"value", false}, {"keys", json::array()}},
          {{"guid", "{5A000003-0001-0002-0000-000000000003}"}, {"key", "0xFFFF0002"}, {"name", "Radius"},
           {"value", 25.5}, {"keys", {{1.0, 20.0}, {3.0, 40.0}}}},
          {{"guid", "{5A000004-0001-0002-0000-000000000004}"}, {"key", "0xFFFF0003"}, {"name", "Sides"}, {"value", 20},
           {"keys", json::array({json::array({2.0, 9.0})})}}}}};
    EXPECT_EQ(json::parse(text), expected);
    ASSERT_TRUE(target.LoadPreset(text, &error)) << error;
    EXPECT_EQ(std::tuple(target.shape, target.enabled, target.radius, target.sides), std::tuple(2, 0, 25.5, 20));
    EXPECT_EQ(target.handle, 0u) << "hidden properties are not in presets";
    EXPECT_EQ(target.SavePreset(), text);
    // Keys load in time order; a property listed without keys loses its own.
    json shuffled = json::parse(text);
    shuffled["properties"][2]["keys"] = {{3.0, 40.0}, {1.0, 20.0}};
    shuffled["properties"][3]["keys"] = json::array();
    ASSERT_TRUE(target.LoadPreset(shuffled.dump(), &error)) << error;
    EXPECT_DOUBLE_EQ(target.GetValueDirect(key(2), 0.0, 2.5), 35.0);
    EXPECT_FALSE(target.IsAnimated(SIDES));
}

TEST_F(Presets, BadPresetsAreRefusedWholeWithAReason)
{
    target.SetKey(RADIUS, 0.0, 5.0);
    const std::string before = target.SavePreset();
    const auto refused = [&](const std::string& bad, const std::string& what, const char* word, const char* about) {
        EXPECT_FALSE(target.LoadPreset(bad, &error)) << what;
        EXPECT_NE(error.find(word), std::string::npos) << what << ": " << error;
        EXPECT_NE(error.find(about), std::string::npos) << what << ": " << error;
        EXPECT_EQ(target.SavePreset(), before) << what;
    };
    refused(text.substr(0, text.size() / 2), "cut short", "JSON", "");
    const json hidden = {{"guid", "{5A000005-0001-0002-0000-000000000005}"}, {"key", "0xFFFF0004"}, {"value", 5}};
    // Each case spoils the saved preset; most after properties that would change.
    const struct {
        const char *what, *word, *about;
        std::function<void(json&)> spoil;
    } cases[] = {
        {"unknown GUID", "unknown", "5A000009",
         [](json& p) { p[3]["guid"] = "{5A000009-0001-0002-0000-000000000009}"; }},
        {"hidden property", "unknown", "5A000005", [&](json& p) { p.push_back(hidden); }},
        {"two for a bool", "type", "Enabled", [](json& p) { p[1]["value"] = 2; }},
        {"fraction in a list", "type", "Shape", [](json& p) { p[0]["value"] = 1.5; }},
        {"text for a number", "type", "Radius", [](json& p) { p[2]["value"] = "25"; }},
        {"above the range", "range", "Radius", [](json& p) { p[2]["value"] = 100.5; }},
        {"below the range", "range", "Sides", [](json& p) { p[3]["value"] = 2; }},
        {"past the list", "range", "Shape", [](json& p) { p[0]["value"] = 3; }},
        {"key out of range", "range", "Sides", [](json& p) { p[3]["keys"] = {{0.0, 21.0}}; }},
        {"keys on a plain property", "animated", "Enabled", [](json& p) { p[1]["keys"] = {{0.0, 1.0}}; }},
        {"key of one number", "key", "Radius", [](json& p) { p[2]["keys"] = json::array({json::array({1.0})}); }},
        {"no value", "value", "Sides", [](json& p) { p[3].erase("value"); }},
        {"wrong key text", "key", "Sides", [](json& p) { p[3]["key"] = "0xFFFF0002"; }},
    };
    for (const auto& c : cases) {
        json preset = json::parse(text);
        c.spoil(preset["properties"]);
        refused(preset.dump(2), c.what, c.word, c.about);
    }
    for (const char* id : {"{5A000010-0001-0002-0000-000000000011}", "lens"}) {
        json preset = json::parse(text);
        preset["class"] = id;
        refused(preset.dump(2), std::string("class ") + id, "class", "");
    }
    EXPECT_TRUE(target.LoadPreset(text, &error)) << "the good preset still loads: " << error;
}

class Operator : public ::testing::Test {
protected:
    // The operator lets go of the last reference after this.
    void TearDown() override { EXPECT_EQ(unknown->Release(), 1u); }
    VARIANT read(const GUID& guid, VARTYPE type, double time = -1.0)
    {
        VARIANT v = var(type);
        EXPECT_EQ(op.GetAnimatedProperty(guid, &v, nullptr, time), S_OK);
        return v;
    }
    HRESULT write(const GUID& guid, VARIANT v, int undoStyle, double time = -1.0)
    {
        return op.SetAnimatedProperty(guid, &v, nullptr, undoStyle, time);
    }
    Effect* effect = new Effect;
    IUnknown* unknown = static_cast<IDSImageEffect*>(effect);
    PropertiesOperator op{unknown};
};

TEST_F(Operator, ReadsAtTheCurrentTimeInTheTypeAsked)
{
    EXPECT_EQ(references(unknown), 2u) << "the operator holds the object";
    effect->SetKey(RADIUS, 1.0, 20.0);
    effect->SetKey(RADIUS, 3.0, 40.0);
    op.SetCurrentTime(2.0);
    EXPECT_EQ(std::pair(read(RADIUS, VT_R8).dblVal, read(RADIUS, VT_R8, 3.0).dblVal), std::pair(30.0, 40.0));
    EXPECT_EQ(std::pair(read(RADIUS, VT_I4).vt, read(RADIUS, VT_I4).lVal), std::pair(VARTYPE(VT_I4), 30));
    EXPECT_EQ(std::pair(read(RADIUS, VT_EMPTY).vt, read(RADIUS, VT_EMPTY).dblVal), std::pair(VARTYPE(VT_R8), 30.0));
    EXPECT_EQ(std::tuple(read(ENABLED, VT_BOOL).boolVal, read(ENABLED, VT_I4).lVal, read(SIDES, VT_UI4).ulVal),
              std::tuple(int16_t(-1), 1, 6u));
    effect->handle = 0x0123456789ABCDEFull;
    EXPECT_EQ(read(HANDLE, VT_UI8).ullVal, 0x0123456789ABCDEFull) << "64-bit handles pass whole";
    VARIANT v{};
    EXPECT_EQ(op.GetAnimatedProperty(CLASS, &v, nullptr, -1.0), E_INVALIDARG);
    EXPECT_EQ(PropertiesOperator(nullptr).GetAnimatedProperty(RADIUS, &v, nullptr, -1.0), E_NOINTERFACE);
}

TEST_F(Operator, WritesFollowTheAutokeyRuleAndAreLogged)
{
    op.SetCurrentTime(2.0);
    ASSERT_EQ(write(RADIUS, var(VT_R8, 15), 1), S_OK);
    EXPECT_EQ(std::pair(effect->radius, effect->IsAnimated(RADIUS)), std::pair(15.0, false)) << "autokey off, no keys";
    op.SetAutoKey(true);
    ASSERT_EQ(write(RADIUS, var(VT_R8, 50), 2), S_OK);
    op.SetAutoKey(false);
    ASSERT_EQ(write(RADIUS, var(VT_I4, 70), 3, 4.0), S_OK);
    ASSERT_NE(effect->Keys(key(2)), nullptr);
    const auto& keys = *effect->Keys(key(2));
    ASSERT_EQ(keys.size(), 2u) << "autokey: a key at the current time; animated: a key";
    EXPECT_EQ(std::tuple(keys[0].time, keys[0].value, keys[1].time, keys[1].value), std::tuple(2.0, 50.0, 4.0, 70.0));
    EXPECT_EQ(effect->radius, 15.0);
    op.SetAutoKey(true);
    ASSERT_EQ(write(SHAPE, var(VT_I4, 2), 4), S_OK);
    EXPECT_EQ(effect->shape, 2) << "a plain property always takes the value";
    EXPECT_TRUE(FAILED(write(CLASS, var(VT_I4, 2), 5)));
    const auto& writes = op.Writes();
    ASSERT_EQ(writes.size(), 4u) << "failed writes are not logged";
    for (size_t i = 0; i < writes.size(); ++i)
        EXPECT_EQ(std::pair(writes[i].guid, writes[i].undoStyle), std::pair(i < 3 ? RADIUS : SHAPE, int(i) + 1));
    EXPECT_EQ(std::tuple(writes[2].value.lVal, writes[2].time), std::tuple(70, 4.0));
    // An interactive tool writes through the operator it is linked to.
    CDSInteractiveTool tool;
    VARIANT v = var(VT_I4, 3);
    EXPECT_EQ(tool.SetAnimatedProperty(SHAPE, &v, nullptr, 1, -1.0), E_UNEXPECTED) << "none linked";
    tool.OnLinkToOperator(&op);
    EXPECT_EQ(tool.SetAnimatedProperty(SHAPE, &v, nullptr, 1, -1.0), S_OK);
    v = var(VT_R8);
    EXPECT_EQ(tool.GetAnimatedProperty(SHAPE, &v, nullptr, -1.0), S_OK);
    EXPECT_EQ(std::tuple(effect->shape, v.dblVal, op.Writes().size()), std::tuple(3, 3.0, 5u));
}

TEST(PropertyPage, WidgetsRememberWhatWasDoneToThemAndShowTheOwnProperties)
{
    CDSBasePropertyPage page;
    HWND box = page.AddControl(1001);
    EXPECT_EQ(std::tuple(page.AddControl(1001), page.GetHwndControl(1001), page.GetHwndControl(7)),
              std::tuple(box, box, nullptr));
    EXPECT_EQ(std::tuple(box->id, box->shown, box->enabled, box->selection), std::tuple(1001u, true, true, -1));
    EXPECT_EQ(std::pair(EnableWindow(box, false), box->enabled), std::pair(false, false)) << "was enabled";
    for (const char* entry : {"Polygon", "Circle"})
        EXPECT_EQ(SendMessage(box, CB_INSERTSTRING, 0, reinterpret_cast<LPARAM>(entry)), 0);
    EXPECT_EQ(SendMessage(box, CB_INSERTSTRING, WPARAM(-1), reinterpret_cast<LPARAM>("Image")), 2) << "appended";
    EXPECT_EQ(box->listEntries, (std::vector<std::string>{"Circle", "Polygon", "Image"}));
    SendMessage(box, CB_SETCURSEL, 2, 0);
    EXPECT_EQ(SendMessage(box, CB_GETCURSEL, 0, 0), 2);
    SendMessage(box, CB_RESETCONTENT, 0, 0);
    EXPECT_EQ(std::pair(box->listEntries.size(), SendMessage(box, CB_GETCURSEL, 0, 0)), std::pair(0ul, -1l));

    // Its own properties convert, are logged when written, and show in bound widgets.
    page.SetProperty(SHAPE, var(VT_R8, 12));
    page.SetProperty(ENABLED, var(VT_I4, 7));
    VARIANT asInt = var(VT_I4), asReal = var(VT_R8);
    ASSERT_EQ(page.GetAnimatedProperty(SHAPE, &asInt, nullptr, -1.0), S_OK);
    ASSERT_EQ(page.GetAnimatedProperty(ENABLED, &asReal, nullptr, -1.0), S_OK);
    EXPECT_EQ(std::tuple(asInt.vt, asInt.lVal, asReal.vt, asReal.dblVal),
              std::tuple(VARTYPE(VT_I4), 12, VARTYPE(VT_R8), 7.0));
    EXPECT_EQ(page.GetAnimatedProperty(GUID{}, &asReal, nullptr, -1.0), E_INVALIDARG);
    HWND sizeBox = page.AddControl(10), countBox = page.AddControl(11);
    page.Bind(SHAPE, 10);
    page.Bind(ENABLED, 11);
    VARIANT value = var(VT_R8, 40);
    ASSERT_EQ(page.SetAnimatedProperty(SHAPE, &value, nullptr, 1, 2.5), S_OK);
    ASSERT_EQ(page.SetControlFromProperty(SHAPE, nullptr), S_OK);
    EXPECT_EQ(std::pair(sizeBox->value.dblVal, countBox->value.vt), std::pair(40.0, VARTYPE(VT_EMPTY)));
    ASSERT_EQ(page.Writes().size(), 1u) << "SetProperty is not a logged write";
    const CDSBasePropertyPage::PropertyWrite& w = page.Writes()[0];
    EXPECT_EQ(std::tuple(w.guid, w.value.dblVal, w.undoStyle, w.time), std::tuple(SHAPE, 40.0, 1, 2.5));
}

}  // namespace
