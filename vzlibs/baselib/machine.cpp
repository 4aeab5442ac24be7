#include "vzlibs/baselib/machine.h"

#include <time.h>
#include <unistd.h>

namespace {
// Raw page size as the system reported it; -1 until first asked.
int cachedPageSize = -1;
}  // namespace

int get_processor_count()
{
    long n = sysconf(_SC_NPROCESSORS_ONLN);
    return n < 1 ? 1 : static_cast<int>(n);
}

int get_page_size()
{
    if (cachedPageSize < 0) {
        long n = sysconf(_SC_PAGESIZE);
        cachedPageSize = n > 0 ? static_cast<int>(n) : 0;
    }
    return cachedPageSize < 512 ? 512 : cachedPageSize;
}

double get_time_seconds()
{
    timespec ts{};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}
