#include <gtest/gtest.h>

#include "board/killerMoveTable.h"

namespace {

struct KillerTest : testing::Test {
    killerMoveTable table;
    void SetUp() override { table.reset(); }
};

}  // namespace

TEST_F(KillerTest, OnlyQuietMovesWithHighEnoughScoresEnter) {
    table.storeKillerMove(100, 50, 3, 1, 2);  // a capture: nothing at all
    EXPECT_EQ(table.counters[1][100], 0u);
    EXPECT_EQ(table.getKillerMoveScore(100, 3, 1), 0);

    table.storeKillerMove(100, 50, 3, 1, 6);
    table.storeKillerMove(200, 60, 3, 1, 6);
    EXPECT_EQ(table.getKillerMoveScore(200, 3, 1), 2);
    EXPECT_EQ(table.getKillerMoveScore(100, 3, 1), 1);
    EXPECT_EQ(table.getKillerMoveScore(200, 3, 0), 0);

    // Lower than slot 0: neither slot changes, the counter still rises.
    table.storeKillerMove(300, 10, 3, 1, 6);
    EXPECT_EQ(table.getKillerMoveScore(300, 3, 1), 0);
    EXPECT_EQ(table.getKillerMoveScore(100, 3, 1), 1);
    EXPECT_EQ(table.counters[1][300 & 0xFFF], 1u);
    table.storeKillerMove(0x9000 | 300, 10, 3, 1, 6);  // same from-to pair
    EXPECT_EQ(table.counters[1][300], 2u);
}

TEST_F(KillerTest, FromPly50TheStoreReadsBeyondThePlyRow) {
    // Black at ply 50 compares with, and shifts down, white's ply-0 slot 0.
    table.killers[1][0][0] = 777;
    table.killerScores[1][0][0] = 500;
    table.storeKillerMove(123, 100, 50, 0, 6);
    EXPECT_EQ(table.killers[0][0][0], 0);
    table.storeKillerMove(123, 600, 50, 0, 6);
    EXPECT_EQ(table.killers[0][0][0], 123);
    EXPECT_EQ(table.killerScores[0][0][0], 600);
    EXPECT_EQ(table.killers[0][0][1], 777);
    EXPECT_EQ(table.killerScores[0][0][1], 500);
    EXPECT_EQ(table.getKillerMoveScore(123, 50, 0), 2);
    EXPECT_EQ(table.getKillerMoveScore(777, 0, 1), 2);  // white's row untouched

    // White at ply 60 reads past the killers into the score rows and past the table.
    table.storeKillerMove(55, -20000, 160, 1, 6);
    EXPECT_EQ(table.killers[1][10][0], 0);
    table.storeKillerMove(55, 1, 160, 1, 6);
    EXPECT_EQ(table.killers[1][10][0], 55);
}
