#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "../board/testBoard.h"
#include "../support/process.h"
#include "../support/sharedTable.h"
#include "eval/evalHashtable.h"
#include "eval/evalWeights.h"

namespace {

// Unless a test says otherwise the figures below use the default piece
// values: start total 7800, and a passed-pawn sum is scaled by
// (15600 - total) / 15600.
class Eval : public ::testing::Test {
protected:
    void SetUp() override { TearDown(); }
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
    static int term(const char* fen, const std::vector<std::pair<int*, int>>& weights) {
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
        printed([&] { cache.reset(); });  // the unmapping is reported
    }
};

// Material 100, e2's table value -8, isolated -1, the passer -27 (a negative value is halved against the
// largest, which starts at 0): 64.
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
}

TEST_F(EvalCache, CachedAndFreshScoresAgreeAndScaleByTheFiftyMoveClock) {
    board::evalCache = cache.get();
    board b = boardFrom(kingAndPawn);
    EXPECT_EQ(b.evaluate(-32000, 32000), 64);
    EXPECT_EQ(cache->probe(b.boardKey), 64);
    EXPECT_EQ(b.evaluate(-32000, 32000), 64);  // from the cache

    board late = boardFrom("4k3/8/8/8/8/8/4P3/4K3 w - - 51 60");  // the clock is not in the key
    EXPECT_EQ(late.evaluate(-32000, 32000), 62);                  // 64 * 49 / 50
    EXPECT_EQ(boardFrom("4k3/8/8/8/8/8/4P3/4K3 w - - 100 60").evaluate(-32000, 32000), 0);
    EXPECT_EQ(cache->probe(b.boardKey), 64);  // stored before scaling
}

// The mirrored position is the first with colours exchanged and the board turned over.
TEST_F(Eval, SideToMoveAndColourExchangeOnlyFlipTheSign) {
    std::string fen = "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1";
    const char* mirrored = "r3k2r/pppbbppp/2n2q1P/1P2p3/3pn3/BN2PNP1/P1PPQPB1/R3K2R b KQkq - 0 1";
    const int white = score(fen.c_str());
    EXPECT_NE(white, 0);
    EXPECT_EQ(score(mirrored), -white);
    fen[fen.find(" w ") + 1] = 'b';
    EXPECT_EQ(score(fen.c_str()), white);
}

// One position per term, with only that term's weights set; the figures were worked by hand.
TEST_F(Eval, EachTermAlone) {
    using weights = std::vector<std::pair<int*, int>>;
    const weights backward = {{&backwardPawnWeight, -2}, {&backwardOpenFileWeight, -27}, {&backwardCentreWeight, -8}};
    const weights outpost = {{&outpostBonus, 9}, {&centralOutpostBonus, 8}};
    const weights bishopPawns = {
        {&bishopOwnPawnColourWeight, -7}, {&bishopSecondPawnColourWeight, -13}, {&bishopBlockedCentreWeight, -23}};
    const weights danger = {{&kingDangerWeight, -29},
                            {&shelterDangerWeight, 50},
                            {&noQueenShift, 2},
                            {&noRookShift1, 1},
                            {&noRookShift2, 3}};
    const weights kingPlace = {{&kingCentreWeight, 9}, {&kingPawnWingBonus, 14}};
    const weights passer = {{&passedRankQuadratic, 56}, {&passedRankLinear, -8}, {&passedBase, -56}};
    const weights unstoppable = {
        {&unstoppableBonus, 23}, {&unstoppableMinorFactor, 4}, {&unstoppablePawnsOnlyFactor, 24}};
    const weights candidate = {{&candidateWeight, 6}, {&candidateNoQueenFactor, 6}, {&candidateBareFactor, 6}};
    const struct {
        const char* fen;
        weights set;
        int value;
    } cases[] = {
        {"rnbqkbnr/pppppppp/8/8/8/5NP1/PPPPPPBP/RNBQ1RK1 w kq - 0 1", {{&uncastledPenalty, -2}}, 6},
        {"rnbqkbnr/pppppppp/8/8/8/5NP1/PPPPPPBP/RNBQ1RK1 w kq - 0 1", {{&developmentWeight, 5}}, -10},
        {"rnbqkbnr/pppppppp/3N4/8/8/3nn3/PPPPPPPP/RNBQKBNR w - - 0 1", {{&blockedCentrePawnPenalty, -12}}, -12},
        {"4k3/pppppppp/8/8/8/8/PPPPPPPP/R3K3 w - - 0 1", {{&rookImbalanceWeight, -44}}, -44},
        {"r1n1k3/pppppppp/8/8/8/8/PPPPPPPP/R3K3 w - - 0 1", {{&minorDeficitWeight, 40}}, -35},
        {"4k3/8/8/8/8/8/8/1NBBK3 w - - 0 1", {{&minorDeficitWeight3, 71}}, 71},
        {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQ1RK1 w kq - 0 1", {{&kingShelterWeight, 2}}, 4},
        {"4k2r/p6p/8/8/8/8/P6P/4K1N1 w - - 0 1", {{&knightOnlyPenalty, -3}}, -12},
        {"r2qk3/8/8/8/2P5/3P4/8/R2QK3 w - - 0 1", backward, -13},
        {"4k3/8/8/8/8/1P6/1P6/4K3 w - - 0 1", {{&isolatedPawnPenalty, -1}, {&doubledPawnPenalty, -17}}, -19},
        {"r2qk3/8/8/4N3/3P4/8/8/R2QK3 w - - 0 1", outpost, 17},
        {"4k3/8/8/8/8/8/8/1N2K3 w - - 0 1", {{&knightEndgameWeight, -4}}, -14},
        {"2b1k3/8/8/8/8/8/8/2B1KB2 w - - 0 1", {{&bishopPairBonus, 40}}, 40},
        {"4k3/8/8/8/8/8/8/B3K3 w - - 0 1", {{&bishopMobilityWeight, 21}}, 6},
        {"4k3/8/8/8/4p3/4P3/3B4/7K w - - 0 1", bishopPawns, -9},
        {"4k3/3R4/8/8/8/8/8/4K3 w - - 0 1", {{&rookSeventhBonus, 28}, {&rookOpenFileBonus, 11}}, 39},
        {"4k3/RR6/8/8/8/8/8/4K3 w - - 0 1", {{&rookSeventhBonus, 28}, {&rookSeventhDoubledBonus, -5}}, 2 * (28 - 5)},
        {"4k3/3p4/8/8/8/8/3R4/3RK3 w - - 0 1", {{&rookDoubledBonus, 9}, {&rookHalfOpenBonus, 9}}, 27},
        {"4k3/8/8/8/8/8/8/R3K3 w - - 0 1", {{&rookMobilityWeight, 15}}, 10},
        {"4k3/8/8/8/8/8/8/QQ2K3 w - - 0 1", {{&queenAloneBonus, 48}}, 72},
        {"rnbqkbnr/pppppppp/8/8/8/3Q4/PPPPPPPP/RNB1KBNR w - - 0 1", {{&queenEarlyPenalty, -6}}, -24},
        {"6bk/6pp/8/8/8/p7/8/4K3 w - - 0 1", {{&passedRaceWeight, 11}}, 9},
        {"4k3/8/8/8/8/8/8/2B1K3 w - - 0 1", danger, -5 + 37},  // the last shift waits for White's bishop to go
        {"6k1/8/5N2/8/8/8/8/Q3K3 w - - 0 1", {{&kingDangerWeight, -29}, {&evalWeights[61], 10}}, 14},
        // the literal else chain: White short of a rook gets the wing term too, Black short nothing else
        {"8/8/8/3K4/8/8/8/r3k3 w - - 0 1", kingPlace, 18 + 14},
        {"8/1P5k/8/8/8/8/8/7K w - - 0 1", passer, 140},
        // a5 against Kd7 is caught, but with Black to move the flag of e7 is read
        {"8/3k4/8/P7/8/8/8/7K b - - 0 1", unstoppable, 68},
        {"4k3/8/1p6/2P5/1P6/8/8/4K3 w - - 0 1", candidate, 27},
    };
    for (const auto& c : cases) EXPECT_EQ(term(c.fen, c.set), c.value) << c.fen;
    EXPECT_EQ(boardFrom("6k1/5p1p/6p1/8/8/6P1/5P1P/6K1 w - - 0 1").calculatePStructW(1), 8);
    EXPECT_TRUE(boardFrom("4k3/3p4/8/2n5/4N3/8/1P6/4K3 w - - 0 1").drivenAwayByPawn(37, -1));  // c5: b2-b4
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
