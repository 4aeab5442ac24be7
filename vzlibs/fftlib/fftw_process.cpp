// FFTW's process-wide state: per library, a count of live engines and whether
// its threads are set up; one planner lock for both.
#include "vzlibs/fftlib/fftw_process.h"

namespace {

struct LibraryState {
    int liveEngines = 0;
    bool threadsReady = false;
};

struct FftwProcessState {
    std::mutex planner;
    LibraryState library[FFTW_PRECISION_COUNT];
};

FftwProcessState& state()
{
    static FftwProcessState instance;
    return instance;
}

bool initThreads(FftwPrecision precision)
{
    return precision == FFTW_PRECISION_SINGLE ? Fftw<float>::initThreads() : Fftw<double>::initThreads();
}

void cleanupThreads(FftwPrecision precision)
{
    if (precision == FFTW_PRECISION_SINGLE)
        Fftw<float>::cleanupThreads();
    else
        Fftw<double>::cleanupThreads();
}

}  // namespace

std::mutex& fftw_planner_mutex() { return state().planner; }

bool fftw_process_attach(FftwPrecision precision)
{
    FftwProcessState& s = state();
    std::lock_guard<std::mutex> guard(s.planner);
    LibraryState& lib = s.library[precision];
    // A failed set-up is tried again by the next engine.
    if (!lib.threadsReady)
        lib.threadsReady = initThreads(precision);
    ++lib.liveEngines;
    return lib.threadsReady;
}

void fftw_process_detach(FftwPrecision precision)
{
    FftwProcessState& s = state();
    std::lock_guard<std::mutex> guard(s.planner);
    LibraryState& lib = s.library[precision];
    if (lib.liveEngines > 0)
        --lib.liveEngines;
    // Only with no engine of this library left: clean-up frees every plan it knows of.
    if (lib.liveEngines == 0 && lib.threadsReady) {
        cleanupThreads(precision);
        lib.threadsReady = false;
    }
}
