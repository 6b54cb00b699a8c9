#include <gtest/gtest.h>

#include "board/perft.h"
#include "testBoard.h"

// Published leaf counts at depths that run in well under a second; the deep
// ones are in the perft-deep benchmark target.
TEST(Perft, PublishedCounts) {
    struct {
        const char* fen;
        int depth;
        uint64_t nodes;
    } cases[] = {
        {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1", 4, 197281},
        {"r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1", 3, 97862},
        {"8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1", 5, 674624},
        {"r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1", 4, 422333},
        {"rnbq1k1r/pp1Pbppp/2p5/8/2B5/8/PPP1NnPP/RNBQK2R w KQ - 1 8", 3, 62379},
        {"r4rk1/1pp1qppp/p1np1n2/2b1p1B1/2B1P1b1/P1NP1N2/1PP1QPPP/R4RK1 w - - 0 10", 3, 89890},
        // en passant that would expose the king or give check, castling that checks, promotions
        {"3k4/3p4/8/K1P4r/8/8/8/8 b - - 0 1", 6, 1134888},
        {"8/8/1k6/2b5/2pP4/8/5K2/8 b - d3 0 1", 6, 1440467},
        {"5k2/8/8/8/8/8/8/4K2R w K - 0 1", 6, 661072},
        {"r3k2r/1b4bq/8/8/8/8/7B/R3K2R w KQkq - 0 1", 4, 1274206},
        {"n1n5/PPPk4/8/8/8/8/4Kppp/5N1N b - - 0 1", 4, 182838},
    };
    for (const auto& c : cases) EXPECT_EQ(perft(boardFrom(c.fen), c.depth), c.nodes) << c.fen;
}
