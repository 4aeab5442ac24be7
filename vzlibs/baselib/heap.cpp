// Plain layer of the heap: with tracking off, every call goes to the system heap.
#include "vzlibs/baselib/heap.h"

#include <cstdlib>
#include <cstring>

void* vz_malloc(uint32_t size, const char*, int) { return std::malloc(size); }

void* vz_realloc(void* pointer, uint32_t size, const char*, int) { return std::realloc(pointer, size); }

char* vz_strdup(const char* string, const char*, int) { return strdup(string); }

void vz_free(void* pointer, const char*, int) { std::free(pointer); }

void* vz_image_malloc(uint32_t size, const char*, int) { return std::malloc(size); }

void vz_image_free(void* pointer, const char*, int) { std::free(pointer); }
