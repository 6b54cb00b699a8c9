#include "book/book.h"

#include <cstring>

#include <map>
#include <vector>

#include "bookFiles.h"

namespace {

// A book of one position whose moves lead to positions with given counts.
class fakeBook : public bookSource {
public:
    struct move {
        const char* text;
        int annotation;
        int wins, draws, losses;
        bool childInBook = true;
    };
    std::vector<move> bookMoves;
    bool readable = true;

    explicit fakeBook(std::vector<move> moves) : bookMoves(std::move(moves)) {}
    bool open() override { return true; }
    bool contains(const char* fen) override { return fen == fenOf(boardFrom(startFen)); }
    bool moves(const char*, entry* out, int capacity, int& count) override {
        count = 0;
        for (const move& m : bookMoves) {
            if (count == capacity) break;
            snprintf(out[count].move, sizeof out[count].move, "%s", m.text);
            out[count++].annotation = m.annotation;
        }
        return readable;
    }
    bool results(const char* fen, int& wins, int& draws, int& losses) override {
        for (const move& m : bookMoves) {
            if (!m.childInBook || fenAfter(m.text) != fen) continue;
            wins = m.wins, draws = m.draws, losses = m.losses;
            return true;
        }
        return false;
    }
};

// How often each move is chosen for the random numbers 0 .. draws - 1;
// "-" counts the probes without a book move.
std::map<std::string, int> choices(std::vector<fakeBook::move> moves, int bestMoveOnly, int draws) {
    book openingBook;
    openingBook.bookBestMoveOnly = bestMoveOnly;
    openingBook.source = std::make_unique<fakeBook>(std::move(moves));
    const board start = boardFrom(startFen);
    std::map<std::string, int> counts;
    for (int random = 0; random < draws; random++) {
        char move[16] = "";
        counts[openingBook.chooseMove(start, move, static_cast<uint32_t>(random)) ? move : "-"]++;
    }
    return counts;
}

using counts = std::map<std::string, int>;

// Weights W + D / 2: 10, 10 (8 + 5 / 2) and 4. BookBestMoveOnly takes the
// best with equal chance; otherwise r = random % (total + 1) walks down the
// candidates: over a whole cycle of random numbers each move is taken weight
// times, the first once more.
TEST(BookChoice, BestMovesWithEqualChanceOrAllInProportionToTheirWeights) {
    const std::vector<fakeBook::move> moves = {{"e2e4", 0, 10, 0, 3}, {"d2d4", 0, 8, 5, 0}, {"g1f3", 0, 4, 0, 9}};
    EXPECT_EQ(choices(moves, 1, 1000), (counts{{"e2e4", 500}, {"d2d4", 500}}));
    EXPECT_EQ(choices(moves, 0, 25 * 1000), (counts{{"e2e4", 11000}, {"d2d4", 10000}, {"g1f3", 4000}}));
}

TEST(BookChoice, WeightsThresholdAndMarkedMoves) {
    // Weights 4 (3 + 3 / 2), 1 (position not in the book), 1 (no games
    // there) and 0 (lost only); the marked move would weigh most.
    const std::vector<fakeBook::move> weights = {{"e2e4", 0, 3, 3, 0},
                                                 {"d2d4", 0, 50, 0, 0, false},
                                                 {"g1f3", 0, 0, 0, 0},
                                                 {"c2c4", 0, 0, 1, 5},
                                                 {"b1c3", 64, 99, 0, 0}};
    EXPECT_EQ(choices(weights, 0, 7), (counts{{"e2e4", 5}, {"d2d4", 1}, {"g1f3", 1}}));
    EXPECT_EQ(choices(weights, 1, 7), (counts{{"e2e4", 7}}));
    // Only moves of at least a twentieth of the best weight take part.
    const std::vector<fakeBook::move> threshold = {
        {"e2e4", 0, 100, 0, 0}, {"d2d4", 0, 5, 0, 0}, {"g1f3", 0, 4, 0, 0}, {"c2c4", 127, 900, 0, 0}};
    EXPECT_EQ(choices(threshold, 0, 106), (counts{{"e2e4", 101}, {"d2d4", 5}}));
}

TEST(BookChoice, NothingToChooseOrNothingToRead) {
    const std::vector<fakeBook::move> marked = {{"e2e4", 64, 5, 0, 0}, {"d2d4", 127, 5, 0, 0}};
    EXPECT_EQ(choices(marked, 1, 3), (counts{{"-", 3}}));
    testing::internal::CaptureStdout();
    EXPECT_EQ(choices(marked, 0, 3), (counts{{"-", 3}}));
    std::string expected;
    for (int i = 0; i < 3; i++) expected += "ERROR: no move returned from openingbook while present\n";
    EXPECT_EQ(testing::internal::GetCapturedStdout(), expected);

    book openingBook;
    auto unreadable = std::make_unique<fakeBook>(std::vector<fakeBook::move>{{"e2e4", 0, 1, 0, 0}});
    unreadable->readable = false;
    openingBook.source = std::move(unreadable);
    char move[16] = "";
    EXPECT_TRUE(openingBook.chooseMove(boardFrom(startFen), move, 0));
    EXPECT_STREQ(move, "noMove");
    strcpy(move, "x");
    EXPECT_FALSE(openingBook.chooseMove(boardFrom(fenAfter("e2e4").c_str()), move, 0));
    EXPECT_STREQ(move, "x");
}

}  // namespace
