#include <fstream>
#include <string>

#include "../shell/protocolSession.h"
#include "eval/evalWeightsFile.h"

namespace {

using TuneSession = ProtocolSession;

// Two positions with scores, as the labelling tool writes them.
constexpr const char* results =
    "r1bqkbnr/pppp1ppp/2n5/4p3/4P3/5N2/PPPP1PPP/RNBQKB1R w KQkq - 2 3\n+25\n"
    "6k1/5ppp/8/8/8/8/5PPP/3R2K1 w - - 0 1\n+480\n";

}  // namespace

TEST_F(TuneSession, TuneStopsOnForceTuneleMeasuresAndEndOfInputEndsTheEngine) {
    std::ofstream(directory + "/!finalResults.txt") << results;
    start();
    engine->send("xboard\nnopost\n");
    expectReply("tune\n", "\nparam=2; paramValue=-12; baseScore=");
    expectReply("force\nping 1\n", "pong 1\n");
    EXPECT_NE(file("!output_settings.txt").find("Round 0: startScore="), std::string::npos);
    expectReply("tunele\n", "=== PLY:3 ===\n");
    EXPECT_TRUE(engine->waitFor("conc=", 10000));
    engine->closeInput();
    EXPECT_EQ(engine->exitStatus(5000), 0);
    EXPECT_NE(file("!output_settings.txt").find("PLY:1 MARGIN=350 "), std::string::npos);
}

TEST_F(TuneSession, BenchepdReportsEveryPositionAndWritesTheMissedOnes) {
    std::ofstream(directory + "/!epd_suite.epd")
        << "2rr3k/pp3pp1/1nnqbN1p/3pN3/2pP4/2P3Q1/PPB4P/R4RK1 w - - bm Qg6; id \"WAC.001\";\n"
           "this is no position\n"
           "6k1/5ppp/8/8/8/8/5PPP/3R2K1 w - - bm Rd2;\n"
           "6k1/5ppp/8/8/8/8/5PPP/3R2K1 w - - am Rd8#;\n";
    start();
    engine->send("xboard\nnopost\nst 1\n");
    expectReply("benchepd\n", "solved 1 of 3\n", 20000);
    const std::string& out = engine->output;
    EXPECT_NE(out.find("WAC.001: expected bm Qg6; played Qg6; solved; "), std::string::npos);
    EXPECT_NE(out.find("Error (epd line 2): not a position: this is no position\n"), std::string::npos);
    EXPECT_EQ(file("!output_incorrect.epd"),
              "6k1/5ppp/8/8/8/8/5PPP/3R2K1 w - - bm Rd2;\n"
              "6k1/5ppp/8/8/8/8/5PPP/3R2K1 w - - am Rd8#;\n");
    quit();
}

TEST_F(TuneSession, AWeightsFileNamedInTheSettingsIsUsedByTheBoardAndTheSearch) {
    evalWeightList weights = defaultEvalWeights;
    weights[32] = 5000;  // bishop pair
    ASSERT_TRUE(writeEvalWeightsFile((directory + "/tuned.txt").c_str(), weights));
    start("pref:weights-file=tuned.txt\n");
    expectReply("xboard\nsetboard 4k3/8/8/8/8/8/8/2BBK3 w - - 0 1\n", "eval=5");
    expectReply("st 1\nsd 1\ngo\n", "\nmove ");
    EXPECT_NE(engine->output.find("\n 1  5"), std::string::npos) << engine->output;
    quit();
}

TEST_F(TuneSession, AFaultyWeightsFileIsReportedAndTheBuiltInWeightsStay) {
    std::string weights;
    for (const char* line : {"developmentWeight=0", "uncastledPenalty=-2"}) weights += std::string(line) + "\n";
    std::ofstream(directory + "/short.txt") << weights;
    start("pref:weights-file=short.txt\n");
    expectReply("xboard\n",
                "Error (weights file): short.txt no value for blockedCentrePawnPenalty; the built-in "
                "weights stay\n");
    expectReply("setboard 4k3/8/8/8/8/8/8/2BBK3 w - - 0 1\n", "eval=");
    EXPECT_EQ(engine->output.find("eval=5"), std::string::npos);
    quit();
}
