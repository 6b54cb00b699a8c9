#include <gtest/gtest.h>

#include "../support/scratchDirectory.h"
#include "testBoard.h"

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
    EXPECT_EQ(maxMaterial, 16 * 90 + 4 * (300 + 300 + 500) + 2 * 1000);
    EXPECT_EQ(whiteMaterial, 8 * 90 + 2 * 300 + 2 * 300 + 2 * 500 + 1000);
    const scratchDirectory empty;
    const workingDirectory inside(empty.path);
    board restoresDefaults;  // without a settings file
    EXPECT_EQ(pieceValue[PAWN], 100);
    EXPECT_EQ(maxMaterial, 7800);
}
