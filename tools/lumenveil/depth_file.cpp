#include "tools/lumenveil/depth_file.h"

#include <OpenImageIO/imageio.h>

#include "tools/lumenveil/checked_image_output.h"
#include "tools/lumenveil/cli_error.h"
#include "tools/lumenveil/image_input.h"
#include "tools/lumenveil/quiet_stderr.h"

namespace {

std::string sizeText(int w, int h) { return std::to_string(w) + " x " + std::to_string(h); }

// The depth map open for reading, its layout in `layout`.
std::unique_ptr<OIIO::ImageInput> openDepth(const std::string& path, OIIO::ImageSpec& layout)
{
    return openImageInput(path, "the depth map " + path, layout);
}

int depthChannel(const OIIO::ImageSpec& layout, const DepthSource& source)
{
    if (source.channel.empty()) {
        if (layout.nchannels != 1)
            throw Failure("the depth map " + source.path + " has " + std::to_string(layout.nchannels) +
                          " channels: name the depth channel with --depth-channel");
        return 0;
    }
    for (int c = 0; c < layout.nchannels; ++c)
        if (layout.channel_name(c) == source.channel)
            return c;
    const std::string suffix = "." + source.channel;
    for (int c = 0; c < layout.nchannels; ++c) {
        const std::string name(layout.channel_name(c));
        if (name.size() > suffix.size() && name.compare(name.size() - suffix.size(), suffix.size(), suffix) == 0)
            return c;
    }
    throw Failure(source.path + " has no channel named " + source.channel);
}

}  // namespace

DepthHeader readDepthHeader(const DepthSource& source)
{
    OIIO::ImageSpec layout;
    auto in = openDepth(source.path, layout);
    return DepthHeader{layout.width, layout.height, depthChannel(layout, source)};
}

std::vector<float> readDepth(const DepthSource& source, int width, int height)
{
    OIIO::ImageSpec layout;
    auto in = openDepth(source.path, layout);
    const int channel = depthChannel(layout, source);
    if (layout.width != width || layout.height != height)
        throw Failure("the depth map " + source.path + " is " + sizeText(layout.width, layout.height) +
                      " but the frame is " + sizeText(width, height) + ": they must be the same size");
    std::vector<float> depth(static_cast<size_t>(width) * height);
    QuietStderr quiet;
    if (!in->read_image(0, 0, channel, channel + 1, OIIO::TypeDesc::FLOAT, depth.data()) || in->has_error())
        throw Failure("cannot read the depth map " + source.path + ": " + readerReason(in->geterror()));
    return depth;
}

void writeDepth(const std::string& path, int width, int height, const std::vector<float>& depth)
{
    OIIO::ImageSpec layout(width, height, 1, OIIO::TypeDesc::FLOAT);
    layout.channelnames = {"Z"};
    CheckedImageOutput out(path, layout);
    if (!out.Writer().write_image(OIIO::TypeDesc::FLOAT, depth.data()))
        out.Fail();
    out.Close().Commit();
}
