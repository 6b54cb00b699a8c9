#include <gtest/gtest.h>

#include "board/san.h"
#include "testBoard.h"

TEST(San, DisambiguationPromotionsCastlingSuffixesAndIllegalMoves) {
    const char* knights = "4k3/8/8/8/8/5N2/8/1N2K3 w - - 0 1";
    const char* queens = "4k3/8/8/8/8/Q7/8/Q1Q1K3 w - - 0 1";
    const char* promotion = "5n2/4P3/8/8/8/8/8/k3K3 w - - 0 1";
    const char* castling = "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1";
    const char* blackCastling = "r3k2r/8/8/8/8/8/8/R3K2R b KQkq - 0 1";
    const char* start = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1";
    const struct {
        const char* fen;
        const char* san;
        const char* move;
    } cases[] = {
        {knights, "Nbd2", "b1d2"},
        {knights, "Nd2", "none"},
        {"4k3/8/8/R7/8/8/8/R3K3 w - - 0 1", "R5xa3", "a5a3"},
        {queens, "Q1b2", "none"},
        {queens, "Qa1b2", "a1b2"},
        {promotion, "e8N", "e7e8N"},
        {promotion, "exf8=R+", "e7f8R"},
        {promotion, "e8", "none"},
        {promotion, "e8=K", "none"},
        {castling, "O-O", "e1g1"},
        {blackCastling, "0-0", "e8g8"},
        {blackCastling, "0-0-0+", "e8c8"},
        {"r3k2r/8/8/8/8/8/8/R3K2R w Qkq - 0 1", "O-O", "none"},
        {"4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1", "exd6", "e5d6"},
        {start, "e4!?", "e2e4"},
        {start, "Ke2", "none"},
        {"4k3/4r3/8/8/8/8/4N3/4K3 w - - 0 1", "Nc3", "none"},  // pinned
        {start, "Zz9", "none"},
    };
    for (const auto& c : cases) {
        const int move = sanToMove(boardFrom(c.fen), c.san);
        EXPECT_EQ(move ? moveText(move) : "none", c.move) << c.fen << " " << c.san;
    }
}

TEST(San, EveryLegalMoveWrittenInSanReadsBackAsItself) {
    const char* queens = "4k3/8/8/8/8/Q7/8/Q1Q1K3 w - - 0 1";
    const char* castling = "3k4/8/8/8/8/8/8/R3K2R w KQ - 0 1";
    const char* mate = "6k1/5ppp/8/8/8/8/8/R5K1 w - - 0 1";
    const char* fens[] = {"r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
                          "r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1", queens, castling, mate};
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
    const struct {
        const char* fen;
        const char* move;
        const char* san;
    } written[] = {{queens, "a1b2", "Qa1b2"}, {castling, "e1c1", "O-O-O+"}, {mate, "a1a8", "Ra8#"}};
    for (const auto& w : written) {
        const board b = boardFrom(w.fen);
        char san[16];
        moveToSan(b, b.convertMovestringToInt(w.move), san);
        EXPECT_STREQ(san, w.san);
    }
}
