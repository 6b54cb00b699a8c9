#include <gtest/gtest.h>

#include <tuple>

#include "testBoard.h"

// The pieces themselves are left to perft, keys and material also to the bench signature; here the incremental
// key and material must equal a fresh set-up's after each kind of move. The recapture square is set by a capture
// of equal value and by a quiet king move (0 against 0), cleared (0xFF) by any other move.
TEST(MakeMove, RightsEnPassantClocksAndRecaptureSquare) {
    const char* rooks = "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1";
    const char* promotion = "1r2k3/P7/8/8/8/8/8/4K3 w - - 0 1";
    const struct {
        const char* fen;
        const char* moves;
        const char* written;
        int recaptureSq;
    } cases[] = {
        {rooks, "e1g1", "r3k2r/8/8/8/8/8/8/R4RK1 b kq - 1 1", 1},
        {rooks, "e1g1 e8c8", "2kr3r/8/8/8/8/8/8/R4RK1 w - - 2 1", 61},
        // White has lost its rights already, Black loses the long one
        {rooks, "e1f1 a8a1", "4k2r/8/8/8/8/8/8/r4K1R w k - 0 1", 7},
        // no black pawn can take, the square is set anyway
        {"4k3/8/8/8/8/8/4P3/4K3 w - - 0 1", "e2e4", "4k3/8/8/8/4P3/8/8/4K3 b - e3 0 1", 0xFF},
        {"4k3/8/8/3pP3/8/8/8/4K3 w - d6 7 2", "e5d6", "4k3/8/3P4/8/8/8/8/4K3 b - - 0 2", 0xFF},
        {"4k3/8/8/3n4/8/4N3/8/4K3 w - - 9 1", "e3d5", "4k3/8/8/3N4/8/8/8/4K3 b - - 0 1", 36},
        {promotion, "a7b8Q", "1Q2k3/8/8/8/8/8/8/4K3 b - - 0 1", 0xFF},
    };
    for (const auto& c : cases) {
        const board b = boardAfter(c.fen, c.moves);
        EXPECT_EQ(fenOf(b), c.written) << c.fen << " " << c.moves;
        EXPECT_EQ(b.recaptureSq, c.recaptureSq) << c.fen << " " << c.moves;
        const board fresh = boardFrom(c.written);
        EXPECT_EQ(b.boardKey, fresh.boardKey) << c.fen << " " << c.moves;
        EXPECT_EQ(std::tuple(b.wMat, b.bMat, b.lazy), std::tuple(fresh.wMat, fresh.bMat, fresh.lazy)) << c.moves;
    }
    const board promoted = boardAfter(promotion, "a7b8Q");
    EXPECT_EQ(promoted.pieceCount[1][PAWN], boardFrom(promotion).pieceCount[1][PAWN]);  // the pawn entry is not kept
}
