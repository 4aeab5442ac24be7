#include "tools/lumenveil/focus_command.h"

#include <cmath>
#include <cstdio>

#include "hostsdk/IDSDepthRadius.h"
#include "tools/lumenveil/cli_error.h"
#include "tools/lumenveil/depth_file.h"
#include "tools/lumenveil/depth_render.h"
#include "tools/lumenveil/image_file.h"

void addFocusOptions(CLI::App& command, FocusRequest& r)
{
    command.add_option("INPUT", r.input, "The frame (its size; with --depth-channel, its depth too)")->required();
    command.add_option("--depth", r.depth, "The depth map, one channel the size of INPUT");
    command.add_option("--depth-channel", r.channel,
                       "The channel holding depth, in the depth map or, without --depth, in INPUT (Z, depth.Z)");
    command.add_option("--at", r.at, "The pixel X,Y, 0,0 at the top left")->required()->type_name("X,Y");
}

void printFocus(const EffectModule& module, const FocusRequest& r, const ParameterOptions& parameters)
{
    int x = 0, y = 0;
    char end = 0;
    if (std::sscanf(r.at.c_str(), "%d,%d%c", &x, &y, &end) != 2)
        throw UsageError("--at: \"" + r.at + "\" is not X,Y in whole pixels");
    if (r.depth.empty() && r.channel.empty())
        throw UsageError("focus needs a depth map: --depth FILE or --depth-channel NAME");
    const DepthSource source{r.depth.empty() ? r.input : r.depth, r.channel};
    const ImageHeader frame = readImageHeader(r.input, true);
    if (x < 0 || y < 0 || x >= frame.width || y >= frame.height)
        throw UsageError("--at " + r.at + " lies outside the " + std::to_string(frame.width) + " x " +
                         std::to_string(frame.height) + " frame");
    const std::vector<float> depth = readDepth(source, frame.width, frame.height);
    EffectInstance effect = makeRenderEffect(module, true, parameters);
    parameters.Apply(effect);
    useLensWhenGiven(effect, parameters);
    const float z = depth[static_cast<size_t>(y) * frame.width + x];
    const ComRef<IDSDepthRadius> lens = ComRef<IDSDepthRadius>::Query(effect.Object(), IID_IDSDepthRadius);
    double radius = 0.0;
    if (!lens || FAILED(lens->RadiusOfDepth(z, frame.width, 0.0, &radius)))
        throw Failure("the effect gives no blur radius");
    const double focus = effect.Get(*findParameter(effect.Parameters(), "focus"), 0.0);
    std::printf("pixel %d,%d: depth %g\n", x, y, z);
    std::printf("blur radius %.2f px %s (focus %g)\n", std::fabs(radius),
                radius < 0.0 ? "in front of the focus" : radius > 0.0 ? "behind the focus" : "at the focus", focus);
    if (std::isfinite(z) && z > 0.0f)
        std::printf("to focus there: --focus %g\n", z);
}
