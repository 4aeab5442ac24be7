// Status codes of FftEngine: the reason for the last false result.
#pragma once

enum FftStatus : int {
    FFT_OK = 0,                  // no failure
    FFT_ERR_SIZE = 1,            // padded transform size outside 2..LargestSide(mode)
    FFT_ERR_MEMORY = 2,          // a buffer or image could not be allocated
    FFT_ERR_INPUT_SIZE = 3,      // frame size differs from the PSF image's
    FFT_ERR_NOT_PREPARED = 4,    // no kernel or no input image
    FFT_ERR_IMAGE_MISMATCH = 5,  // output and input differ in size or sample type
    FFT_ERR_PSF_TYPE = 6,        // image PSF source has float samples
    FFT_ERR_CHANNELS = 7,        // fewer than three channels, or mask lacks 1, 2, 4
    FFT_ERR_ARGUMENT = 8,        // border mode neither 1 nor 2, or a PSF builder's
                                 // radius, softness, rotation or pixel aspect
                                 // not a finite number
    FFT_ERR_PLAN = 9,            // FFTW returned no plan
    FFT_ERR_THREADS = 10,        // FFTW's thread initialisation failed
};
