#include <gtest/gtest.h>

#include <set>
#include <string>

#include "../board/testBoard.h"
#include "book/ctgPosition.h"

namespace {

std::string hex(const uint8_t* bytes, int count) {
    std::string text;
    char part[4];
    for (int i = 0; i < count; i++) {
        snprintf(part, sizeof part, i ? " %02x" : "%02x", bytes[i]);
        text += part;
    }
    return text;
}

TEST(CtgPosition, EncodingsAndHashesOfKnownPositions) {
    const struct {
        const char* fen;
        const char* encoding;
        uint32_t hash;
    } cases[] = {
        {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1",
         "56 b6 0f 79 60 f3 a6 0f 58 b0 78 e0 c1 e1 a6 0f 59 60 f3 b6 0f 7f", 0xeb7ed3d7},
        // Black to move: flipped; the en passant file is dropped, no pawn can take
        {"rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1",
         "56 b6 0f 79 60 f3 a6 0f 58 b0 78 e0 c7 21 a6 0f 59 60 f3 b6 0f 7f", 0x8c978593},
        // only Black (to move) may castle: after the flip that is White's two rights
        {"r1bqk1nr/pppp1ppp/2n5/2b1p3/2B1P3/5N2/PPPP1PPP/RNBQ1RK1 b kq - 5 4",
         "56 b6 0f 76 0f 3a 69 52 af 58 b0 78 e0 37 0c 27 ef 2c 1e 1b 60 e3", 0xc9779497},
        {"rnbqkbnr/ppp1p1pp/8/3pPp2/8/8/PPPP1PPP/RNBQKBNR w KQkq f6 0 3",
         "77 b6 0f 79 60 f3 a6 0f 58 b1 c8 e0 19 e1 a6 39 59 60 f3 b6 0f 70 5f", 0xbb3ebdd9},
        {"rnbqkbnr/pppp1ppp/8/8/3Pp3/8/PPP1PPPP/RNBQKBNR b KQkq d3 0 3",
         "77 b6 0f 79 60 f3 a6 0f 58 b1 c8 e0 19 e1 a6 0f 59 60 f3 b6 0f 70 3f", 0x5e71e100},
        {"8/8/8/4k3/8/8/8/2K5 w - - 0 1", "0b 00 00 00 08 40 04 00 00 00 00", 0xd69fa725},
        {"8/8/8/4k3/8/8/8/2K5 b - - 0 1", "0b 00 00 01 08 00 80 00 00 00 00", 0xe145ed59},
    };
    for (const auto& c : cases) {
        ctgPosition position;
        ASSERT_TRUE(position.setup(c.fen)) << c.fen;
        EXPECT_EQ(hex(position.encoding, position.length), c.encoding) << c.fen;
        EXPECT_EQ(position.hash(), c.hash) << c.fen;
    }
    ctgPosition crowded;  // more pieces than an encoding holds
    EXPECT_FALSE(crowded.setup("QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/qqqqqqqq/qqqqqqqq/k6K w - - 0 1"));
}

// The book's own legality test agrees with the engine's move generator, and
// the legal moves go through their bytes and back, in positions of both
// colours, mirrored and not, with checks, pins, castling through attacked
// squares, en passant and promotions; only what the format cannot hold is lost.
TEST(CtgPosition, LegalMovesAreTheEnginesAndComeBackFromTheirBytes) {
    const char* fens[] = {
        "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1",
        "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
        "rnbq1k1r/pp1Pbppp/2p5/8/2B5/8/PPP1NnPP/RNBQK2R w KQ - 1 8",
        "2k5/1P6/8/3pP3/8/8/8/1K6 w - d6 0 1",
        "1k6/8/8/8/3Pp3/8/1p6/2K5 b - d3 0 1",
        "2Q5/1Q6/8/7k/8/8/8/Q3K3 w - - 0 1",
        "r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1",
        "8/8/8/K2pP2r/8/8/8/7k w - d6 0 1",        // en passant would expose the king
        "4k3/8/8/2KpP3/8/8/8/8 w - d6 0 1",        // en passant out of check
        "r3k2r/8/8/8/8/8/5r2/R3K2R w KQkq - 0 1",  // f2 rook: no castling through check
        "1r2k2r/8/8/8/8/8/8/R3K2R b KQk - 0 1",
    };
    std::string unplaced;
    for (const char* fen : fens) {
        const board b = boardFrom(fen);
        uint16_t legal[moveBufferSize];
        b.generateLegalMoves(legal);
        std::set<std::string> expected, found;
        bookBoard rules;
        ASSERT_TRUE(rules.setup(fen)) << fen;
        for (int from = 0; from < 64; from++)
            for (int to = 0; to < 64; to++) {
                char text[6];
                bookMoveText(from, to, 0, text);
                if (rules.isLegal(from, to)) found.insert(text);
            }
        ctgPosition position;
        ASSERT_TRUE(position.setup(fen)) << fen;
        for (int i = 0; legal[i]; i++) {
            const std::string text = moveText(legal[i]);
            expected.insert(text.substr(0, 4));
            const int from = squareOf(7 - moveFrom(legal[i]) % 8, moveFrom(legal[i]) / 8);
            const int to = squareOf(7 - moveTo(legal[i]) % 8, moveTo(legal[i]) / 8);
            const char promotion = text.size() > 4 ? text[4] : 0;
            const int code = position.encodeMove(from, to, promotion);
            const bool underPromotion = promotion && promotion != 'Q';
            const bool thirdQueen = fen == fens[5] && from == squareOf(2, 7);
            if (underPromotion || thirdQueen) {
                EXPECT_EQ(code, -1) << fen << " " << text;
                continue;
            }
            if (code < 0) {
                unplaced += text + " ";
                continue;
            }
            int decodedFrom, decodedTo;
            char decodedPromotion;
            ASSERT_TRUE(position.decodeMove(static_cast<uint8_t>(code), decodedFrom, decodedTo, decodedPromotion))
                << fen << " " << text;
            char decoded[6];
            bookMoveText(decodedFrom, decodedTo, decodedPromotion, decoded);
            std::string expectedText = text;
            if (promotion) expectedText[4] = 'q';
            EXPECT_EQ(decoded, expectedText) << fen << " byte " << code;
        }
        EXPECT_EQ(found, expected) << fen;
    }
    // N2 +2 -1, R2 0 +2, Q2 -1 0 and Q2 -3 +3 have no byte yet
    EXPECT_EQ(unplaced, "e5g4 e2g1 b7a7 b7g2 h1h3 h8h6 ");
}

// Positions without kings or with a pawn on the last rank, and ranks too long.
TEST(BookBoard, PositionsNoBookHoldsAreRefused) {
    for (const char* fen : {"8/8/8/8/8/8/8/8 w - - 0 1", "4k3/8/8/8/8/8/8/4K2KK w - - 0 1",
                            "P3k3/8/8/8/8/8/8/4K3 w - - 0 1", "4k3/8/8/9/8/8/8/4K3 w - - 0 1"}) {
        bookBoard position;
        EXPECT_FALSE(position.setup(fen)) << fen;
    }
}

// A doubtful byte is read as the first of its meanings that is legal.
TEST(CtgPosition, DoubtfulBytesTakeTheirFirstLegalReading) {
    ctgPosition position;
    ASSERT_TRUE(position.setup("r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1"));
    const struct {
        uint8_t code;
        const char* move;
    } cases[] = {
        {0x03, "e5g4"},                  // no second queen: the knight's unplaced step
        {0xf1, "e5g4"}, {0xf2, "e1c1"},  // the second bishop's step is blocked: castling long
        {0xf6, "e1c1"}, {0x6b, "e1g1"},
    };
    for (const auto& c : cases) {
        int from, to;
        char promotion;
        ASSERT_TRUE(position.decodeMove(c.code, from, to, promotion)) << int(c.code);
        char text[6];
        bookMoveText(from, to, promotion, text);
        EXPECT_STREQ(text, c.move) << int(c.code);
    }
    int from, to;
    char promotion;
    EXPECT_FALSE(position.decodeMove(0x02, from, to, promotion));  // unused byte
    EXPECT_FALSE(position.decodeMove(0x14, from, to, promotion));  // P8 +1 +1 onto its own piece
}

}  // namespace
