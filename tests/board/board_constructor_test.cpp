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
