// The heap of all library code. Every call carries the caller's source path and
// line, so that a tracked run can name who made or misused a block. A block goes
// back through the family that gave it: vz_malloc / vz_realloc / vz_strdup with
// vz_free (NORMAL), vz_image_malloc with vz_image_free (IMAGE).
#pragma once

#include <cstdint>

void* vz_malloc(uint32_t size, const char* file, int line);
void* vz_realloc(void* pointer, uint32_t size, const char* file, int line);
char* vz_strdup(const char* string, const char* file, int line);
void vz_free(void* pointer, const char* file, int line);

void* vz_image_malloc(uint32_t size, const char* file, int line);
void vz_image_free(void* pointer, const char* file, int line);
