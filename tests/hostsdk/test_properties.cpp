// The property container (its map, values in bound members, keyed animation,
// copies and defaults), presets as readable JSON loaded back whole or refused
// with a reason, the autokey operator, and the property page's own store.
#include <gtest/gtest.h>

#include <functional>
#include <nlohmann/json.hpp>

#include "hostsdk/CDSBasePropertyPage.h"
#include "hostsdk/PropertiesOperator.h"
#include "sample_effect.h"

namespace {

using namespace sample;
using nlohmann::json;

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
    EXPECT_EQ(effect.FindEntry(RADIUS), &entries[2]);
    EXPECT_EQ(effect.FindEntry(key(3)), &entries[3]);
    EXPECT_EQ(effect.FindEntry(CLASS), nullptr);
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
    EXPECT_EQ(effect.GetValueDirect(key(0), 2, 0.6), 2) << "no keys: the stored value";

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
    const auto one = [](json key) { return json::array({key}); };
    // Each case spoils the saved preset; most after properties that would change.
    const struct {
        const char *what, *word, *about;
        std::function<void(json&)> spoil;
    } cases[] = {
        {"unknown GUID", "unknown", "5A000009",
         [](json& p) { p[3]["guid"] = "{5A000009-0001-0002-0000-000000000009}"; }},
        {"hidden property", "unknown", "5A000005", [&](json& p) { p.push_back(hidden); }},
        {"text for a bool", "type", "Enabled", [](json& p) { p[1]["value"] = "yes"; }},
        {"two for a bool", "type", "Enabled", [](json& p) { p[1]["value"] = 2; }},
        {"fraction in a list", "type", "Shape", [](json& p) { p[0]["value"] = 1.5; }},
        {"text for a number", "type", "Radius", [](json& p) { p[2]["value"] = "25"; }},
        {"above the range", "range", "Radius", [](json& p) { p[2]["value"] = 100.5; }},
        {"below the range", "range", "Sides", [](json& p) { p[3]["value"] = 2; }},
        {"past the list", "range", "Shape", [](json& p) { p[0]["value"] = 3; }},
        {"key out of range", "range", "Sides", [&](json& p) { p[3]["keys"] = one({0.0, 21.0}); }},
        {"keys on a plain property", "animated", "Enabled", [&](json& p) { p[1]["keys"] = one({0.0, 1.0}); }},
        {"key of one number", "key", "Radius", [&](json& p) { p[2]["keys"] = one(json::array({1.0})); }},
        {"key with a text time", "key", "Radius", [&](json& p) { p[2]["keys"] = one(json::array({"a", 1.0})); }},
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
    PropertiesOperator(unknown).SetCurrentTime(0.0);
    EXPECT_EQ(references(unknown), 2u) << "an operator lets go of the object when destroyed";
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
}

TEST(PropertyPage, WidgetsRememberWhatWasDoneToThem)
{
    CDSBasePropertyPage page;
    HWND box = page.AddControl(1001);
    EXPECT_EQ(std::tuple(page.AddControl(1001), page.GetHwndControl(1001), page.GetHwndControl(7)),
              std::tuple(box, box, nullptr));
    EXPECT_EQ(std::tuple(box->id, box->shown, box->enabled, box->selection), std::tuple(1001u, true, true, -1));
    EXPECT_EQ(std::pair(EnableWindow(box, false), box->enabled), std::pair(false, false)) << "was enabled";
    EXPECT_EQ(std::pair(ShowWindow(box, SW_HIDE), box->shown), std::pair(true, false)) << "was shown";
    SendMessage(box, BM_SETCHECK, BST_INDETERMINATE, 0);
    EXPECT_EQ(SendMessage(box, BM_GETCHECK, 0, 0), BST_INDETERMINATE);
    for (const char* entry : {"Polygon", "Circle"})
        EXPECT_EQ(SendMessage(box, CB_INSERTSTRING, 0, reinterpret_cast<LPARAM>(entry)), 0);
    EXPECT_EQ(SendMessage(box, CB_INSERTSTRING, WPARAM(-1), reinterpret_cast<LPARAM>("Image")), 2) << "appended";
    EXPECT_EQ(box->listEntries, (std::vector<std::string>{"Circle", "Polygon", "Image"}));
    SendMessage(box, CB_SETCURSEL, 2, 0);
    EXPECT_EQ(SendMessage(box, CB_GETCURSEL, 0, 0), 2);
    SendMessage(box, CB_RESETCONTENT, 0, 0);
    EXPECT_EQ(std::pair(box->listEntries.size(), SendMessage(box, CB_GETCURSEL, 0, 0)), std::pair(0ul, -1l));
}

TEST(PropertyPage, OwnPropertiesConvertLogAndShowInBoundWidgets)
{
    CDSBasePropertyPage page;
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
    VARIANT value = var(VT_R8, 33.5);
    ASSERT_EQ(page.SetControlValue(10, &value), S_OK);
    page.GetAnimatedProperty(SHAPE, &asReal, nullptr, -1.0);
    EXPECT_EQ(std::pair(sizeBox->value.dblVal, asReal.dblVal), std::pair(33.5, 12.0)) << "the property is untouched";
    value = var(VT_R8, 40);
    ASSERT_EQ(page.SetAnimatedProperty(SHAPE, &value, nullptr, 1, 2.5), S_OK);
    ASSERT_EQ(page.SetControlFromProperty(SHAPE, nullptr), S_OK);
    EXPECT_EQ(std::pair(sizeBox->value.dblVal, countBox->value.vt), std::pair(40.0, VARTYPE(VT_EMPTY)));
    ASSERT_EQ(page.Writes().size(), 1u) << "SetProperty is not a logged write";
    const CDSBasePropertyPage::PropertyWrite& w = page.Writes()[0];
    EXPECT_EQ(std::tuple(w.guid, w.value.dblVal, w.undoStyle, w.time), std::tuple(SHAPE, 40.0, 1, 2.5));
}

}  // namespace
