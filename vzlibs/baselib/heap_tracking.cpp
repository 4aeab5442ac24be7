// The block tables of the tracked heap: hashing, entering, removing and finding
// records, the timer of tracked operations and the heap's mutex.
#include <time.h>

#include <cstdlib>
#include <cstring>
#include <mutex>

#include "vzlibs/baselib/heap.h"
#include "vzlibs/baselib/heap_internal.h"
#include "vzlibs/baselib/log.h"

// Zero-initialised process data: both tables exist whether tracking is on or not.
hm_info hm_normal_info;
hm_info hm_image_info;

int32_t hm_mutex_init = 0;

namespace {

std::mutex hmMutex;
int32_t normalInfoReady = 0;
int32_t imageInfoReady = 0;

hm_info_node& bucketOf(hm_info* info, const void* pointer)
{
    return info->buckets[hm_hash(pointer) & HM_BUCKET_MASK];
}

// Keeps the last HM_FILE_CHARS - 1 characters of the path: the file name at its
// end is what tells. A null path is stored as an empty one.
void copyPath(char* to, const char* path)
{
    if (!path)
        path = "";
    size_t length = std::strlen(path);
    if (length > HM_FILE_CHARS - 1) {
        path += length - (HM_FILE_CHARS - 1);
        length = HM_FILE_CHARS - 1;
    }
    std::memcpy(to, path, length);
    to[length] = '\0';
}

}  // namespace

uint32_t hm_hash(const void* pointer)
{
    uintptr_t bits = reinterpret_cast<uintptr_t>(pointer);
    uint32_t hash = 0;
    for (size_t i = 0; i < sizeof bits; ++i) {
        hash += static_cast<uint32_t>(bits & 0xFF);
        hash += hash << 10;
        hash ^= hash >> 6;
        bits >>= 8;
    }
    hash += hash << 3;
    hash ^= hash >> 11;
    hash += hash << 15;
    return hash;
}

void hm_init_info(hm_info* info)
{
    int32_t* ready = info == &hm_normal_info ? &normalInfoReady : info == &hm_image_info ? &imageInfoReady : nullptr;
    if (!ready) {
        lib_log(LOG_ERROR, "VZ-HM-DEBUG: INTERNAL ERROR: Asked to initialize unknown info at: %p.\n",
                static_cast<void*>(info));
        return;
    }
    if (*ready)
        return;
    std::memset(static_cast<void*>(info), 0, sizeof *info);
    std::strcpy(info->name, info == &hm_normal_info ? "NORMAL" : "IMAGE");
    *ready = 1;
}

void hm_record_alloc(hm_info* info, void* pointer, uint32_t size, const char* file, int line)
{
    hm_init_info(info);
    hm_info_node& head = bucketOf(info, pointer);
    if (head.pointer) {
        ++info->chained;
        auto* node = static_cast<hm_info_node*>(std::malloc(sizeof(hm_info_node)));
        if (!node) {
            lib_log(LOG_ERROR, "VZ-HM-DEBUG: INTERNAL ERROR: Cannot allocate space for info node.\n");
            info->nodeAllocFailed = 1;
            return;
        }
        *node = head;  // the displaced block becomes the first of the chain
        head.next = node;
    }
    head.pointer = pointer;
    head.size = size;
    head.line = line;
    copyPath(head.file, file);

    ++info->allocs;
    info->currentBytes += size;
    if (info->currentBytes > info->peakBytes)
        info->peakBytes = info->currentBytes;
}

void hm_record_free(hm_info* info, void* pointer)
{
    hm_init_info(info);
    hm_info_node& head = bucketOf(info, pointer);
    uint32_t size = 0;
    if (!head.pointer) {
        lib_log(LOG_ERROR, "VZ-HM-DEBUG: Attempt to free %p - Not allocated in %s!\n", pointer, info->name);
        return;
    }
    if (head.pointer == pointer) {
        size = head.size;
        if (hm_info_node* first = head.next) {
            head = *first;  // the older block moves up into the head
            std::free(first);
        } else {
            std::memset(static_cast<void*>(&head), 0, sizeof head);
        }
    } else {
        hm_info_node* before = &head;
        hm_info_node* node = head.next;
        while (node && node->pointer != pointer) {
            before = node;
            node = node->next;
        }
        if (!node) {
            lib_log(LOG_ERROR, "VZ-HM-DEBUG: Attempt to free %p - Not allocated in %s!\n", pointer, info->name);
            return;
        }
        before->next = node->next;
        size = node->size;
        std::free(node);
    }
    ++info->frees;
    info->currentBytes -= size;
}

bool hm_lookup(hm_info* info, void* pointer, uint32_t* size, char* file, int* line)
{
    uint32_t ignored = 0;
    if (!size)
        size = &ignored;  // mandatory by contract; tolerated rather than crashed on
    hm_init_info(info);
    const hm_info_node* node = &bucketOf(info, pointer);
    if (!node->pointer)
        node = nullptr;
    while (node && node->pointer != pointer)
        node = node->next;
    if (!node) {
        *size = 0;
        return false;
    }
    *size = node->size;
    if (file)
        std::memcpy(file, node->file, HM_FILE_CHARS);
    if (line)
        *line = node->line;
    return true;
}

double hm_seconds()
{
    // The monotonic clock as a 32-bit millisecond tick.
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const uint64_t ms = static_cast<uint64_t>(now.tv_sec) * 1000u + static_cast<uint64_t>(now.tv_nsec) / 1000000u;
    return static_cast<double>(static_cast<uint32_t>(ms)) * 0.001;
}

void hm_timer_start(hm_info* info)
{
    hm_init_info(info);
    if (hm_debug && info)
        info->timeStart = hm_seconds();
}

void hm_timer_stop(hm_info* info)
{
    if (hm_debug && info)
        info->timeSpent += hm_seconds() - info->timeStart;
}

void get_hm_mutex()
{
    if (!hm_mutex_init)
        hm_mutex_init = 1;  // std::mutex needs no set-up; the flag records first use
    hmMutex.lock();
}

void release_hm_mutex()
{
    if (!hm_mutex_init) {
        lib_log(LOG_ERROR, "VZ-HM-DEBUG: INTERNAL ERROR: release_hm_mutex() found hm_mutex_init=0!\n");
        return;
    }
    hmMutex.unlock();
}
