// The picture file the Image shape cuts its aperture from, made into a Spread
// frame of the video's size: taken as it is when the sizes agree, else fitted
// into the frame (scaled with its aspect kept, centred, black around).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "embed/frame_view.h"

class SpreadPicture {
public:
    // Reads `path` for width x height frames; Failure with the reason when it
    // cannot be read or has other than 1 to 4 channels.
    SpreadPicture(const std::string& path, int32_t width, int32_t height);

    // The frame: float samples of the file's channels.
    FrameView View();

private:
    int32_t width, height, channels;
    std::vector<float> samples;
};
