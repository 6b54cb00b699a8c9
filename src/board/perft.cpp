#include "board/perft.h"

uint64_t perft(const board& position, int depth) {
    uint16_t buffer[moveBufferSize];
    uint64_t nodes = 0;
    for (int stage = 0; stage < 2; stage++) {
        if (stage == 0) position.generateCaptureMoves(buffer);
        else position.generateNonCaptureMoves(buffer);
        for (int i = 0; buffer[i]; i++) {
            board next = position;
            next.makeMove(buffer[i]);
            if (next.isMoveIllegal(buffer[i])) continue;
            nodes += depth > 1 ? perft(next, depth - 1) : 1;
        }
    }
    return nodes;
}
