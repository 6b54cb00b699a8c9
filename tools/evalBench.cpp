// talvin-evalbench: full static evaluations per second, without and with the
// evaluation cache, over every position within two plies of the six standard
// perft positions.
#include <sys/mman.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "board/board.h"
#include "eval/evalHashtable.h"

namespace {

constexpr int rounds = 50;

const char* const roots[] = {
    "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1",
    "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
    "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1",
    "r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1",
    "rnbq1k1r/pp1Pbppp/2p5/8/2B5/8/PPP1NnPP/RNBQK2R w KQ - 1 8",
    "r4rk1/1pp1qppp/p1np1n2/2b1p1B1/2B1P1b1/P1NP1N2/1PP1QPPP/R4RK1 w - - 0 10",
};

void collect(const board& position, int depth, std::vector<board>& out) {
    out.push_back(position);
    if (depth == 0) return;
    uint16_t legal[moveBufferSize];
    position.generateLegalMoves(legal);
    for (int i = 0; legal[i]; i++) {
        board next = position;
        next.makeMove(legal[i]);
        collect(next, depth - 1, out);
    }
}

// Millions of evaluations per second over all rounds; sum keeps the work.
double millionPerSecond(std::vector<board>& positions, long long& sum) {
    const auto start = std::chrono::steady_clock::now();
    for (int round = 0; round < rounds; round++)
        for (board& b : positions) sum += b.evaluate(-32000, 32000);
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    return static_cast<double>(positions.size()) * rounds / seconds.count() / 1e6;
}

}  // namespace

int main() {
    static board position;
    std::vector<board> positions;
    for (const char* fen : roots) {
        position.setupPosition(fen);
        collect(position, 2, positions);
    }

    long long sum = 0;
    board::evalCache = nullptr;
    const double uncached = millionPerSecond(positions, sum);

    const std::string instance = "EvalBench-" + std::to_string(getpid());
    double cached = 0;
    {
        evalHashtable cache(instance.c_str(), 64, false);
        if (cache.entries == nullptr) return 1;
        cache.reset();
        board::evalCache = &cache;
        for (board& b : positions) sum += b.evaluate(-32000, 32000);  // fill it
        cached = millionPerSecond(positions, sum);
        board::evalCache = nullptr;
        std::fflush(stdout);
    }
    shm_unlink(("/sharedEvalHashtable" + instance).c_str());

    printf("%zu positions, %d rounds each\n", positions.size(), rounds);
    printf("cache off  %6.2f M evaluations/s\n", uncached);
    printf("cache on   %6.2f M evaluations/s (every probe a hit)\n", cached);
    printf("checksum %lld\n", sum);
    return 0;
}
