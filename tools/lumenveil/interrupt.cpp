#include "tools/lumenveil/interrupt.h"

#include <atomic>
#include <csignal>

namespace {

std::atomic<bool> requested{false};
std::atomic<ImageEffectHost*> watchedHost{nullptr};

static_assert(std::atomic<bool>::is_always_lock_free, "the signal handler needs a lock-free flag");

extern "C" void onInterrupt(int)
{
    requested.store(true);
    if (ImageEffectHost* host = watchedHost.load())
        host->Stop();
}

}  // namespace

void watchInterrupts()
{
    struct sigaction action = {};
    action.sa_handler = onInterrupt;
    sigemptyset(&action.sa_mask);
    for (int signal : {SIGINT, SIGTERM, SIGHUP})
        sigaction(signal, &action, nullptr);
}

void attachInterruptHost(ImageEffectHost* host)
{
    watchedHost.store(host);
    // A signal that came before the host was attached stops it at once.
    if (host && requested.load())
        host->Stop();
}

void releaseInterruptHost() { watchedHost.store(nullptr); }

bool interruptRequested() { return requested.load(); }
