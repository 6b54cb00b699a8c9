#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include "../board/testBoard.h"
#include "egtb/EGTBProbe.h"
#include "search/localSearch.h"
#include "tablebaseTestData.h"

namespace {

const std::string gaviotaDir = testTables("gaviota");
const std::string syzygyDir = testTables("syzygy");

// One for the test binary: the board's move generator keeps a pointer to its killer table.
localSearch& searchEngine() {
    static localSearch instance(8);
    instance.clearTables();
    instance.tree.tablebases = nullptr;
    instance.shared->enable_EGTB = 1;
    return instance;
}

int probe(const EGTBProbe& tables, const char* fen) {
    int score = 0;
    EXPECT_TRUE(tables.DoEGTBProbe(boardFrom(fen), score)) << fen;
    return score;
}

// A scratch directory (path, possibly below a fresh root), removed with everything in it.
struct scratchDirectory {
    std::string root, path;
    explicit scratchDirectory(const char* below = "") {
        char pattern[] = "/tmp/talvin-egtb-XXXXXX";
        root = mkdtemp(pattern);
        path = root + below;
        std::system(("mkdir -p '" + path + "'").c_str());
    }
    ~scratchDirectory() { std::system(("rm -rf '" + root + "'").c_str()); }
    void copy(const std::string& from, const char* name) const {
        std::system(("cp '" + from + "/" + name + "' '" + path + "/' && chmod u+w '" + path + "/" + name + "'").c_str());
    }
};

}  // namespace

TEST(TablebaseScores, ConvertAroundTheSearchsOwnMateScores) {
    const struct {
        int t, toMove, score;
    } cases[] = {
        {32767, 1, 16000},    // mate in 1: the search's own score for it
        {32766, -1, 15998},   // mate in 2
        {32768 - 16, 1, 15970},
        {-32766, 1, -16000},  // mated now
        {-32765, -1, -15998}, // mated in 1
        {0, 1, -1},           // draws lean one centipawn away from the side to move
        {0, -1, 1},
    };
    for (const auto& c : cases) EXPECT_EQ(tablebaseScore(c.t, c.toMove), c.score) << c.t;

    // Over every distance the tables can give, only a mate in one and a mated
    // position reach the search's exact mate scores, which it acts on, and
    // nothing reaches the abort or hash-miss values beyond them.
    for (int moves = 0; moves <= 255; moves++) {
        if (moves > 0) {
            EXPECT_EQ(tablebaseScore(32768 - moves, 1), 16002 - 2 * moves) << moves;
        }
        EXPECT_EQ(tablebaseScore(-32766 + moves, -1), -16000 + 2 * moves) << moves;
    }
    const int syzygy[5][2] = {{-15000, -15000}, {-1, 1}, {-1, 1}, {-1, 1}, {15000, 15000}};
    for (int wdl = -2; wdl <= 2; wdl++) {
        EXPECT_EQ(syzygyScore(wdl, 1), syzygy[wdl + 2][0]) << wdl;
        EXPECT_EQ(syzygyScore(wdl, -1), syzygy[wdl + 2][1]) << wdl;
    }
}

TEST(TablebaseScores, MatchTheSearchOnTheMatesItFinds) {
    const EGTBProbe tables(gaviotaDir.c_str(), 8, true);
    localSearch& engine = searchEngine();
    // The search scores every mate 16000; the tables give 16002 - 2n for a
    // mate in n, equal for a mate in one, and the search with tables agrees.
    const struct {
        const char* fen;
        int moves;
    } mates[] = {
        {"k7/8/K7/8/8/8/8/1Q6 w - - 0 1", 1},
        {"1k6/8/2K5/8/8/8/8/7R w - - 0 1", 2},
        {"8/8/8/8/8/3K4/7R/1k6 w - - 0 1", 3},
        {"8/8/8/8/8/2k5/1R6/K7 w - - 0 1", 16},
    };
    for (const auto& mate : mates) {
        const board b = boardFrom(mate.fen);
        const int tableScore = probe(tables, mate.fen);
        EXPECT_EQ(tableScore, 16002 - 2 * mate.moves) << mate.fen;
        engine.clearTables();
        engine.tree.tablebases = nullptr;
        if (mate.moves <= 3) {
            EXPECT_EQ(engine.run(b, 10, 100000).score, 16000) << mate.fen;
        }
        engine.clearTables();
        engine.tree.tablebases = &tables;
        EXPECT_EQ(engine.run(b, 6, 100000).score, tableScore) << mate.fen;
    }
    // A mated position: -16000 from the search and from the tables.
    board mated = boardFrom("k7/1Q6/K7/8/8/8/8/8 b - - 0 1");
    engine.tree.tablebases = nullptr;
    engine.shared->timer1.allottedMs = 100000;
    engine.shared->timer1.startTimer();
    EXPECT_EQ(engine.tree.alphaBeta(0, mated, 5, -16000, 16000, 0), -16000);
    EXPECT_EQ(probe(tables, "k7/1Q6/K7/8/8/8/8/8 b - - 0 1"), -16000);
}

TEST(TablebaseProbe, SyzygyWinsAndLossesLieBetweenEvaluationsAndMates) {
    const EGTBProbe tables(syzygyDir.c_str(), 8, true);
    EXPECT_EQ(tables.gaviota.pieces, 0);
    EXPECT_EQ(probe(tables, "8/8/8/8/8/2k5/1R6/K7 w - - 0 1"), 15000);
    EXPECT_EQ(probe(tables, "8/8/8/8/8/2k5/1R6/K7 b - - 0 1"), -15000);
    EXPECT_EQ(probe(tables, "8/8/8/8/8/1k6/1R6/7K b - - 0 1"), 1);  // Kxb2 draws
    EXPECT_EQ(probe(tables, "8/8/8/8/8/2k5/1N6/K7 w - - 0 1"), -1);
}

TEST(TablebaseProbe, AnswersNothingItMustNotAsk) {
    const EGTBProbe tables((gaviotaDir + ":" + syzygyDir).c_str(), 8, true);
    ASSERT_EQ(tables.probeLimit, 4);
    const char* positions[] = {
        "8/8/8/8/8/2k5/1R6/KQ5R w - - 0 1",  // five pieces, more than any table
        "8/8/8/8/8/8/P7/Kk6 b - - 0 1",      // kings side by side
        "8/8/8/8/8/8/8/KQ6 w - - 0 1",       // no black king
        "k7/8/8/8/8/8/8/KK6 w - - 0 1",      // two white kings
        "P7/8/8/8/8/k7/8/K7 w - - 0 1",      // pawn on the last rank
        "k7/8/8/8/8/8/8/RK6 w - - 0 1",      // black in check with White to move
        "8/8/8/8/8/8/8/R3K2k w Q - 0 1",     // castling rights
    };
    // Moves on a board without a king print their own complaint.
    testing::internal::CaptureStdout();
    for (const char* fen : positions) {
        int score = 12345;
        EXPECT_FALSE(tables.DoEGTBProbe(boardFrom(fen), score)) << fen;
        uint16_t moves[moveBufferSize];
        const board b = boardFrom(fen);
        b.generateLegalMoves(moves);
        const std::string before = listText(moves);
        tables.filterRootMoves(b, moves);
        EXPECT_EQ(listText(moves), before) << fen;
    }
    testing::internal::GetCapturedStdout();
}

TEST(TablebaseRoot, KeepsTheMovesThatHoldTheResult) {
    uint16_t moves[moveBufferSize];
    const auto kept = [&](const EGTBProbe& tables, const char* fen) {
        const board b = boardFrom(fen);
        b.generateLegalMoves(moves);
        tables.filterRootMoves(b, moves);
        return listText(moves);
    };
    {
        const EGTBProbe both((gaviotaDir + ":" + syzygyDir).c_str(), 8, true);
        // Black draws only by taking the rook; with exact distances the search
        // chooses among every move that keeps the win (the rook must not hang).
        EXPECT_EQ(kept(both, "8/8/8/8/3R4/2k5/8/K7 b - - 0 1"), "c3d4");
        EXPECT_EQ(kept(both, "8/8/8/8/8/2k5/1R6/K7 w - - 0 1"),
                  "a1a2 a1b1 b2b8 b2b7 b2b6 b2b5 b2a2 b2e2 b2f2 b2g2 b2h2 b2b1");
    }
    const EGTBProbe syzygy(syzygyDir.c_str(), 8, true);
    // Syzygy alone: one move, the first of those nearest the next zeroing
    // move (a1a2, a1b1, b2a2 and b2b1 are 31 plies from the mate, the rook's
    // other moves 33), or the mate itself,
    EXPECT_EQ(kept(syzygy, "8/8/8/8/8/2k5/1R6/K7 w - - 0 1"), "a1a2");
    EXPECT_EQ(kept(syzygy, "k7/8/K7/8/8/8/8/1Q6 w - - 0 1"), "b1b7");
    // also when the fifty-move rule has already spoilt the win,
    EXPECT_EQ(kept(syzygy, "8/8/8/8/8/2k5/1R6/K7 w - - 80 60"), "a1a2");
    // and the root search plays it at once.
    localSearch& engine = searchEngine();
    engine.tree.tablebases = &syzygy;
    const localSearch::result r = engine.run(boardFrom("8/8/8/8/8/2k5/1R6/K7 w - - 0 1"), 10, 100000);
    EXPECT_EQ(moveText(r.move), "a1a2");
    EXPECT_EQ(r.nodes, 0);
    engine.shared->enable_EGTB = 0;
    EXPECT_NE(engine.run(boardFrom("8/8/8/8/8/2k5/1R6/K7 w - - 0 1"), 3, 100000).nodes, 0);
}

TEST(TablebaseStartUp, NamesTheLargestTableAndTheCacheInTheSearchProcessOnly) {
    const std::string both = gaviotaDir + ":" + syzygyDir;
    testing::internal::CaptureStdout();
    { const EGTBProbe tables(both.c_str(), 32, false); }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Egtbs initializated(4)\nEgtb cache size 32M\n");
    testing::internal::CaptureStdout();
    {
        const EGTBProbe slave(both.c_str(), 32, true);
        EXPECT_EQ(slave.probeLimit, 4);
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");

    // No tables: no lines. Then a cache that cannot be had stops the start.
    for (const char* path : {"", ":", "/nonexistent/tables", "d:\\chess\\egtb4\\"}) {
        testing::internal::CaptureStdout();
        {
            const EGTBProbe tables(path, 64, false);
            EXPECT_EQ(tables.probeLimit, 0) << path;
        }
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "") << path;
    }
    testing::internal::CaptureStdout();
    {
        const EGTBProbe tables(both.c_str(), -1, false);
        EXPECT_EQ(tables.probeLimit, 0);
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Out of memory error\n");
}

TEST(TablebaseStartUp, FindsBothKindsAlongAPathListWithSpaces) {
    scratchDirectory root("/three pieces");
    std::system(("mkdir '" + root.path + "/gaviota tables' '" + root.path + "/syzygy tables'").c_str());
    const std::string gaviota = root.path + "/gaviota tables", syzygy = root.path + "/syzygy tables";
    std::system(("cp " + gaviotaDir + "/k?k.gtb.cp4 '" + gaviota + "'").c_str());
    std::system(("cp " + syzygyDir + "/K?vK.* '" + syzygy + "'").c_str());
    const EGTBProbe tables((":" + gaviota + "::" + syzygy + ":").c_str(), 8, true);
    EXPECT_EQ(tables.gaviota.pieces, 3);
    EXPECT_EQ(tables.syzygy.pieces, 3);
    EXPECT_EQ(probe(tables, "8/8/8/5k2/8/8/1Q6/K7 w - - 0 1"), 16002 - 2 * 10);
}

TEST(TablebaseStartUp, DamagedFilesAreReportedAndLeftOutWithoutACrash) {
    scratchDirectory dir;
    for (const char* name : {"kqk.gtb.cp4", "krk.gtb.cp4", "kpk.gtb.cp4", "knk.gtb.cp4"}) dir.copy(gaviotaDir, name);
    for (const char* name : {"KQvK.rtbw", "KQvK.rtbz", "KPvK.rtbw", "KPvK.rtbz"}) dir.copy(syzygyDir, name);
    // krk cut short, kpk and the KPvK distances with a garbled header (all
    // crash the libraries on a probe), knk cut where the library notices.
    truncate((dir.path + "/krk.gtb.cp4").c_str(), 40);
    truncate((dir.path + "/knk.gtb.cp4").c_str(), 1000);
    for (const auto& [name, at] : {std::pair{"kpk.gtb.cp4", 32}, std::pair{"KPvK.rtbz", 16}}) {
        std::fstream file(dir.path + "/" + name, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(at);
        file.write("\xff\xff\xff\xff\xff\xff\xff\xff", 8);
    }
    testing::internal::CaptureStdout();
    const EGTBProbe tables(dir.path.c_str(), 8, false);
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("*** Unable to read " + dir.path + "/knk.gtb.cp4 - file broken\n"), std::string::npos) << out;
    EXPECT_NE(out.find("*** " + dir.path + "/krk.gtb.cp4 corrupted\n"), std::string::npos) << out;
    EXPECT_NE(out.find("*** " + dir.path + "/kpk.gtb.cp4 corrupted\n"), std::string::npos) << out;
    EXPECT_NE(out.find("*** " + dir.path + "/KPvK.rtbz corrupted\n"), std::string::npos) << out;
    EXPECT_NE(out.find("Egtbs initializated(3)\n"), std::string::npos) << out;

    // The sound table answers, a damaged Gaviota one leaves the position to
    // Syzygy (but not to its damaged distances), and nothing answers for the rest.
    EXPECT_EQ(probe(tables, "8/8/8/5k2/8/8/1Q6/K7 w - - 0 1"), 16002 - 2 * 10);
    EXPECT_EQ(probe(tables, "8/8/8/1k6/8/8/K5P1/8 w - - 0 1"), 15000);
    uint16_t moves[moveBufferSize];
    const board pawnEnding = boardFrom("8/8/8/1k6/8/8/K5P1/8 w - - 0 1");
    pawnEnding.generateLegalMoves(moves);
    const std::string all = listText(moves);
    tables.filterRootMoves(pawnEnding, moves);
    EXPECT_EQ(listText(moves), all);
    int score;
    EXPECT_FALSE(tables.DoEGTBProbe(boardFrom("8/8/8/8/8/2k5/1R6/K7 w - - 0 1"), score));
    EXPECT_FALSE(tables.DoEGTBProbe(boardFrom("8/8/8/8/8/2k5/1N6/K7 w - - 0 1"), score));
}
