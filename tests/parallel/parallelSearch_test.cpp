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
    // Quits: no wait for another process timed out (but for timeoutsAllowed) or failed, and no process or
    // shared-memory name of the engine is left, though the engine's own waits may take a while.
    void endCleanly(const std::string& context, int timeoutsAllowed = 0) {
        EXPECT_LE(occurrences(engine->output, "Timeout"), timeoutsAllowed) << context;
        for (const char* word : {"WAIT_", "ERROR", "WARNING"})
            EXPECT_EQ(engine->output.find(word), std::string::npos) << context << word;
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
// Then a killed slave costs one wait for a block, once: afterwards it is not claimed again, and the other
// processes go on. Every wait is bounded by the engine's own time-out, not by how fast a loaded machine searches.
TEST_F(ParallelSearch, InterruptedSearchesAndAKilledSlave) {
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
        EXPECT_EQ(occurrences(engine->output, "Timeout"), 0) << count;
        const std::vector<processEntry> roles = roleProcessesOf(enginePid);
        ASSERT_EQ(roles.size(), 1u + count);
        if (count == 7) {
            endCleanly(slaves(count));
            continue;
        }
        // Killed inside a long search, deep enough to split, which then stops.
        size_t from = engine->output.size();
        engine->send("post\n" + position + "st 1000\ngo\n");
        ASSERT_TRUE(engine->waitFor("\n 6  ", 60000, from));
        const auto slave = std::find_if(roles.rbegin(), roles.rend(), [](auto& p) { return roleOf(p) != '0'; });
        kill(slave->pid, SIGKILL);
        engine->send("?\n");
        from = engine->output.size();
        for (int search = 0; search < 4; search++) {
            if (search > 0) engine->send(position + "st 1\ngo\n");
            ASSERT_TRUE(engine->waitFor("\nmove ", 3 * waitTimeout, from)) << count << " " << search;
            from = engine->output.find("\nmove ", from) + 1;
        }
        endCleanly(slaves(count), 1);
    }
}
