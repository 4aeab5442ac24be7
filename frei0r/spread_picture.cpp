#include "frei0r/spread_picture.h"

#include <OpenImageIO/imagebuf.h>
#include <OpenImageIO/imagebufalgo.h>

#include "embed/errors.h"

SpreadPicture::SpreadPicture(const std::string& path, int32_t w, int32_t h) : width(w), height(h), channels(0)
{
    OIIO::ImageBuf file(path);
    if (!file.read(0, 0, true, OIIO::TypeDesc::FLOAT))
        throw Failure("cannot read the Spread picture " + path + ": " + file.geterror());
    channels = file.nchannels();
    if (channels < 1 || channels > 4)
        throw Failure("cannot use the Spread picture " + path + ": it has " + std::to_string(channels) +
                      " channels; 1 to 4 are taken");
    OIIO::ImageBuf fitted;
    const OIIO::ImageBuf* picture = &file;
    if (file.roi().width() != width || file.roi().height() != height) {
        const OIIO::ROI frame(0, width, 0, height, 0, 1, 0, channels);
        if (!OIIO::ImageBufAlgo::fit(fitted, file, "", 0.0f, "letterbox", false, frame))
            throw Failure("cannot fit the Spread picture " + path + " to the frame: " + fitted.geterror());
        picture = &fitted;
    }
    samples.resize(static_cast<size_t>(width) * height * channels);
    if (!picture->get_pixels(OIIO::ROI(0, width, 0, height, 0, 1, 0, channels), OIIO::TypeDesc::FLOAT,
                             samples.data()))
        throw Failure("cannot read the Spread picture " + path + ": " + picture->geterror());
}

FrameView SpreadPicture::View()
{
    return FrameView{samples.data(), static_cast<ptrdiff_t>(width) * channels * 4, width, height, channels,
                     SampleType::Float};
}
