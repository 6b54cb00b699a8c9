#pragma once
#include <atomic>
#include <cstddef>
#include <ctime>

// A named shared-memory object mapped read/write into this process. Fresh
// memory reads as zeros.
class namedMapping {
public:
    enum result { ok, notCreated, notMapped };

    void* view = nullptr;
    size_t size = 0;
    int handle = -1;

    // Makes the object (replacing a stale one of the same name) and maps it.
    result create(const char* name, size_t bytes);
    // Maps an existing object; notCreated while it does not exist yet.
    result open(const char* name);
    // create, or with openInstead open, waiting every retryMs until the object exists.
    result createOrOpen(const char* name, size_t bytes, bool openInstead, int retryMs = 100);
    void unmap();
    void closeHandle();
    ~namedMapping() {
        unmap();
        closeHandle();
    }
};

// "/" + stem + instance name + suffix, into out.
void objectName(char* out, size_t outSize, const char* stem, const char* instance, const char* suffix = "");

// Absolute CLOCK_MONOTONIC time ms from now, for the timed waits.
timespec monotonicDeadline(int ms);

// A creator may still be setting an object up when an opener maps it.
void waitUntilReady(const std::atomic<int>& ready);
