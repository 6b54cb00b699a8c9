#include <gtest/gtest.h>
#include <tuple>

#include "search/movelist.h"

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
