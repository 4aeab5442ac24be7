// How the process's allocator treats frame-sized blocks during a render.
#pragma once

// From here on, blocks up to 32 MiB come from the heap rather than fresh
// memory maps, and freed memory stays with the process: the next frame of a
// sequence reuses the pages of the last one instead of faulting in and
// zeroing new ones, which costs more than a tenth of a render's time.
void keepFrameMemory();
