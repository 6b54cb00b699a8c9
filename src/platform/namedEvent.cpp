#include "platform/namedEvent.h"

#include <linux/futex.h>
#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <chrono>
#include <climits>
#include <ctime>
#include <thread>

namespace {

// Not the private futex operations: the flag lives in memory several processes map.
void futexWait(std::atomic<uint32_t>& word, uint32_t expected, const timespec* relative) {
    syscall(SYS_futex, reinterpret_cast<uint32_t*>(&word), FUTEX_WAIT, expected, relative, nullptr, 0);
}

// All sleepers: the one that takes the flag wins, the others sleep again. Waking one could pick a waiter
// whose time has just run out, and leave the flag set under another that sleeps on.
void futexWakeAll(std::atomic<uint32_t>& word) {
    syscall(SYS_futex, reinterpret_cast<uint32_t*>(&word), FUTEX_WAKE, INT_MAX, nullptr, nullptr, 0);
}

}  // namespace

bool namedEvent::create(const char* name) {
    shared* object = createObject<shared>(mapping, name);
    if (object == nullptr) return false;
    object->signalled.store(0, std::memory_order_relaxed);
    object->sleepers.store(0, std::memory_order_relaxed);
    object->ready.store(1, std::memory_order_release);
    return true;
}

bool namedEvent::open(const char* name) { return openObject<shared>(mapping, name) != nullptr; }

void namedEvent::openWhenCreated(const char* name, int retryMs) {
    while (!open(name)) std::this_thread::sleep_for(std::chrono::milliseconds(retryMs));
}

void namedEvent::set() {
    if (!valid()) return;
    shared* object = static_cast<shared*>(mapping.view);
    object->signalled.store(1, std::memory_order_seq_cst);
    if (object->sleepers.load(std::memory_order_seq_cst) > 0) futexWakeAll(object->signalled);
}

bool namedEvent::wait(int timeoutMs, int spinUs) {
    if (!valid()) return false;
    shared* object = static_cast<shared*>(mapping.view);
    std::atomic<uint32_t>& flag = object->signalled;
    // A poll of an unset event, as the search makes at every split point, writes nothing.
    if (timeoutMs == 0) return flag.load(std::memory_order_relaxed) != 0 && flag.exchange(0) != 0;
    using clock = std::chrono::steady_clock;
    const auto deadline = clock::now() + std::chrono::milliseconds(timeoutMs);
    if (spinUs > 0) {
        if (timeoutMs > 0 && spinUs > timeoutMs * 1000) spinUs = timeoutMs * 1000;
        const auto until = clock::now() + std::chrono::microseconds(spinUs);
        while (!flag.load(std::memory_order_relaxed) && clock::now() < until) sched_yield();
    }
    // Taking the flag back to 0 is the reset: of several waiters, one gets each set.
    for (;;) {
        if (flag.exchange(0) != 0) return true;
        timespec left{}, *bound = nullptr;
        if (timeoutMs > 0) {
            const auto ns = std::chrono::duration_cast<std::chrono::nanoseconds>(deadline - clock::now()).count();
            if (ns <= 0) return false;
            left.tv_sec = static_cast<time_t>(ns / 1000000000);
            left.tv_nsec = static_cast<long>(ns % 1000000000);
            bound = &left;
        }
        // Counted before the flag is checked again by the kernel, so a set in between wakes this wait.
        object->sleepers.fetch_add(1, std::memory_order_seq_cst);
        futexWait(flag, 0, bound);
        object->sleepers.fetch_sub(1, std::memory_order_seq_cst);
    }
}
