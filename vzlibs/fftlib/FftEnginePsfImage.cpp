// The picture the PSF builders draw into: one per frame size, reallocated only
// when the size changes.
#include "vzlibs/fftlib/FftEngine.h"

bool FftEngine::acquirePsfImage(int width, int height)
{
    if (psfImage && (psfImage->width != width || psfImage->height != height)) {
        image_free(psfImage);
        psfImage = nullptr;
    }
    if (!psfImage) {
        psfImage = image_create(width, height, 1, IMAGE_U8, 1);
        if (!psfImage) {
            status = FFT_ERR_MEMORY;
            return false;
        }
    }
    return true;
}
