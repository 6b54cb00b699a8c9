#include <dirent.h>
#include <signal.h>

#include <fstream>

#include "../shell/protocolSession.h"

namespace {

// The search process: the engine's child started with the role argument "0".
int searchProcessOf(int enginePid) {
    DIR* dir = opendir("/proc");
    int found = 0;
    while (dirent* entry = readdir(dir)) {
        const int pid = atoi(entry->d_name);
        if (pid <= 0) continue;
        std::string name, state;
        int parent = 0;
        std::ifstream(std::string("/proc/") + entry->d_name + "/stat") >> name >> name >> state >> parent;
        std::ifstream in(std::string("/proc/") + entry->d_name + "/cmdline");
        const std::string command((std::istreambuf_iterator<char>(in)), {});
        if (parent == enginePid && command.size() >= 2 && command.compare(command.size() - 2, 2, std::string("0\0", 2)) == 0)
            found = pid;
    }
    closedir(dir);
    return found;
}

}  // namespace

using SearchProcessLoss = ProtocolSession;

// A killed search process never leaves the engine hanging: it says so in
// the protocol's words and exits, leaving nothing behind (checked on tear-down).
TEST_F(SearchProcessLoss, TheEngineSaysSoAndExits) {
    const struct { const char* start; const char* ready; const char* search; const char* searching; const char* message; } cases[] = {
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
