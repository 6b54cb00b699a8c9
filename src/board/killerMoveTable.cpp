#include "board/killerMoveTable.h"

#include <cstring>

#include "board/board.h"

static constexpr int slotsPerTable = 2 * 50 * 2;

uint16_t killerMoveTable::readSlot(int flatIndex) const {
    if (flatIndex < slotsPerTable) return (&killers[0][0][0])[flatIndex];
    if (flatIndex < 2 * slotsPerTable)
        return static_cast<uint16_t>((&killerScores[0][0][0])[flatIndex - slotsPerTable]);
    return 0;
}

void killerMoveTable::storeKillerMove(int move, int score, int ply, int side, int capturedPiece) {
    if (capturedPiece != 6) return;
    counters[side][move & 0xFFF]++;
    if (ply < 0) return;
    int slot0 = side * 100 + ply * 2;
    int16_t slot0Score = static_cast<int16_t>(readSlot(slotsPerTable + slot0));
    if (score < slot0Score) return;
    uint16_t slot0Move = readSlot(slot0);
    int row = ply % 50;
    killerScores[side][row][1] = slot0Score;
    killers[side][row][1] = slot0Move;
    killerScores[side][row][0] = static_cast<int16_t>(score);
    killers[side][row][0] = static_cast<uint16_t>(move);
}

void killerMoveTable::resetKillers() {
    for (int side = 0; side < 2; side++)
        for (int ply = 0; ply < 50; ply++)
            for (int slot = 0; slot < 2; slot++) {
                killers[side][ply][slot] = 0;
                killerScores[side][ply][slot] = -mateScore;
            }
}

void killerMoveTable::reset() {
    std::memset(counters, 0, sizeof counters);
    resetKillers();
}
