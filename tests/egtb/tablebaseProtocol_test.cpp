#include "../shell/protocolSession.h"
#include "tablebaseTestData.h"

using TablebaseSession = ProtocolSession;

namespace {

const std::string bothKinds = "pref:egtb-path=" + gaviotaTables + ":" + syzygyTables + "\n";

}  // namespace

// Two engines with the tables side by side; each says what it found and plays on.
TEST_F(TablebaseSession, XboardEnginesSayWhatTheyFoundAndPlayTheMateDistance) {
    start(bothKinds + "pref:NalimovCache=16\n");
    const scratchDirectory otherDirectory;
    otherDirectory.write(settingsFileName, bothKinds);
    engineProcess other(otherDirectory.path);
    other.send("xboard\nsetboard 8/8/8/5k2/8/8/1Q6/K7 w - - 0 1\nst 1\ngo\n");
    expectReply("xboard\n", "Egtbs initializated(4)\nEgtb cache size 16M\n");
    expectReply("setboard 8/8/8/8/8/2k5/1R6/K7 w - - 0 1\nst 1\npost\ngo\n", "\nmove ", 10000);
    EXPECT_NE(engine->output.find("  15970  "), std::string::npos) << engine->output;  // mate in 16
    EXPECT_TRUE(other.waitFor("Egtbs initializated(4)\n") && other.waitFor("\nmove ", 10000)) << other.output;
    other.send("quit\n");
    EXPECT_EQ(other.exitStatus(), 0);
    quit();
}

TEST_F(TablebaseSession, UciPathWithSpacesAndSyzygyAlonePlaysTheDistanceMove) {
    const std::string tables = directory + "/syzygy tables";
    std::system(("mkdir '" + tables + "' && cp " + syzygyTables + "/K?vK.* '" + tables + "'").c_str());
    start();
    engine->send("uci\nsetoption name NalimovPath value " + tables + "\nsetoption name NalimovCache value 8\n");
    expectReply("isready\n", "readyok\n");
    // A UCI front end sees only UCI lines.
    EXPECT_TRUE(engine->waitFor("\ninfo string Egtbs initializated(3)\ninfo string Egtb cache size 8M\n"))
        << engine->output;
    expectReply("position fen 8/8/8/8/8/2k5/1R6/K7 w - - 0 1\ngo movetime 500\n", "bestmove a1a2\n");
    engine->send("quit\n");
    EXPECT_EQ(engine->exitStatus(), 0);
}
