#include "tools/lumenveil/depth_file.h"

#include <OpenImageIO/imageio.h>

#include <filesystem>

#include "tools/lumenveil/cli_error.h"

namespace {

std::string sizeText(int w, int h) { return std::to_string(w) + " x " + std::to_string(h); }

std::unique_ptr<OIIO::ImageInput> openDepth(const std::string& path)
{
    auto in = OIIO::ImageInput::open(path);
    if (!in)
        throw Failure("cannot read the depth map " + path + ": " + OIIO::geterror());
    return in;
}

int depthChannel(const OIIO::ImageSpec& spec, const DepthSource& source)
{
    if (source.channel.empty()) {
        if (spec.nchannels != 1)
            throw Failure("the depth map " + source.path + " has " + std::to_string(spec.nchannels) +
                          " channels: name the depth channel with --depth-channel");
        return 0;
    }
    for (int c = 0; c < spec.nchannels; ++c)
        if (spec.channel_name(c) == source.channel)
            return c;
    const std::string suffix = "." + source.channel;
    for (int c = 0; c < spec.nchannels; ++c) {
        const std::string name(spec.channel_name(c));
        if (name.size() > suffix.size() && name.compare(name.size() - suffix.size(), suffix.size(), suffix) == 0)
            return c;
    }
    throw Failure(source.path + " has no channel named " + source.channel);
}

}  // namespace

DepthHeader readDepthHeader(const DepthSource& source)
{
    auto in = openDepth(source.path);
    const OIIO::ImageSpec& spec = in->spec();
    return DepthHeader{spec.width, spec.height, depthChannel(spec, source)};
}

std::vector<float> readDepth(const DepthSource& source, int width, int height)
{
    auto in = openDepth(source.path);
    const OIIO::ImageSpec& spec = in->spec();
    const int channel = depthChannel(spec, source);
    if (spec.width != width || spec.height != height)
        throw Failure("the depth map " + source.path + " is " + sizeText(spec.width, spec.height) +
                      " but the frame is " + sizeText(width, height) + ": they must be the same size");
    std::vector<float> depth(static_cast<size_t>(width) * height);
    if (!in->read_image(0, 0, channel, channel + 1, OIIO::TypeDesc::FLOAT, depth.data()))
        throw Failure("cannot read the depth map " + source.path + ": " + in->geterror());
    return depth;
}

void writeDepth(const std::string& path, int width, int height, const std::vector<float>& depth)
{
    namespace fs = std::filesystem;
    const fs::path target(path);
    const fs::path temporary = target.parent_path() / ("." + target.stem().string() + ".partial" +
                                                       target.extension().string());
    OIIO::ImageSpec spec(width, height, 1, OIIO::TypeDesc::FLOAT);
    spec.channelnames = {"Z"};
    auto out = OIIO::ImageOutput::create(path);
    bool written = out && out->open(temporary.string(), spec) &&
                   out->write_image(OIIO::TypeDesc::FLOAT, depth.data()) && out->close();
    std::error_code error;
    if (written)
        fs::rename(temporary, target, error);
    if (!written || error) {
        fs::remove(temporary, error);
        throw Failure("cannot write " + path);
    }
}
