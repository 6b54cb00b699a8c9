#include <gtest/gtest.h>

#include "../support/scratchDirectory.h"
#include "testBoard.h"

TEST(BoardTables, PieceValuesComeFromTheSettingsFile) {
    const int whiteMaterial = [] {
        const scratchDirectory directory;
        const workingDirectory inside(directory.path);
        directory.write(settingsFileName, "pref:VALPAWN=90.7\npref:VALQUEEN=1000\n");
        return board().wMat;  // set up on the start position
    }();
    EXPECT_EQ(pieceValue[PAWN], 90);
    EXPECT_EQ(maxMaterial, 16 * 90 + 4 * (300 + 300 + 500) + 2 * 1000);
    EXPECT_EQ(whiteMaterial, 8 * 90 + 2 * 300 + 2 * 300 + 2 * 500 + 1000);
    const scratchDirectory empty;
    const workingDirectory inside(empty.path);
    board restoresDefaults;  // without a settings file
    EXPECT_EQ(pieceValue[PAWN], 100);
    EXPECT_EQ(maxMaterial, 7800);
}
