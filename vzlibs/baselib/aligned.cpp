#include "vzlibs/baselib/aligned.h"

#include <cstring>

#include "vzlibs/baselib/heap.h"
#include "vzlibs/baselib/machine.h"

void* vz_aligned_malloc(uint32_t size, int32_t alignment, bool image)
{
    if (size > 0x7FFFFFFFu)
        return nullptr;
    if (alignment < 4)
        alignment = get_page_size();
    const uint32_t align = static_cast<uint32_t>(alignment);
    // The sum is taken in 32 bits. A sum that wraps past 2^32 (possible only with
    // an alignment near 2^31) is refused, since the block could not hold the size.
    const uint32_t total = size + align + 8u;
    if (total < size)
        return nullptr;
    unsigned char* raw = static_cast<unsigned char*>(image ? vz_image_malloc(total, __FILE__, __LINE__)
                                                           : vz_malloc(total, __FILE__, __LINE__));
    if (!raw)
        return nullptr;
    // Always moves up by one whole alignment from the rounded-down address.
    const uintptr_t base = reinterpret_cast<uintptr_t>(raw) + 8u;
    const uintptr_t aligned = base - (base % align) + align;
    unsigned char* out = reinterpret_cast<unsigned char*>(aligned);
    const uint32_t header[2] = {size, static_cast<uint32_t>(out - raw)};
    std::memcpy(out - 8, header, sizeof header);
    return out;
}

void vz_aligned_free(void* block, bool image)
{
    unsigned char* out = static_cast<unsigned char*>(block);
    uint32_t distance = 0;
    std::memcpy(&distance, out - 4, sizeof distance);
    unsigned char* raw = out - distance;
    if (image)
        vz_image_free(raw, __FILE__, __LINE__);
    else
        vz_free(raw, __FILE__, __LINE__);
}
