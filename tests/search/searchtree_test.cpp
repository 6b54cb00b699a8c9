#include <gtest/gtest.h>

#include "../board/testBoard.h"
#include "game/timer.h"
#include "search/localSearch.h"

namespace {

class Search : public ::testing::Test {
protected:
    static localSearch& engine() {
        static localSearch instance(8);
        return instance;
    }
    void SetUp() override {
        sharedData& s = *engine().shared;
        s.postFlag = 1;
        s.outputMode = 1;
        s.enable_NMP = s.enable_LMP = s.enable_FUTPRUN = s.enable_EXTENTIONS = 1;
        s.allSearchprocesEnabled = 1;
        engine().clearTables();
    }
    // Runs a search and returns what it printed.
    std::string search(const char* fen, int depthLimit, int timeMs, localSearch::result& r) {
        board b = boardFrom(fen);
        testing::internal::CaptureStdout();
        r = engine().run(b, depthLimit, timeMs);
        return testing::internal::GetCapturedStdout();
    }
    int alphaBeta(board& b, int depth, int alpha, int beta) {
        sharedData& s = *engine().shared;
        s.timer1.allottedMs = 100000;
        s.timer1.startTimer();
        return engine().tree.alphaBeta(0, b, depth, alpha, beta, 0);
    }
};

}  // namespace

// A mate in one scores as mate; a mate by the first root move ends the search at once.
TEST_F(Search, MatesScoreAsMateAndAMateByTheFirstRootMoveBreaksTheSearch) {
    const struct {
        const char* fen;
        const char* move;
        const char* printed;
    } mates[] = {
        {"3k4/8/3K4/8/8/8/8/6R1 w - - 0 1", "g1g8", ""},
        // the only capture is the mate, so it leads the root list
        {"r5k1/5ppp/8/8/8/8/8/R5K1 w - - 0 1", "a1a8", " winning move, break!\n depth=2\n moves searched=1"},
    };
    for (const auto& c : mates) {
        localSearch::result r;
        const std::string out = search(c.fen, 10, 100000, r);
        EXPECT_EQ(r.score, 16000) << c.fen;
        EXPECT_EQ(moveText(r.move), c.move);
        EXPECT_NE(out.find(c.printed), std::string::npos) << out;
    }
}

TEST_F(Search, RootWithoutMovesOrWithOneMoveAnswersAtOnceAndTheSharedRootListFollowsTheSort) {
    localSearch::result r;
    search("7k/5Q2/6K1/8/8/8/8/8 b - - 0 1", 10, 100000, r);
    EXPECT_EQ(r.move, stalemateSentinel);
    search("7k/6Q1/6K1/8/8/8/8/8 b - - 0 1", 10, 100000, r);
    EXPECT_EQ(r.move, checkmateSentinel);
    // Only a5-a4 is legal: no iteration, no thinking line, no statistics.
    const std::string out = search("k7/2R5/8/p7/8/8/8/1R5K b - - 0 1", 10, 100000, r);
    EXPECT_EQ(moveText(r.move), "a5a4");
    EXPECT_EQ(out, "");
    EXPECT_EQ(r.nodes, 0);

    // "stat01" reads the move being searched from the shared list, which follows each iteration's sort.
    const char* fen = "r1bq1rk1/pp2bppp/2n1pn2/3p4/2PP4/2N1PN2/PP3PPP/R2QKB1R w KQ - 0 9";
    uint16_t generated[moveBufferSize];
    boardFrom(fen).generateLegalMoves(generated);
    search(fen, 4, 100000, r);
    const std::string sorted = listText(engine().tree.rootList.moves);
    EXPECT_NE(sorted, listText(generated));
    EXPECT_EQ(listText(engine().shared->rootMoves), sorted);
}

TEST_F(Search, RepetitionAndStalemateScoreAsTheDrawScoreOfTheSideToMove) {
    board b = boardFrom("4k3/8/8/8/8/8/8/R3K3 w - - 0 1");
    for (const char* move : {"a1a2", "e8d8", "a2a1", "d8e8"}) play(b, move);  // the start again, white to move
    EXPECT_EQ(alphaBeta(b, 3, -16000, 16000), -50);
    for (const char* move : {"a1a2", "e8d8", "a2a1"}) play(b, move);  // black to move, repeated
    EXPECT_EQ(alphaBeta(b, 3, -16000, 16000), 50);

    board stalemate = boardFrom("7k/5Q2/6K1/8/8/8/8/8 b - - 0 1");
    EXPECT_EQ(alphaBeta(stalemate, 3, -16000, 16000), 50);
}

TEST_F(Search, NoTimeStopsAtOnceAndTheAbortValueClimbsUnchanged) {
    board b = boardFrom("r1bqkbnr/pppp1ppp/2n5/4p3/4P3/5N2/PPPP1PPP/RNBQKB1R w KQkq - 2 3");
    sharedData& s = *engine().shared;
    s.timer1.allottedMs = -1;
    s.timer1.startTimer();
    EXPECT_EQ(engine().tree.alphaBeta(0, b, 6, -16000, 16000, 0), -16300);
    s.timer1.allottedMs = 100000;
    s.allSearchprocesEnabled = 0;
    EXPECT_EQ(engine().tree.alphaBeta(0, b, 6, -16000, 16000, 0), -16300);
    s.allSearchprocesEnabled = 1;

    // Time runs out in the middle: every level hands the same value up.
    s.timer1.allottedMs = 20;
    s.timer1.startTimer();
    EXPECT_EQ(engine().tree.alphaBeta(0, b, 40, -16000, 16000, 0), -16300);

    // A root search with no time still plays a legal move after depth 1.
    localSearch::result r;
    const std::string out = search("r1bqkbnr/pppp1ppp/2n5/4p3/4P3/5N2/PPPP1PPP/RNBQKB1R w KQkq - 2 3", 60, -1, r);
    EXPECT_NE(r.move, 0);
    EXPECT_NE(out.find(" only first move examined\n"), std::string::npos) << out;
}

TEST_F(Search, AnAbandonedNullMoveSearchIsComparedWithBeta) {
    // A node limit stops the search two nodes in: the node after the null
    // move. Black has pawns only, so the abort climbs from there unchanged;
    // at the top it reads as a score of 16300, at least beta: the node
    // returns beta.
    sharedData& s = *engine().shared;
    searchtree& tree = engine().tree;
    s.nodeLimit = tree.nodes[0] + tree.nodes[1] + s.nodeTotals[0] + s.nodeTotals[1] + 2;
    board b = boardFrom("4k3/4p3/8/8/8/8/4P3/R3K3 w - - 0 1");
    EXPECT_EQ(alphaBeta(b, 6, -100, 100), 100);
    s.nodeLimit = 0;
}

TEST_F(Search, ThinkingLinesGiveTimeInHundredthsAndNodesPerHundredth) {
    board b = boardFrom("4k3/8/8/8/8/8/4P3/4K3 w - - 0 1");
    sharedData& s = *engine().shared;
    searchtree& tree = engine().tree;
    const int move = b.convertMovestringToInt("e2e4");
    for (int mode : {2, 1}) {
        s.outputMode = mode;
        s.nodeTotals[0] = s.nodeTotals[1] = 0;
        tree.nodes[0] = 30000;
        tree.nodes[1] = 20000;
        s.timer1.startMs = get_ms() - 25;  // 25..29 ms still gives 2 hundredths
        testing::internal::CaptureStdout();
        tree.printThinkingLine(b, 3, 41, move);
        const std::string line = testing::internal::GetCapturedStdout();
        if (mode == 2) EXPECT_EQ(line, "info depth 3 score cp 41 time 2 nodes 50000 nps 25000 pv e2e4 \n");
        else EXPECT_EQ(line, " 3  41  2  50000 e2e4 \n");
    }
    // Black to move with the inverted score shows White's view.
    board black = boardFrom("4k3/4p3/8/8/8/8/8/4K3 b - - 0 1");
    tree.printInvertedScore = true;
    testing::internal::CaptureStdout();
    tree.printThinkingLine(black, 1, 41, black.convertMovestringToInt("e7e5"));
    EXPECT_EQ(testing::internal::GetCapturedStdout().substr(0, 5), " 1  -");
    tree.printInvertedScore = false;
}
