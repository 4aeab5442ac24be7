// The host-pixel-format conversions: a buffer of any format code and size,
// with a region that may lie outside it, decoded to a frame and encoded back,
// into the same format and into a second one; a frame of any samples encoded;
// and the scene-linear road for the float format. Input: a header of codes,
// sizes and field flags, then the bytes that fill the buffer.
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "fuzz_input.h"
#include "generic/library/HostBufferLayout.h"
#include "generic/library/HostLinearFrame.h"
#include "generic/library/HostPixelFormat.h"
#include "generic/library/LinearFrameVZ.h"
#include "generic/library/VZImage.h"

namespace {

// Codes 0 to 17: the sixteen formats and a refused code on each side.
constexpr int kCodeCount = 18;
// Buffers up to 64 x 64 pixels keep each run short.
constexpr int kMaxSide = 64;

struct Region {
    int32_t bufferWidth, bufferHeight, roiWidth, roiHeight, roiX, roiY, code;
    uint32_t fields;
};

// Sizes from 0 to kMaxSide; a region's corner may be negative or past the buffer.
Region readRegion(FuzzInput& input)
{
    Region r;
    r.code = input.Byte() % kCodeCount;
    r.fields = input.Byte() & 3;
    r.bufferWidth = input.Byte() % (kMaxSide + 1);
    r.bufferHeight = input.Byte() % (kMaxSide + 1);
    r.roiWidth = input.Byte() % (kMaxSide + 1);
    r.roiHeight = input.Byte() % (kMaxSide + 1);
    r.roiX = static_cast<int8_t>(input.Byte());
    r.roiY = static_cast<int8_t>(input.Byte());
    return r;
}

// The buffer's bytes, colour plane then any alpha plane, each its own
// allocation of exactly that size so that a read past it is caught; empty
// when the layout refuses the region.
std::vector<uint8_t> bufferFor(const Region& r)
{
    HostBufferLayout layout;
    if (!hostBufferLayout(r.code, r.bufferWidth, r.bufferHeight, r.roiWidth, r.roiHeight, r.roiX, r.roiY, &layout))
        return {};
    const size_t alpha = layout.alphaPlane ? static_cast<size_t>(r.bufferWidth) * r.bufferHeight * layout.sampleBytes : 0;
    return std::vector<uint8_t>(layout.colourPlaneBytes + alpha);
}

// Fills `bytes` with the input's remaining bytes, repeated.
void fill(std::vector<uint8_t>& bytes, const FuzzInput& input)
{
    for (size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = input.size ? input.data[i % input.size] : 0;
}

const void* pointerTo(const std::vector<uint8_t>& bytes) { return bytes.empty() ? nullptr : bytes.data(); }
void* pointerTo(std::vector<uint8_t>& bytes) { return bytes.empty() ? nullptr : bytes.data(); }

void encode(const VZImage* image, const Region& r)
{
    std::vector<uint8_t> out = bufferFor(r);
    vzImageToHost(image, pointerTo(out), r.bufferWidth, r.bufferHeight, r.roiWidth, r.roiHeight, r.roiX, r.roiY,
                  r.code, r.fields);
}

void linearRoad(const Region& r, const std::vector<uint8_t>& buffer)
{
    LinearFrameVZ frame(r.roiWidth, r.roiHeight);
    const int64_t replaced = hostToLinearFrame(pointerTo(buffer), r.bufferWidth, r.bufferHeight, r.roiWidth,
                                               r.roiHeight, r.roiX, r.roiY, r.code, r.fields, &frame);
    if (replaced < 0)
        return;
    for (size_t i = 0; i < frame.PixelCount() * kLinearChannels; ++i)
        if (!std::isfinite(frame.Row(0)[i]))
            std::abort();  // every NaN and infinity is replaced
    std::vector<uint8_t> out = bufferFor(r);
    if (!linearFrameToHost(&frame, pointerTo(out), r.bufferWidth, r.bufferHeight, r.roiWidth, r.roiHeight, r.roiX,
                           r.roiY, r.code, r.fields))
        std::abort();  // the same region and format the read took
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzInput input{data, size};
    const Region from = readRegion(input);
    const Region to = readRegion(input);
    std::vector<uint8_t> buffer = bufferFor(from);
    fill(buffer, input);
    std::unique_ptr<VZImage> image(hostToVzImage(pointerTo(buffer), from.bufferWidth, from.bufferHeight, from.roiWidth,
                                                 from.roiHeight, from.roiX, from.roiY, from.code, from.fields));
    if (image) {
        encode(image.get(), from);
        encode(image.get(), to);
    }
    // A frame of any samples, as an effect may leave it, encoded.
    VZImage any(to.roiWidth, to.roiHeight, 0, nullptr, 0);
    if (any.pixels) {
        std::vector<uint8_t> samples(static_cast<size_t>(to.roiWidth) * to.roiHeight * 8);
        fill(samples, input);
        std::memcpy(any.pixels, samples.data(), samples.size());
        encode(&any, to);
    }
    if (from.code == hostLinearFormatCode())
        linearRoad(from, buffer);
    return 0;
}
