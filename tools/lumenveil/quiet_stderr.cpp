#include "tools/lumenveil/quiet_stderr.h"

#include <fcntl.h>
#include <unistd.h>

#include <condition_variable>
#include <cstdio>
#include <mutex>

namespace {

// stderr is one per process, so what stands in for it is too.
struct Redirection {
    std::mutex lock;
    std::condition_variable ended;
    int sections = 0;
    int saved = -1;  // the real stderr while sections are open
};

Redirection& redirection()
{
    static Redirection state;
    return state;
}

}  // namespace

QuietStderr::QuietStderr()
{
    Redirection& r = redirection();
    std::lock_guard<std::mutex> hold(r.lock);
    if (r.sections++ > 0)
        return;
    std::fflush(stderr);
    const int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
    r.saved = null >= 0 ? dup(STDERR_FILENO) : -1;
    if (r.saved >= 0)
        dup2(null, STDERR_FILENO);
    if (null >= 0)
        close(null);
}

QuietStderr::~QuietStderr()
{
    Redirection& r = redirection();
    std::lock_guard<std::mutex> hold(r.lock);
    if (--r.sections > 0)
        return;
    std::fflush(stderr);
    if (r.saved >= 0) {
        dup2(r.saved, STDERR_FILENO);
        close(r.saved);
    }
    r.saved = -1;
    r.ended.notify_all();
}

StderrLine::StderrLine()
{
    Redirection& r = redirection();
    std::unique_lock<std::mutex> hold(r.lock);
    r.ended.wait(hold, [&] { return r.sections == 0; });
    hold.release();  // kept until the line is printed
}

StderrLine::~StderrLine() { redirection().lock.unlock(); }
