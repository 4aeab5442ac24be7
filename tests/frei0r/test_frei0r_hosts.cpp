// The frei0r filter inside the real programs: frames that ffmpeg and melt
// render through it equal the lumenveil tool's renders of the same 8-bit
// frames with the same values; bad paths leave frames unchanged with one line
// on stderr; the editors' description names every parameter.
#include <gtest/gtest.h>

#include <OpenImageIO/imageio.h>
#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

extern "C" {
#include <frei0r.h>
}

namespace {

// The filter's parameters as a frei0r host sees them: names, in order, with
// the text ffmpeg takes for each one's value when a test does not set it.
struct DeclaredParameter {
    std::string name;
    std::string defaultText;
};

std::vector<DeclaredParameter> declaredParameters()
{
    void* so = dlopen(FREI0R_FILTER_PATH, RTLD_NOW | RTLD_LOCAL);
    EXPECT_NE(so, nullptr) << dlerror();
    std::vector<DeclaredParameter> list;
    if (!so)
        return list;
    auto info = reinterpret_cast<void (*)(f0r_plugin_info_t*)>(dlsym(so, "f0r_get_plugin_info"));
    auto param = reinterpret_cast<void (*)(f0r_param_info_t*, int)>(dlsym(so, "f0r_get_param_info"));
    auto make = reinterpret_cast<f0r_instance_t (*)(unsigned, unsigned)>(dlsym(so, "f0r_construct"));
    auto get = reinterpret_cast<void (*)(f0r_instance_t, f0r_param_t, int)>(dlsym(so, "f0r_get_param_value"));
    auto drop = reinterpret_cast<void (*)(f0r_instance_t)>(dlsym(so, "f0r_destruct"));
    f0r_plugin_info_t plugin{};
    info(&plugin);
    f0r_instance_t instance = make(8, 8);
    for (int i = 0; i < plugin.num_params; ++i) {
        f0r_param_info_t p{};
        param(&p, i);
        char text[64] = "";
        if (p.type == F0R_PARAM_STRING) {
            f0r_param_string s = nullptr;
            get(instance, &s, i);
            list.push_back({p.name, s ? s : ""});
            continue;
        }
        if (p.type == F0R_PARAM_POSITION) {
            f0r_param_position_t at{};
            get(instance, &at, i);
            std::snprintf(text, sizeof text, "%.17g/%.17g", at.x, at.y);
        } else {
            double v = 0.0;
            get(instance, &v, i);
            if (p.type == F0R_PARAM_BOOL)
                std::snprintf(text, sizeof text, "%s", v >= 0.5 ? "y" : "n");
            else
                std::snprintf(text, sizeof text, "%.17g", v);
        }
        list.push_back({p.name, text});
    }
    drop(instance);
    return list;
}

// RGBA bytes of a picture file (no alpha: full alpha).
std::vector<unsigned char> rgba(const std::string& path)
{
    OIIO::ImageSpec config;
    config.attribute("oiio:UnassociatedAlpha", 1);  // samples as stored
    OIIO::ImageSpec layout;
    auto in = OIIO::ImageInput::create(path, false, &config);
    EXPECT_TRUE(in && in->open(path, layout, config)) << path;
    if (!in)
        return {};
    std::vector<unsigned char> file(static_cast<size_t>(layout.width) * layout.height * layout.nchannels);
    in->read_image(0, 0, 0, layout.nchannels, OIIO::TypeDesc::UINT8, file.data());
    std::vector<unsigned char> out(static_cast<size_t>(layout.width) * layout.height * 4, 255);
    for (size_t i = 0; i < static_cast<size_t>(layout.width) * layout.height; ++i)
        for (int c = 0; c < std::min(layout.nchannels, 4); ++c)
            out[i * 4 + c] = file[i * layout.nchannels + c];
    return out;
}

// A number as ffmpeg reads it back exactly.
std::string exact(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.17g", value);
    return text;
}

class Frei0rHostTest : public ::testing::Test {
protected:
    void SetUp() override
    {
#ifdef LV_SANITIZED
        GTEST_SKIP() << "ffmpeg and melt cannot load a filter built with the address sanitizer";
#endif
        char name[] = "/tmp/lumenveil-frei0r-test-XXXXXX";
        ASSERT_NE(mkdtemp(name), nullptr);
        directory = name;
        setenv("FREI0R_PATH", std::filesystem::path(FREI0R_FILTER_PATH).parent_path().c_str(), 1);
        // melt renders a still picture at the profile's size, 25 frames a second.
        std::ofstream(path("profile.txt")) << "description=test\nframe_rate_num=25\nframe_rate_den=1\nwidth=640\nheight=360\n"
                                              "progressive=1\nsample_aspect_num=1\nsample_aspect_den=1\n"
                                              "display_aspect_num=16\ndisplay_aspect_den=9\ncolorspace=709\n";
        ASSERT_EQ(run("ffmpeg -v error -y -f lavfi -i testsrc2=s=640x360:d=1 -frames:v 1 -pix_fmt rgba " +
                      path("frame.png")),
                  0);
    }
    void TearDown() override
    {
        if (!HasFailure())
            std::filesystem::remove_all(directory);
    }

    std::string path(const std::string& name) const { return directory + "/" + name; }

    // Runs a shell command line in the test's directory; its stderr is kept.
    int run(const std::string& command)
    {
        const int status = std::system(("cd " + directory + " && " + command + " 2>" + path("stderr.txt")).c_str());
        std::ifstream err(path("stderr.txt"));
        std::ostringstream text;
        text << err.rdbuf();
        lastErr = text.str();
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    int tool(const std::string& arguments) { return run(std::string(LUMENVEIL_TOOL_PATH) + " render -q " + arguments); }

    // filter_params for ffmpeg: the given values by name, every other
    // parameter before the last given as the filter reports it.
    std::string ffmpegParams(const std::map<std::string, std::string>& given)
    {
        const std::vector<DeclaredParameter> declared = declaredParameters();
        size_t last = 0;
        for (size_t i = 0; i < declared.size(); ++i)
            if (given.count(declared[i].name))
                last = i + 1;
        std::string text;
        for (size_t i = 0; i < last; ++i) {
            const auto it = given.find(declared[i].name);
            text += (i ? "|" : "") + (it != given.end() ? it->second : declared[i].defaultText);
        }
        return text;
    }

    int ffmpeg(const std::string& input, const std::string& params, const std::string& output, int frames = 1)
    {
        return run("ffmpeg -v error -y -loop 1 -i " + input + " -frames:v " + std::to_string(frames) +
                   " -vf \"frei0r=filter_name=lumenveil:filter_params='" + params + "'\" -pix_fmt rgba " + output);
    }

    // real_time=0: the consumer renders every frame in order, and drops none
    // when the machine is busy.
    int melt(const std::string& input, int frames, const std::string& properties, const std::string& output)
    {
        return run("melt -quiet -profile profile.txt " + input + " out=" + std::to_string(frames - 1) +
                   " -filter frei0r.lumenveil " + properties + " -consumer avformat:" + output +
                   " vcodec=png pix_fmt=rgba real_time=0");
    }

    // Lines of the last run's stderr that the filter wrote.
    int filterLines() const
    {
        int count = 0;
        for (size_t at = lastErr.find("lumenveil:"); at != std::string::npos; at = lastErr.find("lumenveil:", at + 1))
            ++count;
        return count;
    }

    std::string directory;
    std::string lastErr;
};

TEST_F(Frei0rHostTest, FfmpegFramesEqualTheToolsForACircleARotatedHexagonAndAnImageAperture)
{
    // Each input with a Spread picture of its size, as the tool takes it.
    std::filesystem::copy_file(LUMENVEIL_PHOTO, path("photo.png"));
    for (const char* size : {"640x360", "592x400"})
        ASSERT_EQ(run(std::string("ffmpeg -v error -y -f lavfi -i mandelbrot=s=") + size + " -frames:v 1 spread-" +
                      size + ".png"),
                  0);
    // Sides 6 is (6 - 3) / 17 of the filter's 0..1 and rotation 15 degrees
    // (15 + 1000) / 2000, as the parameters' explanations say.
    const struct {
        std::map<std::string, std::string> filter;
        std::string tool;
    } cases[] = {
        {{{"radius-x", "0.04"}}, "--radius-x 0.04"},
        {{{"shape", "polygon"}, {"radius-x", "0.05"}, {"sides", exact(3.0 / 17)}, {"rotation", exact(1015.0 / 2000)},
          {"bright-emphasis", exact(79.0 / 99)}},
         "--shape polygon --radius-x 0.05 --sides 6 --rotation 15 --bright-emphasis 80"},
        {{{"shape", "image"}, {"centre", "0.3/0.6"}, {"radius-psf1", "0.02"}, {"radius-psf2", "0.04"},
          {"spread", "SPREAD"}},
         "--shape image --centre 0.3,0.6 --radius-psf1 0.02 --radius-psf2 0.04 --spread SPREAD"},
    };
    for (const std::string input : {"frame.png", "photo.png"})
        for (const auto& c : cases) {
            SCOPED_TRACE(input + " " + c.tool);
            const std::string spread = input == "frame.png" ? "spread-640x360.png" : "spread-592x400.png";
            std::map<std::string, std::string> filter = c.filter;
            if (filter.count("spread"))
                filter["spread"] = spread;
            std::string options = c.tool;
            if (const size_t at = options.find("SPREAD"); at != std::string::npos)
                options.replace(at, 6, spread);
            ASSERT_EQ(ffmpeg(input, ffmpegParams(filter), "filter.png"), 0) << lastErr;
            ASSERT_EQ(tool(input + " -o tool.png --engine fast " + options), 0) << lastErr;
            const std::vector<unsigned char> filtered = rgba(path("filter.png"));
            EXPECT_TRUE(filtered == rgba(path("tool.png")));
            EXPECT_FALSE(filtered == rgba(path(input)));
        }
}

TEST_F(Frei0rHostTest, MeltFramesWithAKeyframedRadiusEqualTheToolsWithKeys)
{
    ASSERT_EQ(melt("frame.png", 10, "\"radius-x=0=0.01;9=0.06\"", "melt-%02d.png"), 0) << lastErr;
    for (int f = 0; f < 10; ++f)
        std::filesystem::create_symlink(path("frame.png"), path("seq." + std::to_string(f) + ".png"));
    ASSERT_EQ(tool("seq.@.png --frames 0-9 -o tool.@.png --engine fast --key radius-x=0:0.01 --key radius-x=9:0.06"),
              0)
        << lastErr;
    char name[32];
    for (int f = 0; f < 10; ++f) {
        std::snprintf(name, sizeof name, "melt-%02d.png", f + 1);  // melt counts its files from 1
        EXPECT_TRUE(rgba(path(name)) == rgba(path("tool." + std::to_string(f) + ".png"))) << "frame " << f;
    }
}

TEST_F(Frei0rHostTest, ABadPresetOrSpreadLeavesFramesUnchangedWithOneLine)
{
    const std::vector<unsigned char> input = rgba(path("frame.png"));
    ASSERT_EQ(ffmpeg("frame.png", ffmpegParams({{"preset", "no-such-preset.json"}, {"radius-x", "0.05"}}),
                     "ffmpeg-%d.png", 3),
              0);
    EXPECT_EQ(filterLines(), 1) << lastErr;
    for (const char* frame : {"ffmpeg-1.png", "ffmpeg-3.png"})
        EXPECT_TRUE(rgba(path(frame)) == input) << frame;
    ASSERT_EQ(melt("frame.png", 3, "shape=image spread=no-such-picture.png", "melt-%02d.png"), 0);
    EXPECT_EQ(filterLines(), 1) << lastErr;
    for (const char* frame : {"melt-01.png", "melt-03.png"})
        EXPECT_TRUE(rgba(path(frame)) == input) << frame;
}

TEST_F(Frei0rHostTest, TheEditorsDescriptionParsesAndNamesEveryParameter)
{
    ASSERT_EQ(run("xmllint --xpath '//effect/parameter/@name' " + std::string(KDENLIVE_DESCRIPTION_PATH) + " > names.txt"),
              0)
        << lastErr;
    std::ifstream file(path("names.txt"));
    std::string names((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    const std::vector<DeclaredParameter> declared = declaredParameters();
    ASSERT_GT(declared.size(), 10u);
    for (const DeclaredParameter& p : declared)
        EXPECT_NE(names.find("name=\"" + p.name + "\""), std::string::npos) << p.name;
    EXPECT_EQ(std::count(names.begin(), names.end(), '='), static_cast<long>(declared.size()));
}

}  // namespace
