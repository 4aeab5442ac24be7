// Shared by the library tests: a capture of the library log, the heap's switches
// held for one test, printf into a string, and a block's record in a heap table.
#pragma once

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <regex>
#include <string>
#include <utility>

#include "vzlibs/baselib/heap.h"
#include "vzlibs/baselib/heap_internal.h"
#include "vzlibs/baselib/log.h"

// While it lives, the log writes into memory at the given threshold; take() returns
// the text written since its last call, untimed() the same without the times of
// day. The channel is put back at the end.
struct LogCapture {
    explicit LogCapture(int32_t level = LOG_INFO)
    {
        LogChannel& c = lib_log_channel();
        c.stream = stream, c.level = level, c.lastLevel = -1;
    }
    ~LogCapture() { lib_log_channel() = saved, std::fclose(stream), std::free(buffer); }
    std::string take() { return std::fflush(stream), std::string(buffer + std::exchange(consumed, size), buffer + size); }
    std::string untimed() { return std::regex_replace(take(), std::regex("\\d\\d:\\d\\d:\\d\\d\\.\\d\\d "), ""); }

    const LogChannel saved = lib_log_channel();
    char* buffer = nullptr;
    size_t size = 0, consumed = 0;
    FILE* stream = open_memstream(&buffer, &size);
};

// While it lives, the heap has the given switches and no hooks; both are put back at the end.
struct HeapSwitches {
    HeapSwitches(int32_t enabled, int32_t debug, int32_t trace)
    {
        hm_set_allocators(nullptr, nullptr);
        hm_configure(enabled, debug, trace);
    }
    ~HeapSwitches()
    {
        hm_configure(saved[0], saved[1], saved[2]);
        hm_set_allocators(&normal, &image);
    }

    const int32_t saved[3] = {hm_enabled, hm_debug, hm_trace};
    const hm_normal_allocator normal = hm_normal_hooks;
    const hm_image_allocator image = hm_image_hooks;
};

__attribute__((format(printf, 1, 2))) inline std::string format(const char* text, ...)
{
    char out[2048];
    va_list args;
    va_start(args, text);
    std::vsnprintf(out, sizeof out, text, args);
    va_end(args);
    return out;
}

// A block's record as "size path(line)"; "" for a miss, which must set the size to 0.
inline std::string record(hm_info* info, const void* p)
{
    uint32_t size = 77;
    char file[HM_FILE_CHARS] = {};
    int line = 0;
    if (!hm_lookup(info, const_cast<void*>(p), &size, file, &line))
        return size == 0 ? "" : "miss with size " + std::to_string(size);
    return format("%u %s(%d)", size, file, line);
}
