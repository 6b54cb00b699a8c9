#include <signal.h>

#include "../shell/protocolSession.h"
#include "../support/process.h"

namespace {

// The search process: the engine's child started with the role argument "0".
int searchProcessOf(int enginePid) {
    int found = 0;
    forEachProcess([&](const processEntry& p) {
        const std::string command = p.file("cmdline");  // ends "0\0"
        if (p.parent == enginePid && command.size() >= 2 && command[command.size() - 2] == '0') found = p.pid;
    });
    return found;
}

}  // namespace

using SearchProcessLoss = ProtocolSession;

// A killed search process never leaves the engine hanging: it says so in
// the protocol's words and exits, leaving nothing behind (checked on tear-down).
TEST_F(SearchProcessLoss, TheEngineSaysSoAndExits) {
    const struct {
        const char* start;
        const char* ready;
        const char* search;
        const char* searching;
        const char* message;
    } cases[] = {
        {"uci\nisready\n", "readyok\n", "position startpos\ngo infinite\n", "info depth 3 ",
         "info string The search process has stopped working"},
        {"xboard\nprotover 2\n", "feature done=1\n", "force\nhard\nanalyze\n", "\n 3  ",
         "tellusererror The search process has stopped working"},
    };
    for (const auto& c : cases) {
        start();
        engine->send(c.start);
        ASSERT_TRUE(engine->waitFor(c.ready));
        engine->send(c.search);
        ASSERT_TRUE(engine->waitFor(c.searching, 10000));
        const int searchProcess = searchProcessOf(enginePid);
        ASSERT_GT(searchProcess, 0);
        kill(searchProcess, SIGKILL);
        EXPECT_TRUE(engine->waitFor(c.message, 3000)) << engine->output;
        EXPECT_EQ(engine->exitStatus(3000), 1);
        engine.reset();
        EXPECT_EQ(namesLeft(), 0);
    }
}
