#include <random>

#include "protocolSession.h"

namespace {

// Occurrences of text in output from position from on.
int count(const std::string& output, const std::string& text, size_t from = 0) {
    int n = 0;
    for (size_t at = output.find(text, from); at != std::string::npos; at = output.find(text, at + 1)) n++;
    return n;
}

// Sends the commands as one write, or split at a random point after a random gap.
void sendRacing(engineProcess& engine, const std::string& commands, std::mt19937& random) {
    const size_t split = commands.find('\n', random() % commands.size());
    if (random() % 2 || split == std::string::npos) {
        engine.send(commands);
        return;
    }
    engine.send(commands.substr(0, split + 1));
    usleep(random() % 3000);
    engine.send(commands.substr(split + 1));
}

}  // namespace

using Races = ProtocolSession;

// A stop, a ponder hit or a new game that comes with the search start, or
// a few milliseconds after it, is never lost: every round is answered.
TEST_F(Races, UciStopsAndPonderHitsRightBehindTheSearchStart) {
    start();
    engine->send("uci\nsetoption name Ponder value true\nsetoption name OwnBook value false\nisready\n");
    ASSERT_TRUE(engine->waitFor("readyok\n"));
    expectReply("position startpos\ngo movetime 50\n", "bestmove ");
    std::mt19937 random(12);
    const char* endings[] = {"ponderhit\n", "stop\n"};
    for (int round = 0; round < 200; round++) {
        const size_t from = engine->output.size();
        sendRacing(*engine,
                   std::string("position startpos moves e2e4 e7e5 g1f3\ngo ponder wtime 400 btime 400\n") +
                       endings[random() % 2] + "isready\n",
                   random);
        ASSERT_TRUE(engine->waitFor("readyok\n", 10000, from)) << "round " << round;
        ASSERT_TRUE(engine->waitFor("bestmove ", 10000, from)) << "round " << round;
    }
    expectReply("isready\n", "readyok\n");
    EXPECT_EQ(count(engine->output, "bestmove "), 201);
    quit();
}

TEST_F(Races, XboardAnalysisAndNewGamesRightBehindTheSearchStart) {
    start();
    engine->send("xboard\nprotover 2\nnopost\n");
    std::mt19937 random(34);
    for (int round = 0; round < 150; round++) {
        const std::string ping = "ping " + std::to_string(round) + "\n";
        const size_t from = engine->output.size();
        if (round % 2) sendRacing(*engine, "new\nforce\nanalyze\ne2e4\n" + ping, random);
        else sendRacing(*engine, "new\nst 1\ngo\nnew\nforce\n" + ping, random);
        ASSERT_TRUE(engine->waitFor("pong " + std::to_string(round) + "\n", 10000, from)) << "round " << round;
        engine->send("exit\n");
    }
    // No move of a search that a new game stopped comes out after it.
    const size_t lastNew = engine->output.rfind("pong ");
    EXPECT_FALSE(engine->waitFor("\nmove ", 1500, lastNew));
    quit();
}
