#pragma once
#include <pthread.h>

#include <atomic>

#include "parallel/namedMapping.h"

// A named auto-reset event: one set releases exactly one wait.
class namedEvent {
public:
    struct shared {
        std::atomic<int> ready;
        pthread_mutex_t lock;
        pthread_cond_t condition;
        int signalled;
    };
    namedMapping mapping;

    bool create(const char* name);
    bool open(const char* name);
    // Retries every retryMs until the event exists.
    void openWhenCreated(const char* name, int retryMs = 100);
    bool valid() const { return mapping.view != nullptr; }
    void set();
    // True when signalled; false after timeoutMs (a negative time-out waits for ever).
    bool wait(int timeoutMs);
};
