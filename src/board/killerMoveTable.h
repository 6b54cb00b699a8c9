#pragma once
#include <cstdint>

// Two killer moves per side and ply plus a counter per from-to pair. Lives in
// the record shared by all engine processes, so the layout is fixed.
// Side index: 1 white, 0 black.
class killerMoveTable {
public:
    uint64_t counters[2][4096];
    uint16_t killers[2][50][2];
    int16_t killerScores[2][50][2];

    void storeKillerMove(int move, int score, int ply, int side, int capturedPiece);
    int getKillerMoveScore(int move, int ply, int side) const {
        int row = ply % 50;
        if (killers[side][row][0] == move) return 2;
        if (killers[side][row][1] == move) return 1;
        return 0;
    }
    void resetKillers();
    void reset();

private:
    // The store reads slot 0 at the unreduced ply: from ply 50 on that lands
    // beyond the ply's row (in the other side's rows or the score rows).
    // Reads past the end of the whole table see an empty slot.
    uint16_t readSlot(int flatIndex) const;
};
