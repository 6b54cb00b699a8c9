#include <cstdio>
#include <cstring>

#include "game/game.h"
#include "game/timer.h"
#include "platform/console.h"
#include "tune/tuner.h"

namespace {

const char* const benchPositions[] = {
    "r2q1rk1/1pp1bppp/2n1bn2/p1P1p3/3pP3/P2P1N2/1PQNBPPP/1RB2RK1 b - -",
    "r2qr1k1/p1pbbppp/2p5/3n4/Q3N3/3B4/PPP2PPP/R1B1R1K1 w - - 7 13 ",
    "r4rk1/pppbqppp/2n1p3/3n4/2B5/4PN2/PBP2PPP/R2Q1RK1 w - - 0 12",
};

}  // namespace

void game::benchCurrentPosition(int timeMs) {
    resetHash();
    shared->timer1.allottedMs = timeMs;
    shared->timer1.startTimer();
    // Command 0: the search process searches but plays nothing.
    postSearch(0);
    waitForSearchEnd(timeMs + waitTimeoutMs);
    searchState = searchIdle;
}

// Sets up and searches, to the given depth, every position forEach hands to
// its callback; gives the total nodes and milliseconds. The post flag is the
// flag switched off for the run: thinking lines would swamp the figures.
template <class positions>
static void benchRun(game& g, int depth, int timeMs, positions forEach, long long& total, int& ms) {
    g.stopPondering();
    const int savedDepth = g.shared->maxDepth, savedPost = g.shared->postFlag;
    timer clock;
    clock.startTimer();
    g.shared->postFlag = 0;
    g.shared->maxDepth = depth;
    total = 0;
    forEach([&](const char* fen) {
        if (!g.setupPosition(fen)) return;  // refused: the previous position would be counted twice
        g.benchCurrentPosition(timeMs);
        total += g.shared->nodeTotals[0] + g.shared->nodeTotals[1];
    });
    ms = clock.getTimePassedBy();
    g.shared->maxDepth = savedDepth;
    g.shared->postFlag = savedPost;
}

void game::bench(int depth, int timeMs) {
    long long total;
    int t;
    benchRun(
        *this, depth, timeMs,
        [](auto search) {
            for (const char* fen : benchPositions) search(fen);
        },
        total, t);
    printLine("nodes=%lld time=%d.ms speed=%lld.kNPS\n", total, t, t ? total / t : 0);
}

void game::benchSpeed(int depth) {
    FILE* file = fopen("!benchSpeed.txt", "r");
    if (file == nullptr) {
        printf("No !benchSpeed.txt file found.\n");
        printf("(Put your fen-positions there).\n");
    }
    long long total;
    int t;
    benchRun(
        *this, depth, 1000000,
        [file](auto search) {
            char line[1001];
            while (file && fgets(line, sizeof line, file))
                if (line[0] != '+' && line[0] != '-' && !isBlankLine(line)) search(line);
        },
        total, t);
    if (file) fclose(file);
    printLine("depth=%d nodes=%lld Mnodes=%lld time=%d.ms speed=%lld.kNPS\n", depth, total, total / 1000000, t,
              t ? total / t : 0);
}
