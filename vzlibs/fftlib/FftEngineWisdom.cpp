// The wisdom file: FFTW's planner knowledge carried from one start to the next,
// in fftw3_wisdom_vz.dat in the settings directory. Used only with useWisdom set.
#include <fftw3.h>

#include <cstdio>

#include "vzlibs/baselib/paths.h"
#include "vzlibs/fftlib/FftEngine.h"

namespace {

constexpr const char* kWisdomFileName = "fftw3_wisdom_vz.dat";

// Opens the wisdom file in `mode`; null if it cannot be opened or its path does
// not fit, so that a cut path is never opened.
FILE* openWisdomFile(const char* mode)
{
    char path[8192];
    const int length = std::snprintf(path, sizeof path, "%s%s%s", get_standard_directory(VZ_DIR_SETTINGS), "/",
                                     kWisdomFileName);
    if (length <= 0 || static_cast<size_t>(length) >= sizeof path)
        return nullptr;
    return std::fopen(path, mode);
}

}  // namespace

bool FftEngine::loadWisdom()
{
    wisdomLoaded = 0;
    FILE* file = openWisdomFile("r");
    if (!file)
        return false;
    // FFTW refuses a file with bad content as a whole; the read is tried again at
    // the next plan.
    if (fftw_import_wisdom_from_file(file) != 0)
        wisdomLoaded = 1;
    std::fclose(file);
    return wisdomLoaded != 0;
}

bool FftEngine::saveWisdom()
{
    FILE* file = openWisdomFile("w+");
    if (!file)
        return false;
    fftw_export_wisdom_to_file(file);
    std::fclose(file);
    return true;
}
