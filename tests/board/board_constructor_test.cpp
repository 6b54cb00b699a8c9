#include <gtest/gtest.h>

#include <random>

#include "../support/scratchDirectory.h"
#include "testBoard.h"

namespace {

// The table-driven bit scans that the hardware instructions stand in for.
int tableFirstBit(uint64_t x) {
    if (x > 0xFFFFFFFFFFFFULL) return lastBit[x >> 48] + 48;
    if (x > 0xFFFFFFFFULL) return lastBit[x >> 32] + 32;
    if (x < 0x10000) return lastBit[x];
    return lastBit[x >> 16] + 16;
}
int tableCountBits(uint64_t x) {
    return bitCount[x & 0xFFFF] + bitCount[x >> 16 & 0xFFFF] + bitCount[x >> 32 & 0xFFFF] + bitCount[x >> 48];
}

}  // namespace

TEST(BoardTables, BitScansAgreeWithTheTables) {
    boardFrom("8/8/8/8/8/8/8/8 w");
    EXPECT_EQ(findFirstBit(1ULL | 1ULL << 63), 63);
    EXPECT_EQ(findFirstBit(1), 0);
    EXPECT_EQ(findFirstBit(0), 0);
    EXPECT_EQ(countBits(~0ULL), 64);
    std::mt19937_64 random(3);
    for (int i = 0; i < 100000; i++) {
        uint64_t x = random() >> (random() % 64);
        ASSERT_EQ(findFirstBit(x), tableFirstBit(x)) << x;
        ASSERT_EQ(countBits(x), tableCountBits(x)) << x;
    }
}

TEST(BoardTables, StepAndLineSets) {
    boardFrom("8/8/8/8/8/8/8/8 w");
    EXPECT_EQ(kingAttacks[0], 0x302ULL);                  // h1: g1, h2, g2
    EXPECT_EQ(knightAttacks[0], 0x20400ULL);              // h1: g3, f2
    EXPECT_EQ(whitePawnAttacks[11], 1ULL << 20 | 1ULL << 18);  // e2: d3, f3
    EXPECT_EQ(whitePawnAttacks[8], 1ULL << 17);           // h2: g3 only
    EXPECT_EQ(blackPawnAttacks[55], 1ULL << 46);          // a7: b6 only
    EXPECT_EQ(diagonalA[27], 0x8040201008040201ULL);      // e4: h1..a8
    EXPECT_EQ(diagonalB[27], 0x0001020408102040ULL);      // e4: b1..h7
    EXPECT_EQ(byteSpread[0x81], 0x8181818181818181ULL);
    EXPECT_EQ(distance[0][63], 7);   // h1, a8
    EXPECT_EQ(distance[27][13], 2);  // e4, c2
    EXPECT_EQ(sameColourSquares[0], 0xAA55AA55AA55AA55ULL);
}

TEST(BoardTables, UnstoppablePawnFlags) {
    boardFrom("8/8/8/8/8/8/8/8 w");
    // e2 pawn, e8 king: dUp -1, dDown 6, white needs 5 moves (double step), black 1.
    const int e2e8[4] = {1, 0, 1, 0};
    // a7 pawn, h1 king: dUp 6, dDown 6, white needs 1, black 5 (double step).
    const int a7h1[4] = {1, 1, 1, 1};
    // d4 pawn, d1 king: dUp 6, dDown -1, white 4, black 3.
    const int d4d1[4] = {0, 1, 0, 1};
    for (int i = 0; i < 4; i++) {
        EXPECT_EQ(unstoppablePawn[11][59][i], e2e8[i]) << i;
        EXPECT_EQ(unstoppablePawn[55][0][i], a7h1[i]) << i;
        EXPECT_EQ(unstoppablePawn[28][4][i], d4d1[i]) << i;
    }
}

TEST(BoardTables, PieceValuesComeFromTheSettingsFile) {
    const auto [echo, whiteMaterial] = [] {
        const scratchDirectory directory;
        const workingDirectory inside(directory.path);
        directory.write(settingsFileName, "pref:printToScreen=1\npref:VALPAWN=90.7\npref:VALQUEEN=1000\n");
        testing::internal::CaptureStdout();
        const board withSettings;  // set up on the start position
        return std::pair(testing::internal::GetCapturedStdout(), withSettings.wMat);
    }();
    EXPECT_EQ(echo, "Read settings:\n   VALPAWN:  90\n   VALQUEEN: 1000\n");
    EXPECT_EQ(pieceValue[PAWN], 90);
    EXPECT_EQ(pieceValue[QUEEN], 1000);
    EXPECT_EQ(maxMaterial, 16 * 90 + 4 * (300 + 300 + 500) + 2 * 1000);
    EXPECT_EQ(whiteMaterial, 8 * 90 + 2 * 300 + 2 * 300 + 2 * 500 + 1000);
    const scratchDirectory empty;
    const workingDirectory inside(empty.path);
    board restoresDefaults;  // without a settings file
    EXPECT_EQ(pieceValue[PAWN], 100);
    EXPECT_EQ(maxMaterial, 7800);
}
