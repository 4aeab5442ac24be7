// Guards against values a render would take and then ignore: a compression
// or sample depth the output's file format has not, keys between frames,
// an overlay for a shape that draws none, a matte from a file without alpha.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "embed/effect_instance.h"
#include "tools/lumenveil/image_file.h"
#include "tools/lumenveil/render_outputs.h"
#include "tools/lumenveil/render_request.h"

// UsageError when --compression or --depth (`given`) is one that the
// format of OUTPUT or of --overlay (the files they apply to) does not take,
// naming what it takes. The compression is checked against the depth each
// file is written at: `given`, else `input` (the input's) as the format
// holds it, when either is known.
void checkOutputFormats(const RenderRequest& request, const RunOutputs& outputs, long firstFrame,
                        std::optional<SampleDepth> given, std::optional<SampleDepth> input = std::nullopt);

// Failure when a key of the preset does not lie on a frame at --rate: a
// negative time, or one between two frames.
void checkPresetKeys(const RenderRequest& request);

// UsageError when --overlay is given but the effect's shape draws no
// overlay at any of `frames`' times, naming the shapes that do.
void checkOverlayShape(const EffectInstance& effect, const RenderRequest& request, const std::vector<long>& frames);

// One line on stderr when --matte is given for an INPUT without alpha: the
// matte is then full everywhere and changes nothing.
void warnMatteWithoutAlpha(const RenderRequest& request, const std::string& input, const ImageHeader& header);
