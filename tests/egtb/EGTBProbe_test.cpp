#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "../board/testBoard.h"
#include "../support/scratchDirectory.h"
#include "egtb/EGTBProbe.h"
#include "search/localSearch.h"
#include "tablebaseTestData.h"

namespace {

const std::string bothDirs = gaviotaTables + ":" + syzygyTables;

// One for the test binary: the board's move generator keeps a pointer to its killer table.
localSearch& searchEngine(const EGTBProbe* tables) {
    static localSearch instance(8);
    instance.clearTables();
    instance.tree.tablebases = tables;
    instance.shared->enable_EGTB = 1;
    return instance;
}

int probe(const EGTBProbe& tables, const char* fen) {
    int score = 0;
    EXPECT_TRUE(tables.DoEGTBProbe(boardFrom(fen), score)) << fen;
    return score;
}

std::string rootMoves(const EGTBProbe& tables, const char* fen) {
    uint16_t moves[moveBufferSize];
    const board b = boardFrom(fen);
    b.generateLegalMoves(moves);
    tables.filterRootMoves(b, moves);
    return listText(moves);
}

}  // namespace

// Syzygy draws, and the wins and losses the fifty-move rule spoils, lean one
// centipawn away from the side to move.
TEST(TablebaseScores, SyzygyResultsBecomeTheSearchsScores) {
    const int whiteToMove[5] = {-15000, -1, -1, -1, 15000};
    for (int wdl = -2; wdl <= 2; wdl++) {
        EXPECT_EQ(syzygyScore(wdl, 1), whiteToMove[wdl + 2]) << wdl;
        EXPECT_EQ(syzygyScore(wdl, -1), std::abs(wdl) == 2 ? whiteToMove[wdl + 2] : 1) << wdl;
    }
}

// A mate in n scores 16000 - 2n, short of the search's own mate score even
// for a mate in one, and being mated in n -16000 + 2n. A search that meets
// the table a ply below the root takes the loser's figure there: 16002 - 2n
// for the winner. Mated in one is no longer a mate score, so the search goes
// on past its first iteration. A draw leans one centipawn away from the side
// to move.
TEST(TablebaseScores, GaviotaScoresStayShortOfTheSearchsMateScores) {
    const EGTBProbe tables(gaviotaTables.c_str(), 8, true);
    const struct {
        const char* fen;
        int table, search;
    } cases[] = {
        {"k7/8/K7/8/8/8/8/1Q6 w - - 0 1", 15998, 16000},  // the search sees the mate itself
        {"8/8/8/1k6/8/8/K5P1/8 w - - 0 1", 16000 - 2 * 28, 16002 - 2 * 28},
        {"4k3/7Q/4K3/8/8/8/8/8 b - - 0 1", -15998, -15998},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(probe(tables, c.fen), c.table) << c.fen;
        const localSearch::result r = searchEngine(&tables).run(boardFrom(c.fen), 6, 100000);
        EXPECT_EQ(r.score, c.search) << c.fen;
        if (c.search != mateScore) {
            EXPECT_EQ(r.depth, 7) << c.fen;
        }
    }
    EXPECT_EQ(probe(tables, "k7/1Q6/K7/8/8/8/8/8 b - - 0 1"), -16000);
    EXPECT_EQ(probe(tables, "8/8/8/8/8/1p6/K7/7k w - - 0 1"), -1);
    EXPECT_EQ(probe(tables, "8/8/8/8/8/1k6/1R6/7K b - - 0 1"), 1);
}

TEST(TablebaseProbe, PositionsNoTableHoldsAreNotAsked) {
    const EGTBProbe tables(bothDirs.c_str(), 8, true);
    ASSERT_EQ(tables.probeLimit, 4);
    const char* unasked[] = {
        "8/8/8/8/8/2k5/1R6/KQ5R w - - 0 1",  // more pieces than any table
        "8/8/8/8/8/8/P7/Kk6 b - - 0 1",      // kings side by side
        "8/8/8/8/8/8/8/KQ6 w - - 0 1",       // no black king
        "k7/8/8/8/8/8/8/KK6 w - - 0 1",      // two white kings
        "P7/8/8/8/8/k7/8/K7 w - - 0 1",      // pawn on the last rank
        "k7/8/8/8/8/8/8/RK6 w - - 0 1",      // Black in check with White to move
        "8/8/8/8/8/8/8/R3K2k w Q - 0 1",     // castling rights
    };
    testing::internal::CaptureStdout();  // moves on a kingless board complain
    for (const char* fen : unasked) {
        int score;
        EXPECT_FALSE(tables.DoEGTBProbe(boardFrom(fen), score)) << fen;
        uint16_t moves[moveBufferSize];
        boardFrom(fen).generateLegalMoves(moves);
        EXPECT_EQ(rootMoves(tables, fen), listText(moves)) << fen;
    }
    testing::internal::GetCapturedStdout();
}

TEST(TablebaseRoot, KeepsTheMovesThatHoldTheResultAndWithSyzygyAloneTheOneThatProgresses) {
    {
        // Black draws only by taking the rook; with exact distances the search
        // chooses among the moves that keep the win (the rook must not hang).
        const EGTBProbe both(bothDirs.c_str(), 8, true);
        EXPECT_EQ(rootMoves(both, "8/8/8/8/3R4/2k5/8/K7 b - - 0 1"), "c3d4");
        EXPECT_EQ(rootMoves(both, "8/8/8/8/8/2k5/1R6/K7 w - - 0 1"),
                  "a1a2 a1b1 b2b8 b2b7 b2b6 b2b5 b2a2 b2e2 b2f2 b2g2 b2h2 b2b1");
    }
    // Syzygy alone: the first of the moves nearest the next zeroing move
    // (a1a2, a1b1, b2a2, b2b1 are 31 plies from the mate, other rook moves
    // 33), the mate itself, also when the fifty-move rule spoils the win.
    const EGTBProbe syzygy(syzygyTables.c_str(), 8, true);
    EXPECT_EQ(rootMoves(syzygy, "8/8/8/8/8/2k5/1R6/K7 w - - 0 1"), "a1a2");
    EXPECT_EQ(rootMoves(syzygy, "k7/8/K7/8/8/8/8/1Q6 w - - 0 1"), "b1b7");
    EXPECT_EQ(rootMoves(syzygy, "8/8/8/8/8/2k5/1R6/K7 w - - 80 60"), "a1a2");
    // The root search plays it at once, unless probing is switched off.
    localSearch& engine = searchEngine(&syzygy);
    const localSearch::result r = engine.run(boardFrom("8/8/8/8/8/2k5/1R6/K7 w - - 0 1"), 10, 100000);
    EXPECT_EQ(moveText(r.move), "a1a2");
    EXPECT_EQ(r.nodes, 0);
    engine.shared->enable_EGTB = 0;
    EXPECT_NE(engine.run(boardFrom("8/8/8/8/8/2k5/1R6/K7 w - - 0 1"), 3, 100000).nodes, 0);
}

TEST(TablebaseStartUp, DamagedFilesAreReportedAndLeftOutWithoutACrash) {
    const scratchDirectory scratch;
    const std::string& dir = scratch.path;
    std::system(("cd " + gaviotaTables + " && cp kqk.* kpk.* " + dir + " && cd " + syzygyTables +
                 " && cp KQvK.* KPvK.* " + dir + " && chmod u+w " + dir + "/*")
                    .c_str());
    // A garbled header crashes either library on a probe.
    for (const auto& [name, at] : {std::pair{"kpk.gtb.cp4", 32}, std::pair{"KPvK.rtbz", 16}}) {
        std::fstream file(dir + "/" + name, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(at);
        file.write("\xff\xff\xff\xff\xff\xff\xff\xff", 8);
    }
    testing::internal::CaptureStdout();
    {
        const EGTBProbe tables(dir.c_str(), 8, false);
        const std::string out = testing::internal::GetCapturedStdout();
        for (const std::string& line :
             {"*** " + dir + "/kpk.gtb.cp4 corrupted\n", "*** " + dir + "/KPvK.rtbz corrupted\n",
              std::string("Egtbs initializated(3)\n")})
            EXPECT_NE(out.find(line), std::string::npos) << line << out;
        // The sound table answers; a damaged Gaviota one leaves the position
        // to Syzygy, but not to its damaged distances; nothing answers a missing one.
        EXPECT_EQ(probe(tables, "8/8/8/5k2/8/8/1Q6/K7 w - - 0 1"), 16000 - 2 * 10);
        EXPECT_EQ(probe(tables, "8/8/8/1k6/8/8/K5P1/8 w - - 0 1"), 15000);
        EXPECT_EQ(rootMoves(tables, "8/8/8/1k6/8/8/K5P1/8 w - - 0 1"), "g2g3 g2g4 a2a3 a2b3 a2b2 a2a1 a2b1");
        int score;
        EXPECT_FALSE(tables.DoEGTBProbe(boardFrom("8/8/8/8/8/2k5/1R6/K7 w - - 0 1"), score));
    }
}
