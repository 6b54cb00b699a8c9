#include <gtest/gtest.h>

#include "testBoard.h"
#include "board/san.h"

namespace {

std::string read(const char* fen, const char* san) {
    const int move = sanToMove(boardFrom(fen), san);
    return move ? moveText(move) : "none";
}

TEST(San, DisambiguatesByFileRankOrBoth) {
    const char* knights = "4k3/8/8/8/8/5N2/8/1N2K3 w - - 0 1";
    EXPECT_EQ(read(knights, "Nbd2"), "b1d2");
    EXPECT_EQ(read(knights, "Nfd2"), "f3d2");
    EXPECT_EQ(read(knights, "Nd2"), "none");
    const char* rooks = "4k3/8/8/R7/8/8/8/R3K3 w - - 0 1";
    EXPECT_EQ(read(rooks, "R1a3"), "a1a3");
    EXPECT_EQ(read(rooks, "R5xa3"), "a5a3");
    const char* queens = "4k3/8/8/8/8/Q7/8/Q1Q1K3 w - - 0 1";
    EXPECT_EQ(read(queens, "Qab2"), "none");
    EXPECT_EQ(read(queens, "Q1b2"), "none");
    EXPECT_EQ(read(queens, "Qa1b2"), "a1b2");
}

TEST(San, Promotions) {
    const char* fen = "5n2/4P3/8/8/8/8/8/k3K3 w - - 0 1";
    EXPECT_EQ(read(fen, "e8=Q"), "e7e8Q");
    EXPECT_EQ(read(fen, "e8N"), "e7e8N");
    EXPECT_EQ(read(fen, "exf8=R+"), "e7f8R");
    EXPECT_EQ(read(fen, "e8"), "none");
    EXPECT_EQ(read(fen, "e8=K"), "none");
}

TEST(San, CastlingBothWaysForBothColours) {
    const char* white = "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1";
    const char* black = "r3k2r/8/8/8/8/8/8/R3K2R b KQkq - 0 1";
    EXPECT_EQ(read(white, "O-O"), "e1g1");
    EXPECT_EQ(read(white, "O-O-O"), "e1c1");
    EXPECT_EQ(read(black, "0-0"), "e8g8");
    EXPECT_EQ(read(black, "0-0-0+"), "e8c8");
    EXPECT_EQ(read("r3k2r/8/8/8/8/8/8/R3K2R w Qkq - 0 1", "O-O"), "none");
}

TEST(San, EnPassantSuffixesAndIllegalMoves) {
    EXPECT_EQ(read("4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1", "exd6"), "e5d6");
    const char* start = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1";
    EXPECT_EQ(read(start, "Nf3"), "g1f3");
    EXPECT_EQ(read(start, "e4!?"), "e2e4");
    EXPECT_EQ(read("4k3/8/8/8/8/8/8/4K2R w K - 0 1", "Rh8#"), "h1h8");
    EXPECT_EQ(read(start, "e5"), "none");
    EXPECT_EQ(read(start, "Ke2"), "none");
    EXPECT_EQ(read("4k3/4r3/8/8/8/8/4N3/4K3 w - - 0 1", "Nc3"), "none");  // pinned
    EXPECT_EQ(read(start, "Zz9"), "none");
}

}  // namespace

TEST(San, EveryLegalMoveWrittenInSanReadsBackAsItself) {
    const char* fens[] = {"r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
                          "r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1",
                          "4k3/8/8/R7/8/8/8/R3K2R w K - 0 1", "4k3/8/8/8/8/Q7/8/Q1Q1K3 w - - 0 1",
                          "4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1", "3k4/8/8/8/8/8/8/R3K2R w KQ - 0 1"};
    for (const char* fen : fens) {
        const board b = boardFrom(fen);
        uint16_t legal[moveBufferSize];
        b.generateLegalMoves(legal);
        for (int i = 0; legal[i]; i++) {
            char san[16];
            moveToSan(b, legal[i], san);
            EXPECT_EQ(sanToMove(b, san), legal[i]) << fen << " " << san;
        }
    }
    char san[16];
    moveToSan(boardFrom("4k3/8/8/8/8/Q7/8/Q1Q1K3 w - - 0 1"), boardFrom("4k3/8/8/8/8/Q7/8/Q1Q1K3 w - - 0 1").convertMovestringToInt("a1b2"), san);
    EXPECT_STREQ(san, "Qa1b2");
    moveToSan(boardFrom("3k4/8/8/8/8/8/8/R3K2R w KQ - 0 1"), boardFrom("3k4/8/8/8/8/8/8/R3K2R w KQ - 0 1").convertMovestringToInt("e1c1"), san);
    EXPECT_STREQ(san, "O-O-O+");
    moveToSan(boardFrom("6k1/5ppp/8/8/8/8/8/R5K1 w - - 0 1"), boardFrom("6k1/5ppp/8/8/8/8/8/R5K1 w - - 0 1").convertMovestringToInt("a1a8"), san);
    EXPECT_STREQ(san, "Ra8#");
}
