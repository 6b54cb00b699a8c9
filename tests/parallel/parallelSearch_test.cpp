#include <signal.h>

#include <algorithm>
#include <random>
#include <sstream>

#include "../shell/protocolSession.h"

namespace {

constexpr int waitTimeout = 10000;  // the engine's bound on a wait for another process
const char* const middlegame = "r1bq1rk1/pp2bppp/2n1pn2/3p4/2PP4/2N1PN2/PP3PPP/R2QKB1R w KQ - 0 9";
const char* const queenSacrifice = "2rr3k/pp3pp1/1nnqbN1p/3pN3/2pP4/2P3Q1/PPB4P/R4RK1 w - - 0 1";  // Qg6

std::string slaves(int count) { return "pref:MAXPROCESSES=" + std::to_string(count) + "\n"; }

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

struct searchResult {
    std::string move;
    int score;
};

}  // namespace

class ParallelSearch : public ProtocolSession {
protected:
    // The move and last score of a search to depth, in an engine of its own that then ends cleanly.
    searchResult solve(const std::string& settings, const char* fen, int depth) {
        start(settings);
        engine->send(std::string("xboard\nforce\nsetboard ") + fen + "\nst 60\nsd " + std::to_string(depth) + "\ngo\n");
        EXPECT_TRUE(engine->waitFor("\nmove ", 60000)) << settings << fen;
        const size_t at = engine->output.find("\nmove ") + 6;
        const searchResult result{engine->output.substr(at, engine->output.find('\n', at) - at),
                                  lastScore(engine->output)};
        endCleanly(settings + fen);
        return result;
    }
    // Quits: no wait for another process timed out or failed (none of faults was printed), and no process or
    // shared-memory name of the engine is left, though the engine's own waits may take a while.
    void endCleanly(const std::string& context,
                    std::initializer_list<const char*> faults = {"Timeout", "WAIT_", "ERROR", "WARNING"}) {
        for (const char* word : faults) EXPECT_EQ(engine->output.find(word), std::string::npos) << context << word;
        quit();
        engine.reset();
        for (int i = 0; i < waitTimeout / 10 && !roleProcessesOf(enginePid).empty(); i++) usleep(10 * 1000);
        EXPECT_TRUE(roleProcessesOf(enginePid).empty()) << context;
        EXPECT_EQ(namesLeft(), 0) << context;
    }
};

TEST_F(ParallelSearch, TwoProcessesFindTheSameMovesAsOne) {
    const char* positions[] = {queenSacrifice, "5rk1/1ppb3p/p1pb4/6q1/3P1p1r/2P1R2P/PP1BQ1P1/5RKN w - - 0 1",  // Rg3
                               middlegame};
    for (const char* fen : positions) {
        const searchResult one = solve("", fen, 7), two = solve(slaves(1), fen, 7);
        EXPECT_NEAR(two.score, one.score, 60) << fen;
        if (fen != middlegame) {
            EXPECT_EQ(two.move, one.move) << fen;
        }
    }
}

// Uninterrupted searches deep enough to share nodes many levels down, with more processes than cores: the blocks
// never run out, no wait times out, and two and eight processes find the one clearly best move.
TEST_F(ParallelSearch, DeepSearchesWithManyProcessesShareWithoutRunningOut) {
    for (int count : {1, 7}) EXPECT_EQ(solve(slaves(count), queenSacrifice, 9).move, "g3g6") << count;
}

// Searches stopped at random moments, with more processes than cores too: no lost or hung process, no time-out.
TEST_F(ParallelSearch, InterruptedSearches) {
    const std::string position = std::string("force\nsetboard ") + middlegame + "\n";
    for (int count : {1, 2, 7}) {
        start(slaves(count));
        engine->send("xboard\nprotover 2\nnopost\nforce\n");
        std::mt19937 random(7);
        const char* commands[] = {"?\n", "force\n", "new\nforce\n"};
        for (int i = 0; i < 100; i++) {
            engine->send(position + "st 5\ngo\n");
            usleep(1000 * (random() % 40));
            engine->send(commands[random() % 3] + std::string("force\n"));
        }
        expectReply("ping 99\n", "pong 99\n", 30000);
        EXPECT_EQ(roleProcessesOf(enginePid).size(), 1u + count);
        endCleanly(slaves(count));
    }
}

// Helpers killed at random moments of one-second searches, inside shared nodes and while a stop is being handled:
// every search answers in its time (a dead helper once cost a 10 s wait), every death is noted once as a comment,
// later searches go on without the dead, and nothing is left behind, no zombie either. With two processes each
// engine has one helper to lose; with eight one engine loses all seven, one after another.
TEST_F(ParallelSearch, KilledHelpersCostNothing) {
    const std::string position = std::string("force\nsetboard ") + middlegame + "\n";
    std::mt19937 random(26);
    for (int count : {1, 1, 7}) {
        start(slaves(count));
        engine->send("xboard\nprotover 2\nnopost\n");
        expectReply("ping 0\n", "pong 0\n");
        std::vector<std::pair<int, char>> helpers;  // id and role
        for (const processEntry& p : roleProcessesOf(enginePid))
            if (roleOf(p) != '0') helpers.emplace_back(p.pid, roleOf(p));
        ASSERT_EQ(helpers.size(), static_cast<size_t>(count));
        std::shuffle(helpers.begin(), helpers.end(), random);
        for (size_t i = 0; i <= helpers.size(); i++) {
            const size_t from = engine->output.size();
            const auto go = std::chrono::steady_clock::now();
            engine->send(position + "st 1\ngo\n");
            if (i < helpers.size()) {
                usleep(1000 * (50 + random() % 700));
                const bool duringStop = random() % 2;
                if (duringStop) engine->send("?\n");
                usleep(random() % 1000);
                kill(helpers[i].first, SIGKILL);
            }
            ASSERT_TRUE(engine->waitFor("\nmove ", 4000, from)) << count << " " << i << engine->output.substr(from);
            EXPECT_LT(std::chrono::steady_clock::now() - go, std::chrono::milliseconds(4000)) << count << " " << i;
        }
        expectReply("ping 1\n", "pong 1\n");
        for (const auto& [pid, role] : helpers) {
            const std::string note = "\n# Helper process " + std::string(1, role);
            EXPECT_EQ(occurrences(engine->output, note), 1) << count << note;
        }
        usleep(500 * 1000);  // the engine reaps while it waits for input
        int zombies = 0;
        forEachProcess([&](const processEntry& p) { zombies += p.parent == enginePid && p.state == "Z"; });
        EXPECT_EQ(zombies, 0) << count;
        // A helper killed while it held a lock hands it on with the WAIT_ABANDONED note.
        endCleanly(slaves(count), {"Timeout", "WAIT_TIMEOUT", "WAIT_FAILED", "ERROR", "WARNING"});
    }
}
