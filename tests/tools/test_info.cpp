// `info` shows every parameter of the property table with its default and
// page range; `formats` the sixteen host formats.
#include "tool_fixture.h"

namespace {

using Info = ToolTest;

// The line of `text` that starts (after spaces) with `name` and a space.
std::string lineOf(const std::string& text, const std::string& name)
{
    size_t at = 0;
    while ((at = text.find("\n  " + name + " ", at)) != std::string::npos) {
        const size_t end = text.find('\n', at + 1);
        return text.substr(at + 3, end - at - 3);
    }
    return "";
}

TEST_F(Info, ListsEveryParameterWithDefaultAndRange)
{
    const ToolRun r = run({"info"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_NE(r.out.find("{6888FDA5-1F1F-4662-9C9E-0765506D80EA}"), std::string::npos);
    EXPECT_NE(r.out.find("Spread"), std::string::npos);
    struct Row {
        const char* name;
        const char* option;
        const char* defaultValue;
        const char* range;
    };
    const Row rows[] = {
        {"Shape", "--shape", "circle", "circle|ellipse|polygon|image"},
        {"Match Radii", "--[no-]match-radii", "on", "on|off"},
        {"RadiusX", "--radius-x", "0.03", "0 to 0.3"},
        {"RadiusY", "--radius-y", "0.03", "0 to 0.3"},
        {"Sides", "--sides", "6", "3 to 20"},
        {"Rotation", "--rotation", "0", "-1000 to 1000"},
        {"Bright Emphasis", "--bright-emphasis", "50", "1 to 100"},
        {"Emphasise Alpha", "--[no-]emphasise-alpha", "off", "on|off"},
        {"Extreme Precision", "--[no-]extreme-precision", "off", "on|off"},
        {"CentreX", "--centre-x", "0.5", "0 to 1"},
        {"CentreY", "--centre-y", "0.5", "0 to 1"},
        {"RadiusPSF1", "--radius-psf1", "0.1", "0.001 to 1"},
        {"RadiusPSF2", "--radius-psf2", "0.15", "0.001 to 1"},
    };
    for (const Row& row : rows) {
        const std::string line = lineOf(r.out, row.name);
        ASSERT_FALSE(line.empty()) << row.name;
        for (const char* part : {row.option, row.defaultValue, row.range})
            EXPECT_NE(line.find(std::string(" ") + part + " "), std::string::npos) << row.name << ": " << line;
    }
    // The hidden properties are not parameters.
    EXPECT_EQ(r.out.find("changeCount"), std::string::npos);
}

TEST_F(Info, FormatsListsTheSixteenHostFormatsAndFileFormats)
{
    const ToolRun r = run({"formats"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    for (const char* name : {"MFIF_RGBA_RAW_32", "MFIF_RGBA_S2_14", "MFIF_RGBA_FLOAT", "MFIF_CbYCrY709A_FLOAT"})
        EXPECT_NE(r.out.find(name), std::string::npos) << name;
    for (const char* file : {"png", "tif", "exr"})
        EXPECT_NE(r.out.find(file), std::string::npos) << file;
}

}  // namespace

namespace {

// The line of the control labelled `label` in the page's text.
std::string pageLine(const std::string& page, const std::string& label)
{
    const std::string start = label + " ";
    size_t at = page.rfind(start, 0) == 0 ? 0 : page.find("\n" + start);
    if (at == std::string::npos)
        return "";
    at += page[at] == '\n' ? 1 : 0;
    return page.substr(at, page.find('\n', at) - at);
}

TEST_F(Info, PageShowsTheControlsOfTheShapeWithTheirValues)
{
    const ToolRun circle = run({"page"});
    ASSERT_EQ(circle.exitCode, 0) << circle.err;
    EXPECT_NE(pageLine(circle.out, "RadiusY").find("hidden"), std::string::npos) << circle.out;  // RadiusY
    const ToolRun polygon = run({"page", "--shape", "polygon", "--no-match-radii", "--sides", "7"});
    ASSERT_EQ(polygon.exitCode, 0) << polygon.err;
    EXPECT_NE(pageLine(polygon.out, "RadiusY").find("shown"), std::string::npos) << polygon.out;
    EXPECT_NE(pageLine(polygon.out, "Sides").find("value=7 range=3..20"), std::string::npos) << polygon.out;
    const ToolRun image = run({"page", "--shape", "image", "--radius-psf1", "0.2"});
    ASSERT_EQ(image.exitCode, 0) << image.err;
    EXPECT_NE(pageLine(image.out, "RadiusX").find("hidden"), std::string::npos) << image.out;
    EXPECT_NE(pageLine(image.out, "RadiusPSF1").find("shown value=0.2 range=0.001..1"), std::string::npos) << image.out;
    EXPECT_NE(pageLine(image.out, "Shape").find("combobox  shown selection=Image"), std::string::npos) << image.out;
    // Controls go by their labels: no line of a bare static text.
    EXPECT_EQ(image.out.find("static"), std::string::npos) << image.out;
    EXPECT_NE(pageLine(image.out, "CentreY").find("number    shown value=0.5"), std::string::npos) << image.out;
}

TEST_F(Info, SwitchesTakeAValueAfterAnEqualsSign)
{
    // Each spelling against the state the page shows for the switch.
    const std::pair<const char*, const char*> spellings[] = {
        {"--emphasise-alpha=off", "clear"}, {"--emphasise-alpha=0", "clear"},   {"--emphasise-alpha=false", "clear"},
        {"--emphasise-alpha=no", "clear"},  {"--emphasise-alpha=on", "checked"}, {"--emphasise-alpha", "checked"},
        {"--no-emphasise-alpha", "clear"},  {"--no-emphasise-alpha=off", "checked"}};
    for (const auto& [option, state] : spellings) {
        const ToolRun r = run({"page", option});
        ASSERT_EQ(r.exitCode, 0) << option << r.err;
        EXPECT_NE(pageLine(r.out, "Emphasise Alpha").find(std::string("shown ") + state), std::string::npos)
            << option << "\n" << r.out;
    }
    const ToolRun matchOff = run({"page", "--shape", "polygon", "--match-radii=off"});
    EXPECT_NE(pageLine(matchOff.out, "Match Radii").find("shown clear"), std::string::npos) << matchOff.out;
    EXPECT_NE(pageLine(matchOff.out, "RadiusY").find("shown"), std::string::npos) << matchOff.out;
    const ToolRun maybe = run({"page", "--emphasise-alpha=maybe"});
    EXPECT_EQ(maybe.exitCode, 2);
    EXPECT_NE(maybe.err.find("\"maybe\" is not on or off"), std::string::npos) << maybe.err;
}

TEST_F(Info, DepthPageShowsTheLensValuesOrTheRadiusAndRefusesDepthValuesWithoutIt)
{
    const ToolRun radius = run({"page", "--depth", "--focus", "3.2", "--shape", "polygon"});
    ASSERT_EQ(radius.exitCode, 0) << radius.err;
    EXPECT_NE(pageLine(radius.out, "Sides").find("shown"), std::string::npos) << radius.out;
    EXPECT_NE(pageLine(radius.out, "Radius Infinity").find("shown value=0.02"), std::string::npos) << radius.out;
    EXPECT_NE(pageLine(radius.out, "F-Stop").find("hidden"), std::string::npos) << radius.out;
    EXPECT_NE(pageLine(radius.out, "Focus").find("shown value=3.2"), std::string::npos) << radius.out;
    // A lens value switches Use Lens on, as in a render.
    const ToolRun lens = run({"page", "--depth", "--f-stop", "4"});
    ASSERT_EQ(lens.exitCode, 0) << lens.err;
    EXPECT_NE(pageLine(lens.out, "Use Lens").find("checked"), std::string::npos) << lens.out;
    EXPECT_NE(pageLine(lens.out, "F-Stop").find("shown value=4"), std::string::npos) << lens.out;
    EXPECT_NE(pageLine(lens.out, "Radius Infinity").find("hidden"), std::string::npos) << lens.out;
    const ToolRun plain = run({"page", "--focus", "3.2"});
    EXPECT_NE(plain.exitCode, 0);
    EXPECT_NE(plain.err.find("--focus needs --depth"), std::string::npos) << plain.err;
    EXPECT_EQ(plain.out, "");
}

}  // namespace
