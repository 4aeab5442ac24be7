// The depth map on its way to the effect, and the circle-of-confusion picture
// on its way back: the host image of the Depth input (float R G B A, the depth
// in R), and the --coc picture of the blur radius of each pixel.
#pragma once

#include <string>
#include <vector>

#include "hostsdk/IDSImage.h"
#include "tools/lumenveil/image_file.h"

// A host image of `depth` (width x height, rows top-down) for a frame handed
// over with `rows` rows (the rows beyond the frame repeat its last).
ComRef<MemoryImage> depthHostImage(const std::vector<float>& depth, int32_t width, int32_t height, int32_t rows);

// The blur radius of each pixel of the effect's last frame, the top-left
// width x height of it, grey: in pixels when `inPixels` (float files), else
// as a fraction of the frame's largest radius, so that white is the largest
// blur. Failure when the effect has none to give.
ImageFrame circleOfConfusionPicture(IUnknown* effect, int width, int height, bool inPixels);

// Whether a file of this name holds float samples (OpenEXR, Radiance HDR).
bool imageFileIsFloat(const std::string& path);
