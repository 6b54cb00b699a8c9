#include <cstdio>
#include <cstring>

#include "game/game.h"
#include "game/timer.h"

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
    shared->searchPosition.store(position);
    // Command 0: the search process searches but plays nothing.
    shared->searchCommand = 0;
    startSearch.set();
    searchState = 1;
    searchEnded.wait(-1);
    searchState = 0;
}

// The post flag is the flag switched off for the run: thinking lines would
// swamp the figures.
void game::bench(int depth, int timeMs) {
    stopPondering();
    const int savedDepth = shared->maxDepth, savedPost = shared->postFlag;
    timer clock;
    clock.startTimer();
    shared->postFlag = 0;
    shared->maxDepth = depth;
    long long total = 0;
    for (const char* fen : benchPositions) {
        setupPosition(fen);
        benchCurrentPosition(timeMs);
        total += shared->nodeTotals[0] + shared->nodeTotals[1];
    }
    const int t = clock.getTimePassedBy();
    printf("nodes=%lld time=%d.ms speed=%lld.kNPS\n", total, t, t ? total / t : 0);
    shared->maxDepth = savedDepth;
    shared->postFlag = savedPost;
}

void game::benchSpeed(int depth) {
    stopPondering();
    FILE* file = fopen("!benchSpeed.txt", "r");
    if (file == nullptr) {
        printf("No !benchSpeed.txt file found.\n");
        printf("(Put your fen-positions there).\n");
    }
    const int savedDepth = shared->maxDepth, savedPost = shared->postFlag;
    timer clock;
    clock.startTimer();
    shared->postFlag = 0;
    shared->maxDepth = depth;
    long long total = 0;
    char line[1001];
    while (file && fgets(line, sizeof line, file)) {
        if (line[0] == '+' || line[0] == '-') continue;
        setupPosition(line);
        benchCurrentPosition(1000000);
        total += shared->nodeTotals[0] + shared->nodeTotals[1];
    }
    if (file) fclose(file);
    const int t = clock.getTimePassedBy();
    printf("depth=%d nodes=%lld Mnodes=%lld time=%d.ms speed=%lld.kNPS\n", depth, total, total / 1000000, t,
           t ? total / t : 0);
    shared->maxDepth = savedDepth;
    shared->postFlag = savedPost;
}
