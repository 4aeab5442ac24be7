// What `lumenveil render` is asked to do: its files and host settings, as
// the command line gives them, and the options that fill them.
#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

// Seconds a frame takes before the terminal shows its stage, unless --progress-after.
constexpr double kProgressAfterSeconds = 2.0;

struct RenderRequest {
    std::string input;
    std::string output;
    std::string spread;
    std::string frames;
    std::string preset;
    std::string savePreset;
    std::string overlay;
    std::string psf;
    std::string hostFormat;
    std::string depth;         // the output's sample depth (8, 16, float), or a depth map
    std::string depthChannel;  // the depth map's channel (or INPUT's, without a depth map)
    std::string coc;           // the circle-of-confusion picture
    std::string compression;
    std::string keep;
    std::string fields = "both";
    std::vector<std::string> keys;
    std::string exposure;  // stops, with --linear; empty: none
    long renumber = -1;    // the output's number of the first frame listed; -1: the input's numbers
    bool framesClamp = false;  // frames whose INPUT is missing are skipped, not a failure
    bool overwriteInput = false;  // an output may replace one of the run's inputs
    double rate = 25.0;
    double pixelAspect = 1.0;
    bool matte = false;
    bool exactHostFrame = false;
    bool quiet = false;
    double progressAfter = kProgressAfterSeconds;
    bool unassociatedAlpha = false;  // OpenEXR files taken as unassociated
};

// Adds the render command's own options (not the parameters) to `command`,
// bound to `request`.
void addRenderOptions(CLI::App& command, RenderRequest& request);
