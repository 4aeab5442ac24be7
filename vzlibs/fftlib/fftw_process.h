// FFTW's process-wide state, shared by every FftEngine in the process.
//
// FFTW's thread set-up and clean-up act on the whole process, and its planner,
// plan destruction and wisdom are not thread-safe. Engines therefore register
// here: the first live engine of a precision sets that library's threads up,
// the last one to go cleans them up, and every call that touches a planner's
// state (planning, destroying a plan, reading or writing wisdom) is made while
// holding the one planner lock, which serves both libraries. fftw_execute on an
// existing plan needs no lock.
#pragma once

#include <mutex>

#include "vzlibs/fftlib/fftw_precision.h"

// Registers a live engine of `precision`; sets that library's threads up if
// they are not yet. Returns whether its threads are ready.
bool fftw_process_attach(FftwPrecision precision = FFTW_PRECISION_DOUBLE);

// Unregisters a live engine of `precision`; the last one out cleans that
// library's threads up, which also drops its in-memory wisdom.
void fftw_process_detach(FftwPrecision precision = FFTW_PRECISION_DOUBLE);

// The lock around FFTW's planners, plan destruction and wisdom.
std::mutex& fftw_planner_mutex();
