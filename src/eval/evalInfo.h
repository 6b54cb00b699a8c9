#pragma once
#include <cstdint>

// Working state of one evaluation, filled as the terms run and read by the
// later ones. Colours index as the bitboards do (0 White, 1 Black).
struct evalInfo {
    // Attack-set slots beyond the piece types: KING holds the squares next to
    // the king, KING_FRONT the squares in front of those.
    static constexpr int KING_FRONT = 6;

    // Per colour the attacks of its pawns, knights, bishops, rooks and queens
    // (slots PAWN..QUEEN) and its king's neighbourhood (KING, KING_FRONT).
    // Written by findPawnAttacks and findKingZones before any term reads them:
    // zero-filling the whole struct up front cost a sixth of the evaluation's speed.
    uint64_t attacks[2][7];
    // Squares attacked by one of the side's pawns and not by two enemy pawns,
    // or attacked by two of its pawns.
    uint64_t pawnControl[2];
    int unitsAgainstKing[2] = {};  // attack units against each colour's king
    int shelter[2] = {};           // 0 while the material is too low to count it
    uint64_t passed = 0;           // both colours' passed pawns
    uint64_t candidates = 0;       // both colours' candidate passed pawns
};
