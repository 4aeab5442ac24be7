#include "tools/lumenveil/frame_memory.h"

#include <malloc.h>

void keepFrameMemory()
{
    // 32 MiB is the largest threshold the allocator takes; larger blocks are
    // still mapped per allocation.
    mallopt(M_MMAP_THRESHOLD, 32 * 1024 * 1024);
    // Never hand freed heap memory back while the render runs.
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
}
