#include "tools/lumenveil/demo_command.h"

#include <cstdio>
#include <filesystem>
#include <system_error>
#include <vector>

#include <CLI/CLI.hpp>

#include "tools/lumenveil/cli_error.h"
#include "tools/lumenveil/demo_scene.h"
#include "tools/lumenveil/depth_file.h"
#include "tools/lumenveil/depth_render.h"
#include "embed/effect_instance.h"
#include "tools/lumenveil/render_command.h"

namespace {

constexpr int kWidth = 640, kHeight = 360;

struct DemoRender {
    const char* file;
    const char* what;
    std::vector<std::string> options;  // the render command's parameter options
    bool spread;
};

// Renders `scene` to `output` with the parameter options given, through the
// same options and road as `lumenveil render`.
void render(const EffectModule& module, const std::string& scene, const std::string& output,
            const std::vector<std::string>& options, const std::string& spread, const std::string& overlay)
{
    std::vector<Parameter> parameters = toolParameters(module);
    CLI::App command;
    RenderRequest request;
    addRenderOptions(command, request);
    ParameterOptions parameterOptions(command, parameters);
    std::vector<std::string> args = options;
    args.insert(args.begin(), {scene, "-o", output, "--quiet"});
    if (!spread.empty())
        args.insert(args.end(), {"--spread", spread});
    if (!overlay.empty())
        args.insert(args.end(), {"--overlay", overlay});
    std::vector<std::string> reversed(args.rbegin(), args.rend());
    command.parse(reversed);
    runRender(module, request, parameterOptions);
}

// The night scene in scene-linear light, its lights at 4 to 40, defocused
// with the hexagon in a scene-linear render, and a display picture of the
// result.
void renderSceneLinear(const EffectModule& module, const std::string& directory)
{
    namespace fs = std::filesystem;
    const std::string scene = (fs::path(directory) / "night-light.exr").string();
    const std::string output = (fs::path(directory) / "night-linear.exr").string();
    const std::string picture = (fs::path(directory) / "night-linear.png").string();
    ImageFrame light = makeNightScene(kWidth, kHeight, true);
    light.depth = SampleDepth::Float;
    writeImage(scene, light, SampleDepth::Float, 3);
    render(module, scene, output,
           {"--linear", "--shape", "polygon", "--sides", "6", "--radius-x", "0.02", "--rotation", "15"}, "", "");
    ImageFrame result = readImage(output);
    toneMap(result);
    writeImage(picture, result, SampleDepth::U8, 3);
    std::printf("  %-16s the night scene in scene-linear light, lights at 4 to 40 (float)\n", "night-light.exr");
    std::printf("  %-16s its scene-linear render with the hexagon (float)\n", "night-linear.exr");
    std::printf("  %-16s that render tone-mapped for display\n", "night-linear.png");
}

}  // namespace

void runDemo(const EffectModule& module, const std::string& directory)
{
    namespace fs = std::filesystem;
    std::error_code error;
    fs::create_directories(directory, error);
    if (error)
        throw Failure("cannot create " + directory + ": " + error.message());
    const std::string scene = (fs::path(directory) / "scene.png").string();
    const std::string aperture = (fs::path(directory) / "aperture.png").string();
    const std::string sceneDepth = (fs::path(directory) / "scene-depth.exr").string();
    std::vector<float> depth;
    writeImage(scene, makeNightScene(kWidth, kHeight, false, &depth), SampleDepth::U8, 3);
    writeDepth(sceneDepth, kWidth, kHeight, depth);
    // The star spans the inner cut-out radius of the Image render below.
    writeImage(aperture, makeStarAperture(kWidth, kHeight, 0.03f * 0.5f * kWidth), SampleDepth::U8, 3);

    const std::vector<DemoRender> renders = {
        {"circle.png", "circle aperture", {"--shape", "circle", "--radius-x", "0.02"}, false},
        {"hexagon.png", "hexagonal aperture", {"--shape", "polygon", "--sides", "6", "--radius-x", "0.02", "--rotation", "15"}, false},
        {"star.png", "aperture cut from aperture.png", {"--shape", "image", "--radius-psf1", "0.03", "--radius-psf2", "0.035"}, true},
    };
    std::printf("lumenveil demo: the scene and its defocused versions are in %s\n", directory.c_str());
    std::printf("  %-16s the night scene (input)\n", "scene.png");
    std::printf("  %-16s the aperture picture for the Image shape\n", "aperture.png");
    std::printf("  %-16s the scene's depth map, metres (0: the sky, at infinity)\n", "scene-depth.exr");
    for (const DemoRender& demo : renders) {
        const std::string output = (fs::path(directory) / demo.file).string();
        render(module, scene, output, demo.options, demo.spread ? aperture : "", "");
        std::printf("  %-16s %s\n", demo.file, demo.what);
    }
    // Depth of field: a 85 mm lens at f/1.4 on a 36 mm sensor, focused on the nearest building (14 m).
    const std::vector<std::string> lens = {"--depth", sceneDepth, "--focus", "14", "--f-stop", "1.4", "--focal-length",
                                           "85", "--sensor-width", "36", "--max-radius", "0.06", "--shape",
                                           "polygon", "--sides", "6", "--rotation", "15"};
    std::vector<std::string> withCoc = lens;
    withCoc.insert(withCoc.end(), {"--coc", (fs::path(directory) / "depth-coc.png").string()});
    render(module, scene, (fs::path(directory) / "depth-of-field.png").string(), withCoc, "", "");
    std::printf("  %-16s depth of field from scene-depth.exr (85 mm f/1.4 focused at 14 m)\n", "depth-of-field.png");
    std::printf("  %-16s its blur radius per pixel (white: the largest)\n", "depth-coc.png");
    renderSceneLinear(module, directory);
    const std::string overlay = (fs::path(directory) / "overlay.png").string();
    try {
        render(module, scene, (fs::path(directory) / "star.png").string(), renders[2].options, aperture, overlay);
        std::printf("  %-16s the Image render with the viewer overlay drawn over it\n", "overlay.png");
    } catch (const Failure& failure) {
        std::printf("  (no overlay.png: %s)\n", failure.what());
    }
}
