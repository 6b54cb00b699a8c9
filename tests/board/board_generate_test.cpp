#include <gtest/gtest.h>

#include <cstring>

#include "../support/process.h"
#include "board/killerMoveTable.h"
#include "testBoard.h"

namespace {

const char* startFen = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1";

int scoreOf(const uint16_t* buffer, const char* text) {
    for (int i = 0; buffer[i]; i++)
        if (moveText(buffer[i]) == text) return static_cast<int16_t>(buffer[moveScoreSlot + i]);
    ADD_FAILURE() << text << " not generated";
    return -1;
}

struct GenerateTest : testing::Test {
    void SetUp() override { board::killers->reset(); }
    void TearDown() override { board::killers->reset(); }
    uint16_t captures[moveBufferSize];
    uint16_t quiet[moveBufferSize];
    void generate(const board& b) {
        b.generateCaptureMoves(captures);
        b.generateNonCaptureMoves(quiet);
    }
};

}  // namespace

// Killers and history lift quiet moves; the ties keep the order that the diminishing-gap passes leave them in
// (worked through by hand).
TEST_F(GenerateTest, KillersHistoryAndSortTieOrder) {
    board b = boardFrom(startFen);
    const int gf3 = b.convertMovestringToInt("g1f3"), e4 = b.convertMovestringToInt("e2e4");
    board::killers->storeKillerMove(e4, 10, 0, 1, NOPIECE);
    board::killers->storeKillerMove(gf3, 20, 0, 1, NOPIECE);
    generate(b);
    EXPECT_EQ(listText(quiet),
              "g1f3 e2e4 b2b3 a2a3 e2e3 f2f3 g2g3 h2h3 d2d3 b2b4 c2c4 d2d4 c2c3 f2f4 g2g4 h2h4 "
              "b1a3 b1c3 a2a4 g1h3");
    EXPECT_EQ(scoreOf(quiet, "g1f3"), 8194);
    EXPECT_EQ(scoreOf(quiet, "e2e4"), 8193);

    board::killers->resetKillers();
    board::killers->counters[1][b.convertMovestringToInt("h2h3") & 0xFFF] = 5;  // highest bit 2
    generate(b);
    EXPECT_EQ(moveText(quiet[0]), "h2h3");
    EXPECT_EQ(scoreOf(quiet, "h2h3"), 4098);
}

TEST_F(GenerateTest, CaptureScores) {
    const char* three = "4k3/7q/2p5/1n6/P3B3/8/8/4K3 w - - 0 1";
    const struct {
        const char* fen;
        const char* move;
        int score;
    } cases[] = {
        {three, "e4c6", 28673},                                  // 28672 + gain / 100
        {"4k3/8/2p5/3b4/4B3/8/8/4K3 w - - 0 1", "e4d5", 20480},  // on a defended square: bishop for bishop
        {"4k3/8/2p5/3p4/4B3/8/8/4K3 w - - 0 1", "e4d5", 16384},  // and bishop for pawn
        // en passant onto a square the c7 pawn covers takes "nothing" there
        {"4k3/2p5/8/3pP3/8/8/8/4K3 w - d6 0 2", "e5d6", 16384},
        {"4k3/8/8/8/8/8/6p1/4K2R b - - 0 1", "g2h1Q", 24576},
    };
    for (const auto& c : cases) {
        generate(boardFrom(c.fen));
        EXPECT_EQ(scoreOf(captures, c.move), c.score) << c.fen << " " << c.move;
    }
    generate(boardFrom(three));
    EXPECT_EQ(listText(captures), "e4h7 a4b5 e4c6");
}

// Queen promotions are in the capture list (a capturing one is scored above); rook, bishop and knight promotions
// sink to the end of the quiet list with the score 0.
TEST_F(GenerateTest, PromotionsSplitBetweenTheGenerators) {
    generate(boardFrom("4k3/1P6/8/8/8/8/8/4K3 w - - 0 1"));
    EXPECT_EQ(listText(captures), "b7b8Q");
    EXPECT_EQ(listText(quiet), "e1e2 e1f2 e1d1 e1d2 e1f1 b7b8R b7b8N b7b8B");
    EXPECT_EQ(scoreOf(quiet, "b7b8N"), 0);
}

TEST_F(GenerateTest, BuffersNeverOverflow) {
    // Far more than 99 quiet moves: the list stops at 99 and stays terminated.
    board b = boardFrom("Q1Q1Q1Q1/8/1Q1Q1Q1Q/8/Q1Q1Q1Q1/8/1Q1Q1Q1Q/k6K w - - 0 1");
    uint16_t buffer[moveBufferSize + 1];
    buffer[moveBufferSize] = 0xBEEF;
    b.generateNonCaptureMoves(buffer);
    int n = 0;
    while (buffer[n]) n++;
    EXPECT_EQ(n, maxMovesPerList);
    EXPECT_EQ(buffer[moveBufferSize], 0xBEEF);
    uint16_t legal[moveBufferSize];
    printed([&] { b.generateLegalMoves(legal); });  // white's queens can take the king, which the board reports
    n = 0;
    while (legal[n]) n++;
    EXPECT_LE(n, 2 * maxMovesPerList);
}
