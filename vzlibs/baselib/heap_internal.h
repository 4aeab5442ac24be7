// Internals of the tracked heap: the two block tables, their records, the timer
// and the heap's mutex. Used by the heap's layers and by tests; nothing else
// should need them.
#pragma once

#include <cstdint>

// Buckets per table; the bucket number is the hash's low 14 bits.
constexpr uint32_t HM_BUCKETS = 16384;
constexpr uint32_t HM_BUCKET_MASK = 0x3FFF;
// Characters kept of a source path, NUL included: the last 47 and a NUL.
constexpr uint32_t HM_FILE_CHARS = 48;

// One block's record. Overflow nodes come straight from malloc / free, never
// through the hooks or the heap's own functions.
struct hm_info_node {
    void* pointer;                 // the block; 0 in the head marks an empty bucket
    uint32_t size;                 // size asked for (vz_strdup: length plus one)
    int32_t line;                  // line of the allocating call
    char file[HM_FILE_CHARS];      // last 47 characters of its source path
    hm_info_node* next;            // overflow chain of the bucket, or null
};

// The table and statistics of one kind of block.
struct hm_info {
    char name[20];                 // "NORMAL" or "IMAGE"
    hm_info_node buckets[HM_BUCKETS];  // heads of the chains, inline
    uint32_t chained;              // insertions that found their head occupied
    uint32_t allocs;               // blocks entered
    uint32_t frees;                // blocks taken out
    uint32_t currentBytes;         // sizes entered and not yet taken out
    uint32_t peakBytes;            // highest currentBytes
    int32_t nodeAllocFailed;       // 1 once an overflow node could not be had
    double timeSpent;              // seconds spent in tracked operations
    double timeStart;              // hm_seconds() at the start of the current one
};

// The two tables, zero at load, filled in on first use by hm_init_info.
extern hm_info hm_normal_info;
extern hm_info hm_image_info;

// Set once the heap's mutex has been taken for the first time.
extern int32_t hm_mutex_init;

// Jenkins' one-at-a-time hash of the pointer's bytes, least significant first.
// All 8 bytes of a 64-bit pointer are hashed (the 32-bit original hashed its 4),
// so that blocks that differ only above bit 31 still spread over the buckets.
uint32_t hm_hash(const void* pointer);

// Once per kind: zeroes the info and sets its name. An address other than the
// two tables is reported and left untouched.
void hm_init_info(hm_info* info);

// Enters a block. The newest block of a bucket sits in its head. If an overflow
// node cannot be allocated, the block stays unrecorded and nodeAllocFailed is set.
void hm_record_alloc(hm_info* info, void* pointer, uint32_t size, const char* file, int line);

// Takes a block out, or reports that the table does not hold it.
void hm_record_free(hm_info* info, void* pointer);

// Finds a block's record: sets *size (mandatory), copies the path into `file`
// (optional, at least HM_FILE_CHARS characters) and sets *line (optional), and
// returns true. A miss sets *size to 0 and returns false. Counts nothing.
bool hm_lookup(hm_info* info, void* pointer, uint32_t* size, char* file, int* line);

// A millisecond tick in seconds; wraps with the 32-bit tick, as the tick does.
double hm_seconds();
// Start and stop of a timed operation; they count only while hm_debug is set.
void hm_timer_start(hm_info* info);
void hm_timer_stop(hm_info* info);

// The heap's one mutex, for both kinds; taken in the hooked and tracked layers.
void get_hm_mutex();
// Leaves the mutex; reports an internal error if it was never taken.
void release_hm_mutex();
