// The heap's six entry points, each in its three layers: plain (switches off, the
// system heap), hooked (the kind's allocator hooks under the mutex) and tracked
// (the hooks or the system heap, with every block entered in its kind's table).
#include "vzlibs/baselib/heap.h"

#include <cstdlib>
#include <cstring>

#include "vzlibs/baselib/heap_internal.h"
#include "vzlibs/baselib/log.h"

namespace {

bool normalHooked() { return hm_normal_hooks.active != 0; }

// The heap's own duplicate: malloc of length plus one and a copy. A null string
// gives null (the system's strdup would crash on it).
char* duplicate(const char* string)
{
    if (!string)
        return nullptr;
    const size_t bytes = std::strlen(string) + 1;
    char* copy = static_cast<char*>(std::malloc(bytes));
    if (copy)
        std::memcpy(copy, string, bytes);
    return copy;
}

// Tracked free of either kind; `info` holds the block's record. The timer is the
// NORMAL one for both kinds, as it has always been.
template <typename FreeBlock>
void trackedFree(hm_info* info, void* pointer, const char* file, int line, const char* name, FreeBlock freeBlock)
{
    get_hm_mutex();
    hm_timer_start(&hm_normal_info);
    uint32_t size = 0;
    char allocFile[HM_FILE_CHARS];
    int allocLine = 0;
    if (!hm_lookup(info, pointer, &size, allocFile, &allocLine)) {
        // Not handed to the allocator: an unknown pointer leaks rather than corrupts.
        lib_log(LOG_ERROR, "VZ-HM-DEBUG: %s(%p) attempted - but %p is not allocated! [%s(%d)]\n", name, pointer,
                pointer, file, line);
        hm_timer_stop(&hm_normal_info);
        release_hm_mutex();
        return;
    }
    freeBlock(pointer);
    hm_record_free(info, pointer);
    hm_timer_stop(&hm_normal_info);
    if (hm_trace) {
        lib_log(LOG_INFO, "VZ-HM-TRACE: %s(%p) at [%s(%d)].\n", name, pointer, file, line);
        lib_log_continue("            Alloc at [%s(%d)], size %d\n", allocFile, allocLine, static_cast<int>(size));
    }
    release_hm_mutex();
}

// vz_malloc and vz_image_malloc: `info` and `hooks` are the kind's; `traced`
// says whether the call gets a trace line.
template <typename Hooks>
void* mallocOfKind(hm_info* info, const Hooks& hooks, uint32_t size, const char* file, int line, const char* name,
                   bool traced)
{
    if (!hm_enabled)
        return std::malloc(size);
    void* block = nullptr;
    if (hm_debug) {
        if (size == 0) {
            lib_log(LOG_ERROR, "VZ-HM-DEBUG: %s( size=0 ) attempted! [%s(%d)]\n", name, file, line);
            return nullptr;
        }
        get_hm_mutex();
        hm_timer_start(&hm_normal_info);
        block = hooks.active ? hooks.malloc(hooks.context, size) : std::malloc(size);
        if (block)
            hm_record_alloc(info, block, size, file, line);
        hm_timer_stop(&hm_normal_info);
        release_hm_mutex();
    } else if (hooks.active) {
        get_hm_mutex();
        block = hooks.malloc(hooks.context, size);
        release_hm_mutex();
    } else {
        block = std::malloc(size);
    }
    if (hm_trace && traced)
        lib_log(LOG_INFO, "VZ-HM-TRACE: %s(%d) ret (%p) at [%s(%d)]\n", name, static_cast<int>(size), block, file,
                line);
    return block;
}

// vz_free and vz_image_free, as mallocOfKind.
template <typename Hooks>
void freeOfKind(hm_info* info, const Hooks& hooks, void* pointer, const char* file, int line, const char* name)
{
    if (!hm_enabled) {
        std::free(pointer);
        return;
    }
    if (hm_debug) {
        if (!pointer) {
            lib_log(LOG_ERROR, "VZ-HM-DEBUG: %s( NULL ) attempted! [%s(%d)]\n", name, file, line);
            return;
        }
        trackedFree(info, pointer, file, line, name, [&hooks](void* block) {
            if (hooks.active)
                hooks.free(hooks.context, block);
            else
                std::free(block);
        });
    } else if (hooks.active) {
        get_hm_mutex();
        hooks.free(hooks.context, pointer);
        if (hm_trace)
            lib_log(LOG_INFO, "VZ-HM-TRACE: %s(%p) at [%s(%d)]\n", name, pointer, file, line);
        release_hm_mutex();
    } else {
        std::free(pointer);  // no trace line here, by design
    }
}

}  // namespace

void* vz_malloc(uint32_t size, const char* file, int line)
{
    // Line 0 gets no trace line here, unlike vz_image_malloc.
    return mallocOfKind(&hm_normal_info, hm_normal_hooks, size, file, line, "vz_malloc", line != 0);
}

void* vz_realloc(void* pointer, uint32_t size, const char* file, int line)
{
    if (!hm_enabled)
        return std::realloc(pointer, size);
    void* block = nullptr;
    if (hm_debug) {
        if (size == 0) {
            // Unlike realloc, the block is neither freed nor changed.
            lib_log(LOG_ERROR, "VZ-HM-DEBUG: vz_realloc( size=0 ) attempted! [%s(%d)]\n", file, line);
            return nullptr;
        }
        get_hm_mutex();
        hm_timer_start(&hm_normal_info);
        uint32_t oldSize = 0;
        if (pointer && !hm_lookup(&hm_normal_info, pointer, &oldSize, nullptr, nullptr)) {
            lib_log(LOG_ERROR, "VZ-HM-DEBUG: vz_realloc(%p,%d) attempted - but %p is not allocated!  [%s(%d)]\n",
                    pointer, static_cast<int>(size), pointer, file, line);
            hm_timer_stop(&hm_normal_info);
            release_hm_mutex();
            return nullptr;
        }
        block = normalHooked() ? hm_normal_hooks.realloc(hm_normal_hooks.context, pointer, size)
                               : std::realloc(pointer, size);
        if (block) {
            if (pointer)
                hm_record_free(&hm_normal_info, pointer);
            hm_record_alloc(&hm_normal_info, block, size, file, line);
        }
        hm_timer_stop(&hm_normal_info);
        release_hm_mutex();
    } else if (normalHooked()) {
        get_hm_mutex();
        block = hm_normal_hooks.realloc(hm_normal_hooks.context, pointer, size);
        release_hm_mutex();
    } else {
        block = std::realloc(pointer, size);
    }
    if (hm_trace && line)
        lib_log(LOG_INFO, "VZ-HM-TRACE: vz_realloc(%p,%d) ret (%p) at [%s(%d)]\n", pointer, static_cast<int>(size),
                block, file, line);
    return block;
}

char* vz_strdup(const char* string, const char* file, int line)
{
    if (!hm_enabled)
        return duplicate(string);
    char* copy = nullptr;
    if (hm_debug) {
        if (!string) {
            lib_log(LOG_ERROR, "VZ-HM-DEBUG: vz_strdup( NULL ) attempted! [%s(%d)]\n", file, line);
            return nullptr;
        }
        get_hm_mutex();
        hm_timer_start(&hm_normal_info);
        copy = normalHooked() ? hm_normal_hooks.strdup(hm_normal_hooks.context, string) : duplicate(string);
        if (copy)
            hm_record_alloc(&hm_normal_info, copy, static_cast<uint32_t>(std::strlen(string) + 1), file, line);
        hm_timer_stop(&hm_normal_info);
        release_hm_mutex();
    } else if (normalHooked()) {
        get_hm_mutex();
        copy = hm_normal_hooks.strdup(hm_normal_hooks.context, string);
        release_hm_mutex();
    } else {
        copy = duplicate(string);
    }
    // Traced whatever the line, unlike vz_malloc and vz_realloc.
    if (hm_trace)
        lib_log(LOG_INFO, "VZ-HM-TRACE: vz_strdup(%p) ret (%p) at [%s(%d)]\n", static_cast<const void*>(string),
                static_cast<void*>(copy), file, line);
    return copy;
}

void vz_free(void* pointer, const char* file, int line)
{
    freeOfKind(&hm_normal_info, hm_normal_hooks, pointer, file, line, "vz_free");
}

void* vz_image_malloc(uint32_t size, const char* file, int line)
{
    return mallocOfKind(&hm_image_info, hm_image_hooks, size, file, line, "vz_image_malloc", true);
}

void vz_image_free(void* pointer, const char* file, int line)
{
    freeOfKind(&hm_image_info, hm_image_hooks, pointer, file, line, "vz_image_free");
}
