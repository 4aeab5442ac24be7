// The heap's switches and hooks, the configuration calls that set them, and the
// start-up reading of VZ_HEAP_DEBUG.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "vzlibs/baselib/heap.h"

int32_t hm_enabled = 0;
int32_t hm_trace = 0;
int32_t hm_debug = 0;

hm_normal_allocator hm_normal_hooks = {};
hm_image_allocator hm_image_hooks = {};

void hm_configure(int32_t enabled, int32_t debug, int32_t trace)
{
    hm_enabled = enabled != 0 ? 1 : 0;
    hm_debug = debug != 0 ? 1 : 0;
    hm_trace = trace != 0 ? 1 : 0;
}

void hm_set_allocators(const hm_normal_allocator* normal, const hm_image_allocator* image)
{
    hm_normal_hooks = normal ? *normal : hm_normal_allocator{};
    hm_image_hooks = image ? *image : hm_image_allocator{};
}

bool hm_parse_switches(const char* text, int32_t* enabled, int32_t* debug, int32_t* trace)
{
    if (!text || !enabled || !debug || !trace)
        return false;
    int32_t on = 0, tracked = 0, traced = 0;
    const char* separators = ", \t";
    const char* p = text;
    while (*p) {
        p += std::strspn(p, separators);
        const size_t length = std::strcspn(p, separators);
        if (length == 0)
            break;
        if (length == 5 && std::strncmp(p, "track", 5) == 0) {
            on = 1;
            tracked = 1;
        } else if (length == 5 && std::strncmp(p, "trace", 5) == 0) {
            on = 1;
            traced = 1;
        } else {
            return false;
        }
        p += length;
    }
    *enabled = on;
    *debug = tracked;
    *trace = traced;
    return true;
}

namespace {

// Runs before the ordinary static initialisers of the program, so that blocks
// they allocate are already tracked. The log is not constructed yet at this
// point, so a value that is not understood is reported on stderr directly.
__attribute__((constructor(101))) void readHeapSwitchesAtStartUp()
{
    const char* value = std::getenv("VZ_HEAP_DEBUG");
    if (!value)
        return;
    int32_t enabled = 0, debug = 0, trace = 0;
    if (!hm_parse_switches(value, &enabled, &debug, &trace)) {
        std::fprintf(stderr,
                     "(VZ LIB) VZ_HEAP_DEBUG=\"%s\" not understood: use \"track\", \"trace\" or \"track,trace\"; "
                     "heap tracking stays off\n",
                     value);
        return;
    }
    hm_configure(enabled, debug, trace);
}

}  // namespace
