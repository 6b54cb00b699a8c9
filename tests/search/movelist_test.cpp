#include <gtest/gtest.h>

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

}  // namespace

TEST(Movelist, SortAfterSearchPutsBestFirstThenEarlierLeaders) {
    movelist list = listOf({{1, 10}, {2, 30}, {3, 20}, {4, 40}});
    list.sortAfterSearch(4);
    EXPECT_EQ(list.moves[0], 4);
    EXPECT_EQ(list.moves[1], 2);
    EXPECT_EQ(list.moves[2], 1);
    EXPECT_EQ(list.moves[3], 3);
    EXPECT_EQ(list.score(0), 40);
}

TEST(Movelist, UnsearchedAndAbandonedMovesSinkAndBetaCutoffSharesTheBestScore) {
    // Moves beyond n keep their order behind the searched ones; a marked move
    // keeps its mark as key and goes last.
    movelist list = listOf({{1, 5}, {2, notSearchedMark}, {3, 50}, {4, 0}});
    list.sortAfterSearch(3);
    EXPECT_EQ(list.moves[0], 3);
    EXPECT_EQ(list.moves[1], 1);
    EXPECT_EQ(list.moves[2], 2);
    EXPECT_EQ(list.moves[3], 4);

    movelist cut = listOf({{1, 5}, {2, 60}, {3, notSearchedMark}});
    EXPECT_EQ(cut.sortAfterBetaCutoff(3), 2);
    EXPECT_EQ(cut.moves[0], 2);
    EXPECT_EQ(cut.score(0), 60);
    EXPECT_EQ(cut.score(1), 60);
    EXPECT_EQ(cut.score(2), notSearchedMark);
}

TEST(MoveGenerator, HashMoveThenCapturesThenQuietMoves) {
    board b = boardFrom("4k3/8/8/3p4/4P3/8/8/4K3 w - - 0 1");
    moveGenerator picker;
    const int hashMove = b.convertMovestringToInt("e1d1");
    picker.start(&b, hashMove);
    std::vector<std::string> seen;
    seen.push_back(moveText(hashMove));
    for (int move = picker.getNextMove(); move; move = picker.getNextMove()) seen.push_back(moveText(move));
    ASSERT_GE(seen.size(), 3u);
    EXPECT_EQ(seen[0], "e1d1");
    EXPECT_EQ(seen[1], "e4d5");  // the only capture
    // The hash move comes again among the quiet moves.
    EXPECT_EQ(std::count(seen.begin(), seen.end(), "e1d1"), 2);
    EXPECT_EQ(picker.getNextMove(), 0);
}

TEST(MoveGenerator, NoCapturesGoesStraightToQuietMovesAndNoMovesGivesZero) {
    board quiet = boardFrom("4k3/8/8/8/8/8/8/4K3 w - - 0 1");
    moveGenerator picker;
    picker.start(&quiet, 0);
    EXPECT_NE(picker.getNextMove(), 0);
    EXPECT_EQ(picker.stage, 3);

    board stalemated = boardFrom("7k/5Q2/6K1/8/8/8/8/8 b - - 0 1");
    picker.start(&stalemated, 0);
    // Pseudo-legal king moves exist; none of them are captures.
    int count = 0;
    for (int move = picker.getNextMove(); move; move = picker.getNextMove()) count++;
    EXPECT_EQ(count, 3);
}

TEST(MoveGenerator, WholeListScoresCapturesFirst) {
    board b = boardFrom("4k3/8/8/3p4/4P3/8/8/4K3 w - - 0 1");
    moveGenerator picker;
    picker.start(&b, 0);
    picker.addNoncapmovesToList();
    EXPECT_EQ(moveText(picker.list.moves[0]), "e4d5");
    int n = 0;
    while (picker.list.moves[n]) n++;
    EXPECT_EQ(n, 1 + 1 + 5);  // capture, push, five king moves
    EXPECT_EQ(picker.list.score(0), 200);
    EXPECT_EQ(picker.list.score(n - 1), 200 - (n - 1));
    EXPECT_EQ(picker.list.score(n), 0);
}
