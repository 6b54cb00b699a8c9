#pragma once
#include "search/movelist.h"

// Staged move picker of one node: hash move, then the captures, then the
// non-captures, each generated when reached. The hash move is not removed
// from the generated lists.
class moveGenerator {
public:
    const board* position;
    movelist list;
    int32_t index;
    int32_t stage;  // 1 captures next, 2 non-captures next, 3 exhausted

    void start(const board* b, int hashMove) {
        position = b;
        stage = 1;
        index = 0;
        list.moves[0] = static_cast<uint16_t>(hashMove);
        list.moves[1] = 0;
    }

    int getNextMove() {
        index++;
        if (index < 100 && list.moves[index] != 0) return list.moves[index];
        if (stage == 1) {
            stage = 2;
            position->generateCaptureMoves(list.moves);
            index = 0;
            if (list.moves[0] != 0) return list.moves[0];
        }
        if (stage == 2) {
            stage = 3;
            position->generateNonCaptureMoves(list.moves);
            index = 0;
            return list.moves[0];
        }
        return 0;
    }

    // Completes the list for a consumer that takes the whole of it.
    void addNoncapmovesToList();
};
