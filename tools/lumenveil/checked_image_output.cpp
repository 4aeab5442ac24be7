#include "tools/lumenveil/checked_image_output.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <vector>

#include "tools/lumenveil/cli_error.h"
#include "tools/lumenveil/image_input.h"
#include "tools/lumenveil/quiet_stderr.h"

namespace {

// Closes a writer given up on after a failure. Some (PNG) complain about
// the unfinished file on stderr themselves as they close; that is no news
// after the failure the tool reports.
void abandon(OIIO::ImageOutput& out)
{
    QuietStderr quiet;
    out.close();
    out.geterror();
}

// "" when the file at `path` is on disk and reads back as `layout` whole
// through the reader of `format`, else why not.
std::string readBackProblem(const std::string& path, const std::string& format, const OIIO::ImageSpec& layout)
{
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return std::strerror(errno);
    const bool synced = fsync(fd) == 0;
    const int error = errno;
    ::close(fd);
    if (!synced)
        return std::strerror(error);
    QuietStderr quiet;
    auto in = OIIO::ImageInput::create(format);
    OIIO::ImageSpec read;
    if (!in || !in->open(path, read))
        return "the file written does not read back: " + readerReason(in ? in->geterror() : OIIO::geterror());
    // Some formats keep channels of their own (ICO: always alpha).
    if (read.width != layout.width || read.height != layout.height)
        return "the file written does not read back as the image written";
    std::vector<float> pixels(static_cast<size_t>(read.width) * read.height * read.nchannels);
    const bool whole = in->read_image(0, 0, 0, read.nchannels, OIIO::TypeDesc::FLOAT, pixels.data());
    const std::string reason = in->geterror();
    in->close();
    in->geterror();
    if (!whole || !reason.empty())
        return "the file written is incomplete: " + readerReason(reason);
    return "";
}

}  // namespace

namespace {

// The writer OpenImageIO has for `path`'s name; Failure when there is none
// or it makes no file.
std::unique_ptr<OIIO::ImageOutput> writerFor(const std::string& path)
{
    auto out = OIIO::ImageOutput::create(path);
    const std::string format = out ? out->format_name() : "";
    OIIO::geterror();  // the reason create left, told here in our words
    if (format.empty() || format == "null" || format == "term")
        throw Failure("cannot write " + path + ": no image file format for its name (lumenveil formats lists them)");
    return out;
}

}  // namespace

std::string imageOutputFormat(const std::string& path) { return writerFor(path)->format_name(); }

CheckedImageOutput::CheckedImageOutput(const std::string& target, const OIIO::ImageSpec& imageLayout)
    : layout(imageLayout)
{
    out = writerFor(target);
    staged = StagedFile(target);
    if (out->supports("ioproxy")) {
        proxy = std::make_unique<CheckedFile>(staged.Temporary(), staged.Descriptor());
        OIIO::Filesystem::IOProxy* io = proxy.get();
        layout.attribute("oiio:ioproxy", OIIO::TypeDesc::PTR, &io);
    }
    if (!out->open(staged.Temporary(), layout))
        Fail();
    open = true;
}

CheckedImageOutput::~CheckedImageOutput()
{
    if (open)
        abandon(*out);
}

void CheckedImageOutput::Fail()
{
    const std::string reason = out->geterror();
    // The proxy's reason is the first cause; the writer's may follow from it.
    const std::string cause = proxy ? proxy->Finish() : "";
    failWith(!cause.empty() ? cause : readerReason(reason, "the writer failed"));
}

void CheckedImageOutput::failWith(const std::string& reason)
{
    if (open)
        abandon(*out);
    open = false;
    staged.Discard();
    throw Failure("cannot write " + staged.Target() + ": " + reason);
}

StagedFile CheckedImageOutput::Close()
{
    open = false;
    const bool closed = out->close();
    const std::string reason = out->geterror();
    const std::string cause = proxy ? proxy->Finish() : "";
    if (!cause.empty())
        failWith(cause);
    if (!closed)
        failWith(readerReason(reason, "the writer failed"));
    if (!proxy || !proxy->Used())
        if (const std::string problem = readBackProblem(staged.Temporary(), out->format_name(), layout);
            !problem.empty())
            failWith(problem);
    return std::move(staged);
}
