#include <dirent.h>
#include <signal.h>

#include <fstream>
#include <random>
#include <sstream>

#include "../shell/protocolSession.h"

namespace {

const char* const twoProcesses = "pref:MAXPROCESSES=1\n";

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
        "5rk1/1ppb3p/p1pb4/6q1/3P1p1r/2P1R2P/PP1BQ1P1/5RKN w - - 0 1",   // Rg3
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

TEST_F(ParallelSearch, ManyInterruptedSearchesEndCleanly) {
    start(twoProcesses);
    engine->send("xboard\nprotover 2\nnopost\nforce\n");
    std::mt19937 random(7);
    const char* commands[] = {"?\n", "force\n", "new\nforce\n"};
    for (int i = 0; i < 150; i++) {
        engine->send("setboard r1bq1rk1/pp2bppp/2n1pn2/3p4/2PP4/2N1PN2/PP3PPP/R2QKB1R w KQ - 0 9\nst 5\ngo\n");
        usleep(1000 * (random() % 40));
        engine->send(commands[random() % 3]);
        engine->send("force\n");
    }
    expectReply("ping 99\n", "pong 99\n", 30000);
    const int pid = enginePid;
    expectReply("quit\n", "Getting rid of handle");
    EXPECT_EQ(engine->exitStatus(), 0);
    EXPECT_EQ(engine->output.find("Timeout"), std::string::npos);
    EXPECT_EQ(engine->output.find("WAIT_"), std::string::npos);
    EXPECT_EQ(engine->output.find("ERROR"), std::string::npos);
    usleep(200 * 1000);
    EXPECT_TRUE(processesOf(pid).empty());
}

TEST_F(ParallelSearch, AKilledSlaveDoesNotHangTheEngine) {
    start(twoProcesses);
    engine->send("xboard\nprotover 2\nforce\n");
    ASSERT_TRUE(engine->waitFor("feature done=1\n"));
    std::vector<int> roles = processesOf(enginePid);
    ASSERT_EQ(roles.size(), 2u);
    // The slave is the later of the two role processes.
    const int slave = *std::max_element(roles.begin(), roles.end());
    engine->send("setboard r1bq1rk1/pp2bppp/2n1pn2/3p4/2PP4/2N1PN2/PP3PPP/R2QKB1R w KQ - 0 9\nst 3\ngo\n");
    ASSERT_TRUE(engine->waitFor("\n 8  ", 20000));
    kill(slave, SIGKILL);
    // A block the slave held is given up after the wait's time-out.
    EXPECT_TRUE(engine->waitFor("\nmove ", 25000));
    expectReply("quit\n", "Getting rid of handle");
    EXPECT_EQ(engine->exitStatus(), 0);
}
