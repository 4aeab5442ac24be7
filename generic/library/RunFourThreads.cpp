#include "generic/library/RunFourThreads.h"

#include <new>
#include <system_error>
#include <thread>

#include "vzlibs/baselib/heap.h"

namespace {

int rowWorkerEntry(RowThreadRecord* record)
{
    record->function(record->object, record->first, record->last);
    return 1;
}

}  // namespace

void RunFourThreads(void* object, RowThreadFunction function, int count)
{
    const int slice = count / 4;  // the remainder is dropped
    auto* threads = static_cast<std::thread*>(vz_malloc(4 * sizeof(std::thread), __FILE__, __LINE__));
    auto* records = static_cast<RowThreadRecord*>(vz_malloc(4 * sizeof(RowThreadRecord), __FILE__, __LINE__));
    if (threads && records) {
        for (int i = 0; i < 4; ++i) {
            records[i] = RowThreadRecord{function, object, i * slice, (i + 1) * slice - 1};
            try {
                new (&threads[i]) std::thread(rowWorkerEntry, &records[i]);
            } catch (const std::system_error&) {
                // A thread that cannot be started does its slice on this thread.
                new (&threads[i]) std::thread();
                rowWorkerEntry(&records[i]);
            }
        }
        for (int i = 0; i < 4; ++i) {
            if (threads[i].joinable())
                threads[i].join();
            threads[i].~thread();
        }
    } else {
        // Without the arrays, the same slices run one after the other on this thread.
        for (int i = 0; i < 4; ++i)
            function(object, i * slice, (i + 1) * slice - 1);
    }
    if (threads)
        vz_free(threads, __FILE__, __LINE__);
    if (records)
        vz_free(records, __FILE__, __LINE__);
}
