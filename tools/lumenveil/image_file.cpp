#include "tools/lumenveil/image_file.h"

#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

#include "embed/pixel_samples.h"
#include "tools/lumenveil/checked_file.h"
#include "tools/lumenveil/checked_image_output.h"
#include "tools/lumenveil/cli_error.h"
#include "tools/lumenveil/image_input.h"
#include "tools/lumenveil/output_format_table.h"
#include "tools/lumenveil/quiet_stderr.h"

namespace {

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

// Rows read or converted in one go: a few hundred kilobytes at full HD, so
// that a chunk stays in cache from the file to the frame.
constexpr int kChunkRows = 16;

// The type samples are read and written in: 8- and 16-bit ones as files
// store them, converted here; the others as floats.
OIIO::TypeDesc sampleTypeOf(OIIO::TypeDesc stored)
{
    return stored == OIIO::TypeDesc::UINT8 || stored == OIIO::TypeDesc::UINT16 ? stored : OIIO::TypeDesc::FLOAT;
}

// Whether the writer of `format` stores samples of `depth` as they are
// handed over, so that 8- and 16-bit samples can be made here; the others
// (OpenEXR keeps no integers, JPEG no 16 bits) are handed floats.
bool writesAsHanded(const std::string& format, SampleDepth depth)
{
    if (depth != SampleDepth::U8 && depth != SampleDepth::U16)
        return false;
    static const char* const exact[] = {"tiff", "png", "pnm", "dpx"};
    return std::find(std::begin(exact), std::end(exact), format) != std::end(exact);
}

void expandPixels(OIIO::TypeDesc type, const uint8_t* samples, int n, size_t pixels, float* d)
{
    if (type == OIIO::TypeDesc::UINT8)
        ::expandPixels(samples, n, pixels, d);
    else if (type == OIIO::TypeDesc::UINT16)
        ::expandPixels(reinterpret_cast<const uint16_t*>(samples), n, pixels, d);
    else
        ::expandPixels(reinterpret_cast<const float*>(samples), n, pixels, d);
}

}  // namespace

struct ImageReader::File {
    std::string path;
    std::unique_ptr<OIIO::ImageInput> in;
    OIIO::ImageSpec layout;
    std::vector<uint8_t> samples;  // the file's channels, one chunk of rows; a tiled file whole
};

namespace {

// The colour channels of a file of layers: 4 for R G B A first, 3 for R G B, else 0.
int colourChannelsOf(const OIIO::ImageSpec& layout)
{
    const char* names[] = {"R", "G", "B", "A"};
    int n = 0;
    while (n < 4 && n < layout.nchannels && layout.channel_name(n) == names[n])
        ++n;
    return n >= 3 ? n : 0;
}

}  // namespace

ImageReader::ImageReader(const std::string& path, bool layers) : file(std::make_unique<File>())
{
    file->path = path;
    // Colour as the file stores it, never multiplied by alpha on the way in.
    OIIO::ImageSpec config;
    config.attribute("oiio:UnassociatedAlpha", 1);
    file->in = openImageInput(path, path, file->layout, &config);
    const OIIO::ImageSpec& layout = file->layout;
    const int colour = layers ? colourChannelsOf(layout) : 0;
    if (colour > 0)
        header = ImageHeader{layout.width, layout.height, colour, depthOf(layout.format), file->in->format_name()};
    else if (layout.nchannels < 1 || layout.nchannels > 4)
        throw Failure("cannot use " + path + ": it has " + std::to_string(layout.nchannels) +
                      " channels; grey, grey + alpha, RGB and RGBA (1 to 4) are supported");
    else
        header = ImageHeader{layout.width, layout.height, layout.nchannels, depthOf(layout.format),
                             file->in->format_name()};
}

ImageReader::~ImageReader()
{
    QuietStderr quiet;
    // What the reader still has to say after a failure is taken here, not
    // left for it to print.
    file->in->close();
    file->in->geterror();
}

void ImageReader::ReadRows(int y, int count, float* rgba)
{
    const OIIO::ImageSpec& layout = file->layout;
    const int n = header.channels;  // the first n of the file's channels
    const size_t width = static_cast<size_t>(layout.width);
    const OIIO::TypeDesc type = sampleTypeOf(layout.format);
    const size_t rowBytes = width * n * type.size();
    // A reader may fill what a damaged file lacks (JPEG: grey) and only say so
    // in its error: that is a failure too.
    auto fail = [&]() {
        throw Failure("cannot read " + file->path + ": " + readerReason(file->in->geterror()));
    };
    // Tiled files are read whole on the first call; the others a chunk at a time.
    const bool tiled = layout.tile_width > 0;
    QuietStderr quiet;
    if (tiled && file->samples.empty()) {
        file->samples.resize(rowBytes * layout.height);
        if (!file->in->read_image(0, 0, 0, n, type, file->samples.data()) || file->in->has_error())
            fail();
    }
    for (int done = 0; done < count;) {
        const int rows = tiled ? count : std::min(kChunkRows, count - done);
        if (!tiled) {
            file->samples.resize(rowBytes * kChunkRows);
            const int top = layout.y + y + done;
            if (!file->in->read_scanlines(0, 0, top, top + rows, layout.z, 0, n, type, file->samples.data()) ||
                file->in->has_error())
                fail();
        }
        const uint8_t* samples = file->samples.data() + (tiled ? (y + done) * rowBytes : 0);
        expandPixels(type, samples, n, rows * width, rgba + done * width * 4);
        done += rows;
    }
}

struct ImageWriter::File {
    std::unique_ptr<CheckedImageOutput> out;
    int width = 0;
    int channels = 0;               // written: 3 or 4
    OIIO::TypeDesc type;            // of the samples handed to the writer
    std::vector<uint8_t> samples;   // one chunk of rows of them
    int nextRow = 0;
};

ImageWriter::ImageWriter(const std::string& path, int width, int height, SampleDepth depth, int channels,
                         const std::string& compression)
    : file(std::make_unique<File>())
{
    const int written = channels == 2 || channels == 4 ? 4 : 3;
    const std::string format = imageOutputFormat(path);
    depth = depthWritten(format, depth);
    OIIO::ImageSpec layout(width, height, written, typeOf(depth));
    // Some writers (PNM) take their depth from this rather than the sample type.
    if (depth == SampleDepth::U16)
        layout.attribute("oiio:BitsPerSample", 16);
    describeCompression(format, compression, layout);
    // No time stamp (TIFF, EXR): the same frame gives the same bytes on every run.
    layout.attribute("DateTime", "");
    if (written == 4) {
        layout.alpha_channel = 3;
        layout.attribute("oiio:UnassociatedAlpha", 1);  // written as read, not divided by alpha
    }
    file->width = width;
    file->channels = written;
    file->out = std::make_unique<CheckedImageOutput>(path, layout);
    file->type = writesAsHanded(file->out->FormatName(), depth) ? typeOf(depth) : OIIO::TypeDesc::FLOAT;
}

ImageWriter::~ImageWriter() = default;

void ImageWriter::WriteRows(int count, const float* rgba)
{
    const size_t width = static_cast<size_t>(file->width);
    for (int done = 0; done < count;) {
        const int rows = std::min(kChunkRows, count - done);
        const int top = file->nextRow;
        const float* s = rgba + done * width * 4;
        bool ok;
        if (file->type == OIIO::TypeDesc::FLOAT) {
            ok = file->out->Writer().write_scanlines(top, top + rows, 0, file->type, s, 4 * sizeof(float));
        } else {
            file->samples.resize(width * kChunkRows * file->channels * file->type.size());
            if (file->type == OIIO::TypeDesc::UINT8)
                packPixels(s, file->channels, rows * width, file->samples.data());
            else
                packPixels(s, file->channels, rows * width, reinterpret_cast<uint16_t*>(file->samples.data()));
            ok = file->out->Writer().write_scanlines(top, top + rows, 0, file->type, file->samples.data());
        }
        if (!ok)
            file->out->Fail();
        file->nextRow += rows;
        done += rows;
    }
}

StagedFile ImageWriter::Close() { return file->out->Close(); }

std::string ImageWriter::FormatName() const { return file->out->FormatName(); }

ImageHeader readImageHeader(const std::string& path, bool layers) { return ImageReader(path, layers).Header(); }

ImageFrame readImage(const std::string& path)
{
    ImageReader reader(path);
    const ImageHeader& header = reader.Header();
    ImageFrame frame;
    frame.width = header.width;
    frame.height = header.height;
    frame.channels = header.channels;
    frame.depth = header.depth;
    frame.rgba.resize(static_cast<size_t>(header.width) * header.height * 4);
    reader.ReadRows(0, header.height, frame.rgba.data());
    return frame;
}

StagedFile stageImage(const std::string& path, const ImageFrame& frame, SampleDepth depth, int channels,
                      const std::string& compression)
{
    ImageWriter writer(path, frame.width, frame.height, depth, channels, compression);
    writer.WriteRows(frame.height, frame.rgba.data());
    return writer.Close();
}

void writeImage(const std::string& path, const ImageFrame& frame, SampleDepth depth, int channels,
                const std::string& compression)
{
    stageImage(path, frame, depth, channels, compression).Commit();
}

StagedFile stageTextFile(const std::string& path, const std::string& text)
{
    StagedFile staged(path);
    CheckedFile file(staged.Temporary(), staged.Descriptor());
    file.write(text.data(), text.size());
    if (const std::string problem = file.Finish(); !problem.empty()) {
        staged.Discard();
        throw Failure("cannot write " + path + ": " + problem);
    }
    return staged;
}

void writeTextFile(const std::string& path, const std::string& text) { stageTextFile(path, text).Commit(); }

std::string readTextFile(const std::string& path)
{
    checkRegularFile(path);
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    if (file)
        text << file.rdbuf();
    if (!file)
        throw Failure("cannot read " + path + ": " + std::strerror(errno));
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
