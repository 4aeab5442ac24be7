// Depth maps in image files: one channel of depth a pixel, from a file of
// one channel, or from the channel of a multi-channel file that
// --depth-channel names (CG renders carry "Z" or "depth.Z" in their EXR).
#pragma once

#include <string>
#include <vector>

// The channel of a file that holds depth.
struct DepthSource {
    std::string path;
    std::string channel;  // empty: the file must have one channel
};

// What a depth file holds for a render.
struct DepthHeader {
    int width = 0;
    int height = 0;
    int channel = 0;  // the index of the depth channel in the file
};

// The header of `source`; Failure when the file cannot be read, has several
// channels and no channel was named, or has no channel of that name (a name
// matches a channel of that name, or one ending in "." and the name).
DepthHeader readDepthHeader(const DepthSource& source);
// The depth samples of `source`, rows top-down, as floats; Failure as above,
// or when the file is not width x height.
std::vector<float> readDepth(const DepthSource& source, int width, int height);
// Writes one float channel named Z, through a temporary file beside `path`.
void writeDepth(const std::string& path, int width, int height, const std::vector<float>& depth);
