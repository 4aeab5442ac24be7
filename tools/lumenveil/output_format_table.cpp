#include "tools/lumenveil/output_format_table.h"

#include <algorithm>
#include <cstdlib>

namespace {

constexpr SampleDepth U8 = SampleDepth::U8;
constexpr SampleDepth U16 = SampleDepth::U16;
constexpr SampleDepth Half = SampleDepth::Half;
constexpr SampleDepth Float = SampleDepth::Float;

// PNG's writer takes its zlib level apart from its "compression", which
// names a zlib strategy instead; the tool's "zip:N" and "none" are that level.
constexpr const char* kPngFormat = "png";
constexpr const char* kPngLevel = "png:compressionLevel";
constexpr int kPngDefaultLevel = 6;

// Writers that keep a sample type the tool does not hand them write another:
// PNG a float as 8 bits, TIFF and DPX a half as float, OpenEXR integers as
// half. A writer with no compressions listed has no choice of one (DPX, BMP)
// or always uses the one it has (HDR and RLA run lengths).
const std::vector<OutputFormat> kFormats = {
    {"openexr",
     {{"none"}, {"rle"}, {"zips", 1, 9}, {"zip", 1, 9}, {"piz"}, {"pxr24"}, {"b44"}, {"b44a"}, {"dwaa", 1, 1000},
      {"dwab", 1, 1000}},
     {Half, Float}},
    {"tiff", {{"none"}, {"lzw"}, {"zip", 1, 9}, {"packbits"}, {"jpeg", 1, 100, true}}, {U8, U16, Float}},
    {"png", {{"none"}, {"zip", 1, 9}}, {U8, U16}},
    {"jpeg", {{"jpeg", 1, 100}}, {U8}},
    {"dpx", {}, {U8, U16, Float}},
    {"pnm", {}, {U8, U16}},
    {"sgi", {}, {U8, U16}},
    {"iff", {{"none"}, {"rle"}}, {U8, U16}},
    {"targa", {{"none"}, {"rle"}}, {U8}},
    {"webp", {{"webp", 1, 100}, {"lossless"}}, {U8}},
    {"heif", {{"heic", 1, 100}, {"avif", 1, 100}}, {U8}},
    {"jpeg2000", {}, {U8, U16}},
    {"rla", {}, {U8, U16, Float}},
    {"fits", {}, {U8, Float}},
    {"hdr", {}, {Float}},
    {"bmp", {}, {U8}},
    {"gif", {}, {U8}},
    {"ico", {}, {U8}},
};

std::string kindText(const CompressionKind& kind)
{
    const std::string eightBit = kind.eightBitOnly ? ", 8-bit" : "";
    if (kind.highest == 0)
        return std::string(kind.name) + (eightBit.empty() ? "" : " (8-bit)");
    return std::string(kind.name) + " (" + std::to_string(kind.lowest) + " to " + std::to_string(kind.highest) +
           eightBit + ")";
}

// The words with `between` between them, and `last` before the last.
std::string joined(const std::vector<std::string>& words, const char* between, const char* last)
{
    std::string text;
    for (size_t i = 0; i < words.size(); ++i)
        text += (i == 0 ? "" : i + 1 == words.size() ? last : between) + words[i];
    return text;
}

}  // namespace

const std::vector<OutputFormat>& outputFormats() { return kFormats; }

const OutputFormat* findOutputFormat(const std::string& format)
{
    for (const OutputFormat& f : kFormats)
        if (format == f.format)
            return &f;
    return nullptr;
}

std::string compressionList(const OutputFormat& format)
{
    std::vector<std::string> words;
    for (const CompressionKind& kind : format.compressions)
        words.push_back(kindText(kind));
    return joined(words, ", ", " or ");
}

std::string compressionProblem(const OutputFormat& format, const std::string& compression,
                               const SampleDepth* written)
{
    const size_t colon = compression.find(':');
    const std::string name = compression.substr(0, colon);
    const std::string quoted = "\"" + compression + "\"";
    if (format.compressions.empty())
        return std::string(format.format) + " files have no choice of compression; leave out --compression";
    const auto kind = std::find_if(format.compressions.begin(), format.compressions.end(),
                                   [&](const CompressionKind& k) { return name == k.name; });
    if (kind == format.compressions.end())
        return quoted + " is not a compression of " + format.format + " files, which take " + compressionList(format);
    if (kind->eightBitOnly && written && *written != U8)
        return quoted + ": " + format.format + " files take " + name + " for 8-bit samples only, and these are " +
               depthName(*written) + " (give --depth 8)";
    if (colon == std::string::npos)
        return "";
    if (kind->highest == 0)
        return quoted + ": " + name + " takes no level";
    const std::string level = compression.substr(colon + 1);
    const bool digits =
        !level.empty() && level.size() <= 4 && level.find_first_not_of("0123456789") == std::string::npos;
    const int value = digits ? std::stoi(level) : -1;
    if (value < kind->lowest || value > kind->highest)
        return quoted + ": the level of " + name + " runs from " + std::to_string(kind->lowest) + " to " +
               std::to_string(kind->highest);
    return "";
}

bool holdsDepth(const OutputFormat& format, SampleDepth depth)
{
    return std::find(format.depths.begin(), format.depths.end(), depth) != format.depths.end();
}

std::string depthList(const OutputFormat& format)
{
    std::vector<std::string> words;
    for (SampleDepth depth : format.depths)
        words.push_back(depthName(depth));
    return joined(words, ", ", " or ");
}

SampleDepth depthWritten(const std::string& format, SampleDepth wanted)
{
    const OutputFormat* f = findOutputFormat(format);
    if (!f || f->depths.empty() || holdsDepth(*f, wanted))
        return wanted;
    for (SampleDepth depth : f->depths)
        if (depth > wanted)
            return depth;
    return f->depths.back();
}

void describeCompression(const std::string& format, const std::string& compression, OIIO::ImageSpec& layout)
{
    if (compression.empty())
        return;
    if (format != kPngFormat) {
        layout.attribute("compression", compression);
        return;
    }
    const size_t colon = compression.find(':');
    const bool none = compression == "none";
    layout.attribute(kPngLevel, none ? 0
                                     : colon == std::string::npos ? kPngDefaultLevel
                                                                  : std::atoi(compression.c_str() + colon + 1));
}

std::string compressionHelp()
{
    std::vector<std::string> lines;
    for (const OutputFormat& f : kFormats)
        if (!f.compressions.empty())
            lines.push_back(std::string(f.format) + ": " + compressionList(f));
    return joined(lines, "; ", "; ");
}

std::string depthHelp()
{
    std::vector<std::string> lines;
    for (const OutputFormat& f : kFormats)
        lines.push_back(std::string(f.format) + ": " + depthList(f));
    return joined(lines, "; ", "; ");
}
