#include "search/moveGenerator.h"

#include <cstring>

namespace {

// Appends the non-captures after the first count moves, keeping the 99-move limit.
int appendNonCaptures(const board& position, movelist& list, int count) {
    uint16_t quiet[moveBufferSize];
    position.generateNonCaptureMoves(quiet);
    for (int i = 0; quiet[i] != 0 && count < maxMovesPerList; i++) list.moves[count++] = quiet[i];
    list.moves[count] = 0;
    return count;
}

}  // namespace

void moveGenerator::addNoncapmovesToList() {
    if (stage == 1) {
        stage = 3;
        position->generateCaptureMoves(list.moves);
        int count = 0;
        while (list.moves[count] != 0) count++;
        count = appendNonCaptures(*position, list, count);
        for (int i = 0; i < count; i++) list.setScore(i, 200 - i);
        list.setScore(count, 0);
        index = 0;
    } else if (stage == 2) {
        stage = 3;
        int count = 0;
        while (count < maxMovesPerList && list.moves[count] != 0) count++;
        appendNonCaptures(*position, list, count);
    }
}
