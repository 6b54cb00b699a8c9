#pragma once
#include <pthread.h>

#include <atomic>
#include <cstdint>

#include "platform/namedMapping.h"

inline constexpr int waitTimeoutMs = 10000;

// A named, process-shared, robust and re-entrant mutex: a process that dies
// holding it hands it to the next waiter, which is told it was abandoned.
class namedMutex {
public:
    struct shared {
        std::atomic<int> ready;
        pthread_mutex_t lock;
    };
    namedMapping mapping;
    // When set, every wait for the mutex that found it held counts here
    // (written while holding the mutex).
    int64_t* waitCounter = nullptr;

    bool create(const char* name);
    bool open(const char* name);
    bool valid() const { return mapping.view != nullptr; }
    pthread_mutex_t* lock() const { return &static_cast<shared*>(mapping.view)->lock; }
};

// The two process-wide mutexes: IO serialises console output of all
// processes, MT guards the hand-overs between searching processes.
class mutex {
public:
    static namedMutex io;
    static namedMutex mt;

    // Creates both, or opens them (retrying every retryMs while they do not exist yet).
    static void init(const char* instance, bool openInstead, int retryMs = 100);

    // Waits up to timeoutMs, reports a time-out, an abandoned or a failed
    // wait, and goes on in every case.
    static void waitWithHandle(namedMutex& handle, int timeoutMs = waitTimeoutMs);
    static void releaseWithHandle(namedMutex& handle);

private:
    static bool initialised;
};

// Holds a named mutex for the rest of the scope: the timed wait above, with
// its messages, on entry, and the release on every way out.
class lockGuard {
public:
    explicit lockGuard(namedMutex& handle) : handle(handle) { mutex::waitWithHandle(handle); }
    ~lockGuard() { mutex::releaseWithHandle(handle); }
    lockGuard(const lockGuard&) = delete;
    lockGuard& operator=(const lockGuard&) = delete;

private:
    namedMutex& handle;
};
