// Frames rendered from memory through the embedding library equal the
// lumenveil tool's renders of the same pictures (the tool runs as its own
// process), for every sample type, on threads at once; bad frames and values
// are refused with the output untouched.
#include <gtest/gtest.h>

#include <OpenImageIO/imageio.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "embed/embedded_effect.h"
#include "embed/errors.h"
#include "embed/module_locator.h"

namespace {

// A picture of `type` samples, interleaved: a ramp with a few bright dots, so
// that emphasis and shape show.
struct Picture {
    int width, height, channels;
    OIIO::TypeDesc type;
    std::vector<unsigned char> bytes;

    FrameView View() const
    {
        const SampleType t = type == OIIO::TypeDesc::UINT8    ? SampleType::U8
                             : type == OIIO::TypeDesc::UINT16 ? SampleType::U16
                                                              : SampleType::Float;
        return FrameView{const_cast<unsigned char*>(bytes.data()),
                         static_cast<ptrdiff_t>(width) * channels * static_cast<ptrdiff_t>(type.size()), width, height,
                         channels, t};
    }
};

Picture pattern(int width, int height, int channels, OIIO::TypeDesc type, int seed)
{
    std::vector<float> v(static_cast<size_t>(width) * height * channels);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < channels; ++c) {
                const bool dot = (x * 7 + y * 13 + seed) % 97 == 0;
                v[(static_cast<size_t>(y) * width + x) * channels + c] =
                    dot ? 1.0f : static_cast<float>((x * (c + 3) + y * 5 + seed * 11) % 200) / 255.0f;
            }
    Picture p{width, height, channels, type, std::vector<unsigned char>(v.size() * type.size())};
    OIIO::convert_pixel_values(OIIO::TypeDesc::FLOAT, v.data(), type, p.bytes.data(), static_cast<int>(v.size()));
    return p;
}

class EmbeddedEffectTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        char name[] = "/tmp/lumenveil-embed-test-XXXXXX";
        ASSERT_NE(mkdtemp(name), nullptr);
        directory = name;
    }
    void TearDown() override { std::filesystem::remove_all(directory); }

    std::string path(const std::string& name) const { return directory + "/" + name; }

    void write(const std::string& name, const Picture& p) const
    {
        auto out = OIIO::ImageOutput::create(path(name));
        ASSERT_TRUE(out);
        OIIO::ImageSpec layout(p.width, p.height, p.channels, p.type);
        layout.attribute("oiio:UnassociatedAlpha", 1);  // samples as they are, as the tool takes them
        ASSERT_TRUE(out->open(path(name), layout));
        ASSERT_TRUE(out->write_image(p.type, p.bytes.data()));
        out->close();
    }

    // The tool's render of `input` with `options`, read back in `like`'s
    // type and channels (the tool writes grey as R G B: red is taken).
    Picture toolRender(const std::string& input, const std::string& options, const Picture& like) const
    {
        const std::string output = path("tool-" + input);
        const std::string command = std::string(LUMENVEIL_TOOL_PATH) + " render -q " + path(input) + " -o " + output +
                                    " " + options;
        EXPECT_EQ(std::system(command.c_str()), 0) << command;
        OIIO::ImageSpec config;
        config.attribute("oiio:UnassociatedAlpha", 1);
        OIIO::ImageSpec layout;
        auto in = OIIO::ImageInput::create(output, false, &config);
        Picture p = like;
        if (!in || !in->open(output, layout, config))
            return p;
        const int fileChannels = layout.nchannels;
        std::vector<unsigned char> all(static_cast<size_t>(p.width) * p.height * fileChannels * p.type.size());
        in->read_image(0, 0, 0, fileChannels, p.type, all.data());
        const int from[4][4] = {{0}, {0, 3}, {0, 1, 2}, {0, 1, 2, 3}};
        const size_t sample = p.type.size();
        for (size_t i = 0; i < static_cast<size_t>(p.width) * p.height; ++i)
            for (int c = 0; c < p.channels; ++c) {
                const int f = std::min(from[p.channels - 1][c], fileChannels - 1);
                std::memcpy(&p.bytes[(i * p.channels + c) * sample], &all[(i * fileChannels + f) * sample], sample);
            }
        return p;
    }

    EffectModule module{locateModule("")};
    std::string directory;
};

TEST_F(EmbeddedEffectTest, FramesOfEverySampleTypeEqualTheToolsRenders)
{
    // Heights that are no multiple of four: both hosts hand over whole row slices.
    const struct {
        int channels;
        OIIO::TypeDesc type;
        const char* file;
    } cases[] = {{4, OIIO::TypeDesc::UINT8, "rgba8.png"},
                 {3, OIIO::TypeDesc::UINT16, "rgb16.tif"},
                 {2, OIIO::TypeDesc::FLOAT, "greyalpha.tif"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        const Picture input = pattern(70, 45, c.channels, c.type, c.channels);
        write(c.file, input);
        const Picture expected =
            toolRender(c.file, "--engine fast --shape polygon --sides 5 --rotation 20 --radius-x 0.08", input);
        EmbeddedEffect effect(module);
        effect.Set("engine", 1);
        effect.Set("shape", 2);
        effect.Set("sides", 5);
        effect.Set("rotation", 20);
        effect.Set("radius-x", 0.08);
        Picture output = input;
        effect.Render(input.View(), output.View(), 0.0);
        EXPECT_TRUE(output.bytes == expected.bytes);
        EXPECT_FALSE(output.bytes == input.bytes);
    }
}

TEST_F(EmbeddedEffectTest, FourEffectsOfDifferentSizesAperturesAndEnginesRenderOnThreadsAtOnce)
{
    // Each thread's effect, frames, and the tool's render of each frame alone.
    struct Run {
        std::string options;
        std::vector<std::pair<const char*, double>> values;
        std::vector<Picture> inputs, expected, outputs;
    };
    Run runs[4] = {
        {"--engine faithful --radius-x 0.1", {{"engine", 0}, {"radius-x", 0.1}}, {}, {}, {}},
        {"--engine fast --shape polygon --sides 6 --radius-x 0.05",
         {{"engine", 1}, {"shape", 2}, {"sides", 6}, {"radius-x", 0.05}}, {}, {}, {}},
        {"--engine fast-float --shape ellipse --radius-x 0.04 --radius-y 0.09 --rotation 30",
         {{"engine", 2}, {"shape", 1}, {"radius-x", 0.04}, {"radius-y", 0.09}, {"rotation", 30}}, {}, {}, {}},
        {"--engine fast --shape image --radius-psf1 0.05 --radius-psf2 0.08",
         {{"engine", 1}, {"shape", 3}, {"radius-psf1", 0.05}, {"radius-psf2", 0.08}}, {}, {}, {}},
    };
    // The image aperture is cut anew on each frame, over the last kernel: its
    // frames match a sequence's, not the tool's single renders, so it gets one.
    const int frames[4] = {3, 3, 3, 1};
    for (int r = 0; r < 4; ++r)
        for (int f = 0; f < frames[r]; ++f) {
            const Picture p = pattern(64 + 16 * r, 60 - 8 * r, 4, OIIO::TypeDesc::UINT8, r * 10 + f);
            char name[24];
            std::snprintf(name, sizeof name, "t%d%d.png", r, f);
            write(name, p);
            runs[r].inputs.push_back(p);
            runs[r].expected.push_back(toolRender(name, runs[r].options, p));
        }
    std::vector<std::thread> threads;
    for (int r = 0; r < 4; ++r)
        threads.emplace_back([&, r] {
            EmbeddedEffect effect(module);
            for (const auto& [name, value] : runs[r].values)
                effect.Set(name, value);
            for (const Picture& p : runs[r].inputs) {
                Picture out = p;
                effect.Render(p.View(), out.View(), 0.0);
                runs[r].outputs.push_back(out);
            }
        });
    for (std::thread& t : threads)
        t.join();
    for (int r = 0; r < 4; ++r)
        for (int f = 0; f < frames[r]; ++f) {
            EXPECT_TRUE(runs[r].outputs[f].bytes == runs[r].expected[f].bytes) << "thread " << r << " frame " << f;
            EXPECT_FALSE(runs[r].outputs[f].bytes == runs[r].inputs[f].bytes) << "thread " << r << " frame " << f;
        }
}

TEST_F(EmbeddedEffectTest, BadFramesAndValuesAreRefusedAndTheOutputIsUntouched)
{
    EmbeddedEffect effect(module);
    const Picture input = pattern(32, 16, 4, OIIO::TypeDesc::UINT8, 1);
    Picture output = pattern(32, 15, 4, OIIO::TypeDesc::UINT8, 2);
    const std::vector<unsigned char> before = output.bytes;
    EXPECT_THROW(effect.Render(input.View(), output.View(), 0.0), UsageError);
    FrameView fiveChannels = input.View();
    fiveChannels.channels = 5;
    EXPECT_THROW(effect.Render(fiveChannels, fiveChannels, 0.0), UsageError);
    EXPECT_TRUE(output.bytes == before);
    EXPECT_THROW(effect.Set("radius-x", 0.31), UsageError);
    EXPECT_THROW(effect.Set("sides", 4.5), UsageError);
    EXPECT_THROW(effect.Set("no-such", 1.0), UsageError);
    EXPECT_DOUBLE_EQ(effect.Get("radius-x"), 0.03);
}

}  // namespace
