// The checks a render makes before it writes anything: the request's options
// and file names alone (checkRequest), then what the files and the effect say
// (checkRun), so that a bad run writes nothing.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "hostsdk/image_format_geometry.h"
#include "embed/effect_instance.h"
#include "tools/lumenveil/depth_file.h"
#include "tools/lumenveil/frame_pattern.h"
#include "tools/lumenveil/image_file.h"
#include "tools/lumenveil/render_outputs.h"
#include "tools/lumenveil/render_request.h"
#include "tools/lumenveil/scene_linear.h"

// The checked form of a request.
struct RenderPlan {
    bool sequence = false;
    FrameList frames;
    long renumberOffset = 0;  // output number minus input number
    std::array<int32_t, 4> selectors{};
    uint32_t fieldMask = 0;
    std::optional<SampleDepth> depth;
    std::optional<DepthSource> depthMap;  // a depth-of-field render's depth (a pattern in a sequence)
};

// Whether the depth comes from a channel of INPUT itself (--depth-channel
// without a depth map): INPUT is then read as a file of layers.
bool depthInInput(const RenderRequest& request, const RenderPlan& plan);

// UsageError for the first option that is malformed or does not go with the
// others.
RenderPlan checkRequest(const RenderRequest& request, const RunOutputs& outputs);

// Whether every file frame `f` reads exists: INPUT, and the Spread picture
// and depth map where they are sequences.
bool frameFilesExist(const RenderRequest& request, const RenderPlan& plan, long f);

// With --frames-clamp, drops the frames whose INPUT (or Spread or depth map,
// when they are sequences) is missing and says which in one line on stderr;
// Failure when none is left.
void clampToExistingFrames(const RenderRequest& request, RenderPlan& plan);

// What the run knows before its first frame.
struct RenderSetup {
    ImageHeader header;  // of the first frame
    const HostFormatGeometry* format = nullptr;
    int32_t rows = 0;    // handed to the effect: the height, or it padded to whole row slices
    LightPath light;     // how rows pass between the files and the frames
};

// Failure unless every input (and Spread) file of the range exists, every
// frame fits the transform of the effect's engine at its time, and every
// output can be written. A scene-linear `light` path hands frames over as
// MFIF_RGBA_FLOAT whatever the files' depth.
RenderSetup checkRun(const EffectInstance& effect, const RenderRequest& request, const RenderPlan& plan,
                     const RunOutputs& outputs, const LightPath& light);

// Failure unless the directory of `path` exists and can be written to.
void checkWritable(const std::string& path);
