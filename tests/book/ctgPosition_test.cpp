#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

#include "../board/testBoard.h"
#include "book/ctgPosition.h"
#include "bookFiles.h"

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
        // no optional field and the board ends on a byte boundary: a whole zero byte follows
        {"4k3/8/8/8/8/8/2PPP3/4K3 w - - 0 1", "0c 00 00 60 18 08 30 21 00 00 00 00", 0x9cd084da},
        {"4k3/p7/8/8/8/8/PP6/4K3 w - - 0 1", "0c 60 e6 00 00 02 00 21 00 00 00 00", 0x91a22912},
    };
    for (const auto& c : cases) {
        ctgPosition position;
        ASSERT_TRUE(position.setup(c.fen)) << c.fen;
        EXPECT_EQ(hex(position.encoding, position.length), c.encoding) << c.fen;
        EXPECT_EQ(position.hash(), c.hash) << c.fen;
    }
    const uint8_t counting[16] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    EXPECT_EQ(ctgPosition::hash(counting, 1), 0x3d08f9e4u);
    EXPECT_EQ(ctgPosition::hash(counting, 16), 0xb21a0d76u);
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
    // the second queen's step two files left has no byte
    EXPECT_EQ(unplaced, "b7h7 ");
}

// Positions without kings or with a pawn on the last rank, and ranks too long.
TEST(BookBoard, PositionsNoBookHoldsAreRefused) {
    for (const char* fen : {"8/8/8/8/8/8/8/8 w - - 0 1", "4k3/8/8/8/8/8/8/4K2KK w - - 0 1",
                            "P3k3/8/8/8/8/8/8/4K3 w - - 0 1", "4k3/8/8/9/8/8/8/4K3 w - - 0 1"}) {
        bookBoard position;
        EXPECT_FALSE(position.setup(fen)) << fen;
    }
}

// Normalising: the colour flip, the mirror only without castling rights,
// stale rights and uncapturable en passant files dropped, so that positions
// the book cannot tell apart share their bytes.
TEST(CtgPosition, PositionsAreNormalisedBeforeEncoding) {
    const struct {
        const char* fen;
        const char* sameAs;
        bool flipped, mirrored;
    } cases[] = {
        {"4k3/2ppp3/8/8/8/8/8/4K3 b - - 0 1", "4k3/8/8/8/8/8/2PPP3/4K3 w - - 0 1", true, false},
        {"r3k3/8/8/8/8/8/8/2K5 w q - 0 1", nullptr, false, false},  // Black's right: no mirror
        {"4k3/8/8/8/8/8/8/2K1R3 w K - 0 1", "4k3/8/8/8/8/8/8/2K1R3 w - - 0 1", false, true},
        {"4k3/8/8/8/8/8/8/R3K2R w Kkq - 0 1", "4k3/8/8/8/8/8/8/R3K2R w K - 0 1", false, false},
        {"4k3/8/8/8/3pP3/8/8/4K3 b - e3 0 1", "4k3/8/8/3Pp3/8/8/8/4K3 w - e6 0 1", true, false},
        {"4k3/8/8/8/4P3/8/8/K7 b - e3 0 1", "k7/8/8/4p3/8/8/8/4K3 w - - 0 1", true, false},
        {"4k3/8/8/2pP4/8/8/8/K7 w - c6 0 1", "7k/8/8/8/4pP2/8/8/3K4 b - f3 0 1", false, true},
    };
    for (const auto& c : cases) {
        ctgPosition position, same;
        ASSERT_TRUE(position.setup(c.fen)) << c.fen;
        EXPECT_EQ(position.flipped, c.flipped) << c.fen;
        EXPECT_EQ(position.mirrored, c.mirrored) << c.fen;
        if (c.sameAs == nullptr) continue;
        ASSERT_TRUE(same.setup(c.sameAs)) << c.sameAs;
        EXPECT_EQ(hex(position.encoding, position.length), hex(same.encoding, same.length)) << c.fen;
    }
}

// Every piece has every step its moves need, modulo 8, each once: four for a
// pawn, the knight's eight, 13 diagonal, 14 straight, and for the king its
// eight and both castlings. The second queen's one gap and one doubled step
// are the format's own.
TEST(CtgPosition, MoveBytesCoverEveryStepOfEveryPiece) {
    std::set<std::pair<int, int>> pawn = {{0, 1}, {0, 2}, {1, 1}, {7, 1}}, knight, diagonal, straight, king;
    for (int a = 1; a < 8; a++) {
        diagonal.insert({{a, a}, {a, 8 - a}});
        straight.insert({{a, 0}, {0, a}});
    }
    for (int dx = -2; dx <= 2; dx++)
        for (int dy = -2; dy <= 2; dy++) {
            if (dx * dx + dy * dy == 5) knight.insert({dx & 7, dy & 7});
            if (dx * dx <= 1 && dy * dy <= 1 && (dx || dy)) king.insert({dx & 7, dy & 7});
        }
    king.insert({{2, 0}, {6, 0}});
    std::set<std::pair<int, int>> queen = diagonal;
    queen.insert(straight.begin(), straight.end());
    std::map<std::pair<char, int>, std::multiset<std::pair<int, int>>> found, expected;
    const std::pair<char, std::set<std::pair<int, int>>*> kinds[] = {
        {'P', &pawn}, {'N', &knight}, {'B', &diagonal}, {'R', &straight}, {'Q', &queen}};
    for (const auto& [piece, steps] : kinds)
        for (int ordinal = 1; ordinal <= (piece == 'P' ? 8 : 2); ordinal++)
            expected[{piece, ordinal}].insert(steps->begin(), steps->end());
    expected[{'Q', 2}].erase({6, 0});
    expected[{'Q', 2}].insert({0, 6});
    expected[{'K', 1}].insert(king.begin(), king.end());
    for (int code = 0; code < 256; code++) {
        const ctgPosition::moveMeaning& step = ctgPosition::meaning(static_cast<uint8_t>(code));
        if (step.piece != ctgPosition::unusedByte) found[{step.piece, step.ordinal}].insert({step.dx & 7, step.dy & 7});
    }
    EXPECT_EQ(found, expected);
}

// Bytes read in positions of both colours, mirrored and not; a byte that
// names nothing or an illegal move gives no move.
TEST(CtgPosition, MoveBytesBecomeMovesOfTheRealPosition) {
    const struct {
        const char* fen;
        uint8_t code;
        const char* move;
    } cases[] = {
        {startFen, 0xe6, "d2d4"},
        {startFen, 0x02, ""},  // unused
        {startFen, 0x14, ""},  // P8 +1 +1 wraps from h2 to a3
        {"r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1", 0xf6, "e1c1"},
        {"r3k2r/8/8/8/8/8/8/R3K2R b KQkq - 0 1", 0xf6, "e8c8"},
        {"r3k2r/8/8/8/8/8/8/R3K2R b KQkq - 0 1", 0x6b, "e8g8"},
        {"8/8/8/4k3/8/8/8/2K5 w - - 0 1", 0x97, "c1d1"},
        {"8/8/8/4k3/8/8/8/2K5 b - - 0 1", 0x13, "e5e4"},
        {"k7/8/8/8/8/8/8/Q2QK3 w - - 0 1", 0x1a, "d1d7"},  // Q2 0 -2 wraps up the board
        {"k7/8/8/8/8/8/8/Q2QK3 w - - 0 1", 0xf9, "d1d7"},
        {"4k3/6P1/8/8/8/8/8/4K3 w - - 0 1", 0xec, "g7g8q"},
    };
    for (const auto& c : cases) {
        ctgPosition position;
        ASSERT_TRUE(position.setup(c.fen)) << c.fen;
        int from, to;
        char promotion;
        char text[6] = "";
        if (position.decodeMove(c.code, from, to, promotion)) bookMoveText(from, to, promotion, text);
        EXPECT_STREQ(text, c.move) << c.fen << " byte " << int(c.code);
    }
}

}  // namespace
