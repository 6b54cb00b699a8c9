#pragma once
#include <pthread.h>

#include <atomic>

#include "platform/namedMapping.h"

// How long a waiter that expects to be woken soon watches the event before
// it sleeps: waking a sleeping process costs tens of microseconds.
inline constexpr int wakeSpinUs = 200;

// A named auto-reset event: one set releases exactly one wait.
class namedEvent {
public:
    struct shared {
        std::atomic<int> ready;
        pthread_mutex_t lock;
        pthread_cond_t condition;
        std::atomic<int> signalled;  // written under the lock, watched without it
    };
    namedMapping mapping;

    bool create(const char* name);
    bool open(const char* name);
    // Retries every retryMs until the event exists.
    void openWhenCreated(const char* name, int retryMs = 100);
    bool valid() const { return mapping.view != nullptr; }
    void set();
    // True when signalled; false after timeoutMs (a negative time-out waits
    // for ever). A waiter first watches the event for up to spinUs
    // microseconds, yielding the processor, before it sleeps.
    bool wait(int timeoutMs, int spinUs = 0);
};
