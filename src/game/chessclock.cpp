#include "game/chessclock.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace {

// The fields are written by two processes and by GUI time reports, so any
// value can turn up; sums are done wide and pinned to the 32-bit range.
int32_t saturate(int64_t v) {
    return static_cast<int32_t>(
        std::clamp<int64_t>(v, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()));
}

int colourIndex(int32_t flag) { return flag != 0 ? 1 : 0; }

bool isRunning(int32_t clock) { return clock == 0 || clock == 1; }

}  // namespace

void chessclock::associateEngineWithSide(int side) {
    enginePlaysWhite = side == 1 ? 1 : 0;
    enginePlaysBlack = side == 1 ? 0 : 1;
}

void chessclock::setClock(int moves, int baseMs, int incrementMs, int now) {
    stopClock(now);
    safetyMargin = 150;
    if (moves == 0 && baseMs != 0 && incrementMs != 0) {
        mode = baseAndIncrement;
        movesPerControl = 1;
        movesLeft[0] = movesLeft[1] = 1;
        timeAddedPerControl = incrementMs;
        baseTime = baseMs;
        setBothTimes(baseMs);
    } else if (moves == 0 && baseMs != 0) {
        // Sudden death keeps the old time-added value; the clock adds it after
        // every move of a side (the moves-left count of 1 runs out each move).
        mode = suddenDeath;
        movesPerControl = 1;
        movesLeft[0] = movesLeft[1] = 1;
        baseTime = baseMs;
        setBothTimes(baseMs);
    } else if (moves == 0 && incrementMs != 0) {
        mode = fixedPerMove;
        movesPerControl = 1;
        movesLeft[0] = movesLeft[1] = 1;
        timeAddedPerControl = incrementMs;
        setBothTimes(0);
    } else if (moves != 0 && baseMs != 0 && incrementMs == 0) {
        mode = conventional;
        movesPerControl = moves;
        movesLeft[0] = movesLeft[1] = moves;
        timeAddedPerControl = baseMs;
        setBothTimes(baseMs);
    }
    // Moves per control together with an increment (and the all-zero cases)
    // is not a control of its own: the previous one stays.
}

void chessclock::stopClock(int now) {
    if (isRunning(runningClock)) {
        stopStamp = now;
        remaining[runningClock] = saturate(int64_t{remaining[runningClock]} - (int64_t{now} - startStamp));
    }
    runningClock = stopped;
}

void chessclock::startClock(int which, int now) {
    int target = colourIndex(which == enginesClock ? enginePlaysWhite : enginePlaysBlack);
    int other = 1 - target;
    if (runningClock == other) {
        stopStamp = now;
        remaining[other] = saturate(int64_t{remaining[other]} - (int64_t{now} - startStamp));
        movesLeft[other] = saturate(int64_t{movesLeft[other]} - 1);
        // With an increment the count just runs below zero: the GUI's time
        // reports keep the remaining time right instead.
        if (movesLeft[other] == 0 && mode != baseAndIncrement) {
            movesLeft[other] = movesPerControl;
            remaining[other] = saturate(int64_t{remaining[other]} + timeAddedPerControl);
        }
    }
    if (runningClock != target) {
        runningClock = target;
        startStamp = now;
    }
}

void chessclock::chargeRunningClock(int now) {
    if (!isRunning(runningClock)) return;
    stopStamp = now;
    remaining[runningClock] = saturate(int64_t{remaining[runningClock]} - (int64_t{now} - startStamp));
    startStamp = now;
}

int64_t chessclock::share(int64_t& margin) const {
    const int e = colourIndex(enginePlaysWhite);
    const int64_t left = remaining[e];
    const int64_t added = timeAddedPerControl;
    margin = 150;
    switch (mode) {
    case conventional: {
        // A count below 1 (only reachable through odd input) is taken as
        // "this move ends the control": the share is the whole remaining
        // time, still bounded by the cap below.
        const int64_t moves = movesLeft[e] >= 1 ? movesLeft[e] : 1;
        const int64_t perControl = movesPerControl >= 1 ? movesPerControl : 1;
        // At most twice the average time per move of a control. (Twice the
        // base over 60 moves equals the base over 30, so 60 needs no case.)
        return std::min(left / moves, 2 * added / perControl);
    }
    case suddenDeath:
        margin = 0;  // the sudden-death share carries no margin
        return left / 40;
    case fixedPerMove: return added;
    case baseAndIncrement: return std::min(left / 30 + added, left);
    default: margin = 0; return 0;
    }
}

int chessclock::allocateTime() const {
    int64_t margin;
    const int64_t t = share(margin);
    return saturate(t - margin);
}

int chessclock::moveBudget(int overheadMs) const {
    const int e = colourIndex(enginePlaysWhite);
    int64_t margin;
    const int64_t t = share(margin);
    // A fixed time per move bounds the move, and so does the clock when the
    // front end reports one; the other controls run on the clock.
    int64_t available = remaining[e];
    if (mode == fixedPerMove)
        available = timeReported[e] ? std::min<int64_t>(timeAddedPerControl, remaining[e]) : timeAddedPerControl;
    int64_t limit = available - overheadMs;
    if (limit < 1) limit = std::max<int64_t>(1, available / 2);  // nearly flagged: move at once
    // Where the margin would eat the whole share (short controls), the share is kept and the limit guards the clock.
    const int64_t budget = t - margin >= 1 ? t - margin : t;
    return saturate(std::clamp<int64_t>(budget, 1, limit));
}
