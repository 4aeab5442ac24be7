// FFTW's process-wide state: a count of live engines and the planner lock.
#include "vzlibs/fftlib/fftw_process.h"

#include <fftw3.h>

namespace {

struct FftwProcessState {
    std::mutex planner;
    int liveEngines = 0;
    bool threadsReady = false;
};

FftwProcessState& state()
{
    static FftwProcessState instance;
    return instance;
}

}  // namespace

std::mutex& fftw_planner_mutex() { return state().planner; }

bool fftw_process_attach()
{
    FftwProcessState& s = state();
    std::lock_guard<std::mutex> guard(s.planner);
    // A failed set-up is tried again by the next engine.
    if (!s.threadsReady)
        s.threadsReady = fftw_init_threads() != 0;
    ++s.liveEngines;
    return s.threadsReady;
}

void fftw_process_detach()
{
    FftwProcessState& s = state();
    std::lock_guard<std::mutex> guard(s.planner);
    if (s.liveEngines > 0)
        --s.liveEngines;
    // Only with no engine left: clean-up frees every plan FFTW knows of.
    if (s.liveEngines == 0 && s.threadsReady) {
        fftw_cleanup_threads();
        s.threadsReady = false;
    }
}
