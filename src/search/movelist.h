#pragma once
#include <cstdint>

#include "board/board.h"

// Moves in 0..99 ended by the first 0, one signed 16-bit score per move in
// 100..199: the layout the move generators write.
class movelist {
public:
    uint16_t moves[moveBufferSize];

    int score(int i) const { return static_cast<int16_t>(moves[moveScoreSlot + i]); }
    void setScore(int i, int value) { moves[moveScoreSlot + i] = static_cast<uint16_t>(value); }

    // Best move first, earlier leaders behind it, the rest in their old order;
    // the scores become the sort keys and position 0 gets the best score.
    void sortAfterSearch(int n);
    // Returns how many moves were given the best score.
    int sortAfterBetaCutoff(int n);
};
