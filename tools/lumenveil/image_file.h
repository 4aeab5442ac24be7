// Image files through OpenImageIO: any format it reads, 8-bit, 16-bit or
// float, grey or colour, with or without alpha, held as RGBA floats; written
// to a temporary file beside the target and renamed into place.
#pragma once

#include <string>
#include <vector>

enum class SampleDepth { U8, U16, Half, Float };

// What a file holds, read from its header alone.
struct ImageHeader {
    int width = 0;
    int height = 0;
    int channels = 0;  // 1 grey, 2 grey + alpha, 3 RGB, 4 RGBA
    SampleDepth depth = SampleDepth::U8;
};

// A picture in memory: four floats a pixel (R G B A, 1.0 full), rows top-down.
struct ImageFrame {
    int width = 0;
    int height = 0;
    int channels = 0;  // of the file it came from
    SampleDepth depth = SampleDepth::U8;
    std::vector<float> rgba;

    float* Pixel(int x, int y) { return &rgba[(static_cast<size_t>(y) * width + x) * 4]; }
    const float* Pixel(int x, int y) const { return &rgba[(static_cast<size_t>(y) * width + x) * 4]; }
};

// Failure when the file is missing, unreadable, or has a channel count other
// than 1 to 4.
ImageHeader readImageHeader(const std::string& path);
// Grey is taken as R = G = B; no alpha is full alpha.
ImageFrame readImage(const std::string& path);

// Writes `frame` with `channels` channels (3 or 4; 1 and 2 are written as 3
// and 4) at `depth`, with `compression` as the file format names it (empty:
// the format's own default); Failure when the file cannot be written, leaving
// nothing at `path` but what was there before.
void writeImage(const std::string& path, const ImageFrame& frame, SampleDepth depth, int channels,
                const std::string& compression = "");

// "" when `compression` is a compression the file writers know, perhaps
// with a level after a colon (zip:1), else why not.
std::string compressionProblem(const std::string& compression);

// Writes `text` to `path` through a temporary file and a rename; Failure otherwise.
void writeTextFile(const std::string& path, const std::string& text);
// The whole file; Failure when it cannot be read.
std::string readTextFile(const std::string& path);

// "8", "16", "half", "float".
const char* depthName(SampleDepth depth);
