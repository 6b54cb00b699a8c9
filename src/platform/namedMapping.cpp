#include "platform/namedMapping.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <thread>

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

void waitUntilReady(const std::atomic<int>& ready) {
    for (int i = 0; i < 1000 && !ready.load(std::memory_order_acquire); i++)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}
