#include "tune/tuner.h"
#include "../support/process.h"

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <string>

#include "../board/testBoard.h"
#include "../support/scratchDirectory.h"
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
    EXPECT_NE(printed.find("\nparam=0; SKIP; baseScore=5.000000\n"), std::string::npos);
    EXPECT_NE(printed.find("remaining value=71\n"), std::string::npos);
    EXPECT_EQ(t.skipCounters[18], 0);
}

TEST_F(Tuning, RoundsAreLoggedAndWrittenAndAStopRestoresTheWeightUnderTrial) {
    FakeTuner t;
    t.error = [&t] {
        if (t.measurements == 200) t.stopped = true;  // inside pass 1's first round
        return 5.0f;
    };
    printed([&] { t.tune(); });
    EXPECT_EQ(t.measurements, 200);
    EXPECT_EQ(evalWeights, defaultEvalWeights);
    std::ifstream log(tuningLogFileName);
    std::string line;
    std::getline(log, line);
    EXPECT_EQ(line.rfind("Round 0: startScore=5.000000, params= 0, -2, -12, -44, ", 0), 0u) << line;
    std::string rest((std::istreambuf_iterator<char>(log)), std::istreambuf_iterator<char>());
    EXPECT_NE(rest.find("\n\n=== PLY:1 ===\nbaseScore=5.000000\nRound1: startScore=5.000000, params= 0, -2, "),
              std::string::npos);
    evalWeightList written;
    std::string error;
    ASSERT_TRUE(readEvalWeightsFile(tunedWeightsFileName, written, error)) << error;
    EXPECT_EQ(written, defaultEvalWeights);
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

    // A withdrawn job stops at the next position; a file without scores measures nothing.
    shared.searchCommand = 0;
    EXPECT_EQ(t.calculateConcordance(2), 0.0f);
    EXPECT_TRUE(t.stopped);
    shared.searchCommand = tuneJob;
    std::ofstream(resultsFileName) << white << "\n";
    tuner empty(shared, testEngine().tree, workspace(), tuneJob);
    testing::internal::CaptureStdout();
    EXPECT_EQ(empty.calculateConcordance(1), 0.0f);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "No reference scores in !finalResults.txt\n");
    EXPECT_TRUE(empty.stopped);
}

// A weights file the engine reads whole or not at all (the engine using a
// sound one and reporting a faulty one: TuneSession).
TEST_F(Tuning, FaultyWeightsFilesChangeNothing) {
    const std::string full = [] {
        std::string text;
        for (int i = 0; i < evalWeightCount; i++) text += std::string(evalWeightNames[i]) + "=1\n";
        return text;
    }();
    const std::pair<std::string, std::string> faulty[] = {
        {full.substr(0, full.rfind("queenTropism5")), "no value for queenTropism5"},
        {full + "developmentWeight=3\n", "line 81 is not a new weight and its value"},
        {"frobnication=3\n" + full, "line 1 is not a new weight and its value"},
        {"developmentWeight=7x\n" + full.substr(full.find('\n') + 1), "line 1 is not a new weight and its value"},
        {"developmentWeight=99999999999\n" + full.substr(full.find('\n') + 1),
         "line 1 is not a new weight and its value"},
    };
    evalWeightList read = defaultEvalWeights;
    std::string error;
    for (const auto& [text, reason] : faulty) {
        std::ofstream("bad.txt") << text;
        EXPECT_FALSE(readEvalWeightsFile("bad.txt", read, error));
        EXPECT_EQ(error, reason);
        EXPECT_EQ(read, defaultEvalWeights);
    }
    EXPECT_FALSE(readEvalWeightsFile("missing.txt", read, error));
    std::ofstream("blank.txt") << "\n" << full << "\r\n";
    EXPECT_TRUE(readEvalWeightsFile("blank.txt", read, error)) << error;
    EXPECT_EQ(read[0], 1);
}
