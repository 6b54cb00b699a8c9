#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "../board/testBoard.h"
#include "egtb/EGTBProbe.h"
#include "tablePositions.h"
#include "tablebaseTestData.h"

namespace {

// One line of an answer file: the position (with a zero move clock) and its numeric opcodes.
struct epdLine {
    std::string fen, opcodes;
    int value(const char* opcode) const {
        const size_t at = opcodes.find(std::string(" ") + opcode + " ");
        return at == std::string::npos ? 0 : std::stoi(opcodes.substr(at + std::string(opcode).size() + 2));
    }
};

std::vector<epdLine> readEpd(const std::string& path) {
    std::vector<epdLine> lines;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        if (line.find_first_not_of(" \r") == std::string::npos || line[0] == '#') continue;
        std::istringstream in(line);
        epdLine epd;
        std::string field;
        for (int n = 0; n < 4 && in >> field; n++) epd.fen += field + " ";
        epd.fen += "0 1";
        std::getline(in, epd.opcodes);  // starts with the blank after the fourth field
        lines.push_back(epd);
    }
    return lines;
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
        const board b = boardFrom(epd.fen.c_str());
        const int dm = epd.value("dm");  // the side to move mates in dm moves, is mated in -dm; 0: a draw
        int score = 0;
        EXPECT_TRUE(tables.DoEGTBProbe(b, score)) << epd.fen;
        EXPECT_EQ(score, dm > 0 ? 16000 - 2 * dm : (dm < 0 ? -16000 - 2 * dm : -b.toMove)) << epd.fen << epd.opcodes;
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

// Debian's Gaviota tables give the same scores in each of their compression
// schemes, and the committed Syzygy tables the same results.
TEST(TablebaseAgreement, GaviotaSchemesAndSyzygyGiveTheSameResults) {
    ASSERT_TRUE(exists(gaviotaTables)) << "the tablebase tests need Debian's gaviotatb package (tools/setup.sh test)";
    std::vector<board> positions;
    for (const auto& [white, black] : {std::pair{"P", ""}, {"", "P"}, {"Q", ""}, {"R", ""}, {"B", ""}, {"N", ""}})
        for (const board& b : sampleTablePositions(boardFrom("8/8/8/8/8/8/8/K6k w - - 0 1"), white, black, 400))
            positions.push_back(b);
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
    const std::vector<int> cp4 = scores(gaviotaTables), syzygy = scores(syzygyTables);
    for (const char* scheme : {"gtb1", "gtb2", "gtb3"})
        EXPECT_EQ(scores(std::string("/usr/share/gaviotatb/") + scheme), cp4) << scheme;
    int found[3] = {};  // losses, draws, wins
    for (size_t i = 0; i < positions.size(); i++) {
        const int result = std::abs(cp4[i]) <= 1 ? 0 : (cp4[i] > 0 ? 1 : -1);
        EXPECT_EQ(syzygy[i], result ? 15000 * result : cp4[i]) << fenOf(positions[i]) << " " << cp4[i];
        found[result + 1]++;
    }
    for (int count : found) EXPECT_GT(count, 100);  // the sample holds all three results
}
