// BuildImagePsf: a soft-rimmed disc cut out of a picture, moved to the middle of
// psfImage and prepared as the kernel.
#include <cmath>
#include <cstdint>
#include <cstring>

#include "vzlibs/fftlib/FftEngine.h"

namespace {

// Cuts the disc around (centreX, centreY) of `source` into the cleared
// `target` of the same size, centred on its pixel (width / 2, height / 2).
// Source pixel (c, r) lands on (c - centreX + midX, r - centreY + midY); only
// the rows and columns that land inside the image are visited, the rest of the
// source is lost rather than wrapped. Wide integers keep far-off centres from
// overflowing.
void cutDisc(const ImageRec* source, ImageRec* target, int centreX, int centreY, float radius, float softness)
{
    const int width = source->width;
    const int height = source->height;
    const int64_t shiftX = static_cast<int64_t>(width / 2) - centreX;
    const int64_t shiftY = static_cast<int64_t>(height / 2) - centreY;
    const int64_t firstRow = shiftY < 0 ? -shiftY : 0;
    const int64_t endRow = shiftY > 0 ? height - shiftY : height;
    const int64_t firstColumn = shiftX < 0 ? -shiftX : 0;
    const int64_t endColumn = shiftX > 0 ? width - shiftX : width;
    // The top byte of channel 0: the byte itself, the high byte of a little-endian
    // 16-bit sample or the top byte of a 32-bit one.
    const unsigned char* pixels = static_cast<const unsigned char*>(source->pixels) + (source->sampleBytes - 1);
    unsigned char* targetPixels = static_cast<unsigned char*>(target->pixels);
    for (int64_t r = firstRow; r < endRow; ++r) {
        const float dy = static_cast<float>(r - centreY);
        const unsigned char* in = pixels + static_cast<size_t>(r) * source->rowBytes;
        unsigned char* out = targetPixels + static_cast<size_t>(r + shiftY) * target->rowBytes;
        for (int64_t c = firstColumn; c < endColumn; ++c) {
            const float dx = static_cast<float>(c - centreX);
            const float d = std::sqrt(dx * dx + dy * dy);
            // Weight 1 inside the radius, falling linearly to 0 at radius + softness.
            float t = (d - radius) / softness;
            if (t < 0.0f)
                t = 0.0f;
            else if (t > 1.0f)
                t = 1.0f;
            const float weight = 1.0f - t;
            const unsigned sample = in[static_cast<size_t>(c) * source->pixelBytes];
            out[c + shiftX] = static_cast<unsigned char>(static_cast<int>(static_cast<float>(sample) * weight));
        }
    }
}

// A cut-out without structure (empty disc, black or uniform source) would
// make a flat kernel; it becomes a single bright pixel in the middle instead.
void singlePixelIfFlat(ImageRec* image)
{
    unsigned char* pixels = static_cast<unsigned char*>(image->pixels);
    const size_t bytes = static_cast<size_t>(image->rowBytes) * image->height;
    unsigned char low = 255, high = 0;
    for (size_t i = 0; i < bytes; ++i) {
        if (pixels[i] < low)
            low = pixels[i];
        if (pixels[i] > high)
            high = pixels[i];
    }
    if (low == high) {
        std::memset(pixels, 0, bytes);
        pixels[static_cast<size_t>(image->height / 2) * image->rowBytes + image->width / 2] = 255;
    }
}

}  // namespace

bool FftEngine::BuildImagePsf(const ImageRec* source, int centreX, int centreY, float radius, float softness)
{
    // A missing source is refused like a missing image in PrepareKernel; radii
    // that are not finite numbers are refused as arguments. Nothing is touched.
    if (!source || !source->pixels || source->channels < 1) {
        status = FFT_ERR_NOT_PREPARED;
        return false;
    }
    if (!std::isfinite(radius) || !std::isfinite(softness)) {
        status = FFT_ERR_ARGUMENT;
        return false;
    }
    if (softness < 1.0f)
        softness = 1.0f;
    const uint32_t margin = PadMargin(ImagePsfReach(radius, softness));

    // Only integer samples have a top byte; float (and unknown) types are refused.
    const int type = source->sampleType;
    if (type != IMAGE_U8 && type != IMAGE_U16 && type != IMAGE_I32) {
        status = FFT_ERR_PSF_TYPE;
        return false;
    }
    if (!acquirePsfImage(source->width, source->height))
        return false;
    std::memset(psfImage->pixels, 0, static_cast<size_t>(psfImage->rowBytes) * psfImage->height);
    cutDisc(source, psfImage, centreX, centreY, radius, softness);
    singlePixelIfFlat(psfImage);
    return PrepareKernel(psfImage, margin);
}
