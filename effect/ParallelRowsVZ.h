// ParallelRowsVZ: runs a function over rows 0..rows-1 split over the system's
// four row threads (RunFourThreads), every row visited: the count handed over
// is rounded up to whole slices, and the slices stop at the last row.
#pragma once

#include <algorithm>

#include "generic/library/RunFourThreads.h"

template <typename F> void forEachRowSlice(int rows, F&& rowsFirstToLast)
{
    struct Job {
        F* function;
        int rows;
    };
    Job job{&rowsFirstToLast, rows};
    constexpr int kSlices = 4;
    RunFourThreads(
        &job,
        [](void* object, int first, int last) {
            Job* j = static_cast<Job*>(object);
            last = std::min(last, j->rows - 1);
            if (first <= last)
                (*j->function)(first, last);
        },
        (rows + kSlices - 1) / kSlices * kSlices);
}
