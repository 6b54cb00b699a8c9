#include "platform/mutex.h"

#include "platform/console.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <thread>

namespace {

template <class... values>
void append(char (&message)[160], const char* format, values... v) {
    const size_t length = strlen(message);
    snprintf(message + length, sizeof message - length, format, v...);
}

// A message of the mutex code itself, never waiting for a mutex.
template <class... values>
void report(const char* format, values... v) {
    char message[160] = "";
    append(message, format, v...);
    writeInfo(message);
}

}  // namespace

namedMutex mutex::io;
namedMutex mutex::mt;
bool mutex::initialised = false;

bool namedMutex::create(const char* name) {
    shared* object = createObject<shared>(mapping, name);
    if (object == nullptr) return false;
    initSharedMutex(object->lock, PTHREAD_MUTEX_RECURSIVE);
    object->ready.store(1, std::memory_order_release);
    return true;
}

bool namedMutex::open(const char* name) { return openObject<shared>(mapping, name) != nullptr; }

void mutex::init(const char* instance, bool openInstead, int retryMs) {
    initialised = true;
    const char* stems[2] = {"handleMutex_IO_", "handleMutex_MT_"};
    namedMutex* handles[2] = {&io, &mt};
    for (int i = 0; i < 2; i++) {
        char name[160];
        objectName(name, sizeof name, stems[i], instance);
        if (!openInstead) {
            if (!handles[i]->create(name)) report("Create- no handle, ERROR= %d\n", errno);
            continue;
        }
        while (!handles[i]->open(name)) {
            report("WAIT- no handle, ERROR= %d\n", errno);
            std::this_thread::sleep_for(std::chrono::milliseconds(retryMs));
            report("%s\n", name + 1);
        }
    }
}

static int timedLock(namedMutex& handle, int timeoutMs) {
    if (!handle.valid()) return EINVAL;
    int result = handle.waitCounter ? pthread_mutex_trylock(handle.lock()) : EBUSY;
    const bool waited = result == EBUSY;
    if (waited) {
        const timespec deadline = monotonicDeadline(timeoutMs);
        result = pthread_mutex_clocklock(handle.lock(), CLOCK_MONOTONIC, &deadline);
    }
    // Like an abandoned Win32 mutex, the lock now belongs to this waiter.
    if (result == EOWNERDEAD) pthread_mutex_consistent(handle.lock());
    if (waited && handle.waitCounter && (result == 0 || result == EOWNERDEAD)) ++*handle.waitCounter;
    return result;
}

void mutex::waitWithHandle(namedMutex& handle, int timeoutMs) {
    // A process that never set the mutexes up (a tool, a test) has nobody to share the console with.
    if (!initialised && (&handle == &io || &handle == &mt)) return;
    const int result = timedLock(handle, timeoutMs);
    if (result == 0) return;
    // Printed without the I/O mutex: it may be the one that failed.
    char message[160] = "\n@mutex timeout: ";
    if (result == EOWNERDEAD) {
        append(message, " WAIT_ABANDONED");
    } else if (result == ETIMEDOUT) {
        append(message, " WAIT_TIMEOUT");
    } else {
        append(message, " WAIT_FAILED ERRORCODE=%d\n", result);
        for (int attempt = 1; attempt <= 5; attempt++) {
            const int retry = timedLock(handle, timeoutMs);
            if (retry == 0 || retry == EOWNERDEAD) {
                append(message, "OK ");
                break;
            }
            append(message, "X%d ", attempt);
        }
    }
    append(message, "\n");
    writeInfo(message);
}

void mutex::releaseWithHandle(namedMutex& handle) {
    if (!initialised && (&handle == &io || &handle == &mt)) return;
    const int result = handle.valid() ? pthread_mutex_unlock(handle.lock()) : EINVAL;
    if (result != 0) report("failed to release mutex! ERROR=%d\n", result);
}
