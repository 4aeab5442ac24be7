// Aligned blocks for FFT buffers and image planes.
//
// Two unsigned 32-bit words stand directly before the address handed out: the
// size asked for, then the distance from the underlying block to that address,
// so vz_aligned_free needs no lookup.
#pragma once

#include <cstdint>

// Returns a block of `size` bytes. An alignment below 4 (callers pass -1) means
// the page size; any other value is used as given, power of two or not. The
// underlying block comes from vz_image_malloc when `image` is true, else from
// vz_malloc. Sizes above 0x7FFFFFFF give null.
void* vz_aligned_malloc(uint32_t size, int32_t alignment, bool image);

// Releases a block of vz_aligned_malloc; `image` must match the allocation.
// The block must not be null.
void vz_aligned_free(void* block, bool image);
