// talvin-perft DEPTH [FEN] [--divide]: counts the leaf positions of the legal
// move tree with the engine's own generators, copy-make and legality test.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "board/perft.h"

int main(int argc, char** argv) {
    int depth = -1;
    bool divide = false;
    std::string fen;
    for (int i = 1; i < argc; i++) {
        if (std::strcmp(argv[i], "--divide") == 0) divide = true;
        else if (depth < 0) depth = std::atoi(argv[i]);
        else fen = argv[i];
    }
    if (depth < 1) {
        printf("usage: talvin-perft DEPTH [FEN] [--divide]\n");
        return 2;
    }

    static board position;
    if (!fen.empty()) position.setupPosition(fen.c_str());

    const auto start = std::chrono::steady_clock::now();
    uint64_t total = 0;
    if (divide) {
        uint16_t legal[moveBufferSize];
        position.generateLegalMoves(legal);
        for (int i = 0; legal[i]; i++) {
            board next = position;
            next.makeMove(legal[i]);
            const uint64_t count = depth > 1 ? perft(next, depth - 1) : 1;
            char text[9];
            moveToText(legal[i], text);
            printf("%s %llu\n", text, static_cast<unsigned long long>(count));
            total += count;
        }
    } else {
        total = perft(position, depth);
    }
    const auto elapsed = std::chrono::steady_clock::now() - start;
    const long long ms = std::chrono::duration_cast<std::chrono::milliseconds>(elapsed).count();
    printf("nodes=%llu time=%lld.ms speed=%lld.kNPS\n", static_cast<unsigned long long>(total), ms,
           static_cast<long long>(total / (ms > 0 ? ms : 1)));
    return 0;
}
