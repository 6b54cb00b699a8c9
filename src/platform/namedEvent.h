#pragma once
#include <atomic>
#include <cstdint>

#include "platform/namedMapping.h"

// How long a waiter that expects to be woken soon watches the event before
// it sleeps: waking a sleeping process costs tens of microseconds.
inline constexpr int wakeSpinUs = 200;
// An idle helper watches longer: a claim that finds it asleep waited 0.1 to
// 1 ms for its processor to be woken (measured on a virtual machine), and
// during a search each helper has a core of its own to spend.
inline constexpr int helperSpinUs = 3000;

// A named auto-reset event: one set releases exactly one wait.
//
// A futex on the flag itself, not a shared condition variable: a process
// killed inside a condition wait leaves the variable holding it, and the
// next signal that has to pass it by blocks for ever. A futex holds nothing
// for its waiters.
class namedEvent {
public:
    struct shared {
        std::atomic<int> ready;
        std::atomic<uint32_t> signalled;
        std::atomic<int32_t> sleepers;  // waiters inside the futex wait; a dead one only costs a wake call
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
