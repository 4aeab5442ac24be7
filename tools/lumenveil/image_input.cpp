#include "tools/lumenveil/image_input.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "tools/lumenveil/cli_error.h"
#include "tools/lumenveil/file_structure.h"
#include "tools/lumenveil/quiet_stderr.h"

namespace {

// MPEG transport streams: a sync byte every packet of this size.
constexpr size_t kTransportPacket = 188;

std::string kindOf(const struct stat& status)
{
    if (S_ISDIR(status.st_mode))
        return "a directory";
    if (S_ISFIFO(status.st_mode))
        return "a FIFO (named pipe)";
    if (S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode))
        return "a device";
    if (S_ISSOCK(status.st_mode))
        return "a socket";
    return "not a regular file";
}

// The first bytes of the regular file `path` (fewer for a short file).
std::string headOf(const std::string& path, size_t bytes)
{
    std::string head(bytes, '\0');
    const int fd = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return "";
    const ssize_t n = pread(fd, head.data(), bytes, 0);
    close(fd);
    head.resize(n > 0 ? static_cast<size_t>(n) : 0);
    return head;
}

bool startsWith(const std::string& head, size_t at, const char* bytes, size_t n)
{
    return head.size() >= at + n && head.compare(at, n, bytes, n) == 0;
}

// ISO media files of still images (HEIF, AVIF) by their major brand; the
// other brands (isom, mp41, qt, 3gp4, M4V, ...) are movies.
bool stillImageBrand(const std::string& brand)
{
    static const char* const still[] = {"heic", "heix", "heim", "heis", "hevc", "hevx", "mif1", "mif2",
                                        "msf1", "avif", "avis", "jp2 ", "jpx "};
    return std::any_of(std::begin(still), std::end(still), [&](const char* b) { return brand == b; });
}

std::string lowerExtension(const std::string& path)
{
    std::string extension = std::filesystem::path(path).extension().string();
    for (char& c : extension)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return extension;
}

}  // namespace

std::string readerReason(const std::string& error, const std::string& otherwise)
{
    std::string reason = error.substr(0, error.find('\n'));
    const std::string beforeFirst = "at scanline 4294967295";
    if (const size_t at = reason.find(beforeFirst); at != std::string::npos)
        reason.replace(at, beforeFirst.size(), "in its first strip");
    return reason.empty() ? otherwise : reason;
}

void checkRegularFile(const std::string& path, const std::string& label)
{
    struct stat status;
    if (stat(path.c_str(), &status) != 0)
        throw Failure("cannot read " + label + ": " + (errno == ENOENT ? "no such file" : std::strerror(errno)));
    if (!S_ISREG(status.st_mode))
        throw Failure("cannot read " + label + ": it is " + kindOf(status) + ", not an image file");
}

std::string movieContainerOf(const std::string& head, const std::string& path)
{
    if (startsWith(head, 4, "ftyp", 4) && !stillImageBrand(head.substr(8, 4)))
        return "MP4/QuickTime";
    for (const char* atom : {"moov", "mdat", "wide", "free", "skip", "pnot"})
        if (startsWith(head, 4, atom, 4))
            return "QuickTime";
    // A JPEG 2000 signature followed by a Motion JPEG 2000 brand.
    if (startsWith(head, 4, "jP  ", 4) && (startsWith(head, 20, "mjp2", 4) || startsWith(head, 20, "mj2s", 4)))
        return "Motion JPEG 2000";
    if (startsWith(head, 0, "\x1A\x45\xDF\xA3", 4))
        return "Matroska/WebM";
    if (startsWith(head, 0, "RIFF", 4) && startsWith(head, 8, "AVI ", 4))
        return "AVI";
    if (startsWith(head, 0, "\x00\x00\x01\xBA", 4) || startsWith(head, 0, "\x00\x00\x01\xB3", 4))
        return "MPEG";
    if (startsWith(head, 0, "FLV\x01", 4))
        return "Flash video";
    if (startsWith(head, 0, "OggS", 4))
        return "Ogg";
    if (startsWith(head, 0, "\x30\x26\xB2\x75\x8E\x66\xCF\x11", 8))
        return "ASF/WMV";
    if (startsWith(head, 0, "\x06\x0E\x2B\x34", 4))
        return "MXF";
    if (head.size() > kTransportPacket && head[0] == 0x47 && head[kTransportPacket] == 0x47)
        return "MPEG transport stream";
    static const char* const names[] = {".mp4", ".m4v", ".m4a", ".mov", ".qt",  ".3gp", ".3g2", ".mj2",  ".mkv",
                                        ".webm", ".avi", ".mpg", ".mpeg", ".ts", ".mts", ".m2ts", ".vob", ".flv",
                                        ".ogv", ".ogg", ".wmv", ".asf", ".mxf"};
    const std::string extension = lowerExtension(path);
    if (std::find(std::begin(names), std::end(names), extension) != std::end(names))
        return extension.substr(1);
    return "";
}

namespace {

// What a movie's user does instead.
constexpr const char* kMovieRoute =
    "give its frames as numbered image files (ffmpeg -i MOVIE frame.%04d.png), or render it in ffmpeg with the "
    "frei0r filter (-vf frei0r=lumenveil)";

}  // namespace

std::unique_ptr<OIIO::ImageInput> openImageInput(const std::string& path, const std::string& label,
                                                 OIIO::ImageSpec& layout, const OIIO::ImageSpec* config)
{
    checkRegularFile(path, label);
    const std::string movie = movieContainerOf(headOf(path, kTransportPacket + 1), path);
    if (!movie.empty())
        throw Failure("cannot read " + label + ": it is a movie file (" + movie + "), not an image: " + kMovieRoute);
    if (const std::string problem = fileStructureProblem(path); !problem.empty())
        throw Failure("cannot read " + label + ": " + problem);
    QuietStderr quiet;
    auto in = OIIO::ImageInput::create(path, false, config);
    if (!in)
        throw Failure("cannot read " + label + ": " + readerReason(OIIO::geterror(), "not an image file"));
    if (std::string(in->format_name()) == "ffmpeg")
        throw Failure("cannot read " + label + ": it is a movie file, not an image: " + kMovieRoute);
    if (!(config ? in->open(path, layout, *config) : in->open(path, layout)))
        throw Failure("cannot read " + label + ": " + readerReason(in->geterror(), "not an image file"));
    return in;
}
