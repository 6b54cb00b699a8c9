#include "tune/epdRecord.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "../board/testBoard.h"
#include "board/san.h"

namespace {

std::string movesText(const std::vector<int>& moves) {
    std::string text;
    for (int m : moves) {
        if (!text.empty()) text += " ";
        text += moveText(m);
    }
    return text;
}

struct parsed {
    bool ok;
    epdRecord record;
    std::string error;
};

parsed parse(const std::string& line) {
    board b = boardFrom("4k3/8/8/8/8/8/8/4K3 w - - 0 1");
    parsed p;
    p.ok = p.record.parse(line.c_str(), b, p.error);
    return p;
}

}  // namespace

TEST(EpdRecord, ReadsTheWaysSuitesWriteMoves) {
    // Check mark apart from its move, a misplaced capture mark, a SAN that
    // fits two knights, clocks run into the en-passant field, an "e.p."
    // apart from its move, a quoted semicolon, hmvc and fmvn.
    const struct {
        const char* line;
        const char* best;
        const char* avoid;
        const char* fen;
        const char* id;
    } cases[] = {
        {"1k1r4/pp1b1R2/3q2pp/4p3/2B5/4Q3/PPP2B2/2K5 b - - ; bm Qd1 + ; id BK.01", "d6d1", "",
         "1k1r4/pp1b1R2/3q2pp/4p3/2B5/4Q3/PPP2B2/2K5 b - - 0 1", "BK.01"},
        {"rnbq1rk1/pppp1ppp/4pn2/8/1bPP4/P1N5/1PQ1PPPP/R1B1KBNR b KQ - 1 5 ; bm Bcx3 + ", "b4c3", "",
         "rnbq1rk1/pppp1ppp/4pn2/8/1bPP4/P1N5/1PQ1PPPP/R1B1KBNR b KQ - 1 5", ""},
        {"r1bqk2r/ppp2ppp/2n5/4P3/2Bp2n1/5N1P/PP1N1PP1/R2Q1RK1 b kq - 1 10 ; bm Nh6; am Ne5", "g4h6", "c6e5 g4e5",
         "r1bqk2r/ppp2ppp/2n5/4P3/2Bp2n1/5N1P/PP1N1PP1/R2Q1RK1 b kq - 1 10", ""},
        {"r4rk1/3nppbp/bq1p1np1/2pP4/8/2N2NPP/PP2PPB1/R1BQR1K1 b - -1 12 ; bm Rfb8", "f8b8", "",
         "r4rk1/3nppbp/bq1p1np1/2pP4/8/2N2NPP/PP2PPB1/R1BQR1K1 b - - 12 1", ""},
        {"4k3/8/8/3pP3/8/8/8/4K3 w - d6 bm exd6 e.p.; c0 \"a; b\"; id \"ep 1\"; hmvc 3; fmvn 40;", "e5d6", "",
         "4k3/8/8/3pP3/8/8/8/4K3 w - d6 3 40", "ep 1"},
        {"r3k2r/8/8/8/8/8/8/R3K2R w KQkq - bm O-O-O; am 0-0 Kf1", "e1c1", "e1g1 e1f1",
         "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1", ""},
        {"5n2/4P3/8/8/8/8/8/k3K3 w - - bm exf8=q+ e8N; id x", "e7f8Q e7e8N", "", "5n2/4P3/8/8/8/8/8/k3K3 w - - 0 1",
         "x"},
    };
    for (const auto& c : cases) {
        const parsed p = parse(c.line);
        ASSERT_TRUE(p.ok) << c.line << ": " << p.error;
        EXPECT_EQ(movesText(p.record.bestMoves), c.best) << c.line;
        EXPECT_EQ(movesText(p.record.avoidMoves), c.avoid) << c.line;
        EXPECT_EQ(p.record.fen, c.fen);
        EXPECT_EQ(p.record.id, c.id);
    }
    const parsed both = parse(cases[2].line);
    EXPECT_TRUE(both.record.solvedBy(both.record.bestMoves[0]));
    EXPECT_FALSE(both.record.solvedBy(both.record.avoidMoves[1]));
}

TEST(EpdRecord, MalformedLinesAreRefusedWithTheReason) {
    const std::pair<const char*, const char*> cases[] = {
        {"", "fewer than four position fields"},
        {"4k3/8/8/8/8/8/8/4K4 w - - bm Kd1;", "not a position"},  // nine files
        {"4k3/8/8/8/8/8/8/4Q3 w - - bm Qd1;", "not a position"},  // no White king
        {"4k3/8/8/8/8/8/8/4K2R b - - bm Kd8;", ""},               // legal: only the side to move is in check
        {"4k2R/8/8/8/8/8/8/4K3 w - - bm Kd1;", "the side not to move is in check"},
        {"4k3/8/8/8/8/8/8/4K3 w - - bm Ke3;", "bm Ke3 is not a legal move here"},
        {"4k3/8/8/8/8/8/8/4K3 w - - am Zz9;", "am Zz9 is not a legal move here"},
    };
    for (const auto& [line, reason] : cases) {
        const parsed p = parse(line);
        EXPECT_EQ(p.ok, *reason == '\0') << line;
        if (!p.ok) {
            EXPECT_EQ(p.error, reason) << line;
        }
    }
}

TEST(EpdRecord, CommonSuitesLoadWithoutARejectedPosition) {
    for (const auto& [name, positions] :
         {std::pair{"wac-1-150.epd", 150}, {"bratko-kopec.epd", 24}, {"kaufman.epd", 25}}) {
        std::ifstream file(std::string(EPD_DATA_DIR) + "/" + name);
        ASSERT_TRUE(file) << name;
        int count = 0;
        for (std::string line; std::getline(file, line);) {
            if (line.find_first_not_of(" \r") == std::string::npos) continue;
            const parsed p = parse(line);
            EXPECT_TRUE(p.ok && !(p.record.bestMoves.empty() && p.record.avoidMoves.empty()))
                << line << ": " << p.error;
            count++;
        }
        EXPECT_EQ(count, positions) << name;
    }
}
