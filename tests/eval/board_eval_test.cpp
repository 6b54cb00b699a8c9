#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>
#include <utility>

#include "../board/testBoard.h"
#include "../support/sharedTable.h"
#include "eval/evalHashtable.h"
#include "eval/evalWeights.h"

namespace {

// Unless a test says otherwise the figures below use the default piece
// values: start total 7800, and a passed-pawn sum is scaled by
// (15600 - total) / 15600.
class Eval : public ::testing::Test {
protected:
    void SetUp() override {
        resetEvalWeights();
        board::evalCache = nullptr;
    }
    void TearDown() override {
        resetEvalWeights();
        board::evalCache = nullptr;
    }

    // White's view, with bounds the lazy cut never reaches.
    static int score(const char* fen) {
        board b = boardFrom(fen);
        return b.toMove * b.evaluate(-32000, 32000);
    }
    // What the given weights add to the score when every other weight is 0.
    static int term(const char* fen, std::initializer_list<std::pair<int*, int>> weights) {
        std::fill(evalWeights.begin(), evalWeights.end(), 0);
        const int without = score(fen);
        for (auto [weight, value] : weights) *weight = value;
        return score(fen) - without;
    }
};

// A cache of its own, removed with the fixture.
class EvalCache : public Eval {
protected:
    const sharedTableName name{"sharedEvalHashtable", "TestEval-"};
    std::unique_ptr<evalHashtable> cache;
    void SetUp() override {
        Eval::SetUp();
        cache = std::make_unique<evalHashtable>(name.instance.c_str(), 1, false);
    }
    void TearDown() override {
        Eval::TearDown();
        testing::internal::CaptureStdout();  // the unmapping is reported
        cache.reset();
        testing::internal::GetCapturedStdout();
    }
};

// The same position with colours exchanged and the board turned over.
std::string mirrored(const std::string& fen) {
    std::istringstream fields(fen);
    std::string placement, side, rights, flipped;
    fields >> placement >> side >> rights;
    const auto swapCase = [](char c) { return std::islower(c) ? char(std::toupper(c)) : char(std::tolower(c)); };
    std::istringstream ranks(placement);
    for (std::string rank; std::getline(ranks, rank, '/');) {
        std::transform(rank.begin(), rank.end(), rank.begin(), swapCase);
        flipped = flipped.empty() ? rank : rank + "/" + flipped;
    }
    std::string castling;
    for (char c : std::string("KQkq"))
        if (rights.find(swapCase(c)) != std::string::npos) castling += c;
    return flipped + (side == "w" ? " b " : " w ") + (castling.empty() ? "-" : castling) + " - 0 1";
}

// Kings on e1 and e8, a White pawn on e2, White to move: material 100; e2's
// table value -8; isolated -1; the wing bonus and the king-danger penalties
// cancel; the passer: base -51, free stop +16, no free path (the king
// guards e7), scaled by the king distances (-35 * 13) / 8 = -56, halved to
// -28, then (-28 * 15500) / 15600 = -27. 100 - 8 - 1 - 27 = 64.
constexpr const char* kingAndPawn = "4k3/8/8/8/8/8/4P3/4K3 w - - 0 1";

}  // namespace

TEST_F(EvalCache, LazyCutReturnsTheBoundItselfAndLeavesTheCacheAlone) {
    board b = boardFrom("4k3/8/8/8/8/8/8/QQQ1K3 w - - 0 1");  // material 2700
    board::evalCache = cache.get();
    board::lastPositionalScore = b.positionalScore = 0;
    EXPECT_EQ(b.evaluate(2876, 4000), 2876);  // 2700 + 175 < 2876
    EXPECT_EQ(b.evaluate(-100, 2524), 2524);  // 2524 < 2700 - 175
    EXPECT_EQ(cache->probe(b.boardKey), evalHashtable::missValue);
    b.positionalScore = 200;  // both estimates must be beyond the bound
    EXPECT_NE(b.evaluate(2876, 4000), 2876);
    EXPECT_NE(cache->probe(b.boardKey), evalHashtable::missValue);

    board::evalCache = nullptr;
    board black = boardFrom("4k3/8/8/8/8/8/8/QQQ1K3 b - - 0 1");
    board::evalCache = cache.get();
    board::lastPositionalScore = black.positionalScore = 0;
    EXPECT_EQ(black.evaluate(-2524, 0), -2524);      // -2700 + 175 < -2524
    EXPECT_EQ(black.evaluate(-4000, -2876), -2876);  // -2876 < -2700 - 175
    EXPECT_EQ(cache->probe(black.boardKey), evalHashtable::missValue);
}

TEST_F(EvalCache, CachedAndFreshScoresAgreeAndScaleByTheFiftyMoveClock) {
    board::evalCache = cache.get();
    board b = boardFrom(kingAndPawn);
    EXPECT_EQ(b.evaluate(-32000, 32000), 64);
    EXPECT_EQ(cache->probe(b.boardKey), 64);
    EXPECT_EQ(b.evaluate(-32000, 32000), 64);  // from the cache

    board late = boardFrom("4k3/8/8/8/8/8/4P3/4K3 w - - 51 60");  // the clock is not in the key
    EXPECT_EQ(late.evaluate(-32000, 32000), 62);  // 64 * 49 / 50
    board::evalCache = nullptr;
    EXPECT_EQ(late.evaluate(-32000, 32000), 62);
    EXPECT_EQ(boardFrom("4k3/8/8/8/8/8/4P3/4K3 w - - 100 60").evaluate(-32000, 32000), 0);
    EXPECT_EQ(cache->probe(b.boardKey), 64);  // stored before scaling
}

TEST_F(Eval, PrintShowsWhitesViewAndBlackToMoveNegates) {
    board black = boardFrom("4k3/8/8/8/8/8/4P3/4K3 b - - 0 1");
    EXPECT_EQ(black.evaluate(-32000, 32000), -64);
    testing::internal::CaptureStdout();
    black.printBoard();
    EXPECT_NE(testing::internal::GetCapturedStdout().find("  eval=64  lazy=100"), std::string::npos);
}

TEST_F(Eval, SideToMoveAndColourExchangeOnlyFlipTheSign) {
    for (const char* fen : {"rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR w KQkq - 0 1",
                            "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
                            "r4rk1/1pp1qppp/p1np1n2/2b1p1B1/2B1P3/P1NP1N1P/1PP1QPP1/R4RK1 w - - 0 10",
                            "2r2rk1/pp1q1ppp/2n1pn2/3p4/3P4/2NBPN2/PP3PPP/2RQ1RK1 w - - 0 12"}) {
        std::string other = fen;
        other[other.find(" w ") + 1] = 'b';
        const int white = score(fen);
        EXPECT_NE(white, 0) << fen;
        EXPECT_EQ(score(other.c_str()), white) << fen;
        EXPECT_EQ(score(mirrored(fen).c_str()), -white) << mirrored(fen);
    }
}

TEST_F(Eval, OpeningDevelopmentCastlingAndBlockedCentrePawns) {
    const char* castledWhite = "rnbqkbnr/pppppppp/8/8/8/5NP1/PPPPPPBP/RNBQ1RK1 w kq - 0 1";
    EXPECT_EQ(term(castledWhite, {{&uncastledPenalty, -2}}), 6);  // only Black pays 3 * -2
    EXPECT_EQ(term(castledWhite, {{&developmentWeight, 5}}), -10);  // (2 - 4) * 5 minors at home
    EXPECT_EQ(term("rnbqkbnr/pppppppp/8/8/8/5NP1/PPPPPPBP/RNBQ1rK1 w kq - 0 1", {{&uncastledPenalty, -2}}), 0);
    // d2 and e2 blocked, d7 blocked: -12 - 12 + 12
    EXPECT_EQ(term("rnbqkbnr/pppppppp/3N4/8/8/3nn3/PPPPPPPP/RNBQKBNR w - - 0 1", {{&blockedCentrePawnPenalty, -12}}),
              -12);
}

TEST_F(Eval, MinorPieceImbalance) {
    EXPECT_EQ(term("4k3/pppppppp/8/8/8/8/PPPPPPPP/R3K3 w - - 0 1", {{&rookImbalanceWeight, -44}}), -44);
    // White one minor short: -((9 - 0 - 1) * 40) / 9 = -35; not when Black has no pawns
    EXPECT_EQ(term("r1n1k3/pppppppp/8/8/8/8/PPPPPPPP/R3K3 w - - 0 1", {{&minorDeficitWeight, 40}}), -35);
    EXPECT_EQ(term("r1n1k3/8/8/8/8/8/PPPPPPPP/R3K3 w - - 0 1", {{&minorDeficitWeight, 40}}), 0);
    // Black three minors short, no heavy pieces: (9 * 71) / 9
    EXPECT_EQ(term("4k3/8/8/8/8/8/8/1NBBK3 w - - 0 1", {{&minorDeficitWeight3, 71}}), 71);
}

TEST_F(Eval, KingShelter) {
    board b = boardFrom("6k1/5p1p/6p1/8/8/6P1/5P1P/6K1 w - - 0 1");
    EXPECT_EQ(b.calculatePStructW(1), 8);  // f2, h2 next to g1: 3 * 2; g2 empty below g3: 2
    EXPECT_EQ(b.calculatePStructB(57), 8);
    EXPECT_EQ(b.calculatePStructW(6), 0);
    EXPECT_EQ(boardFrom("4k3/8/8/8/8/8/PP6/1K6 w - - 0 1").calculatePStructW(6), 6);
    EXPECT_EQ(boardFrom("4k3/8/8/8/8/8/P1P5/1K6 w - - 0 1").calculatePStructW(6), 3);  // no b-pawn: halved
    EXPECT_EQ(boardFrom("4k3/8/8/8/8/8/6PP/6K1 w - - 0 1").calculatePStructW(1), 6);
    EXPECT_EQ(boardFrom("4k3/8/8/8/8/8/5PP1/6K1 w - - 0 1").calculatePStructW(1), 3);  // no h-pawn: halved

    // Total 7200. White without rights: (1200 * 9 * 2) / 1800 = 12; Black
    // with rights: ((9 * 1200 * 2 * 2) / 3) / 1800 = 8
    EXPECT_EQ(term("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQ1RK1 w kq - 0 1", {{&kingShelterWeight, 2}}), 4);
}

TEST_F(Eval, KnightsOnlyPenaltyNeedsNoKnight) {
    EXPECT_EQ(term("4k2r/p6p/8/8/8/8/P6P/4K1N1 w - - 0 1", {{&knightOnlyPenalty, -3}}), -12);
    EXPECT_EQ(term("4k3/p6p/8/8/8/8/P6P/4KR2 w - - 0 1", {{&knightOnlyPenalty, -3}}), 12);
}

TEST_F(Eval, BackwardIsolatedAndDoubledPawns) {
    const std::initializer_list<std::pair<int*, int>> weights = {
        {&backwardPawnWeight, -2}, {&backwardOpenFileWeight, -27}, {&backwardCentreWeight, -8}};
    // d3 is backward, c4 is defended by it. Total 3000:
    // (3000 * -2) / 7800 + (3000 * -27) / 7800 + (3000 * -8) / 7800 = 0 - 10 - 3
    EXPECT_EQ(term("r2qk3/8/8/8/2P5/3P4/8/R2QK3 w - - 0 1", weights), -13);
    // e2 is backward; d4 is not, e2-e3 would defend it
    EXPECT_EQ(term("r2qk3/8/8/8/3P4/8/4P3/R2QK3 w - - 0 1", weights), -13);
    // Black's f4 controls e3, so d4 is backward too; f4 is Black's backward pawn.
    // Total 3100: White (2 * 3100 * w) / 7800 gives -1 - 21 - 6, Black 0 - 10 - 3
    EXPECT_EQ(term("r2qk3/8/8/8/3P1p2/8/4P3/R2QK3 w - - 0 1", weights), -28 + 13);

    const std::initializer_list<std::pair<int*, int>> walk = {{&isolatedPawnPenalty, -1}, {&doubledPawnPenalty, -17}};
    EXPECT_EQ(term("4k3/8/8/8/8/1P6/1P6/4K3 w - - 0 1", walk), -19);  // two isolated, the rear one doubled
    EXPECT_EQ(term("4k3/6p1/6p1/8/8/1P6/1P6/4K3 w - - 0 1", walk), 0);
}

TEST_F(Eval, EndgameKingPlacementKeepsTheLiteralElseChain) {
    const std::initializer_list<std::pair<int*, int>> weights = {{&kingCentreWeight, 9}, {&kingPawnWingBonus, 14}};
    // White short of a rook: 9 * centre(d5) = 18, and the wing term runs too:
    // no pawns counts as all on files a-d, where only the White king stands
    EXPECT_EQ(term("8/8/8/3K4/8/8/8/r3k3 w - - 0 1", weights), 18 + 14);
    EXPECT_EQ(term("8/8/8/3k4/8/8/8/R3K3 w - - 0 1", weights), -18);  // Black short: nothing else
    EXPECT_EQ(term("8/p6p/8/3k4/8/8/P6P/4K3 w - - 0 1", weights), (-1 - 2) * 9);
}

TEST_F(Eval, KnightOutpostsAndEndgame) {
    const std::initializer_list<std::pair<int*, int>> weights = {{&outpostBonus, 9}, {&centralOutpostBonus, 8}};
    EXPECT_EQ(term("r2qk3/8/8/4N3/3P4/8/8/R2QK3 w - - 0 1", weights), 17);
    EXPECT_EQ(term("r2qk2b/8/8/4N3/3P4/8/8/R2QK3 w - - 0 1", weights), 0);   // the h8 bishop sees e5
    EXPECT_EQ(term("r2qk2b/8/8/4N3/3P1P2/8/8/R2QK3 w - - 0 1", weights), 17);  // two defenders
    EXPECT_EQ(term("r2qk3/5p2/8/4N3/3P4/8/8/R2QK3 w - - 0 1", weights), 0);   // f7-f6 chases it
    EXPECT_EQ(term("4k3/8/8/8/8/8/8/1N2K3 w - - 0 1", {{&knightEndgameWeight, -4}}), -14);  // (3700 * -4) / 1000

    board b = boardFrom("4k3/3p4/8/2n5/4N3/8/1P6/4K3 w - - 0 1");
    EXPECT_TRUE(b.drivenAwayByPawn(27, 1));    // e4: d7-d5
    EXPECT_TRUE(b.drivenAwayByPawn(37, -1));   // c5: b2-b4
    EXPECT_FALSE(boardFrom("4k3/3p4/8/8/2P1N3/8/8/4K3 w - - 0 1").drivenAwayByPawn(27, 1));  // c4 guards d5
    EXPECT_FALSE(boardFrom("4k3/3p4/3B4/8/4N3/8/8/4K3 w - - 0 1").drivenAwayByPawn(27, 1));  // d6 is taken
}

TEST_F(Eval, Bishops) {
    EXPECT_EQ(term("2b1k3/8/8/8/8/8/8/2B1KB2 w - - 0 1", {{&bishopPairBonus, 40}}), 40);
    EXPECT_EQ(term("4k3/8/8/8/8/8/8/B3K3 w - - 0 1", {{&bishopMobilityWeight, 21}}), 6);  // (7 * 21 - 84) / 10
    // Bd2 with e3 on its colour, stuck behind e4 and blocked in the centre:
    // -7 / 4 - 13 / 4 - 23 / 4 = -1 - 3 - 5
    EXPECT_EQ(term("4k3/8/8/8/4p3/4P3/3B4/7K w - - 0 1", {{&bishopOwnPawnColourWeight, -7},
                                                          {&bishopSecondPawnColourWeight, -13},
                                                          {&bishopBlockedCentreWeight, -23}}),
              -9);
}

TEST_F(Eval, Rooks) {
    EXPECT_EQ(term("4k3/3R4/8/8/8/8/8/4K3 w - - 0 1", {{&rookSeventhBonus, 28}, {&rookOpenFileBonus, 11}}), 39);
    // d2 half-open; d1 half-open and behind d2
    EXPECT_EQ(term("4k3/3p4/8/8/8/8/3R4/3RK3 w - - 0 1", {{&rookDoubledBonus, 9}, {&rookHalfOpenBonus, 9}}), 27);
    EXPECT_EQ(term("4k3/RR6/8/8/8/8/8/4K3 w - - 0 1", {{&rookSeventhBonus, 28}, {&rookSeventhDoubledBonus, -5}}),
              2 * (28 - 5));
    EXPECT_EQ(term("4k3/8/8/8/8/8/8/R3K3 w - - 0 1", {{&rookMobilityWeight, 15}}), 10);  // (15 * (11 - 4)) / 10
}

TEST_F(Eval, Queens) {
    // Each queen: ((7800 - 1800) * 48) / 7800 = 36
    EXPECT_EQ(term("4k3/8/8/8/8/8/8/QQ2K3 w - - 0 1", {{&queenAloneBonus, 48}}), 72);
    EXPECT_EQ(term("rnbqkbnr/pppppppp/8/8/8/3Q4/PPPPPPPP/RNB1KBNR w - - 0 1", {{&queenEarlyPenalty, -6}}), -24);
}

TEST_F(Eval, PassedPawnBasesAndTheUnstoppableFlagReading) {
    const std::initializer_list<std::pair<int*, int>> base = {
        {&passedRankQuadratic, 56}, {&passedRankLinear, -8}, {&passedBase, -56}};
    // Kings equally far; (v + v) / 2 for one pawn, but a negative v is
    // halved against the largest, which starts at 0. Then * 15500 / 15600.
    EXPECT_EQ(term("8/1P5k/8/8/8/8/8/7K w - - 0 1", base), 140);  // 141
    EXPECT_EQ(term("8/7k/8/8/1P6/8/8/7K w - - 0 1", base), -3);   // -8 / 2 = -4
    EXPECT_EQ(term("8/7k/8/8/8/1P6/8/7K w - - 0 1", base), -16);  // -35 / 2 = -17
    EXPECT_EQ(term("8/7k/8/8/8/8/1P6/7K w - - 0 1", base), -24);  // -51 / 2 = -25

    // a5 against Kd7 is caught, but with Black to move the flag of e7 is read.
    // Pawns-only defender: (24 * 23) / 4 = 138; kings 3 and 7 away: 138 * 4 / 8 = 69
    const std::initializer_list<std::pair<int*, int>> unstoppable = {
        {&unstoppableBonus, 23}, {&unstoppableMinorFactor, 4}, {&unstoppablePawnsOnlyFactor, 24}};
    EXPECT_EQ(term("8/3k4/8/P7/8/8/8/7K b - - 0 1", unstoppable), 68);
    EXPECT_EQ(term("8/3k4/8/P7/8/8/8/7K w - - 0 1", unstoppable), 0);

    // c5 with b4 behind it against b6: (2 * 6 * 6) / 4 = 18, bare: (18 * 6) / 4 = 27
    const std::initializer_list<std::pair<int*, int>> candidate = {
        {&candidateWeight, 6}, {&candidateNoQueenFactor, 6}, {&candidateBareFactor, 6}};
    EXPECT_EQ(term("4k3/8/1p6/2P5/1P6/8/8/4K3 w - - 0 1", candidate), 27);
    EXPECT_EQ(term("r3k3/8/1p6/2P5/1P6/8/8/4K3 w - - 0 1", candidate), 18);
}

TEST_F(Eval, KingRaceAndKingDanger) {
    // Black's king is shut in by its own men; White's reaches a3: ((5000 - 600) * 11) / 5000
    EXPECT_EQ(term("6bk/6pp/8/8/8/p7/8/4K3 w - - 0 1", {{&passedRaceWeight, 11}}), 9);

    // Danger 50 on both sides gives -290. Against White (Black has no queen
    // and no rook) >> 2 >> 1 >> 3 = -5; against Black >> 2 >> 1 = -37, the
    // last shift waits for White's bishop to go.
    const std::initializer_list<std::pair<int*, int>> danger = {{&kingDangerWeight, -29}, {&shelterDangerWeight, 50},
                                                                {&noQueenShift, 2}, {&noRookShift1, 1}, {&noRookShift2, 3}};
    EXPECT_EQ(term("4k3/8/8/8/8/8/8/2B1K3 w - - 0 1", danger), -5 + 37);
    EXPECT_EQ(term("2b1k3/8/8/8/8/8/8/4K3 w - - 0 1", danger), 0);
    // Knight two squares from the king: 10 units, (-29 * 5) / 10 = -14 against Black
    EXPECT_EQ(term("6k1/8/5N2/8/8/8/8/Q3K3 w - - 0 1", {{&kingDangerWeight, -29}, {&evalWeights[61], 10}}), 14);
}

TEST_F(Eval, BrokenPositionsReadNothingOutOfBounds) {
    for (const char* fen : {"PPPPPPPP/8/8/8/8/8/8/pppppppp w - - 0 1", "QQQQQQQQ/Q7/8/8/8/8/8/k6K b - - 0 1",
                            "K7/8/8/8/8/8/8/7p b - - 0 1", "kk6/8/8/8/8/8/8/KK5P w - - 0 1", "8/8/8/8/8/8/8/8 b"}) {
        board b = boardFrom(fen);
        for (int king : {0, 63}) {
            b.wKingSq = b.bKingSq = static_cast<uint8_t>(king);
            for (int side : {1, -1}) {
                b.toMove = static_cast<int8_t>(side);
                const int value = b.evaluate(-32000, 32000);
                EXPECT_LT(std::abs(value), 32000) << fen;
            }
        }
    }
}

TEST_F(EvalCache, ScoresCachedUnderOtherWeightsAreNeverReturned) {
    EXPECT_EQ(evalWeightsKey, 0u);  // the built-in weights use the position keys themselves
    board::evalCache = cache.get();
    board b = boardFrom(kingAndPawn);
    EXPECT_EQ(b.evaluate(-32000, 32000), 64);
    setEvalWeight(11, -20);  // isolated pawn
    EXPECT_EQ(b.evaluate(-32000, 32000), 64 - 19);
    resetEvalWeights();
    EXPECT_EQ(evalWeightsKey, 0u);
    EXPECT_EQ(b.evaluate(-32000, 32000), 64);
    EXPECT_EQ(cache->probe(b.boardKey), 64);

    // A slave takes another process's published weights over once per generation.
    publishedEvalWeights published{};
    published.generation = 7;
    std::copy(defaultEvalWeights.begin(), defaultEvalWeights.end(), published.values);
    published.values[11] = -20;
    adoptEvalWeights(published);
    EXPECT_EQ(isolatedPawnPenalty, -20);
    resetEvalWeights();
    adoptEvalWeights(published);
    EXPECT_EQ(isolatedPawnPenalty, -1);
}
