#pragma once
#include <pthread.h>

// A robust mutex a process holds for the whole of its life, in memory every
// process maps: the kernel releases it as "owner dead" the moment the holder
// ends, however it ends, so any other process can ask at any time, without a
// system call, whether the holder still lives.
class lifeline {
public:
    pthread_mutex_t lock;

    // By the creator of the memory, before any process holds it.
    void init();
    // By the process it stands for, once, on the thread it searches with.
    void hold();
    // By the same process before it unmaps the memory.
    void release() { pthread_mutex_unlock(&lock); }
    // By any other process: true once nobody holds it (the holder has ended
    // or never came).
    bool cut();
};
