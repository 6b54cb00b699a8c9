#include <gtest/gtest.h>

#include <set>
#include <string>

#include "../board/testBoard.h"
#include "book/bookBoard.h"

namespace {

// The book's own legality test against the engine's move generator, over
// every from-to pair of positions with checks, pins, castling through
// attacked squares, en passant and promotions.
TEST(BookBoard, LegalMovesAreTheEnginesLegalMoves) {
    const char* fens[] = {
        "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1",
        "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
        "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R b KQkq - 0 1",
        "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1",
        "r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1",
        "rnbq1k1r/pp1Pbppp/2p5/8/2B5/8/PPP1NnPP/RNBQK2R w KQ - 1 8",
        "r4rk1/1pp1qppp/p1np1n2/2b1p1B1/2B1P1b1/P1NP1N2/1PP1QPPP/R4RK1 w - - 0 10",
        "8/8/8/K2pP2r/8/8/8/7k w - d6 0 1",  // en passant would expose the king
        "4k3/8/8/2KpP3/8/8/8/8 w - d6 0 1",  // en passant out of check
        "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1",
        "r3k2r/8/8/8/8/8/5r2/R3K2R w KQkq - 0 1",  // f2 rook: no castling through check
        "1r2k2r/8/8/8/8/8/8/R3K2R b KQk - 0 1",
        "4k3/8/8/8/8/8/8/4K2R w K - 0 1",
    };
    for (const char* fen : fens) {
        const board b = boardFrom(fen);
        uint16_t legal[moveBufferSize];
        b.generateLegalMoves(legal);
        std::set<std::string> expected, found;
        for (int i = 0; legal[i]; i++) expected.insert(moveText(legal[i]).substr(0, 4));
        bookBoard position;
        ASSERT_TRUE(position.setup(fen)) << fen;
        for (int from = 0; from < 64; from++)
            for (int to = 0; to < 64; to++) {
                if (!position.isLegal(from, to)) continue;
                char text[6];
                bookMoveText(from, to, 0, text);
                found.insert(text);
            }
        EXPECT_EQ(found, expected) << fen;
    }
}

TEST(BookBoard, TextThatIsNoPositionIsRefused) {
    const char* bad[] = {"",
                         "garbage",
                         "8/8/8/8/8/8/8/8 w - - 0 1",
                         "4k3/8/8/8/8/8/8/4K3",
                         "4k3/8/8/8/8/8/8/4K3 x - -",
                         "4k3/8/8/8/8/8/8/4K2KK w - -",
                         "4k3/8/8/8/8/8/8 w - -",
                         "P3k3/8/8/8/8/8/8/4K3 w - -",
                         "4k3/8/8/9/8/8/8/4K3 w - -",
                         "4k3/8/8/8/8/8/8/4K3/8 w - -"};
    for (const char* fen : bad) {
        bookBoard position;
        EXPECT_FALSE(position.setup(fen)) << fen;
    }
}

}  // namespace
