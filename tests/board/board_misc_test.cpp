#include <gtest/gtest.h>

#include "testBoard.h"

namespace {

std::string gameEndText(const board& b) {
    testing::internal::CaptureStdout();
    const bool ended = b.printGameEndedMessage();
    std::string text = testing::internal::GetCapturedStdout();
    EXPECT_EQ(ended, !text.empty());
    return text;
}

}  // namespace

// Insufficient material goes by piece counts: bishops on h1 (0) and f8 (58) are alike because the square
// numbers have equal parity, not because the squares have one colour.
TEST(GameEnd, RepetitionFiftyMovesStalemateMatesAndInsufficientMaterial) {
    const char* start = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1";
    const std::string draw = "1/2-1/2 {insufficient Material}\n";
    const struct {
        const char* fen;
        const char* moves;
        std::string text;
    } cases[] = {
        {start, "g1f3 g8f6 f3g1 f6g8 g1f3 g8f6 f3g1", ""},  // the second occurrence
        {start, "g1f3 g8f6 f3g1 f6g8 g1f3 g8f6 f3g1 f6g8", "1/2-1/2 {draw by triple repetition}\n"},
        {"4k3/8/8/8/8/8/8/R3K3 w - - 100 80", "", "1/2-1/2 {50 moves rule}\n"},
        {"7k/5Q2/6K1/8/8/8/8/8 b - - 0 1", "", "1/2-1/2 {stalemate}\n"},
        {"7k/6Q1/6K1/8/8/8/8/8 b - - 0 1", "", "1-0 {white mates}\n"},
        {"8/8/8/8/8/6k1/6q1/7K w - - 0 1", "", "0-1 {black mates}\n"},
        {"4k3/8/8/8/8/8/8/4KN2 w - - 0 1", "", draw},
        {"4k3/8/8/8/8/8/8/3NK2N w - - 0 1", "", ""},
        {"4kb2/8/8/8/8/8/8/4K2B w - - 0 1", "", draw},
        {"4k1b1/8/8/8/8/8/8/4K2B w - - 0 1", "", ""},
    };
    for (const auto& c : cases) EXPECT_EQ(gameEndText(boardAfter(c.fen, c.moves)), c.text) << c.fen << " " << c.moves;
}

TEST(MoveText, BothWays) {
    board b = boardFrom("4k3/1P6/8/8/8/8/4P3/4K2R w K - 0 1");
    EXPECT_EQ(moveText(b.convertMovestringToInt("e2e4")), "e2e4");
    EXPECT_EQ(moveText(b.convertMovestringToInt("b7b8q")), "b7b8Q");
    EXPECT_EQ(moveText(b.convertMovestringToInt("b7b8N")), "b7b8N");
    EXPECT_EQ(b.convertMovestringToInt("b7b8"), 0);  // no such move without a piece letter
    EXPECT_EQ(moveText(b.convertMovestringToInt("e1g1\n")), "e1g1");
    for (const char* rejected : {"Ke2", "O-O", "o-o", "exd5", "e2xe4", "e2", "e", "", "e2\n", "i2i4", "e9e4"})
        EXPECT_EQ(b.convertMovestringToInt(rejected), 0) << rejected;
    EXPECT_EQ(moveText(nullMove), "NULLMOVE");
}
