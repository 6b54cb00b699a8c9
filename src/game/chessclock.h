#pragma once
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "game/timer.h"

// Both players' clocks. Lives in the record shared by the user-interface and
// the search process (both make moves, both switch clocks), so the layout is
// fixed. Pairs are indexed by colour: 0 black, 1 white.
class chessclock {
public:
    int32_t reserved[2];
    int32_t enginePlaysWhite;  // also the engine's colour index
    int32_t enginePlaysBlack;  // also the opponent's colour index
    int32_t mode;              // conventional (moves per control), suddenDeath, fixedPerMove or baseAndIncrement
    int32_t movesPerControl;
    int32_t timeAddedPerControl;  // the control's base (moves per control), the time per move or the increment
    int32_t safetyMargin;
    int32_t remaining[2];  // ms
    int32_t movesLeft[2];  // moves until the next control
    int32_t runningClock;  // colour index of the running clock, 9 when stopped
    int32_t startStamp;
    int32_t stopStamp;
    int32_t unused;
    int32_t baseTime;
    int32_t timeReported[2];  // the front end has told the side's time since the control was set

    static constexpr int32_t stopped = 9;
    static constexpr int32_t conventional = 0, suddenDeath = 1, fixedPerMove = 2, baseAndIncrement = 3;
    static constexpr int enginesClock = 0, opponentsClock = 1;  // startClock's which

    void associateEngineWithSide(int side);  // 1 white, anything else black
    void setClock(int moves, int baseMs, int incrementMs, int now = get_ms());
    void stopClock(int now = get_ms());
    // which: enginesClock or opponentsClock; the clock running until now is
    // charged with the move.
    void startClock(int which, int now = get_ms());
    // Brings the running side's time up to date without counting a move.
    void chargeRunningClock(int now = get_ms());
    void setTime(int colour, int ms) {
        remaining[colour] = ms;
        timeReported[colour] = 1;
    }
    void setTimeWhite(int ms) { setTime(1, ms); }
    void setTimeBlack(int ms) { setTime(0, ms); }
    // Time for the engine's next move in ms, by the control's formula.
    int allocateTime() const;
    // The time the engine's next move may take: the formula's allocation
    // where the clock can pay it, but never more than the time left (and the
    // time per move) less overheadMs, and never less than 1 ms.
    int moveBudget(int overheadMs) const;

private:
    // A new control: both sides start from ms, nothing reported yet.
    void setBothTimes(int ms) {
        remaining[0] = remaining[1] = ms;
        timeReported[0] = timeReported[1] = 0;
    }
    // The allocation before its safety margin; margin is what the formula takes off.
    int64_t share(int64_t& margin) const;
};

static_assert(std::is_trivially_copyable_v<chessclock>);
static_assert(std::is_trivially_default_constructible_v<chessclock>);
static_assert(std::is_standard_layout_v<chessclock>);
static_assert(sizeof(chessclock) == 19 * 4);
static_assert(offsetof(chessclock, remaining) == 8 * 4);
static_assert(offsetof(chessclock, runningClock) == 12 * 4);
static_assert(offsetof(chessclock, baseTime) == 16 * 4);
