#pragma once
#include <pthread.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <ctime>

// A named shared-memory object mapped read/write into this process. Fresh
// memory reads as zeros.
class namedMapping {
public:
    enum result { ok, notCreated, notMapped };

    void* view = nullptr;
    size_t size = 0;
    int handle = -1;

    // Makes the object (replacing a stale one of the same name), reserving
    // its memory, and maps it; notCreated also when shared memory cannot
    // hold it.
    result create(const char* name, size_t bytes);
    // Maps an existing object; notCreated while it does not exist yet.
    result open(const char* name);
    // create, or with openInstead open, waiting every retryMs until the object exists.
    result createOrOpen(const char* name, size_t bytes, bool openInstead, int retryMs = 100);
    // Maps every page now rather than at its first touch, which costs a
    // fault per page in every process. Where the kernel cannot, pages are
    // mapped as they are touched.
    void prefault();
    void unmap();
    void closeHandle();

    // For the engine's shared tables and record: createOrOpen, saying what
    // failed as "ERROR! Could not create file mapping object <label>." or
    // "ERROR! Could not map view of file <label>." ("object." and "file." for
    // an empty label); printed without the I/O mutex when lockFree.
    bool mapReported(const char* name, size_t bytes, bool openInstead, const char* label, bool lockFree = false,
                     int retryMs = 100);
    // True for ok; otherwise says what failed, as mapReported does.
    bool reported(result opened, const char* label, bool lockFree = false);
    // Unmaps and closes, saying "unmapping <label>...." and "Getting rid of
    // handle <label>...." for what there was to release.
    void releaseReported(const char* label);
    // A table of count entries of entryBytes each, named stem plus instance;
    // an opener takes the creator's count. The entries, or nullptr after the
    // message.
    void* mapTable(const char* stem, const char* instance, int32_t& count, size_t entryBytes, bool openInstead);
    ~namedMapping() {
        unmap();
        closeHandle();
    }
};

// Entries for a table size setting of N × 65,536 entries, or defaultCount
// for a setting of 0 or less or one whose mapping would not fit the 32 bits
// mapping sizes travel as.
int32_t tableEntriesForSize(int setting, size_t entryBytes, int32_t defaultCount);

// "/" + stem + instance name + suffix, into out.
void objectName(char* out, size_t outSize, const char* stem, const char* instance, const char* suffix = "");

// Absolute CLOCK_MONOTONIC time ms from now, for the timed waits.
timespec monotonicDeadline(int ms);

// A creator may still be setting an object up when an opener maps it.
void waitUntilReady(const std::atomic<int>& ready);

// The named mutexes and events: an object with a ready flag in a mapping of
// its own. Mapped fresh (zeros) for its creator to set up, or nullptr.
template <class object>
object* createObject(namedMapping& mapping, const char* name) {
    if (mapping.create(name, sizeof(object)) != namedMapping::ok) {
        mapping.closeHandle();
        return nullptr;
    }
    return static_cast<object*>(mapping.view);
}

// Mapped once it exists and its creator has set it up, or nullptr.
template <class object>
object* openObject(namedMapping& mapping, const char* name) {
    if (mapping.open(name) != namedMapping::ok) {
        mapping.closeHandle();
        return nullptr;
    }
    object* opened = static_cast<object*>(mapping.view);
    waitUntilReady(opened->ready);
    return opened;
}

// A mutex every process can take and that a process dying while holding it
// hands on; type is a pthread mutex type.
void initSharedMutex(pthread_mutex_t& lock, int type);
