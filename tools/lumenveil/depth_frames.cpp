#include "tools/lumenveil/depth_frames.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <filesystem>

#include "embed/host_frame.h"
#include "hostsdk/IDSDepthRadius.h"
#include "hostsdk/image_format_geometry.h"
#include "hostsdk/image_formats.h"
#include "tools/lumenveil/cli_error.h"

ComRef<MemoryImage> depthHostImage(const std::vector<float>& depth, int32_t width, int32_t height, int32_t rows)
{
    const HostFormatGeometry& format = *hostFormatGeometry(hostFormatCodeOf(MFIF_RGBA_FLOAT));
    ComRef<MemoryImage> image = newHostImage(format, width, rows);
    storeHostImage(image.get(), format, width, height, rows, [&](int32_t y, int32_t count, float* rgba) {
        for (size_t i = 0; i < static_cast<size_t>(count) * width; ++i) {
            const float z = depth[static_cast<size_t>(y) * width + i];
            rgba[i * 4] = rgba[i * 4 + 1] = rgba[i * 4 + 2] = z;
            rgba[i * 4 + 3] = 1.0f;
        }
    }, true);  // distances as they are, not limited to 0 to 1
    return image;
}

ImageFrame circleOfConfusionPicture(IUnknown* effect, int width, int height, bool inPixels)
{
    const ComRef<IDSDepthRadius> radius = ComRef<IDSDepthRadius>::Query(effect, IID_IDSDepthRadius);
    int32_t w = 0, h = 0;
    const float* radii = nullptr;
    if (!radius || FAILED(radius->GetRadiusPlane(&w, &h, &radii)) || w < width || h < height)
        throw Failure("--coc: the effect gives no blur radii");
    float largest = 0.0f;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            largest = std::max(largest, std::fabs(radii[static_cast<size_t>(y) * w + x]));
    const float scale = inPixels || largest == 0.0f ? 1.0f : 1.0f / largest;
    ImageFrame picture;
    picture.width = width;
    picture.height = height;
    picture.channels = 1;
    picture.rgba.resize(static_cast<size_t>(width) * height * 4);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            float* p = picture.Pixel(x, y);
            p[0] = p[1] = p[2] = std::fabs(radii[static_cast<size_t>(y) * w + x]) * scale;
            p[3] = 1.0f;
        }
    return picture;
}

bool imageFileIsFloat(const std::string& path)
{
    std::string extension = std::filesystem::path(path).extension().string();
    for (char& c : extension)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return extension == ".exr" || extension == ".hdr";
}
