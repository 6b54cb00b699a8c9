#include <gtest/gtest.h>

#include <tuple>

#include "testBoard.h"

TEST(SetupPosition, StartPositionFieldsAndFen) {
    board b = boardFrom("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1");
    EXPECT_EQ(std::tuple(b.lazy, b.wMat, b.totalMat, b.castle, b.enPassant), std::tuple(0, 3900, 7800, 15, 0));
    EXPECT_EQ(std::tuple(b.ply, b.toMove, b.wKingSq, b.bKingSq, b.pieceOn[4]), std::tuple(0, 1, 3, 59, QUEEN));  // Qd1
    EXPECT_EQ(b.occupied, 0xFFFF00000000FFFFULL);
    // The move number comes back one lower with white to move.
    EXPECT_EQ(fenOf(b), "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 0");
}

// Tens digits come out as the character 42 + hundreds digit; a move number below 1 reads as 1.
TEST(SetupPosition, ClockAndMoveNumberWithThreeDigitWriter) {
    const struct {
        const char* fen;
        int ply;
        const char* written;
    } cases[] = {
        {"4k3/8/8/8/8/8/8/4K3 b - - 12 40", 79, "4k3/8/8/8/8/8/8/4K3 b - - *2 *0"},
        {"4k3/8/8/8/8/8/8/4K3 w - - 123 150", 298, "4k3/8/8/8/8/8/8/4K3 w - - ++3 ++9"},
        {"4k3/8/8/8/8/8/8/4K3 b - - 105 50", 99, "4k3/8/8/8/8/8/8/4K3 b - - +5 *0"},
        {"4k3/8/8/8/8/8/8/4K3 b - - 0 0", 1, nullptr},
        {"4k3/8/8/8/8/8/8/4K3 b - - 0 -7", 1, nullptr},
        {"4k3/8/8/8/8/8/8/4K3 w - - 0 0", 0, nullptr},
    };
    for (const auto& c : cases) {
        const board b = boardFrom(c.fen);
        EXPECT_EQ(b.ply, c.ply) << c.fen;
        if (c.written) {
            EXPECT_EQ(fenOf(b), c.written);
        }
    }
}

TEST(SetupPosition, CastlingFieldIsReadInFixedOrder) {
    EXPECT_EQ(boardFrom("r3k2r/8/8/8/8/8/8/R3K2R w Qk - 0 1").castle, 6);
    EXPECT_EQ(boardFrom("r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1").castle, 15);
    // "kQ": the Q is left over and read as the en-passant file letter, which
    // swallows the blank; the clock and move number are then never reached.
    board b = boardFrom("r3k2r/8/8/8/8/8/8/R3K2R w kQ - 5 20");
    EXPECT_EQ(b.castle, 4);
    EXPECT_EQ(b.enPassant, 0);
    EXPECT_EQ(b.fiftyMoves, 0);
    EXPECT_EQ(b.ply, 0);
    // A right whose king or rook is off its square is dropped.
    const struct {
        const char* fen;
        int castle;
    } dropped[] = {
        {"4k3/8/8/8/8/8/8/4K3 w KQkq - 0 1", 0},
        {"r3k2r/8/8/8/8/8/8/R4K1R w KQkq - 0 1", 12},
        {"r3k3/8/8/8/8/8/8/R3K1R1 w KQkq - 0 1", 10},
        {"1r2k2r/8/8/8/8/8/8/R3K2R b KQkq - 0 1", 7},
    };
    for (const auto& c : dropped) EXPECT_EQ(boardFrom(c.fen).castle, c.castle) << c.fen;
}

TEST(SetupPosition, EnPassantSquareArithmetic) {
    board b = boardFrom("rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1");
    EXPECT_EQ(b.enPassant, 19);
    EXPECT_EQ(b.ply, 1);
    EXPECT_EQ(fenOf(b), "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1");
    EXPECT_EQ(boardFrom("rnbqkbnr/ppp1pppp/8/3pP3/8/8/PPPP1PPP/RNBQKBNR w KQkq d6 0 3").enPassant, 44);
    // Text that gives no square on the board means no en-passant square.
    EXPECT_EQ(boardFrom("4k3/8/8/8/8/8/8/4K3 w - e9 0 1").enPassant, 0);
    EXPECT_EQ(boardFrom("4k3/8/8/8/8/8/8/4K3 w - e").enPassant, 0);
}

TEST(SetupPosition, MissingFieldsAndStrayCharactersAreTolerated) {
    const board start = boardFrom("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1");
    board noSlashes = boardFrom("rnbqkbnrpppppppp8888PPPPPPPPRNBQKBNR w KQkq - 0 1");
    board strayLetters = boardFrom("rnbqkbnrX/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1");
    EXPECT_EQ(noSlashes.boardKey, start.boardKey);
    EXPECT_EQ(strayLetters.boardKey, start.boardKey);
    EXPECT_EQ(fenOf(strayLetters), fenOf(start));

    board placementOnly = boardFrom("4k3/8/8/8/8/8/8/4K3");
    EXPECT_EQ(placementOnly.toMove, -1);  // a missing side field means black
    EXPECT_EQ(placementOnly.castle, 0);
    EXPECT_EQ(placementOnly.enPassant, 0);
    EXPECT_EQ(placementOnly.ply, 0);
}

TEST(SetupPosition, KeyHistoryHoldsDummiesAndTheKey) {
    board b = boardFrom("4k3/8/8/8/8/8/8/4K3 b - - 3 10");
    EXPECT_EQ(keyHistory[b.ply % 150], b.boardKey);
    EXPECT_EQ(keyHistory[(b.ply + 1) % 150], uint64_t((b.ply + 1) % 150));
    EXPECT_EQ(keyHistory[0], 0u);
}
