#include "tools/lumenveil/file_structure.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace {

constexpr unsigned char kPngSignature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr int64_t kChunkHeader = 8;   // length and type
constexpr int64_t kChunkTrailer = 4;  // CRC
constexpr uint32_t kLargestChunk = 0x7FFFFFFF;
// A DPX file's size as its header records it: a 32-bit number at this offset,
// big-endian after "SDPX", little-endian after "XPDS".
constexpr int64_t kDpxFileSizeAt = 16;
// The size of its user data, read (and allocated) by the reader whole; all
// ones when there is none.
constexpr int64_t kDpxUserSizeAt = 32;
constexpr uint32_t kDpxUndefined = 0xFFFFFFFF;

// OpenEXR: the magic number, then a version word whose flag marks a
// multi-part file; then the header, attributes each named, typed and sized,
// ended by an empty name (each part's header so, and an empty header after
// the last part's).
constexpr unsigned char kExrMagic[4] = {0x76, 0x2F, 0x31, 0x01};
constexpr int64_t kExrHeaderAt = 8;
constexpr uint32_t kExrMultiPart = 0x1000;
constexpr int64_t kExrLongestName = 255;  // with long names; 31 without

uint32_t bigEndian(const unsigned char* b)
{
    return (uint32_t(b[0]) << 24) | (uint32_t(b[1]) << 16) | (uint32_t(b[2]) << 8) | uint32_t(b[3]);
}

uint32_t littleEndian(const unsigned char* b)
{
    return (uint32_t(b[3]) << 24) | (uint32_t(b[2]) << 16) | (uint32_t(b[1]) << 8) | uint32_t(b[0]);
}

std::string pngProblem(int fd, int64_t size)
{
    for (int64_t at = sizeof kPngSignature;;) {
        unsigned char header[kChunkHeader];
        if (at + kChunkHeader > size || pread(fd, header, kChunkHeader, at) != kChunkHeader)
            return "the file ends before its IEND chunk (it is truncated)";
        const uint32_t length = bigEndian(header);
        const std::string type(reinterpret_cast<const char*>(header + 4), 4);
        if (length > kLargestChunk)
            return "the length of its " + type + " chunk is damaged";
        at += kChunkHeader + length + kChunkTrailer;
        if (at > size)
            return "the file ends inside its " + type + " chunk (it is truncated)";
        if (type == "IEND")
            return "";
    }
}

// The name at `at` of `n` bytes, ended by a zero byte within kExrLongestName
// + 1 bytes; false when it is not.
bool exrName(const char* at, int64_t n, int64_t* length)
{
    const void* end = std::memchr(at, '\0', static_cast<size_t>(std::min(n, kExrLongestName + 1)));
    if (!end)
        return false;
    *length = static_cast<const char*>(end) - at;
    return true;
}

// Every attribute of the headers lies inside the file. OpenEXR allocates the
// size an attribute names before it reads the value, so a damaged size
// would take gigabytes for a small file.
std::string exrProblem(int fd, int64_t size, uint32_t version)
{
    const std::string truncated = "the file ends inside its header (it is truncated)";
    bool headerStart = true;
    for (int64_t at = kExrHeaderAt;;) {
        char buffer[2 * (kExrLongestName + 1) + 4];
        const ssize_t n = pread(fd, buffer, sizeof buffer, at);
        if (n < 1)
            return truncated;
        if (buffer[0] == '\0') {
            // An empty name ends a header; an empty header ends a multi-part list.
            if (!(version & kExrMultiPart) || headerStart)
                return "";
            headerStart = true;
            ++at;
            continue;
        }
        int64_t nameLength = 0, typeLength = 0;
        if (!exrName(buffer, n, &nameLength) ||
            !exrName(buffer + nameLength + 1, n - nameLength - 1, &typeLength) ||
            nameLength + 1 + typeLength + 1 + 4 > n)
            return n < static_cast<ssize_t>(sizeof buffer) ? truncated : "its header is damaged";
        const unsigned char* sizeAt = reinterpret_cast<const unsigned char*>(buffer + nameLength + typeLength + 2);
        const int32_t valueSize = static_cast<int32_t>(littleEndian(sizeAt));
        at += nameLength + typeLength + 2 + 4;
        if (valueSize < 0 || at + valueSize > size)
            return "its header's " + std::string(buffer) + " attribute runs past the end of the file "
                   "(it is truncated or damaged)";
        at += valueSize;
        headerStart = false;
    }
}

std::string dpxProblem(const unsigned char* head, int64_t size)
{
    auto number = [head](int64_t at) { return head[0] == 'S' ? bigEndian(head + at) : littleEndian(head + at); };
    const uint32_t recorded = number(kDpxFileSizeAt);
    if (size < static_cast<int64_t>(recorded))
        return "the file is " + std::to_string(size) + " bytes, its header says " + std::to_string(recorded) +
               " (it is truncated)";
    const uint32_t userData = number(kDpxUserSizeAt);
    if (userData != kDpxUndefined && static_cast<int64_t>(userData) > size)
        return "its header gives " + std::to_string(userData) + " bytes of user data, more than the file holds "
               "(it is damaged)";
    return "";
}

}  // namespace

std::string fileStructureProblem(const std::string& path)
{
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return "";
    unsigned char head[kDpxUserSizeAt + 4];
    struct stat status;
    std::string problem;
    const ssize_t n = fstat(fd, &status) == 0 ? pread(fd, head, sizeof head, 0) : 0;
    if (n >= static_cast<ssize_t>(sizeof kPngSignature) && std::memcmp(head, kPngSignature, sizeof kPngSignature) == 0)
        problem = pngProblem(fd, status.st_size);
    else if (n >= kExrHeaderAt && std::memcmp(head, kExrMagic, sizeof kExrMagic) == 0)
        problem = exrProblem(fd, status.st_size, littleEndian(head + sizeof kExrMagic));
    else if (n == sizeof head && (std::memcmp(head, "SDPX", 4) == 0 || std::memcmp(head, "XPDS", 4) == 0))
        problem = dpxProblem(head, status.st_size);
    close(fd);
    return problem;
}
