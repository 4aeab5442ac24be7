// The tool's file reading: bytes written to a temporary file, its extension
// chosen by the first byte, then read as a render reads its input: the
// header, then every row in chunks into RGBA floats. Failure is how a bad
// file is refused; anything else is a finding.
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "embed/errors.h"
#include "fuzz_input.h"
#include "tools/lumenveil/image_file.h"

namespace {

// The still formats the tool is used with. Movie containers are not here:
// the tool refuses them before the reader sees them.
const char* const kExtensions[] = {".png", ".jpg", ".tif", ".exr", ".dpx", ".bmp", ".ppm", ".hdr"};
constexpr size_t kExtensionCount = sizeof kExtensions / sizeof kExtensions[0];
// Frames above this many pixels are not read: the render would need the
// memory anyway, and a fuzzer's memory limit is lower.
constexpr long long kMaxPixels = 1 << 22;
// Nor frames taller than this: OpenImageIO's scanline reading takes a 64 MB
// buffer for every 16 rows, which the address sanitizer fills and frees in
// about 10 ms, so that a tall frame reads for minutes here (and in moments
// in the tool). Taller frames than kSmallChunkRows are read all at once.
constexpr int kMaxRows = 1024;
constexpr int kSmallChunkRows = 64;
constexpr int kAllRows = 0;

// A file of `bytes` in the temporary folder, removed when it goes.
struct TemporaryFile {
    std::string path;
    TemporaryFile(const std::string& extension, const std::string& bytes)
    {
        const char* folder = std::getenv("TMPDIR");
        path = std::string(folder ? folder : "/tmp") + "/lumenveil-fuzz-" + std::to_string(getpid()) + extension;
        std::ofstream(path, std::ios::binary) << bytes;
    }
    ~TemporaryFile() { unlink(path.c_str()); }
};

void readAll(const std::string& path, bool layers, int chunk)
{
    const ImageHeader header = readImageHeader(path, layers);
    ImageReader reader(path, layers);
    const ImageHeader& again = reader.Header();
    if (again.width != header.width || again.height != header.height || again.channels != header.channels ||
        again.channels < 1 || again.channels > 4)
        std::abort();
    if (header.width < 1 || header.height < 1 || header.height > kMaxRows ||
        static_cast<long long>(header.width) * header.height > kMaxPixels)
        return;
    if (chunk == kAllRows || header.height > kSmallChunkRows)
        chunk = header.height;
    std::vector<float> rows(static_cast<size_t>(header.width) * chunk * 4);
    for (int y = 0; y < header.height; y += chunk)
        reader.ReadRows(y, std::min(chunk, header.height - y), rows.data());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzInput input{data, size};
    const uint8_t choice = input.Byte();
    const TemporaryFile file(kExtensions[choice % kExtensionCount], input.Rest());
    // The rest of the first byte: whether the file is read as a render's
    // layers, and the rows a read takes: all at once, or 1 to 8.
    const bool layers = choice & 0x80;
    const int chunk = choice & 0x40 ? kAllRows : 1 + (choice >> 3 & 7);
    try {
        readAll(file.path, layers, chunk);
    } catch (const Failure&) {
    }
    return 0;
}
