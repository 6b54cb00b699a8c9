#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

#include "testBoard.h"

// What the reader makes of a FEN, shown by what the writer gives back. The writer puts tens digits out as the
// character 42 + hundreds digit and the move number one lower with white to move; a move number below 1 reads
// as 1. Castling letters are read in the fixed order KQkq: in "kQ" the Q is left over and taken as the
// en-passant file, which swallows the blank, so the clock and move number are never reached.
TEST(SetupPosition, FieldsAsTheWriterGivesThemBack) {
    const char* start = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 0";
    const struct {
        const char* fen;
        int ply;
        const char* written;
    } cases[] = {
        {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1", 0, start},
        {"rnbqkbnrX/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1", 0, start},  // a stray letter
        {"4k3/8/8/8/8/8/8/4K3 b - - 12 40", 79, "4k3/8/8/8/8/8/8/4K3 b - - *2 *0"},
        {"4k3/8/8/8/8/8/8/4K3 w - - 123 150", 298, "4k3/8/8/8/8/8/8/4K3 w - - ++3 ++9"},
        {"4k3/8/8/8/8/8/8/4K3 b - - 105 50", 99, "4k3/8/8/8/8/8/8/4K3 b - - +5 *0"},
        {"4k3/8/8/8/8/8/8/4K3 b - - 0 -7", 1, "4k3/8/8/8/8/8/8/4K3 b - - 0 1"},
        {"4k3/8/8/8/8/8/8/4K3", 0, "4k3/8/8/8/8/8/8/4K3 b - - 0 0"},  // a missing side field means black
        {"r3k2r/8/8/8/8/8/8/R3K2R w Qk - 0 1", 0, "r3k2r/8/8/8/8/8/8/R3K2R w Qk - 0 0"},
        {"r3k2r/8/8/8/8/8/8/R3K2R w kQ - 5 20", 0, "r3k2r/8/8/8/8/8/8/R3K2R w k - 0 0"},
        // a right whose king or rook is off its square is dropped
        {"r3k2r/8/8/8/8/8/8/R4K1R w KQkq - 0 1", 0, "r3k2r/8/8/8/8/8/8/R4K1R w kq - 0 0"},
        {"r3k3/8/8/8/8/8/8/R3K1R1 w KQkq - 0 1", 0, "r3k3/8/8/8/8/8/8/R3K1R1 w Qq - 0 0"},
        {"rnbqkbnr/ppp1pppp/8/3pP3/8/8/PPPP1PPP/RNBQKBNR w KQkq d6 0 3", 4,
         "rnbqkbnr/ppp1pppp/8/3pP3/8/8/PPPP1PPP/RNBQKBNR w KQkq d6 0 2"},
        // text that gives no square on the board means no en-passant square
        {"4k3/8/8/8/8/8/8/4K3 w - e", 0, "4k3/8/8/8/8/8/8/4K3 w - - 0 0"},
    };
    for (const auto& c : cases) {
        const board b = boardFrom(c.fen);
        EXPECT_EQ(b.ply, c.ply) << c.fen;
        EXPECT_EQ(fenOf(b), c.written) << c.fen;
    }
    const board b = boardFrom("4k3/8/8/8/8/8/8/4K3 b - - 3 10");
    EXPECT_EQ(keyHistory[b.ply % 150], b.boardKey);
    EXPECT_EQ(keyHistory[(b.ply + 1) % 150], uint64_t((b.ply + 1) % 150));  // dummies no key can repeat
}

// Whatever text the position reader gets (the command fuzzer sends more through "setboard"), generation, making moves,
// the legality and game-end tests, the evaluation (kings forced into both corners, either side to move) and the FEN
// writer stay inside their memory. The sanitizer build turns any slip into a failure.
TEST(SetupPosition, BrokenPositionsStaySafe) {
    const char* inputs[] = {
        "",
        "PPPPPPPP/pppppppp/8/8/8/8/PPPPPPPP/pppppppp w - - 0 1",  // pawns on the first and last rank
        "QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/qqqqqqqq/qqqqqqqq/qqqqqqqq/qqqqqqqk b KQkq - 0 1",
        "99999999999999999999999999 w KQkq h8 300 99999999999",
        "r3k/rbn2pnp1/3PA3/1p3P3/2N2Q1p/PPPBB2Q1p/PPPBBw QKkq - 0 1 e1c1",  // pawn from a stale king square
        "1pRPP\x96\xc6\xe6\xc6"
        "999999-996r/\x96\xc6\xe6\xc6"
        "999999-9999!999)",
    };
    testing::internal::CaptureStdout();  // king captures are reported on the console
    for (const char* text : inputs) {
        board b = boardFrom(text);
        EXPECT_LT(fenOf(b).size(), 100u) << text;
        uint16_t buffer[moveBufferSize];
        for (int stage = 0; stage < 2; stage++) {
            if (stage == 0) b.generateCaptureMoves(buffer);
            else b.generateNonCaptureMoves(buffer);
            for (int i = 0; buffer[i]; i++) {
                board next = b;
                next.makeMove(buffer[i]);
                next.isMoveIllegal(buffer[i]);
                next.printGameEndedMessage();
                next.makeMove(nullMove);
            }
        }
        b.inCheck();
        b.printGameEndedMessage();
        for (int king : {0, 63}) {
            b.wKingSq = b.bKingSq = static_cast<uint8_t>(king);
            for (int side : {1, -1}) {
                b.toMove = static_cast<int8_t>(side);
                EXPECT_LT(std::abs(b.evaluate(-32000, 32000)), 32000) << text;
            }
        }
    }
    testing::internal::GetCapturedStdout();
}
