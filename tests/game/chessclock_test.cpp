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

TEST(Timer, GetMsNeverHasAZeroMillisecondPartAndMeasuresTheBudget) {
    int ms = 1;  // read on until the second turns: no reading may have a millisecond part of 0
    for (int previous = 0; ms != 0 && ms >= previous;) previous = ms, ms = get_ms() % 1000;
    EXPECT_NE(ms, 0);
    timer t{0, get_ms() - 1};
    EXPECT_TRUE(t.timeIsUp());
    t = {10000000, get_ms() - 250};
    EXPECT_FALSE(t.timeIsUp());
    EXPECT_GE(t.getTimePassedBy(), 250);
    EXPECT_LT(t.getTimePassedBy(), 5250);
}

TEST(ChessClockAllocation, ProtocolExamplesCapsAndOddInput) {
    const struct {
        int moves, base, increment, engineMs, budget;
    } cases[] = {
        // engineMs 0: as set
        {40, 300000, 0, 100000000, 15000 - 150},  // plenty left: twice the control's average
        {0, 300000, 0, 0, 7500},
        {0, 120000, 12000, 0, 15850},  // level 0 5 0 (no margin); level 0 2 12
        {40, 2000000000, 0, 0, 50000000 - 150},
        {0, 2000000000, 2000000000, 0, 2000000000 - 150},  // wide sums
    };
    for (const auto& c : cases) {
        chessclock clock = freshClock();
        clock.setClock(c.moves, c.base, c.increment, 10);
        if (c.engineMs != 0) clock.setTimeBlack(c.engineMs);
        EXPECT_EQ(clock.allocateTime(), c.budget) << c.moves << " " << c.base << " " << c.increment;
    }
    chessclock c = freshClock();
    c.setClock(40, 300000, 0, 0);
    c.setTimeBlack(100000000);
    c.associateEngineWithSide(1);  // white's slot still holds the base
    EXPECT_EQ(c.allocateTime(), 7350);
    c.movesLeft[1] = 0;  // taken as the last move of the control
    EXPECT_EQ(c.allocateTime(), 15000 - 150);
    c.movesLeft[1] = 40;
    c.movesPerControl = 0;
    EXPECT_EQ(c.allocateTime(), 7500 - 150);
    c.mode = 7;
    EXPECT_EQ(c.allocateTime(), 0);
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

TEST(ChessClockAllocation, TheBudgetIsWhatTheClockCanPay) {
    // moves, base, increment, the engine's time as reported (-1: none), budget with 50 ms overhead
    const struct {
        int moves, base, increment, reportedMs, budget;
    } cases[] = {
        {0, 0, 5000, -1, 4850},                // st 5: the formula fits
        {40, 300000, 0, -1, 7350},             // level 40 5 0
        {0, 120000, 12000, 3000, 2850},        // the formula fits the clock
        {0, 0, 100, -1, 50},                   // movetime 100: the margin would leave -50
        {0, 2000, 50, -1, 116},                // 2 s + 0.05 s: a 30th plus the increment, not -34
        {0, 2000, 50, 60, 10},                 // and as the flag nears, what is left less the overhead
        {0, 2000, 50, 30, 15},                 // below the overhead: half of what is left
        {0, 2000, 50, -400, 1},                // flagged already: never zero or below
        {0, 0, 5000, 3000, 2950},              // movestogo with increment keeps the old control, the clock bounds it
        {0, 0, 99999999, -1, 99999999 - 150},  // infinite
    };
    for (const auto& c : cases) {
        chessclock clock = freshClock();
        clock.setClock(0, 0, 5000, 0);
        clock.setClock(c.moves, c.base, c.increment, 10);
        if (c.reportedMs != -1) clock.setTimeBlack(c.reportedMs);
        EXPECT_EQ(clock.moveBudget(50), c.budget)
            << c.moves << " " << c.base << " " << c.increment << " " << c.reportedMs;
    }
    // A new control forgets the reported times; moves with an increment is no new control.
    chessclock clock = freshClock();
    clock.setClock(0, 0, 5000, 0);
    clock.setTimeBlack(3000);
    clock.setClock(20, 3000, 1000, 0);
    EXPECT_EQ(clock.moveBudget(50), 2950);
    clock.setClock(0, 0, 5000, 0);
    EXPECT_EQ(clock.moveBudget(50), 4850);
    EXPECT_EQ(clock.moveBudget(0), 4850);
    clock.setTimeBlack(4000);
    EXPECT_EQ(clock.moveBudget(0), 4000);
}
