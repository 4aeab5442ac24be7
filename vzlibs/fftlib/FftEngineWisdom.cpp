// The wisdom files: FFTW's planner knowledge carried from one start to the next,
// in the settings directory: fftw3_wisdom_vz.dat for the double-precision
// planner and, beside it, fftw3f_wisdom_vz.dat for the single-precision one.
// An engine reads and writes the file of its mode's precision. Used only with
// useWisdom set; callers hold the planner lock.
#include <cstdio>

#include "vzlibs/baselib/paths.h"
#include "vzlibs/fftlib/FftEngine.h"
#include "vzlibs/fftlib/fftw_precision.h"

namespace {

constexpr const char* kWisdomFileName[FFTW_PRECISION_COUNT] = {
    "fftw3_wisdom_vz.dat",   // FFTW_PRECISION_DOUBLE
    "fftw3f_wisdom_vz.dat",  // FFTW_PRECISION_SINGLE
};

// Opens the wisdom file of `precision` in `mode`; null if it cannot be opened or
// its path does not fit, so that a cut path is never opened.
FILE* openWisdomFile(FftwPrecision precision, const char* mode)
{
    char path[8192];
    const int length = std::snprintf(path, sizeof path, "%s%s%s", get_standard_directory(VZ_DIR_SETTINGS), "/",
                                     kWisdomFileName[precision]);
    if (length <= 0 || static_cast<size_t>(length) >= sizeof path)
        return nullptr;
    return std::fopen(path, mode);
}

template <typename Real> bool readWisdom()
{
    FILE* file = openWisdomFile(Fftw<Real>::precision, "r");
    if (!file)
        return false;
    // FFTW refuses a file with bad content as a whole; the read is tried again at
    // the next plan.
    const bool read = Fftw<Real>::importWisdom(file);
    std::fclose(file);
    return read;
}

template <typename Real> bool writeWisdom()
{
    FILE* file = openWisdomFile(Fftw<Real>::precision, "w+");
    if (!file)
        return false;
    Fftw<Real>::exportWisdom(file);
    std::fclose(file);
    return true;
}

}  // namespace

bool FftEngine::loadWisdom()
{
    wisdomLoaded = 0;
    if (singlePrecision() ? readWisdom<float>() : readWisdom<double>())
        wisdomLoaded = 1;
    return wisdomLoaded != 0;
}

bool FftEngine::saveWisdom() { return singlePrecision() ? writeWisdom<float>() : writeWisdom<double>(); }
