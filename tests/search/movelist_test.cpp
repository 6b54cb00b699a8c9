#include <gtest/gtest.h>

#include <tuple>

#include "../board/testBoard.h"
#include "search/moveGenerator.h"

namespace {

movelist listOf(std::initializer_list<std::pair<int, int>> movesAndScores) {
    movelist list{};
    int i = 0;
    for (auto [move, score] : movesAndScores) {
        list.moves[i] = static_cast<uint16_t>(move);
        list.setScore(i++, score);
    }
    list.moves[i] = 0;
    return list;
}

std::string order(const movelist& list) {
    std::string text;
    for (int i = 0; list.moves[i]; i++) text += std::to_string(list.moves[i]) + " ";
    return text;
}

}  // namespace

// The best first, then the earlier leaders; moves beyond n keep their order behind the searched ones, and a
// marked move keeps its mark as key and goes last. A beta cut-off shares the best score.
TEST(Movelist, SortsAfterSearchAndAfterABetaCutoff) {
    movelist list = listOf({{1, 10}, {2, 30}, {3, 20}, {4, 40}});
    list.sortAfterSearch(4);
    EXPECT_EQ(order(list), "4 2 1 3 ");
    EXPECT_EQ(list.score(0), 40);
    list = listOf({{1, 5}, {2, notSearchedMark}, {3, 50}, {4, 0}});
    list.sortAfterSearch(3);
    EXPECT_EQ(order(list), "3 1 2 4 ");

    movelist cut = listOf({{1, 5}, {2, 60}, {3, notSearchedMark}});
    EXPECT_EQ(cut.sortAfterBetaCutoff(3), 2);
    EXPECT_EQ(cut.moves[0], 2);
    EXPECT_EQ(std::tuple(cut.score(0), cut.score(1), cut.score(2)), std::tuple(60, 60, notSearchedMark));
}

TEST(MoveGenerator, HashMoveThenCapturesThenQuietMovesWithTheHashMoveAgain) {
    board b = boardFrom("4k3/8/8/3p4/4P3/8/8/4K3 w - - 0 1");
    moveGenerator picker;
    picker.start(&b, b.convertMovestringToInt("e1d1"));
    std::string seen;
    for (int move = picker.getNextMove(); move; move = picker.getNextMove()) seen += moveText(move) + " ";
    EXPECT_EQ(seen.substr(0, 5), "e4d5 ");  // the only capture
    EXPECT_NE(seen.find("e1d1"), std::string::npos);
    EXPECT_EQ(picker.getNextMove(), 0);

    // The whole list at once: scored captures first, then falling scores.
    picker.start(&b, 0);
    picker.addNoncapmovesToList();
    EXPECT_EQ(moveText(picker.list.moves[0]), "e4d5");
    EXPECT_EQ(std::tuple(picker.list.score(0), picker.list.score(6), picker.list.score(7)), std::tuple(200, 194, 0));

    board stalemated = boardFrom("7k/5Q2/6K1/8/8/8/8/8 b - - 0 1");
    picker.start(&stalemated, 0);
    int count = 0;  // pseudo-legal king moves, none of them captures
    for (int move = picker.getNextMove(); move; move = picker.getNextMove()) count++;
    EXPECT_EQ(count, 3);
}
