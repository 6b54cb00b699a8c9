#include "platform/lifeline.h"

#include <cerrno>

#include "platform/namedMapping.h"

void lifeline::init() { initSharedMutex(lock, PTHREAD_MUTEX_NORMAL); }

void lifeline::hold() {
    if (pthread_mutex_lock(&lock) == EOWNERDEAD) pthread_mutex_consistent(&lock);  // an earlier holder's
}

bool lifeline::cut() {
    const int result = pthread_mutex_trylock(&lock);
    if (result == EBUSY) return false;
    if (result == EOWNERDEAD) pthread_mutex_consistent(&lock);
    if (result == 0 || result == EOWNERDEAD) pthread_mutex_unlock(&lock);
    return true;
}
