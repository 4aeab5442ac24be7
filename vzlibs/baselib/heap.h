// The heap of all library code. Every call carries the caller's source path and
// line, so that a tracked run can name who made or misused a block. A block goes
// back through the family that gave it: vz_malloc / vz_realloc / vz_strdup with
// vz_free (NORMAL), vz_image_malloc with vz_image_free (IMAGE).
//
// Three layers, chosen by process-wide switches (all 0 at load):
//   plain    hm_enabled == 0: straight to the system heap, nothing else;
//   hooked   hm_enabled, hm_debug == 0: through the kind's allocator hooks when
//            they are active, else the system heap;
//   tracked  hm_enabled and hm_debug: as hooked, and every block is entered in a
//            table of its kind, so that bad frees are reported with the caller's
//            path and line ("VZ-HM-DEBUG:" lines at level ERROR).
// hm_trace, with hm_enabled, prints a "VZ-HM-TRACE:" line (level INFO) per call.
//
// Set the switches at start-up, before the first allocation: a block made in one
// layer and returned in another is misjudged (a tracked free of an untracked block
// is reported and the block is kept). A run can switch them on without code
// changes through the environment variable VZ_HEAP_DEBUG (see hm_parse_switches).
//
// Messages go through lib_log, which formats its text twice: source paths handed
// to the heap must not contain '%'.
#pragma once

#include <cstdint>

void* vz_malloc(uint32_t size, const char* file, int line);
// A null pointer allocates.
void* vz_realloc(void* pointer, uint32_t size, const char* file, int line);
char* vz_strdup(const char* string, const char* file, int line);
void vz_free(void* pointer, const char* file, int line);

void* vz_image_malloc(uint32_t size, const char* file, int line);
void vz_image_free(void* pointer, const char* file, int line);

// Process-wide switches of the heap, 0 at load.
extern int32_t hm_enabled;
extern int32_t hm_trace;
extern int32_t hm_debug;

// Replacement of the system heap for NORMAL blocks. Each hook gets `context` first.
// Hooks are called with the heap's mutex held and must not call back into the heap.
struct hm_normal_allocator {
    int32_t active;  // non-zero: use the hooks
    void* context;
    void* (*malloc)(void* context, uint32_t size);
    void* (*realloc)(void* context, void* pointer, uint32_t size);
    char* (*strdup)(void* context, const char* string);
    void (*free)(void* context, void* pointer);
};

// Replacement of the system heap for IMAGE blocks. `realloc` is never called: no
// IMAGE reallocation exists.
struct hm_image_allocator {
    int32_t active;
    void* context;
    void* (*malloc)(void* context, uint32_t size);
    void* (*realloc)(void* context, void* pointer, uint32_t size);
    void (*free)(void* context, void* pointer);
};

// The hooks in use, one per kind; all zero at load.
extern hm_normal_allocator hm_normal_hooks;
extern hm_image_allocator hm_image_hooks;

// Sets the three switches (any non-zero value counts as on). Call it before the
// first allocation.
void hm_configure(int32_t enabled, int32_t debug, int32_t trace);

// Installs copies of the hooks; a null argument clears that kind's hooks. Call it
// before the first allocation of the kind.
void hm_set_allocators(const hm_normal_allocator* normal, const hm_image_allocator* image);

// Reads a VZ_HEAP_DEBUG value: words separated by commas or blanks, "track"
// (enabled and debug: the tables and their checks) and "trace" (enabled and trace:
// a line per call). An empty text switches nothing on. Sets the three outputs and
// returns true, or returns false for any other word, leaving them untouched.
bool hm_parse_switches(const char* text, int32_t* enabled, int32_t* debug, int32_t* trace);
