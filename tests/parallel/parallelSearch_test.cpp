#include <dirent.h>
#include <signal.h>

#include <chrono>
#include <fstream>
#include <random>
#include <sstream>

#include "../shell/protocolSession.h"

namespace {

const char* const twoProcesses = "pref:MAXPROCESSES=1\n";
constexpr int waitTimeout = 10000;  // the engine's bound on a wait for another process

// Processes still carrying the engine's instance tag in their environment.
std::vector<int> processesOf(int enginePid) {
    std::vector<int> found;
    const std::string tag = std::string("TALVIN_INSTANCE=") + std::to_string(enginePid);
    if (DIR* dir = opendir("/proc")) {
        while (dirent* entry = readdir(dir)) {
            const int pid = atoi(entry->d_name);
            if (pid <= 0 || pid == enginePid) continue;
            std::ifstream in(std::string("/proc/") + entry->d_name + "/environ");
            std::string environment((std::istreambuf_iterator<char>(in)), {});
            std::ifstream status(std::string("/proc/") + entry->d_name + "/cmdline");
            std::string command((std::istreambuf_iterator<char>(status)), {});
            // The role processes are the engine program with one argument.
            if (environment.find(tag + '\0') != std::string::npos && command.find("talvin") != std::string::npos)
                found.push_back(pid);
        }
        closedir(dir);
    }
    return found;
}

// Polls, for as long as the engine's own waits may take, until no role
// process of the engine is left.
bool noProcessLeft(int enginePid) {
    for (int i = 0; i < waitTimeout / 10; i++) {
        if (processesOf(enginePid).empty()) return true;
        usleep(10 * 1000);
    }
    return false;
}

int occurrences(const std::string& text, const std::string& word) {
    int count = 0;
    for (size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) count++;
    return count;
}

// The score of the last thinking line (xboard form: " depth  score  time  nodes pv").
int lastScore(const std::string& output) {
    int score = 0;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
        int depth, value, time;
        long long nodes;
        if (sscanf(line.c_str(), " %d  %d  %d  %lld ", &depth, &value, &time, &nodes) == 4) score = value;
    }
    return score;
}

}  // namespace

using ParallelSearch = ProtocolSession;

TEST_F(ParallelSearch, TwoProcessesFindTheSameMovesAsOne) {
    const char* positions[] = {
        "2rr3k/pp3pp1/1nnqbN1p/3pN3/2pP4/2P3Q1/PPB4P/R4RK1 w - - 0 1",  // Qg6
        "5rk1/1ppb3p/p1pb4/6q1/3P1p1r/2P1R2P/PP1BQ1P1/5RKN w - - 0 1",  // Rg3
        "r1bq1rk1/pp2bppp/2n1pn2/3p4/2PP4/2N1PN2/PP3PPP/R2QKB1R w KQ - 0 9",
    };
    for (const char* fen : positions) {
        int scores[2];
        std::string moves[2];
        for (int processes = 0; processes < 2; processes++) {
            start(processes ? twoProcesses : "");
            engine->send(std::string("xboard\nforce\nsetboard ") + fen + "\nst 60\nsd 7\ngo\n");
            ASSERT_TRUE(engine->waitFor("\nmove ", 60000)) << fen;
            const size_t at = engine->output.find("\nmove ") + 6;
            moves[processes] = engine->output.substr(at, engine->output.find('\n', at) - at);
            scores[processes] = lastScore(engine->output);
            EXPECT_EQ(engine->output.find("Timeout"), std::string::npos);
            engine->send("quit\n");
            EXPECT_EQ(engine->exitStatus(), 0);
            engine.reset();
            EXPECT_EQ(namesLeft(), 0);
        }
        EXPECT_NEAR(scores[1], scores[0], 60) << fen;
        if (fen != positions[2]) {
            EXPECT_EQ(moves[1], moves[0]) << fen;
        }
    }
}

// Searches stopped at random moments, with more processes than cores too:
// no lost or hung process, no time-out, nothing left behind.
TEST_F(ParallelSearch, ManyInterruptedSearchesEndCleanly) {
    for (int slaves : {1, 2, 7}) {
        start("pref:MAXPROCESSES=" + std::to_string(slaves) + "\n");
        engine->send("xboard\nprotover 2\nnopost\nforce\n");
        std::mt19937 random(7);
        const char* commands[] = {"?\n", "force\n", "new\nforce\n"};
        for (int i = 0; i < 100; i++) {
            engine->send("setboard r1bq1rk1/pp2bppp/2n1pn2/3p4/2PP4/2N1PN2/PP3PPP/R2QKB1R w KQ - 0 9\nst 5\ngo\n");
            usleep(1000 * (random() % 40));
            engine->send(commands[random() % 3]);
            engine->send("force\n");
        }
        expectReply("ping 99\n", "pong 99\n", 30000);
        const int pid = enginePid;
        expectReply("quit\n", "Getting rid of handle");
        EXPECT_EQ(engine->exitStatus(), 0) << slaves;
        EXPECT_EQ(engine->output.find("Timeout"), std::string::npos) << slaves;
        EXPECT_EQ(engine->output.find("WAIT_"), std::string::npos) << slaves;
        EXPECT_EQ(engine->output.find("ERROR"), std::string::npos) << slaves;
        EXPECT_EQ(engine->output.find("WARNING"), std::string::npos) << slaves;
        EXPECT_TRUE(noProcessLeft(pid)) << slaves;
        engine.reset();
        EXPECT_EQ(namesLeft(), 0) << slaves;
    }
}

// A killed slave costs one wait for a block, once: afterwards it is not
// claimed again, and the other processes go on. Every wait below is bounded
// by the engine's own time-out, not by how fast a loaded machine searches.
TEST_F(ParallelSearch, AKilledSlaveCostsOneWaitOnly) {
    const std::string position = "force\nsetboard r1bq1rk1/pp2bppp/2n1pn2/3p4/2PP4/2N1PN2/PP3PPP/R2QKB1R w KQ - 0 9\n";
    for (int slaves : {1, 2}) {
        start("pref:MAXPROCESSES=" + std::to_string(slaves) + "\n");
        engine->send("xboard\nprotover 2\n");
        ASSERT_TRUE(engine->waitFor("feature done=1\n"));
        std::vector<int> roles = processesOf(enginePid);
        ASSERT_EQ(roles.size(), 1u + slaves);
        // The slaves are the later role processes.
        const int slave = *std::max_element(roles.begin(), roles.end());
        // Killed inside a long search, deep enough to split, which then stops.
        engine->send(position + "st 1000\ngo\n");
        ASSERT_TRUE(engine->waitFor("\n 6  ", 60000));
        kill(slave, SIGKILL);
        engine->send("?\n");
        size_t from = engine->output.size();
        for (int search = 0; search < 4; search++) {
            if (search > 0) engine->send(position + "st 1\ngo\n");
            ASSERT_TRUE(engine->waitFor("\nmove ", 3 * waitTimeout, from)) << slaves << " " << search;
            from = engine->output.find("\nmove ", from) + 1;
        }
        EXPECT_LE(occurrences(engine->output, "Timeout"), 1) << slaves;
        expectReply("quit\n", "Getting rid of handle");
        EXPECT_EQ(engine->exitStatus(), 0) << slaves;
        engine.reset();
        EXPECT_EQ(namesLeft(), 0) << slaves;
    }
}

// Uninterrupted searches deep enough to share nodes many levels down, with
// more processes than cores: the blocks never run out, no wait times out, and
// two and eight processes find the one clearly best move.
TEST_F(ParallelSearch, DeepSearchesWithManyProcessesShareWithoutRunningOut) {
    const char* fen = "2rr3k/pp3pp1/1nnqbN1p/3pN3/2pP4/2P3Q1/PPB4P/R4RK1 w - - 0 1";  // Qg6
    for (int slaves : {1, 7}) {
        start("pref:MAXPROCESSES=" + std::to_string(slaves) + "\n");
        engine->send(std::string("xboard\nforce\nsetboard ") + fen + "\nst 60\nsd 9\ngo\n");
        ASSERT_TRUE(engine->waitFor("\nmove ", 60000)) << slaves;
        EXPECT_NE(engine->output.find("\nmove g3g6\n"), std::string::npos) << slaves;
        for (const char* word : {"Timeout", "WARNING", "ERROR", "WAIT_"})
            EXPECT_EQ(engine->output.find(word), std::string::npos) << slaves << " " << word;
        expectReply("quit\n", "Getting rid of handle");
        EXPECT_EQ(engine->exitStatus(), 0) << slaves;
        engine.reset();
        EXPECT_EQ(namesLeft(), 0) << slaves;
    }
}
