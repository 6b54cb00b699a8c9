#include "platform/namedEvent.h"

#include <sched.h>

#include <cerrno>
#include <chrono>
#include <ctime>
#include <thread>

bool namedEvent::create(const char* name) {
    shared* object = createObject<shared>(mapping, name);
    if (object == nullptr) return false;
    initSharedMutex(object->lock, PTHREAD_MUTEX_DEFAULT);
    pthread_condattr_t conditionAttributes;
    pthread_condattr_init(&conditionAttributes);
    pthread_condattr_setpshared(&conditionAttributes, PTHREAD_PROCESS_SHARED);
    pthread_condattr_setclock(&conditionAttributes, CLOCK_MONOTONIC);
    pthread_cond_init(&object->condition, &conditionAttributes);
    pthread_condattr_destroy(&conditionAttributes);
    object->signalled.store(0, std::memory_order_relaxed);
    object->ready.store(1, std::memory_order_release);
    return true;
}

bool namedEvent::open(const char* name) { return openObject<shared>(mapping, name) != nullptr; }

void namedEvent::openWhenCreated(const char* name, int retryMs) {
    while (!open(name)) std::this_thread::sleep_for(std::chrono::milliseconds(retryMs));
}

// A process that died inside set or wait leaves the lock to the next user.
static void lockRobust(pthread_mutex_t* lock) {
    if (pthread_mutex_lock(lock) == EOWNERDEAD) pthread_mutex_consistent(lock);
}

void namedEvent::set() {
    if (!valid()) return;
    shared* object = static_cast<shared*>(mapping.view);
    lockRobust(&object->lock);
    object->signalled.store(1, std::memory_order_relaxed);
    pthread_cond_signal(&object->condition);
    pthread_mutex_unlock(&object->lock);
}

bool namedEvent::wait(int timeoutMs, int spinUs) {
    if (!valid()) return false;
    shared* object = static_cast<shared*>(mapping.view);
    // A poll of an unset event, as the search makes at every split point, needs no lock.
    if (timeoutMs == 0 && !object->signalled.load(std::memory_order_relaxed)) return false;
    const timespec deadline = monotonicDeadline(timeoutMs < 0 ? 0 : timeoutMs);
    if (spinUs > 0 && timeoutMs != 0) {
        if (timeoutMs > 0 && spinUs > timeoutMs * 1000) spinUs = timeoutMs * 1000;
        const auto until = std::chrono::steady_clock::now() + std::chrono::microseconds(spinUs);
        while (!object->signalled.load(std::memory_order_relaxed) && std::chrono::steady_clock::now() < until)
            sched_yield();
    }
    lockRobust(&object->lock);
    while (!object->signalled.load(std::memory_order_relaxed) && timeoutMs != 0) {
        const int result = timeoutMs < 0 ? pthread_cond_wait(&object->condition, &object->lock)
                                         : pthread_cond_timedwait(&object->condition, &object->lock, &deadline);
        if (result == EOWNERDEAD) pthread_mutex_consistent(&object->lock);
        else if (result == ETIMEDOUT) break;
    }
    const bool signalled = object->signalled.load(std::memory_order_relaxed) != 0;
    object->signalled.store(0, std::memory_order_relaxed);
    pthread_mutex_unlock(&object->lock);
    return signalled;
}
