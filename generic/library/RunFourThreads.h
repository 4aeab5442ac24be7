// RunFourThreads: the one way the system splits rows over threads.
//
// The rows 0..count-1 are cut into four slices of count / 4 rows (truncated), one
// thread each: slice i covers i*slice .. (i+1)*slice-1. The remainder rows
// (count mod 4 of them, at the end) are never visited, and with fewer than four
// rows nothing is done. Four threads are always started, whatever the processor
// count.
#pragma once

// A row function: does rows first..last (inclusive) for `object`.
typedef void (*RowThreadFunction)(void* object, int first, int last);

// What one of the four threads runs.
struct RowThreadRecord {
    RowThreadFunction function;
    void* object;
    int first;
    int last;
};

// Calls function(object, first, last) on four threads, one slice each, and
// returns when all four are done.
void RunFourThreads(void* object, RowThreadFunction function, int count);
