#include "bookListing.h"

#include <fstream>
#include <map>
#include <set>

#include "book/ctgBook.h"
#include "book/ctgPosition.h"
#include "book/polyglotBook.h"
#include "bookFiles.h"

namespace {

using BookListing = BookFiles;

std::string listing(bookSource& source, const std::string& fen, bool verbose = false) {
    std::string text;
    EXPECT_TRUE(listBookPosition(source, fen, verbose, text)) << fen;
    return text;
}

// Games with an avoided move, a Black-to-move position and a board that ends
// on a byte boundary (stored with an extra zero byte).
TEST_F(BookListing, LinesGiveTheEnginesWeightsInBookOrder) {
    const std::string pawns = "4k3/8/8/8/8/8/2PPP3/4K3 w - - 0 1";
    writeCtg("1. e4 e5 1-0\n1. e4 e5 0-1\n1. d4 $64 d5 1/2-1/2\n[FEN \"" + pawns + "\"] 1. d4 Kd7 1-0\n", {}, true);
    ctgBook reader(path("book.ctg").c_str());
    const struct {
        std::string fen, text;
    } cases[] = {
        {startFen, " -> e2e4:1 d2d4:0 (never)\n"},         {fenAfter("e2e4"), " -> e7e5:1\n"}, {pawns, " -> d2d4:1\n"},
        {fenAfter("d2d4", pawns.c_str()), " -> e8d7:0\n"},  // White won
        {fenAfter("g1f3"), " -> not in book\n"},
    };
    for (const auto& c : cases) EXPECT_EQ(listing(reader, c.fen), c.fen + c.text);
    EXPECT_EQ(listing(reader, startFen, true),
              std::string(startFen) +
                  " -> e2e4:1 d2d4:0 (never)\n"
                  "  position: 3 games: 1 won by the side that moved into it, 1 drawn, 1 lost\n"
                  "  e2e4: weight 1; after it 2 games: 1 won by the side that moved into it, 0 drawn, 1 lost\n"
                  "  d2d4: weight 0, annotation 64 (never played); after it 1 game: 0 won by the side that moved "
                  "into it, 1 drawn, 0 lost\n");
    std::string text;
    EXPECT_FALSE(listBookPosition(reader, "8/8/8/8/8/8/8/8 w - - 0 1", false, text));
    EXPECT_EQ(text, "8/8/8/8/8/8/8/8 w - - 0 1 -> not a position\n");
}

// The book of the test openings gives back every move of every game, in the
// order first played, with W + D / 2 counted here from the games' results.
TEST_F(BookListing, TheTestOpeningsComeBackWithTheirWeights) {
    std::ifstream file(BOOK_DATA "/openings.pgn");
    const std::string games((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    writeCtg(games, {}, true);
    struct tally {
        int games = 0, whiteWins = 0, blackWins = 0, draws = 0;
        std::vector<std::string> moves;
    };
    std::map<std::string, tally> positions;  // by the book's bytes and the side to move
    auto keyOf = [](const std::string& fen) {
        ctgPosition position;
        EXPECT_TRUE(position.setup(fen.c_str())) << fen;
        return std::string(reinterpret_cast<const char*>(position.encoding), position.length) + fen[fen.find(' ') + 1];
    };
    std::vector<std::string> fens;
    std::vector<std::string> warnings;
    readBookGames(
        games, true, boardFrom(startFen),
        [&](const bookGame& game) {
            std::set<std::string> seen;
            for (size_t i = 0; i <= game.plies.size(); i++) {
                const std::string& fen = i < game.plies.size() ? game.plies[i].fen : game.finalFen;
                tally& position = positions[keyOf(fen)];
                if (seen.insert(keyOf(fen)).second) {
                    position.games++;
                    if (game.result == whiteWins) position.whiteWins++;
                    if (game.result == blackWins) position.blackWins++;
                    if (game.result == drawn) position.draws++;
                }
                if (i == game.plies.size()) break;
                char move[6];
                bookMoveText(game.plies[i].from, game.plies[i].to, game.plies[i].promotion, move);
                if (std::find(position.moves.begin(), position.moves.end(), move) == position.moves.end())
                    position.moves.push_back(move);
                fens.push_back(fen);
            }
        },
        warnings);
    ASSERT_GT(fens.size(), 200u);
    ctgBook reader(path("book.ctg").c_str());
    for (const std::string& fen : fens) {
        std::string expected = fen + " ->";
        const bool whiteMoves = fen.find(" w ") != std::string::npos;
        for (const std::string& move : positions[keyOf(fen)].moves) {
            const tally& after = positions[keyOf(fenAfter(move.c_str(), fen.c_str()))];
            const int wins = whiteMoves ? after.whiteWins : after.blackWins;
            expected.append(" ").append(move).append(":").append(
                std::to_string(after.games ? wins + after.draws / 2 : 1));
        }
        EXPECT_EQ(listing(reader, fen), expected + "\n");
    }
}

// Debian's Polyglot book, its entries read here straight from the file.
TEST(BookListingPolyglot, StoredWeightsInFileOrder) {
    const char* bookPath = "/usr/share/games/gnuchess/book.bin";
    std::ifstream file(bookPath, std::ios::binary);
    if (!file) GTEST_SKIP() << "no " << bookPath << " (gnuchess-book)";
    const std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    polyglotBook reader(bookPath);
    for (const std::string& fen : {std::string(startFen), fenAfter("e2e4"), fenAfter("d2d4 g8f6")}) {
        bookBoard position;
        ASSERT_TRUE(position.setup(fen.c_str()));
        const uint64_t key = polyglotBook::key(position);
        std::string expected = fen + " ->";
        for (size_t at = 0; at + 16 <= bytes.size(); at += 16) {
            auto field = [&](int offset, int count) {
                uint64_t value = 0;
                for (int i = 0; i < count; i++) value = value << 8 | static_cast<uint8_t>(bytes[at + offset + i]);
                return value;
            };
            if (field(0, 8) != key) continue;
            const int move = static_cast<int>(field(8, 2)), weight = static_cast<int>(field(10, 2));
            char text[6];
            bookMoveText(move >> 6 & 63, move & 63, 0, text);
            expected.append(" ")
                .append(text)
                .append(":")
                .append(std::to_string(weight))
                .append(weight ? "" : " (never)");
        }
        ASSERT_NE(expected, fen + " ->");
        EXPECT_EQ(listing(reader, fen), expected + "\n");
    }
}

}  // namespace
