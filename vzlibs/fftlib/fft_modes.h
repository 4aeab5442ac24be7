// The engine's back ends (its `mode`), their names, and the process-wide
// default: the environment variable VZ_FFT_MODE.
//
//   unset, empty or "faithful"   FFT_MODE_FFTW
//   "fast"                       FFT_MODE_FAST
//   "fast-float"                 FFT_MODE_FAST_FLOAT
//   anything else                FFT_MODE_FFTW, and one warning line in the log
#pragma once

#include <cstdint>

enum FftMode : uint32_t {
    // Square power-of-two transforms in double precision: what the effect
    // creates. Mode 5 is taken as this one.
    FFT_MODE_FFTW = 4,
    // Width and height chosen apart, each the smallest size at or above the
    // frame plus twice the margin whose only prime factors are 2, 3, 5 and 7;
    // double precision. The picture is that of mode 4 to within rounding.
    FFT_MODE_FAST = 6,
    // As FFT_MODE_FAST, with single-precision planes and transforms (FFTW's
    // fftwf_ library); the pixel arithmetic of the load and store passes stays
    // double.
    FFT_MODE_FAST_FLOAT = 7,
};

constexpr const char* FFT_MODE_VARIABLE = "VZ_FFT_MODE";

// The named modes, in the order in which hosts list them: index 0 to
// fft_mode_count() - 1 gives "faithful", "fast", "fast-float".
int fft_mode_count();
// The name of the mode at `index`, or null outside the list.
const char* fft_mode_name(int index);
// The list of names, fft_mode_count() of them.
const char* const* fft_mode_names();
// The mode at `index`, or FFT_MODE_FFTW outside the list.
uint32_t fft_mode_at(int index);
// The index of `mode` in the list (5 counts as 4), or -1.
int fft_mode_index(uint32_t mode);

// The mode that VZ_FFT_MODE names now.
uint32_t fft_mode_from_environment();
