#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "../board/testBoard.h"
#include "egtb/EGTBProbe.h"
#include "tablePositions.h"
#include "tablebaseTestData.h"

namespace {

// "dm n": the side to move mates in n moves; "dm -n": it is mated in n; "dm 0": a draw.
void expectMateDistance(const EGTBProbe& tables, const epdLine& epd) {
    const board b = boardFrom(epd.fen.c_str());
    const int dm = epd.value("dm");
    int score = 0;
    EXPECT_TRUE(tables.DoEGTBProbe(b, score)) << epd.fen;
    EXPECT_EQ(score, dm > 0 ? 16002 - 2 * dm : (dm < 0 ? -16000 - 2 * dm : -b.toMove)) << epd.fen << epd.opcodes;
}

std::vector<board> samples(const char* white, const char* black, int count) {
    return sampleTablePositions(boardFrom("8/8/8/8/8/8/8/K6k w - - 0 1"), white, black, count);
}

}  // namespace

TEST(TablebaseAgreement, EveryPositionOfTheAnswerFilesWithTheFullTables) {
    const std::string gaviota = sharedFile("tablebases/gaviota"), syzygy = sharedFile("tablebases/syzygy");
    const std::string distances = sharedFile("endgames/endgame-dm-4.epd"), results = sharedFile("endgames/endgame.epd");
    if (!exists(gaviota) || !exists(syzygy) || !exists(distances) || !exists(results))
        GTEST_SKIP() << "the full 3- and 4-piece tables and answer files are not at " << SHARED_DATA;
    const EGTBProbe tables((gaviota + ":" + syzygy).c_str(), 32, true);
    ASSERT_EQ(tables.gaviota.pieces, 4);
    ASSERT_EQ(tables.syzygy.pieces, 4);
    int distanceCount = 0, resultCount = 0;
    for (const epdLine& epd : readEpd(distances)) {
        expectMateDistance(tables, epd);
        distanceCount++;
    }
    for (const epdLine& epd : readEpd(results)) {
        tablePosition p;
        int wdl = 9;
        tableMove position, moves[tableMaxMoves];
        ASSERT_TRUE(toTablePosition(boardFrom(epd.fen.c_str()), p)) << epd.fen;
        EXPECT_TRUE(tables.syzygy.probeWdl(p, wdl) && wdl == epd.value("wdl")) << epd.fen << epd.opcodes;
        EXPECT_TRUE(tables.syzygy.probeRoot(p, position, moves) >= 0 && position.dtz == epd.value("dtz"))
            << epd.fen << epd.opcodes << position.dtz;
        resultCount++;
    }
    printf("mate distances checked: %d; Syzygy results and distances checked: %d\n", distanceCount, resultCount);
    EXPECT_EQ(distanceCount, 48);  // all of both files hold 3 or 4 pieces
    EXPECT_EQ(resultCount, 200);
}

TEST(TablebaseAgreement, EveryGaviotaCompressionSchemeGivesTheSameScores) {
    ASSERT_TRUE(exists(gaviotaTables)) << "the tablebase tests need Debian's gaviotatb package (tools/setup.sh test)";
    std::vector<board> positions;
    for (const auto& [white, black] : {std::pair{"P", ""}, {"", "P"}, {"Q", ""}, {"R", ""}, {"B", ""}, {"N", ""}})
        for (const board& b : samples(white, black, 400)) positions.push_back(b);
    const auto scores = [&](const std::string& directory) {
        const EGTBProbe tables(directory.c_str(), 8, true);
        std::vector<int> found;
        for (const board& b : positions) {
            int score = 99999;
            tables.DoEGTBProbe(b, score);
            found.push_back(score);
        }
        return found;
    };
    const std::vector<int> cp4 = scores(gaviotaTables);
    EXPECT_EQ(std::count(cp4.begin(), cp4.end(), 99999), 0);
    for (const char* scheme : {"gtb1", "gtb2", "gtb3"})
        EXPECT_EQ(scores(std::string("/usr/share/gaviotatb/") + scheme), cp4) << scheme;
}

TEST(TablebaseAgreement, GaviotaAndSyzygyGiveTheSameResults) {
    const EGTBProbe tables((gaviotaTables + ":" + syzygyTables).c_str(), 8, true);
    int found[3] = {};  // losses, draws, wins
    for (const auto& [white, black] : {std::pair{"P", ""}, {"", "P"}, {"Q", ""}, {"R", ""}, {"B", ""}, {"", "N"}})
        for (const board& b : samples(white, black, 500)) {
            tablePosition p;
            int value = 0, wdl = 9;
            ASSERT_TRUE(toTablePosition(b, p) && tables.gaviota.probe(p, value) && tables.syzygy.probeWdl(p, wdl))
                << fenOf(b);
            EXPECT_EQ(wdl, value > 0 ? 2 : (value < 0 ? -2 : 0)) << fenOf(b);
            found[wdl / 2 + 1]++;
        }
    for (int result : found) EXPECT_GT(result, 100);  // the sample holds all three results
}
