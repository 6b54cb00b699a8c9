#include <gtest/gtest.h>

#include <random>

#include "testBoard.h"

namespace {

// Every incremental field must equal what a fresh set-up of the same position computes.
void expectSameAsFreshSetup(const board& b) {
    board fresh = boardFrom(fenOf(b).c_str());
    EXPECT_EQ(b.boardKey, fresh.boardKey) << fenOf(b);
    EXPECT_EQ(b.occupied, fresh.occupied);
    for (int type = 0; type < 7; type++)
        for (int side = 0; side < 2; side++) EXPECT_EQ(b.bb[type][side], fresh.bb[type][side]) << type;
    for (int square = 0; square < 64; square++) EXPECT_EQ(b.pieceOn[square], fresh.pieceOn[square]);
    EXPECT_EQ(b.wMat, fresh.wMat);
    EXPECT_EQ(b.bMat, fresh.bMat);
    EXPECT_EQ(b.totalMat, fresh.totalMat);
    EXPECT_EQ(b.lazy, fresh.lazy);
    for (int type = KNIGHT; type <= QUEEN; type++)
        for (int side = 0; side < 2; side++) EXPECT_EQ(b.pieceCount[side][type], fresh.pieceCount[side][type]);
    EXPECT_EQ(b.wKingSq, fresh.wKingSq);
    EXPECT_EQ(b.bKingSq, fresh.bKingSq);
}

}  // namespace

TEST(MakeMove, IncrementalStateMatchesFreshSetupOverRandomGames) {
    const char* starts[] = {
        "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1",
        "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
        "r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1",
        "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1",
    };
    std::mt19937 random(7);
    for (const char* start : starts) {
        for (int game = 0; game < 20; game++) {
            board b = boardFrom(start);
            for (int plyCount = 0; plyCount < 120; plyCount++) {
                uint16_t legal[moveBufferSize];
                b.generateLegalMoves(legal);
                int n = 0;
                while (legal[n]) n++;
                if (n == 0) break;
                b.makeMove(legal[random() % n]);
                ASSERT_EQ(keyHistory[b.ply % 150], b.boardKey);
                expectSameAsFreshSetup(b);
                if (HasFailure()) return;
            }
        }
    }
}

// The pieces themselves are left to perft and to the comparison with a fresh set-up. The recapture square is
// set by a capture of equal value and by a quiet king move (0 against 0), cleared (0xFF) by any other move.
TEST(MakeMove, RightsEnPassantClocksAndRecaptureSquare) {
    const char* rooks = "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1";
    const char* knights = "4k3/8/8/3n4/8/4N3/8/4K3 w - - 9 1";
    const char* promotion = "1r2k3/P7/8/8/8/8/8/4K3 w - - 0 1";
    const struct {
        const char* fen;
        const char* moves;
        const char* written;
        int recaptureSq;
    } cases[] = {
        {rooks, "e1g1", "r3k2r/8/8/8/8/8/8/R4RK1 b kq - 1 1", 1},
        {rooks, "e1g1 e8c8", "2kr3r/8/8/8/8/8/8/R4RK1 w - - 2 1", 61},
        {rooks, "e1f1", "r3k2r/8/8/8/8/8/8/R4K1R b kq - 1 1", 2},
        // White has lost its rights already, Black loses the long one
        {rooks, "e1f1 a8a1", "4k2r/8/8/8/8/8/8/r4K1R w k - 0 1", 7},
        // no black pawn can take, the square is set anyway
        {"4k3/8/8/8/8/8/4P3/4K3 w - - 0 1", "e2e4", "4k3/8/8/8/4P3/8/8/4K3 b - e3 0 1", 0xFF},
        {"4k3/8/8/3pP3/8/8/8/4K3 w - d6 7 2", "e5d6", "4k3/8/3P4/8/8/8/8/4K3 b - - 0 2", 0xFF},
        {knights, "e3d5", "4k3/8/8/3N4/8/8/8/4K3 b - - 0 1", 36},
        {knights, "e3d5 e8d7", "8/3k4/8/3N4/8/8/8/4K3 w - - 1 1", 52},
        {promotion, "a7b8Q", "1Q2k3/8/8/8/8/8/8/4K3 b - - 0 1", 0xFF},
    };
    for (const auto& c : cases) {
        const board b = boardAfter(c.fen, c.moves);
        EXPECT_EQ(fenOf(b), c.written) << c.fen << " " << c.moves;
        EXPECT_EQ(b.recaptureSq, c.recaptureSq) << c.fen << " " << c.moves;
    }
    const board promoted = boardAfter(promotion, "a7b8Q");
    EXPECT_EQ(promoted.pieceCount[1][PAWN], boardFrom(promotion).pieceCount[1][PAWN]);  // the pawn entry is not kept
    expectSameAsFreshSetup(promoted);
}

TEST(MakeMove, NullMoveFlipsSideAndClearsEnPassantOnly) {
    board b = boardFrom("4k3/8/8/8/4P3/8/8/4K3 b - e3 4 1");
    const int ply = b.ply;
    const uint64_t historyEntry = keyHistory[(ply + 1) % 150];
    b.makeMove(nullMove);
    EXPECT_EQ(b.toMove, 1);
    EXPECT_EQ(b.enPassant, 0);
    EXPECT_EQ(b.nullMoves, 1);
    EXPECT_EQ(b.ply, ply);
    EXPECT_EQ(b.fiftyMoves, 4);
    EXPECT_EQ(keyHistory[(ply + 1) % 150], historyEntry);
    EXPECT_EQ(b.boardKey, boardFrom("4k3/8/8/8/4P3/8/8/4K3 w - - 4 1").boardKey);
    play(b, "e1d1");
    EXPECT_EQ(b.nullMoves, 0);
}
