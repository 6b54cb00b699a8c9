#include "platform/namedMapping.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <thread>

#include "platform/console.h"

void objectName(char* out, size_t outSize, const char* stem, const char* instance, const char* suffix) {
    snprintf(out, outSize, "/%s%s%s", stem, instance, suffix);
}

namedMapping::result namedMapping::create(const char* name, size_t bytes) {
    shm_unlink(name);
    handle = shm_open(name, O_CREAT | O_EXCL | O_RDWR, 0600);
    if (handle < 0) return notCreated;
    if (ftruncate(handle, static_cast<off_t>(bytes)) != 0) {
        closeHandle();
        shm_unlink(name);
        return notCreated;
    }
    // Reserved now: shared memory too small for the object (a container's
    // /dev/shm, say) would otherwise kill a process at its first touch of a
    // page that cannot be had.
    if (posix_fallocate(handle, 0, static_cast<off_t>(bytes)) == ENOSPC) {
        closeHandle();
        shm_unlink(name);
        return notCreated;
    }
    void* mapped = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, handle, 0);
    if (mapped == MAP_FAILED) return notMapped;
    view = mapped;
    size = bytes;
    return ok;
}

namedMapping::result namedMapping::open(const char* name) {
    handle = shm_open(name, O_RDWR, 0600);
    if (handle < 0) return notCreated;
    struct stat info;
    // A creator between shm_open and ftruncate shows a size of 0: not there yet.
    if (fstat(handle, &info) != 0 || info.st_size == 0) {
        closeHandle();
        return notCreated;
    }
    void* mapped = mmap(nullptr, static_cast<size_t>(info.st_size), PROT_READ | PROT_WRITE, MAP_SHARED, handle, 0);
    if (mapped == MAP_FAILED) return notMapped;
    view = mapped;
    size = static_cast<size_t>(info.st_size);
    return ok;
}

namedMapping::result namedMapping::createOrOpen(const char* name, size_t bytes, bool openInstead, int retryMs) {
    if (!openInstead) return create(name, bytes);
    result opened;
    while ((opened = open(name)) == notCreated) std::this_thread::sleep_for(std::chrono::milliseconds(retryMs));
    return opened;
}

bool namedMapping::mapReported(const char* name, size_t bytes, bool openInstead, const char* label, bool lockFree,
                               int retryMs) {
    return reported(createOrOpen(name, bytes, openInstead, retryMs), label, lockFree);
}

bool namedMapping::reported(result opened, const char* label, bool lockFree) {
    const char* space = *label ? " " : "";
    char message[160];
    if (opened == notCreated) {
        snprintf(message, sizeof message, "ERROR! Could not create file mapping object%s%s.\n", space, label);
    } else if (opened == notMapped) {
        snprintf(message, sizeof message, "ERROR! Could not map view of file%s%s.\n", space, label);
        closeHandle();
    } else {
        return true;
    }
    if (lockFree) writeInfo(message);
    else printInfo("%s", message);
    return false;
}

void namedMapping::releaseReported(const char* label) {
    const char* space = *label ? " " : "";
    if (view) {
        printInfo("unmapping%s%s....\n", space, label);
        unmap();
    }
    if (handle >= 0) {
        printInfo("Getting rid of handle%s%s....\n", space, label);
        closeHandle();
    }
}

void* namedMapping::mapTable(const char* stem, const char* instance, int32_t& count, size_t entryBytes,
                             bool openInstead) {
    char name[160];
    objectName(name, sizeof name, stem, instance);
    // Tables exist before any process that opens them starts: one missing
    // was not created, and waiting for it would be for ever.
    const result made = openInstead ? open(name) : create(name, static_cast<size_t>(count) * entryBytes);
    if (!reported(made, stem)) return nullptr;
    // The creator's size is the one every process must index by, whatever
    // the settings file says by now.
    if (openInstead) count = static_cast<int32_t>(size / entryBytes);
    return view;
}

int32_t tableEntriesForSize(int setting, size_t entryBytes, int32_t defaultCount) {
    constexpr int64_t mappingLimit = int64_t{1} << 32;
    if (setting <= 0 || setting >= mappingLimit / static_cast<int64_t>(65536 * entryBytes)) return defaultCount;
    return setting * 65536;
}

void namedMapping::prefault() {
    if (view) madvise(view, size, MADV_POPULATE_WRITE);
}

void namedMapping::unmap() {
    if (view) munmap(view, size);
    view = nullptr;
    size = 0;
}

void namedMapping::closeHandle() {
    if (handle >= 0) close(handle);
    handle = -1;
}

timespec monotonicDeadline(int ms) {
    timespec deadline;
    clock_gettime(CLOCK_MONOTONIC, &deadline);
    deadline.tv_sec += ms / 1000;
    deadline.tv_nsec += (ms % 1000) * 1000000L;
    if (deadline.tv_nsec >= 1000000000L) {
        deadline.tv_sec++;
        deadline.tv_nsec -= 1000000000L;
    }
    return deadline;
}

void initSharedMutex(pthread_mutex_t& lock, int type) {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
    pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
    pthread_mutexattr_settype(&attributes, type);
    pthread_mutex_init(&lock, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

void waitUntilReady(const std::atomic<int>& ready) {
    for (int i = 0; i < 1000 && !ready.load(std::memory_order_acquire); i++)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}
