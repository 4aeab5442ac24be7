// FFTW's process-wide state, shared by every FftEngine in the process.
//
// FFTW's thread set-up and clean-up act on the whole process, and its planner,
// plan destruction and wisdom are not thread-safe. Engines therefore register
// here: the first live engine sets FFTW's threads up, the last one to go cleans
// them up, and every call that touches the planner's state (planning, destroying
// a plan, reading or writing wisdom) is made while holding the one planner lock.
// fftw_execute on an existing plan needs no lock.
#pragma once

#include <mutex>

// Registers a live engine; sets FFTW's threads up if they are not yet. Returns
// whether FFTW's threads are ready.
bool fftw_process_attach();

// Unregisters a live engine; the last one out cleans FFTW's threads up, which
// also drops FFTW's in-memory wisdom.
void fftw_process_detach();

// The lock around FFTW's planner, plan destruction and wisdom.
std::mutex& fftw_planner_mutex();
