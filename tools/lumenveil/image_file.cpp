#include "tools/lumenveil/image_file.h"

#include <OpenImageIO/imageio.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

#include "tools/lumenveil/cli_error.h"

namespace {

namespace fs = std::filesystem;

SampleDepth depthOf(const OIIO::TypeDesc& type)
{
    switch (type.basetype) {
    case OIIO::TypeDesc::UINT8:
    case OIIO::TypeDesc::INT8:
        return SampleDepth::U8;
    case OIIO::TypeDesc::UINT16:
    case OIIO::TypeDesc::INT16:
        return SampleDepth::U16;
    case OIIO::TypeDesc::HALF:
        return SampleDepth::Half;
    default:
        return SampleDepth::Float;
    }
}

OIIO::TypeDesc typeOf(SampleDepth depth)
{
    switch (depth) {
    case SampleDepth::U8:
        return OIIO::TypeDesc::UINT8;
    case SampleDepth::U16:
        return OIIO::TypeDesc::UINT16;
    case SampleDepth::Half:
        return OIIO::TypeDesc::HALF;
    default:
        return OIIO::TypeDesc::FLOAT;
    }
}

// A name beside `target` that no other writer of this process or another uses.
fs::path temporaryBeside(const fs::path& target)
{
    static std::atomic<unsigned> serial{0};
    std::string name = ".";
    name += target.stem().string();
    name += ".partial-";
    name += std::to_string(getpid());
    name += '-';
    name += std::to_string(serial++);
    name += target.extension().string();
    return target.parent_path() / name;
}

// Moves the finished temporary file onto the target.
void commit(const fs::path& temporary, const fs::path& target)
{
    std::error_code error;
    fs::rename(temporary, target, error);
    if (error) {
        fs::remove(temporary, error);
        throw Failure("cannot write " + target.string() + ": " + error.message());
    }
}

// A file open for reading, and its layout (size, channels, sample type).
struct OpenFile {
    std::unique_ptr<OIIO::ImageInput> in;
    OIIO::ImageSpec layout;
};

OpenFile openInput(const std::string& path)
{
    std::error_code error;
    if (!fs::exists(path, error))
        throw Failure("cannot read " + path + ": no such file");
    // Colour as the file stores it, never multiplied by alpha on the way in.
    OIIO::ImageSpec config;
    config.attribute("oiio:UnassociatedAlpha", 1);
    OpenFile file;
    file.in = OIIO::ImageInput::create(path, false, &config);
    if (!file.in || !file.in->open(path, file.layout, config)) {
        const std::string reason = file.in ? file.in->geterror() : OIIO::geterror();
        throw Failure("cannot read " + path + ": " + (reason.empty() ? "not an image file" : reason));
    }
    const int channels = file.layout.nchannels;
    if (channels < 1 || channels > 4)
        throw Failure("cannot use " + path + ": it has " + std::to_string(channels) +
                      " channels; grey, grey + alpha, RGB and RGBA (1 to 4) are supported");
    return file;
}

}  // namespace

ImageHeader readImageHeader(const std::string& path)
{
    const OpenFile file = openInput(path);
    const OIIO::ImageSpec& layout = file.layout;
    return ImageHeader{layout.width, layout.height, layout.nchannels, depthOf(layout.format)};
}

ImageFrame readImage(const std::string& path)
{
    const OpenFile opened = openInput(path);
    const OIIO::ImageSpec& layout = opened.layout;
    ImageFrame frame;
    frame.width = layout.width;
    frame.height = layout.height;
    frame.channels = layout.nchannels;
    frame.depth = depthOf(layout.format);
    const size_t pixels = static_cast<size_t>(layout.width) * layout.height;
    std::vector<float> file(pixels * layout.nchannels);
    if (!opened.in->read_image(0, 0, 0, layout.nchannels, OIIO::TypeDesc::FLOAT, file.data()))
        throw Failure("cannot read " + path + ": " + opened.in->geterror());
    frame.rgba.resize(pixels * 4);
    const int n = layout.nchannels;
    for (size_t i = 0; i < pixels; ++i) {
        const float* s = &file[i * n];
        float* d = &frame.rgba[i * 4];
        const bool grey = n <= 2;
        d[0] = s[0];
        d[1] = grey ? s[0] : s[1];
        d[2] = grey ? s[0] : s[2];
        d[3] = n == 2 ? s[1] : n == 4 ? s[3] : 1.0f;
    }
    return frame;
}

void writeImage(const std::string& path, const ImageFrame& frame, SampleDepth depth, int channels,
                const std::string& compression)
{
    const int written = channels == 2 || channels == 4 ? 4 : 3;
    auto out = OIIO::ImageOutput::create(path);
    if (!out)
        throw Failure("cannot write " + path + ": no image format for its name");
    OIIO::ImageSpec layout(frame.width, frame.height, written, typeOf(depth));
    // Some writers (PNM) take their depth from this rather than the sample type.
    if (depth == SampleDepth::U16)
        layout.attribute("oiio:BitsPerSample", 16);
    if (!compression.empty())
        layout.attribute("compression", compression);
    if (written == 4) {
        layout.alpha_channel = 3;
        layout.attribute("oiio:UnassociatedAlpha", 1);  // written as read, not divided by alpha
    }
    const fs::path target(path);
    const fs::path temporary = temporaryBeside(target);
    bool ok = out->open(temporary.string(), layout);
    ok = ok && out->write_image(OIIO::TypeDesc::FLOAT, frame.rgba.data(), 4 * sizeof(float));
    ok = out->close() && ok;
    if (!ok) {
        const std::string reason = out->geterror();
        std::error_code error;
        fs::remove(temporary, error);
        throw Failure("cannot write " + path + ": " + (reason.empty() ? "the writer failed" : reason));
    }
    commit(temporary, target);
}

std::string compressionProblem(const std::string& compression)
{
    // The names of TIFF, EXR and PNG writers; a writer that does not use one
    // keeps its own default.
    static const char* const known[] = {"none", "zip",  "zips", "lzw", "packbits", "ccittrle", "jpeg",
                                        "rle",  "piz", "pxr24", "b44", "b44a",     "dwaa",     "dwab"};
    const size_t colon = compression.find(':');
    const std::string name = compression.substr(0, colon);
    const std::string level = colon == std::string::npos ? "" : compression.substr(colon + 1);
    std::string list;
    for (const char* k : known) {
        if (name == k && (colon == std::string::npos ||
                          (!level.empty() && level.find_first_not_of("0123456789") == std::string::npos)))
            return "";
        list += list.empty() ? k : std::string(", ") + k;
    }
    return "\"" + compression + "\" is not a compression (" + list + ", with a level as in zip:1)";
}

void writeTextFile(const std::string& path, const std::string& text)
{
    const fs::path target(path);
    const fs::path temporary = temporaryBeside(target);
    {
        std::ofstream file(temporary, std::ios::binary);
        file << text;
        file.close();
        if (!file) {
            std::error_code error;
            fs::remove(temporary, error);
            throw Failure("cannot write " + path);
        }
    }
    commit(temporary, target);
}

std::string readTextFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw Failure("cannot read " + path);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

const char* depthName(SampleDepth depth)
{
    switch (depth) {
    case SampleDepth::U8:
        return "8";
    case SampleDepth::U16:
        return "16";
    case SampleDepth::Half:
        return "half";
    default:
        return "float";
    }
}
