#include "game/timer.h"

#include <time.h>

int get_ms() {
    timespec ts;
    int ms;
    // A reading that falls on a whole second is taken again, so no stamp has
    // a millisecond part of 0.
    do {
        clock_gettime(CLOCK_REALTIME, &ts);
        ms = static_cast<int>(ts.tv_nsec / 1000000);
    } while (ms == 0);
    return static_cast<int>(ts.tv_sec % 1000000) * 1000 + ms;
}

// Stamps stay below 10^9, so the difference of two of them fits in 32 bits.
int timer::getTimePassedBy() const { return get_ms() - startMs; }

bool timer::timeIsUp() const { return get_ms() - startMs > allottedMs; }
