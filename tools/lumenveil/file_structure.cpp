#include "tools/lumenveil/file_structure.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

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

std::string dpxProblem(const unsigned char* head, int64_t size)
{
    const uint32_t recorded = head[0] == 'S' ? bigEndian(head + kDpxFileSizeAt) : littleEndian(head + kDpxFileSizeAt);
    if (size >= static_cast<int64_t>(recorded))
        return "";
    return "the file is " + std::to_string(size) + " bytes, its header says " + std::to_string(recorded) +
           " (it is truncated)";
}

}  // namespace

std::string fileStructureProblem(const std::string& path)
{
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return "";
    unsigned char head[kDpxFileSizeAt + 4];
    struct stat status;
    std::string problem;
    const ssize_t n = fstat(fd, &status) == 0 ? pread(fd, head, sizeof head, 0) : 0;
    if (n >= static_cast<ssize_t>(sizeof kPngSignature) && std::memcmp(head, kPngSignature, sizeof kPngSignature) == 0)
        problem = pngProblem(fd, status.st_size);
    else if (n == sizeof head && (std::memcmp(head, "SDPX", 4) == 0 || std::memcmp(head, "XPDS", 4) == 0))
        problem = dpxProblem(head, status.st_size);
    close(fd);
    return problem;
}
