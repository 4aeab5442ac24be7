// Ctrl-C (SIGINT) and SIGTERM during a render: the first asks the host to
// stop, so the effect ends its frame early through ShouldContinue, and the
// tool writes nothing more.
#pragma once

#include "hostsdk/IDSImageEffectHost.h"

// Routes SIGINT and SIGTERM to `host->Stop()` and a flag, until
// releaseInterrupts. `host` must outlive that.
void watchInterrupts(ImageEffectHost* host);
void releaseInterrupts();
// True once a signal came.
bool interruptRequested();
