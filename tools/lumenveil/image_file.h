// Image files through OpenImageIO: any format it reads, 8-bit, 16-bit or
// float, grey or colour, with or without alpha, read and written as RGBA
// floats, whole or row by row; written to a temporary file beside the target
// and renamed into place.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tools/lumenveil/staged_file.h"

enum class SampleDepth { U8, U16, Half, Float };

// What a file holds, read from its header alone.
struct ImageHeader {
    int width = 0;
    int height = 0;
    int channels = 0;  // 1 grey, 2 grey + alpha, 3 RGB, 4 RGBA
    SampleDepth depth = SampleDepth::U8;
    std::string format;  // OpenImageIO's name of the file format: "openexr", "png", ...
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

// A file open for reading, row by row. Failure when the file is missing,
// unreadable, or has a channel count other than 1 to 4.
class ImageReader {
public:
    // With `layers`, a file whose first channels are named R, G, B (and A)
    // is taken as those alone: a render's layers beside its colour (a Z
    // channel) are left for others to read.
    explicit ImageReader(const std::string& path, bool layers = false);
    ~ImageReader();
    ImageReader(const ImageReader&) = delete;
    ImageReader& operator=(const ImageReader&) = delete;

    const ImageHeader& Header() const { return header; }
    // Rows y to y + count - 1 (0 is the top row) into `rgba`, four floats a
    // pixel: grey is taken as R = G = B, no alpha is full alpha.
    void ReadRows(int y, int count, float* rgba);

private:
    struct File;
    std::unique_ptr<File> file;
    ImageHeader header;
};

// A file written row by row, top row first, to a temporary file beside the
// target that Finish renames into place (or Close hands on for renaming with
// others); without either it is removed. It has
// `channels` channels (3 or 4; 1 and 2 are written as 3 and 4) at `depth`,
// or the depth the format holds instead (depthWritten), with `compression`
// as --compression names it (empty: the format's own default). Failure when the file cannot be written, leaving nothing at the
// target but what was there before.
class ImageWriter {
public:
    ImageWriter(const std::string& path, int width, int height, SampleDepth depth, int channels,
                const std::string& compression = "");
    ~ImageWriter();
    ImageWriter(const ImageWriter&) = delete;
    ImageWriter& operator=(const ImageWriter&) = delete;

    // The next `count` rows, four floats a pixel.
    void WriteRows(int count, const float* rgba);
    // The whole file written and checked, its temporary not yet renamed.
    StagedFile Close();
    void Finish() { Close().Commit(); }
    // OpenImageIO's name of the format written: "openexr", "png", ...
    std::string FormatName() const;

private:
    struct File;
    std::unique_ptr<File> file;
};

// The whole file at once, as ImageReader reads it.
ImageHeader readImageHeader(const std::string& path, bool layers = false);
ImageFrame readImage(const std::string& path);
// The whole frame at once, as ImageWriter writes it: staged, or renamed into place.
StagedFile stageImage(const std::string& path, const ImageFrame& frame, SampleDepth depth, int channels,
                      const std::string& compression = "");
void writeImage(const std::string& path, const ImageFrame& frame, SampleDepth depth, int channels,
                const std::string& compression = "");

// Writes `text` to `path` through a temporary file, every byte checked and on
// disk, and a rename; Failure otherwise. stageTextFile leaves the rename.
StagedFile stageTextFile(const std::string& path, const std::string& text);
void writeTextFile(const std::string& path, const std::string& text);
// The whole file; Failure when it cannot be read or is not a regular file.
std::string readTextFile(const std::string& path);

// "8", "16", "half", "float".
const char* depthName(SampleDepth depth);
