#include <gtest/gtest.h>

#include <cstring>

#include "game/chessclock.h"
#include "game/timer.h"

namespace {

// As at start-up: engine on black, one move per 1000 ms, clock stopped.
chessclock freshClock() {
    chessclock c;
    std::memset(&c, 0, sizeof c);
    c.associateEngineWithSide(-1);
    c.setClock(1, 1000, 0, 0);
    return c;
}

// The engine's part of a move cycle: charge, allocate, own clock, move made.
int engineMove(chessclock& c, int thinkStart, int moveMade) {
    c.chargeRunningClock(thinkStart);
    int budget = c.allocateTime();
    c.startClock(0, thinkStart);
    c.startClock(1, moveMade);
    return budget;
}

}  // namespace

TEST(Timer, GetMsNeverHasAZeroMillisecondPartAndMeasuresTheBudget) {
    for (int i = 0; i < 5000; ++i) ASSERT_NE(get_ms() % 1000, 0);

    timer t;
    t.allottedMs = 0;
    t.startMs = get_ms() - 1;
    EXPECT_TRUE(t.timeIsUp());
    t.allottedMs = 10000000;
    t.startMs = get_ms() - 250;
    EXPECT_FALSE(t.timeIsUp());
    EXPECT_GE(t.getTimePassedBy(), 250);
    EXPECT_LT(t.getTimePassedBy(), 5250);
}

TEST(ChessClockAllocation, ProtocolExamplesAndTheCaps) {
    chessclock c = freshClock();
    c.setClock(0, 0, 5000, 10);  // st 5
    EXPECT_EQ(c.allocateTime(), 4850);
    c.setClock(40, 300000, 0, 10);  // level 40 5 0
    EXPECT_EQ(c.allocateTime(), 7350);
    c.setTimeBlack(100000000);  // plenty left: twice the control's average
    EXPECT_EQ(c.allocateTime(), 15000 - 150);
    c.associateEngineWithSide(1);  // white's slot still holds the base
    EXPECT_EQ(c.allocateTime(), 7350);
    c.associateEngineWithSide(-1);
    c.setClock(0, 300000, 0, 10);  // level 0 5 0
    EXPECT_EQ(c.allocateTime(), 7500);
    c.setClock(0, 120000, 12000, 10);  // level 0 2 12
    EXPECT_EQ(c.allocateTime(), 15850);
    c.setTimeBlack(3000);  // never more than what is left
    EXPECT_EQ(c.allocateTime(), 2850);
    c.setClock(0, 0, 99999999, 10);  // go infinite
    EXPECT_EQ(c.allocateTime(), 99999999 - 150);
    c.mode = 7;
    EXPECT_EQ(c.allocateTime(), 0);
}

TEST(ChessClockAllocation, OddInputNeitherDividesByZeroNorOverflows) {
    chessclock c = freshClock();
    c.setClock(40, 300000, 0, 0);
    c.movesLeft[0] = 0;
    EXPECT_EQ(c.allocateTime(), 15000 - 150);
    c.movesPerControl = 0;
    c.movesLeft[0] = 40;
    EXPECT_EQ(c.allocateTime(), 7500 - 150);
    c.setClock(40, 2000000000, 0, 0);  // twice the base exceeds 32 bits
    EXPECT_EQ(c.allocateTime(), 50000000 - 150);
    c.setClock(0, 2000000000, 2000000000, 0);
    EXPECT_EQ(c.allocateTime(), 2000000000 - 150);
}

TEST(ChessClockSetClock, MovesWithIncrementKeepsThePreviousControl) {
    chessclock c = freshClock();
    c.setClock(40, 300000, 0, 0);
    c.movesLeft[1] = 17;
    c.safetyMargin = 0;
    c.startClock(0, 100);
    c.setClock(40, 300000, 2000, 500);  // level 40 5 2
    EXPECT_EQ(c.safetyMargin, 150);
    EXPECT_EQ(c.runningClock, 9);
    EXPECT_EQ(c.mode, 0);
    EXPECT_EQ(c.movesLeft[1], 17);
    EXPECT_EQ(c.remaining[0], 300000 - 400);  // only the stop charged the clock
}

TEST(ChessClockMoves, SuddenDeathAddsTheLeftoverTimeAddedEveryMove) {
    chessclock c = freshClock();
    c.setClock(0, 0, 5000, 0);
    c.setClock(0, 300000, 0, 0);
    EXPECT_EQ(c.timeAddedPerControl, 5000);
    c.startClock(1, 1000);
    c.startClock(0, 4001);
    EXPECT_EQ(c.remaining[1], 300000 - 3001 + 5000);
    EXPECT_EQ(c.movesLeft[1], 1);
    engineMove(c, 5000, 7000);
    EXPECT_EQ(c.remaining[0], 300000 - 2999 + 5000);
}

TEST(ChessClockMoves, ConventionalControlRestartsOnTheFortyFirstMove) {
    chessclock c = freshClock();
    c.setClock(40, 300000, 0, 0);
    c.startClock(1, 0);  // the opponent (white) moves first
    int now = 0;
    for (int move = 1; move <= 40; ++move) {
        c.startClock(0, now += 10);
        engineMove(c, now + 5, now + 100);
        now += 100;
    }
    c.startClock(0, now += 10);  // white's 41st move
    EXPECT_EQ(c.movesLeft[1], 39);
    EXPECT_EQ(c.remaining[1], 600000 - 41 * 10);
    c.chargeRunningClock(now + 5);
    EXPECT_EQ(c.movesLeft[0], 40);  // black's 41st move finds the new control
    EXPECT_EQ(c.remaining[0], 600000 - 40 * 100 - 5);
}

TEST(ChessClockMoves, IncrementIsNeverAddedByTheClock) {
    chessclock c = freshClock();
    c.setClock(0, 60000, 1000, 0);
    c.startClock(1, 0);
    for (int now = 0; now < 3000; now += 1000) {
        c.startClock(0, now + 10);
        engineMove(c, now + 10, now + 1000);
    }
    EXPECT_EQ(c.movesLeft[0], -2);
    EXPECT_EQ(c.remaining[0], 60000 - 3 * 990);
    EXPECT_EQ(c.remaining[1], 60000 - 3 * 10);
}

TEST(ChessClockMoves, StartClockSwitchesAndChargesOnlyTheOtherSide) {
    chessclock c = freshClock();
    c.associateEngineWithSide(1);
    c.setClock(40, 300000, 0, 0);
    c.startClock(0, 1000);  // from stopped: nothing charged
    c.startClock(0, 2000);  // already running: neither charged nor restarted
    EXPECT_EQ(c.runningClock, 1);
    EXPECT_EQ(c.startStamp, 1000);
    EXPECT_EQ(c.remaining[1], 300000);
    c.startClock(1, 3500);
    EXPECT_EQ(c.runningClock, 0);
    EXPECT_EQ(c.startStamp, 3500);
    EXPECT_EQ(c.remaining[1], 300000 - 2500);
    EXPECT_EQ(c.movesLeft[1], 39);
    EXPECT_EQ(c.remaining[0], 300000);
    c.startClock(0, 4000);
    EXPECT_EQ(c.remaining[0], 300000 - 500);
    EXPECT_EQ(c.movesLeft[0], 39);
    c.stopClock(4700);
    EXPECT_EQ(c.remaining[1], 300000 - 3200);
    EXPECT_EQ(c.movesLeft[1], 39);
}

TEST(ChessClockMoves, ChargingCountsNoMoveAndIsNotTakenTwice) {
    chessclock c = freshClock();
    c.setClock(40, 300000, 0, 0);
    c.startClock(1, 0);
    c.chargeRunningClock(700);
    EXPECT_EQ(c.remaining[1], 300000 - 700);
    EXPECT_EQ(c.movesLeft[1], 40);
    c.startClock(0, 1000);
    EXPECT_EQ(c.remaining[1], 300000 - 1000);
}

TEST(ChessClockMoves, AStoppedClockIsNeverCharged) {
    chessclock c = freshClock();
    c.setClock(40, 300000, 0, 0);
    c.startClock(0, 100);
    c.stopClock(600);
    const chessclock before = c;
    c.stopClock(90000);
    c.chargeRunningClock(95000);
    EXPECT_EQ(std::memcmp(&before, &c, sizeof c), 0);
}
