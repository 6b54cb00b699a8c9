#include "evalFit.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "../board/testBoard.h"
#include "../support/scratchDirectory.h"

namespace {

// Bishop pairs and doubled pawns on either side, never both in one
// position, so that each of the two weights below has its own best value.
const char* const positions[] = {
    "4k3/pp3ppp/8/8/8/8/PP3PPP/2B1KB2 w - - 0 1",    "2b1kb2/pp3ppp/8/8/8/8/PP3PPP/4K3 b - - 0 1",
    "4k3/p1p2ppp/1p6/8/8/1P6/P1P2PPP/4K3 w - - 0 1", "4k3/p4ppp/1p6/1p6/8/8/PPP2PPP/4K3 b - - 0 1",
    "4k3/ppp2ppp/8/8/5P2/8/PP3PP1/4K3 b - - 0 1",    "4kb2/pp3p1p/6p1/8/8/6P1/PP3P1P/2B1KB2 b - - 0 1",
};

constexpr int bishopPairIndex = 32, doubledPawnIndex = 12;

// The positions scored with the built-in weights but for two.
std::vector<fitSample> scoredBy(int bishopPair, int doubledPawn) {
    resetEvalWeights();
    setEvalWeight(bishopPairIndex, bishopPair);
    setEvalWeight(doubledPawnIndex, doubledPawn);
    std::vector<fitSample> samples;
    for (const char* fen : positions) {
        board b = boardFrom(fen);
        samples.push_back({b, b.evaluate(-mateScore, mateScore)});
    }
    resetEvalWeights();
    return samples;
}

class EvalFit : public ::testing::TestWithParam<fitErrorKind> {
protected:
    void TearDown() override { resetEvalWeights(); }
};

// Only the two weights move: the other weights could trade against them on
// so few positions, and then the best weights would not be known.
TEST_P(EvalFit, FindsTheWeightsThatMadeTheScores) {
    evalFit fit(scoredBy(64, -30), scoredBy(64, -30), GetParam(), 2);
    fit.fitOnly({bishopPairIndex, doubledPawnIndex});
    const evalWeightList start = evalWeights;
    int rounds = 0;
    const evalWeightList best = fit.run(50, 2, [&](const evalFit::round&) { rounds++; });
    EXPECT_EQ(best[bishopPairIndex], 64);
    EXPECT_EQ(best[doubledPawnIndex], -30);
    EXPECT_EQ(fit.fitError(), 0);
    EXPECT_EQ(fit.holdOutError(), 0);
    EXPECT_EQ(evalWeights, best);
    EXPECT_NE(best, start);
    EXPECT_LT(rounds, 50);
}

// The hold-out positions were scored with the start weights: every move the
// fit makes raises their error, so it stops after the patience rounds that
// move weights and hands back the start.
TEST_P(EvalFit, KeepsTheWeightsOfTheLowestHoldOutError) {
    evalFit fit(scoredBy(64, -30), scoredBy(defaultEvalWeights[bishopPairIndex], defaultEvalWeights[doubledPawnIndex]),
                GetParam(), 2);
    std::vector<evalFit::round> rounds;
    const evalWeightList best = fit.run(50, 3, [&](const evalFit::round& r) { rounds.push_back(r); });
    EXPECT_EQ(best, defaultEvalWeights);
    EXPECT_EQ(evalWeights, defaultEvalWeights);
    ASSERT_FALSE(rounds.empty());
    EXPECT_TRUE(rounds[0].best);
    EXPECT_EQ(rounds[0].holdOutError, 0);
    int movingRounds = 0;
    for (size_t i = 1; i < rounds.size(); i++) {
        EXPECT_FALSE(rounds[i].best);
        EXPECT_LT(rounds[i].fitError, rounds[0].fitError);
        movingRounds += rounds[i].changes > 0;
    }
    // Three, or fewer when the fit set's minimum came first.
    EXPECT_GE(movingRounds, 1);
    EXPECT_LE(movingRounds, 3);
}

INSTANTIATE_TEST_SUITE_P(ErrorKinds, EvalFit, ::testing::Values(fitErrorKind::centipawns, fitErrorKind::expectedScore));

TEST(FitSamples, ReadsTheTunersReferenceFormat) {
    const scratchDirectory directory;
    directory.write("reference.txt",
                    "+12\n"  // no position yet: passed over
                    "4k3/8/8/8/8/8/4P3/4K3 w - - 0 1\n+2400\n"
                    "\n4k3/8/8/8/8/8/4P3/4K3 b - - 0 1\n-35.9\n-1700\n");
    std::vector<fitSample> samples;
    std::string error;
    ASSERT_TRUE(readFitSamples(directory.file("reference.txt").c_str(), samples, error)) << error;
    ASSERT_EQ(samples.size(), 3u);
    EXPECT_EQ(samples[0].reference, 1600);
    EXPECT_EQ(samples[0].position.toMove, 1);
    EXPECT_EQ(samples[1].reference, -35);
    EXPECT_EQ(samples[1].position.toMove, -1);
    EXPECT_EQ(samples[2].reference, -1600);

    std::vector<fitSample> none;
    EXPECT_FALSE(readFitSamples(directory.file("missing.txt").c_str(), none, error));
    EXPECT_FALSE(error.empty());
}

}  // namespace
