// The planes and plans of FftEngine's single-precision mode (FFT_MODE_FAST_FLOAT):
// float counterparts of the engine's double fields of the same names, made, kept
// and freed by the same rules. They stay null in every other mode, as the double
// fields stay null in this one.
#pragma once

#include <fftw3.h>

struct FftSinglePlanes {
    fftwf_plan kernelForwardPlan = nullptr;     // r2c, kernelReal to kernelSpectrum
    fftwf_plan workForwardPlan = nullptr;       // r2c, workReal to workSpectrum
    fftwf_plan workInversePlan = nullptr;       // c2r, workSpectrum to workReal
    float* kernelReal = nullptr;                // paddedWidth x paddedHeight
    fftwf_complex* kernelSpectrum = nullptr;    // paddedHeight rows of paddedWidth / 2 + 1
    float* workReal = nullptr;                  // as kernelReal
    fftwf_complex* workSpectrum = nullptr;      // as kernelSpectrum
    float* lumaPlane = nullptr;                 // convolved channels 0, 1 and 2
    float* chromaAPlane = nullptr;
    float* chromaBPlane = nullptr;
    float* jobBuffer = nullptr;                 // row-job parameter: the plane to fill
};
