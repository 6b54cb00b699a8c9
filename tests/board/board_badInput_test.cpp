#include <gtest/gtest.h>

#include <cstring>

#include "testBoard.h"

// Whatever text the position reader gets, generation, making moves, the
// legality and game-end tests and the FEN writer stay inside their memory.
// The sanitizer build turns any slip into a failure.
TEST(BadInput, BrokenPositionsStaySafe) {
    const char* inputs[] = {
        "",
        "garbage",
        "KQkq",
        "8/8/8/8/8/8/8/8 w KQkq e3 -5 -1",
        "PPPPPPPP/pppppppp/8/8/8/8/PPPPPPPP/pppppppp w - - 0 1",  // pawns on the first and last rank
        "QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/qqqqqqqq/qqqqqqqq/qqqqqqqq/qqqqqqqk b KQkq - 0 1",
        "K7/8/8/8/8/8/8/7K w - - 0 1",  // two white kings, no black one
        "99999999999999999999999999 w KQkq h8 300 99999999999",
        "r3k/rbn2pnp1/3PA3/1p3P3/2N2Q1p/PPPBB2Q1p/PPPBBw QKkq - 0 1 e1c1",  // pawn from a stale king square
        "1pRPP\x96\xc6\xe6\xc6"
        "999999-996r/\x96\xc6\xe6\xc6"
        "999999-9999!999)",
    };
    testing::internal::CaptureStdout();  // king captures are reported on the console
    for (const char* text : inputs) {
        board b = boardFrom(text);
        char fen[128];
        b.getFen(fen);
        EXPECT_LT(std::strlen(fen), 100u) << text;
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
    }
    testing::internal::GetCapturedStdout();
}
