// What each image file format the tool writes can hold: the compressions its
// writer takes (with the levels each takes) and the sample depths it stores.
// One table, read by the checks of --compression and --depth, by their help
// and by the writer. OpenImageIO names its writers' formats but not what
// they take, so this is kept here, as the formats' writers were found to
// behave.
#pragma once

#include <string>
#include <vector>

#include <OpenImageIO/imageio.h>

#include "tools/lumenveil/image_file.h"

// A compression as --compression names it: NAME, or NAME:LEVEL where
// `lowest` is above 0.
struct CompressionKind {
    const char* name;
    int lowest = 0;  // 0 0: takes no level
    int highest = 0;
    bool eightBitOnly = false;  // deeper samples are written with the format's default instead
};

struct OutputFormat {
    const char* format;  // OpenImageIO's name: "png", "openexr", ...
    std::vector<CompressionKind> compressions;  // none: the writer has no choice
    std::vector<SampleDepth> depths;            // from the shallowest
};

// Every format the table knows, in the order the help lists them.
const std::vector<OutputFormat>& outputFormats();
// The entry of OpenImageIO's format `format`, or null when the table has none.
const OutputFormat* findOutputFormat(const std::string& format);

// "" when `compression` (NAME or NAME:LEVEL) is one that `format` takes
// for samples of `written` (null: any depth), else why not, naming what it
// takes.
std::string compressionProblem(const OutputFormat& format, const std::string& compression,
                               const SampleDepth* written = nullptr);
// "none, lzw, zip (1 to 9)": what `format` takes; "" when it has no choice.
std::string compressionList(const OutputFormat& format);

bool holdsDepth(const OutputFormat& format, SampleDepth depth);
// "8 or 16": the depths `format` holds.
std::string depthList(const OutputFormat& format);
// The depth a file of `format` is written at when `wanted` is asked for:
// `wanted` when it holds it, else the first depth it holds deeper than it
// (in the order 8, 16, half, float), else its deepest. `wanted` itself for a
// format the table does not know.
SampleDepth depthWritten(const std::string& format, SampleDepth wanted);

// Sets `layout`'s attributes that make `format`'s writer use `compression`
// (empty: the format's own default).
void describeCompression(const std::string& format, const std::string& compression, OIIO::ImageSpec& layout);

// One line a format for the help: "png: none, zip (1 to 9)".
std::string compressionHelp();
std::string depthHelp();
