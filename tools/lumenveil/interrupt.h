// Ctrl-C (SIGINT), SIGTERM and SIGHUP (a dropped terminal): the tool watches
// them from its first instruction on, so that no signal kills it midway. The
// first asks the host of a running render to stop, so the effect ends its
// frame early through ShouldContinue, and the tool writes nothing more.
#pragma once

#include "hostsdk/IDSImageEffectHost.h"

// Routes SIGINT, SIGTERM and SIGHUP to a flag, for the life of the process.
void watchInterrupts();
// While a render runs, a signal also calls `host->Stop()`; `host` must stay
// until releaseInterruptHost.
void attachInterruptHost(ImageEffectHost* host);
void releaseInterruptHost();
// True once a signal came.
bool interruptRequested();
