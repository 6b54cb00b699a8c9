#include "tune/tuner.h"
#include "../support/process.h"

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <memory>
#include <string>

#include "../board/testBoard.h"
#include "../support/scratchDirectory.h"
#include "../support/sharedTable.h"
#include "eval/evalHashtable.h"
#include "eval/evalWeightsFile.h"
#include "search/localSearch.h"

namespace {

constexpr int tuneJob = 4;

localSearch& testEngine() {
    static localSearch instance(8);
    return instance;
}

board& workspace() {
    static board b = boardFrom("4k3/8/8/8/8/8/8/4K3 w - - 0 1");
    return b;
}

// Each test in a scratch directory, where the tuner's files go, with the
// built-in weights before and after and the tuning job posted.
class Tuning : public ::testing::Test {
protected:
    const scratchDirectory directory;
    const workingDirectory inside{directory.path};
    void SetUp() override {
        ASSERT_TRUE(inside.changed);
        resetEvalWeights();
        testEngine().shared->searchLoopRunFlag = 1;
        testEngine().shared->searchCommand = tuneJob;
    }
    void TearDown() override { resetEvalWeights(); }
};

// The error is a made-up function of the weights; counts its calls.
class FakeTuner : public tuner {
public:
    std::function<float()> error;
    int measurements = 0;
    FakeTuner() : tuner(*testEngine().shared, testEngine().tree, workspace(), tuneJob) {}

protected:
    float measure(int) override {
        measurements++;
        return error();
    }
};

// The measurement tune makes for each trial, as it stands.
class MeasuringTuner : public tuner {
public:
    MeasuringTuner() : tuner(*testEngine().shared, testEngine().tree, workspace(), tuneJob) {}
    using tuner::measure;
};

}  // namespace

TEST_F(Tuning, OnlyStrictImprovementsAreKeptAndPassOneSkipsNothing) {
    FakeTuner t;
    testing::internal::CaptureStdout();
    // Ties everywhere: nothing moves, every weight is tried both ways and gets a skip.
    t.error = [] { return 5.0f; };
    float base = 5.0f;
    EXPECT_FALSE(t.tuneRound(0, 1, base));
    EXPECT_EQ(t.measurements, 2 * evalWeightCount);
    EXPECT_EQ(evalWeights, defaultEvalWeights);
    for (int counter : t.skipCounters) EXPECT_EQ(counter, 1);

    // Pass 0 now skips all of them; pass 1 tries them all again.
    t.measurements = 0;
    EXPECT_FALSE(t.tuneRound(0, 1, base));
    EXPECT_EQ(t.measurements, 0);
    EXPECT_FALSE(t.tuneRound(1, 1, base));
    EXPECT_EQ(t.measurements, 2 * evalWeightCount);

    // Lower is better: the error falls as passedBase (-56, step 2) rises, so
    // the low trial is refused, the high one kept, and its skip counter cleared.
    t.error = [] { return 100.0f - passedBase; };
    base = 156.0f;
    t.skipCounters[18] = 3;
    EXPECT_TRUE(t.tuneRound(1, 1, base));
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_EQ(passedBase, -54);
    EXPECT_NE(printed.find("\nparam=18; paramValue=-56; baseScore=156.000000\nparam=18; paramValue=-58; lowScore= "
                           "158.000000\nparam=18; paramValue=-54; highScore=154.000000\nnew paramValue=-54\n"),
              std::string::npos);
    EXPECT_EQ(t.skipCounters[18], 0);
}

TEST_F(Tuning, ConcordanceIsTheRootMeanSquareOfClampedSearchScoresAgainstTheReferences) {
    // Two queens and a rook up: the side to move's search score clamps to
    // +-1600 whatever the depth; references clamp and drop their fraction.
    const char* white = "4k3/8/8/8/8/8/8/QQR1K3 w - - 0 1";
    const char* black = "4k3/8/8/8/8/8/8/QQR1K3 b - - 0 1";
    std::ofstream(resultsFileName) << black << "\n-2000.7\n" << black << "\n+0\n\n" << white << "\n+1564.9\n";
    sharedData& shared = *testEngine().shared;
    shared.maxDepth = 35;
    tuner t(shared, testEngine().tree, workspace(), tuneJob);
    float concordance = 0;
    printed([&] { concordance = t.calculateConcordance(2); });
    EXPECT_FALSE(t.stopped);
    EXPECT_NEAR(concordance, 923.994f, 0.001f);  // sqrt((0 + 1600 * 1600 + 36 * 36) / 3), the mean truncated
    EXPECT_EQ(shared.maxDepth, 35);

    // A withdrawn job stops at the next position.
    shared.searchCommand = 0;
    EXPECT_EQ(t.calculateConcordance(2), 0.0f);
    EXPECT_TRUE(t.stopped);
}

// tune measures every trial on the tables as the searches before left them
// (only tunele clears them): the evaluation cache's keys carry the weights.
TEST_F(Tuning, TuneMeasuresWithoutClearingTheTables) {
    std::ofstream(resultsFileName) << "4k3/8/8/8/8/8/8/QQR1K3 w - - 0 1\n+1600\n";
    const sharedTableName name{"sharedEvalHashtable", "TestTune-"};
    auto cache = std::make_unique<evalHashtable>(name.instance.c_str(), 1, false);
    board::evalCache = cache.get();
    constexpr uint64_t key = 0x0123456789ABCDEF;
    testEngine().table.recordHash(key, 20, 0, 77, hashtable::exactBound, 0);
    cache->store(key, 55);
    MeasuringTuner t;
    printed([&] { t.measure(1); });
    board::evalCache = nullptr;
    EXPECT_EQ(testEngine().table.probeHash(key, 20, -100, 100), 77);
    EXPECT_EQ(cache->probe(key), 55);
    printed([&] { cache.reset(); });  // the unmapping is reported
}
