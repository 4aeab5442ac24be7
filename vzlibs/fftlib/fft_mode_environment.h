// The process-wide choice of the engine's back end: the environment variable
// VZ_FFT_MODE, read when an engine asked for FFT_MODE_FFTW is created.
//
//   unset, empty or "faithful"   FFT_MODE_FFTW
//   "fast"                       FFT_MODE_FAST
//   "fast-float"                 FFT_MODE_FAST_FLOAT
//   anything else                FFT_MODE_FFTW, and one warning line in the log
#pragma once

#include <cstdint>

constexpr const char* FFT_MODE_VARIABLE = "VZ_FFT_MODE";

// The mode that VZ_FFT_MODE names now.
uint32_t fft_mode_from_environment();
