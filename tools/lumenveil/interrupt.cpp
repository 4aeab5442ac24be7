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

void watchInterrupts(ImageEffectHost* host)
{
    watchedHost.store(host);
    struct sigaction action = {};
    action.sa_handler = onInterrupt;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

void releaseInterrupts()
{
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
    watchedHost.store(nullptr);
}

bool interruptRequested() { return requested.load(); }
