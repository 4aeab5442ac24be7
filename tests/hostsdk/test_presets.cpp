// Presets: the container's state as readable JSON, loaded back whole; a bad
// preset is refused with a reason and the container left as it was.
#include <gtest/gtest.h>

#include <functional>
#include <nlohmann/json.hpp>

#include "sample_effect.h"

namespace {

using namespace sample;
using nlohmann::json;

class Presets : public ::testing::Test {
protected:
    void SetUp() override
    {
        source.shape = 2, source.enabled = 0, source.radius = 25.5, source.sides = 8, source.handle = 99;
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
          {{"guid", "{5A000004-0001-0002-0000-000000000004}"}, {"key", "0xFFFF0003"}, {"name", "Sides"}, {"value", 8},
           {"keys", json::array({json::array({2.0, 9.0})})}}}}};
    EXPECT_EQ(json::parse(text), expected);

    ASSERT_TRUE(target.LoadPreset(text, &error)) << error;
    EXPECT_EQ(std::tuple(target.shape, target.enabled, target.radius, target.sides), std::tuple(2, 0, 25.5, 8));
    EXPECT_EQ(target.handle, 0u) << "hidden properties are not in presets";
    EXPECT_DOUBLE_EQ(target.GetValueDirect(key(2), 0.0, 2.5), 35.0);
    EXPECT_EQ(target.SavePreset(), text);
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

}  // namespace
