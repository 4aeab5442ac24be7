#include "vzlibs/baselib/machine.h"

#include <time.h>
#include <unistd.h>

#include <atomic>

namespace {
// Raw page size as the system reported it; -1 until first asked. Atomic:
// frames may be made on several threads at once.
std::atomic<int> cachedPageSize{-1};
}  // namespace

int get_processor_count()
{
    long n = sysconf(_SC_NPROCESSORS_ONLN);
    return n < 1 ? 1 : static_cast<int>(n);
}

int get_page_size()
{
    int size = cachedPageSize.load(std::memory_order_relaxed);
    if (size < 0) {
        long n = sysconf(_SC_PAGESIZE);
        size = n > 0 ? static_cast<int>(n) : 0;
        cachedPageSize.store(size, std::memory_order_relaxed);
    }
    return size < 512 ? 512 : size;
}

double get_time_seconds()
{
    timespec ts{};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}
