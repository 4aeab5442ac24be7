// VZImage: the frame as the effect logic sees it.
//
// Always four interleaved 16-bit channels a pixel (0 to 2 colour, 3 alpha), each
// holding 0..32767, where 32767 is full scale (1.0, or opaque for alpha). Rows lie
// one after another with no gap, width x 8 bytes each, and `rows` points at each.
// Also here: the bridges to and from ImageRec, the form the engine works on.
#pragma once

#include <cstdint>

#include "vzlibs/imagelib/imagelib.h"

// Something a creator hangs on a frame through `extra`; the frame deletes it.
class VZImageExtra {
public:
    virtual ~VZImageExtra() = default;
};

class VZImage {
public:
    // Frame of width x height. `format` is accepted and ignored. With `pixels` null
    // the frame allocates width x height x 8 bytes (uninitialised) and owns them;
    // otherwise it works on the caller's block, which must hold that many bytes,
    // and never frees it. The two constructors do the same; this one takes the
    // width unsigned, as the effect's own sizes come.
    VZImage(uint32_t width, int32_t height, int32_t format, uint16_t* pixels, uint32_t userValue);
    // The same, for a width that comes signed (as the host's sizes do); a negative
    // width makes a frame of width 0.
    VZImage(int32_t width, int32_t height, int32_t format, uint16_t* pixels, uint32_t userValue);
    // Frees the pixel block if it is owned, the row table, and `extra`.
    ~VZImage();

    VZImage(const VZImage&) = delete;
    VZImage& operator=(const VZImage&) = delete;

    // Copies alpha (sample 3) of `source` into this frame, pixel for pixel, on four
    // threads through RunFourThreads. The four-slice split leaves the last
    // height mod 4 rows with their old alpha. Returns false and changes nothing when
    // `source` is null, has another width, or fewer rows than this frame.
    bool CopyAlphaFrom(VZImage* source);

    uint16_t* pixels;           // first sample; null only when the allocation failed or the frame is empty
    uint32_t ownsPixels;        // 1: `pixels` was allocated here and is freed with the frame
    VZImage* alphaSource;       // source of the alpha copy in work
    uint8_t description[64];    // spare block, zero
    uint16_t** rows;            // rows[y] = pixels + y x width x 4 samples; null when height <= 0
    uint32_t width;             // columns
    int32_t height;             // rows
    double pixelAspect[2];      // x and y shape of a pixel, 1.0 and 1.0
    double offset[2];           // spare pair, 0.0 and 0.0; the execute path gives it meaning
    float scale;                // 720 / width until the execute path sets the host's value
    uint32_t userValue;         // given by the creator, kept for it
    VZImageExtra* extra;        // if non-null, deleted with the frame
    uint16_t reservedSamples[4];

private:
    void build(uint32_t width, int32_t height, uint16_t* pixels, uint32_t userValue, int pixelLine, int rowLine);
};

// New four-channel record of type 1 (unsigned 16-bit) holding the frame, samples
// doubled (0..32767 becomes 0..65534). Null for a null frame, a size the record
// cannot hold, or a failed allocation.
ImageRec* image_from_vzimage(const VZImage* vzImage);

// Converts the frame into an existing four-channel record of the same size.
// Type 1: samples doubled. Type 3 (float): samples times 1/32767 in single
// precision, so that 32767 becomes 1.0. False, with nothing changed, for any other
// type, channel count or size, or null arguments.
bool image_fill_from_vzimage(ImageRec* record, const VZImage* vzImage);

// Converts a record of three or four channels, type 0 (8-bit) or 1 (16-bit), of
// the frame's size back into the frame. Type 1 samples are halved; an 8-bit v
// becomes (v << 7) | (v >> 1), so 255 gives 32767. Three channels get an opaque
// alpha of 32767. False, with nothing changed, for anything else.
bool image_store_to_vzimage(const ImageRec* record, VZImage* vzImage);
