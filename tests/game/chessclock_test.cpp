#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <utility>

#include "game/chessclock.h"
#include "game/timer.h"

namespace {

// As at start-up: engine on black, one move per 1000 ms, clock stopped.
chessclock freshClock() {
    chessclock c{};
    c.associateEngineWithSide(-1);
    c.setClock(1, 1000, 0, 0);
    return c;
}

// Black's remaining time/moves left, then white's.
std::string times(const chessclock& c) {
    char text[60];
    std::snprintf(text, sizeof text, "%d/%d %d/%d", c.remaining[0], c.movesLeft[0], c.remaining[1], c.movesLeft[1]);
    return text;
}

}  // namespace

TEST(Timer, GetMsNeverHasAZeroMillisecondPart) {
    int ms = 1;  // read on until the second turns: no reading may have a millisecond part of 0
    for (int previous = 0; ms != 0 && ms >= previous;) previous = ms, ms = get_ms() % 1000;
    EXPECT_NE(ms, 0);
}

TEST(ChessClockAllocation, TheFormulaAndWhatTheClockCanPay) {
    // The engine's time as reported (-1: none); the formula's allocation, or the budget with 50 ms overhead.
    // (The protocol transcripts check sudden death from the clock, st, movetime and movestogo with increment.)
    const struct {
        int moves, base, increment, reportedMs;
        bool budget;
        int ms;
    } cases[] = {
        {40, 300000, 0, 100000000, false, 15000 - 150},  // plenty left: twice the control's average
        {0, 120000, 12000, -1, false, 15850},            // level 0 2 12
        {40, 2000000000, 0, -1, false, 50000000 - 150},
        {0, 2000000000, 2000000000, -1, false, 2000000000 - 150},  // wide sums
        {40, 300000, 0, -1, true, 7350},                           // level 40 5 0
        {0, 120000, 12000, 3000, true, 2850},                      // the formula fits the clock
        {0, 2000, 50, -1, true, 116},                              // 2 s + 0.05 s: a 30th plus the increment, not -34
        {0, 2000, 50, 60, true, 10},                 // and as the flag nears, what is left less the overhead
        {0, 2000, 50, 30, true, 15},                 // below the overhead: half of what is left
        {0, 2000, 50, -400, true, 1},                // flagged already: never zero or below
        {0, 0, 99999999, -1, true, 99999999 - 150},  // infinite
    };
    for (const auto& c : cases) {
        chessclock clock = freshClock();
        clock.setClock(0, 0, 5000, 0);
        clock.setClock(c.moves, c.base, c.increment, 10);
        if (c.reportedMs != -1) clock.setTimeBlack(c.reportedMs);
        EXPECT_EQ(c.budget ? clock.moveBudget(50) : clock.allocateTime(), c.ms)
            << c.moves << " " << c.base << " " << c.increment << " " << c.reportedMs;
    }
    chessclock c = freshClock();
    c.setClock(40, 300000, 0, 0);
    c.setTimeBlack(100000000);
    c.associateEngineWithSide(1);  // white's slot still holds the base
    EXPECT_EQ(c.allocateTime(), 7350);
    c.movesLeft[1] = 0;  // taken as the last move of the control
    EXPECT_EQ(c.allocateTime(), 15000 - 150);
    // A new control forgets the reported times; moves with an increment is no new control.
    c = freshClock();
    c.setClock(0, 0, 5000, 0);
    c.setTimeBlack(3000);
    c.setClock(20, 3000, 1000, 0);
    EXPECT_EQ(c.moveBudget(50), 2950);
    c.setClock(0, 0, 5000, 0);
    EXPECT_EQ(c.moveBudget(0), 4850);
    c.setTimeBlack(4000);
    EXPECT_EQ(c.moveBudget(0), 4000);
}

TEST(ChessClockMoves, EachModeChargesAndRefillsTheClocksAsTheGamePlaysOut) {
    const struct {
        int moves, base, increment, pairs, whiteMs, blackMs;
        const char* times;
    } cases[] = {
        {40, 300000, 0, 40, 10, 100, "596000/40 599600/40"},  // the control restarts with each side's 41st move
        {0, 300000, 0, 2, 3001, 2000, "298000/1 295998/1"},   // sudden death adds the old time added (1000) per move
        {0, 0, 5000, 2, 100, 4000, "2000/1 9800/1"},          // fixed time per move
        {0, 60000, 1000, 3, 10, 990, "57030/-2 59970/-2"},    // the increment is left to the GUI's time reports
        {40, 300000, 2000, 2, 10, 100, "2800/1 2980/1"},      // moves with an increment: the old control stays
    };
    for (const auto& c : cases) {
        chessclock clock = freshClock();
        clock.setClock(c.moves, c.base, c.increment, 0);
        int now = 0;
        clock.startClock(1, now);  // the opponent (white) moves first
        for (int i = 0; i < c.pairs; ++i) {
            clock.startClock(0, now += c.whiteMs);
            clock.startClock(1, now += c.blackMs);
        }
        clock.stopClock(now);
        EXPECT_EQ(times(clock), c.times) << c.moves << " " << c.base << " " << c.increment;
    }
}

TEST(ChessClockMoves, StartChargeAndStopTouchOnlyTheRunningSide) {
    chessclock c = freshClock();
    c.associateEngineWithSide(1);
    c.setClock(40, 300000, 0, 0);
    c.startClock(0, 1000);  // from stopped: nothing charged
    c.startClock(0, 2000);  // already running: neither charged nor restarted
    EXPECT_EQ(std::pair(c.runningClock, c.startStamp), std::pair(1, 1000));
    c.chargeRunningClock(2700);  // counts no move
    EXPECT_EQ(times(c), "300000/40 298300/40");
    c.startClock(1, 3500);  // the charged part is not taken twice
    EXPECT_EQ(std::pair(c.runningClock, c.startStamp), std::pair(0, 3500));
    EXPECT_EQ(times(c), "300000/40 297500/39");
    c.stopClock(4000);  // counts no move either
    EXPECT_EQ(times(c), "299500/40 297500/39");

    const chessclock before = c;  // a stopped clock is never charged
    c.stopClock(90000);
    c.chargeRunningClock(95000);
    EXPECT_EQ(std::memcmp(&before, &c, sizeof c), 0);

    c.movesLeft[0] = 17;
    c.startClock(1, 100000);
    c.setClock(40, 300000, 2000, 100400);  // level 40 5 2: the clock stops, the control stays
    EXPECT_EQ(c.runningClock, chessclock::stopped);
    EXPECT_EQ(times(c), "299100/17 297500/39");
}
