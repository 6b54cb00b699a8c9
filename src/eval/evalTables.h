#pragma once
#include <cstdint>

#include "board/bitboards.h"

// Evaluation tables, built before main and read-only afterwards.
// Colours index as the bitboards do (0 White, 1 Black).

// [colour][piece type][square]; Black's values carry the minus sign, so the
// evaluation only adds. The king's table is the one for the middlegame.
extern int pieceSquare[2][6][64];
extern int kingCentre[64];           // endgame king placement
extern uint64_t frontFile[2][64];    // squares ahead on the square's file
extern uint64_t frontSides[2][64];   // squares ahead on the adjacent files
extern uint64_t pawnSupport[2][64];  // beside, or one rank behind on the adjacent files

inline constexpr uint64_t fileB = fileA >> 1;
inline constexpr uint64_t fileG = fileH << 1;
inline constexpr uint64_t queenSide = 0xF0F0F0F0F0F0F0F0ULL;    // files a-d
inline constexpr uint64_t kingSide = 0x0F0F0F0F0F0F0F0FULL;     // files e-h
inline constexpr uint64_t centreFiles = 0x3C3C3C3C3C3C3C3CULL;  // files c-f

inline uint64_t fileOf(int square) { return fileH << (square & 7); }
inline uint64_t rankOf(int square) { return rank1 << (square & 56); }
inline uint64_t adjacentFiles(int square) {
    const uint64_t file = fileOf(square);
    return ((file << 1) & ~fileH) | ((file >> 1) & ~fileA);
}
// Every file holding a square of the set.
inline uint64_t filesOf(uint64_t set) {
    set |= set >> 32;
    set |= set >> 16;
    set |= set >> 8;
    return byteSpread[set & 0xFF];
}

// Divisors made of piece values; a garbled settings file can make them 0.
inline int nonZero(int divisor) { return divisor ? divisor : 1; }

// Direction-dependent helpers; "forward" is towards the side's promotion rank.
template <int side>
uint64_t forward(uint64_t set) {
    return side == 0 ? set << 8 : set >> 8;
}
template <int side>
uint64_t backward(uint64_t set) {
    return side == 0 ? set >> 8 : set << 8;
}
template <int side>
uint64_t pawnAttackSet(uint64_t pawns) {
    return side == 0 ? ((pawns & ~fileA) << 9) | ((pawns & ~fileH) << 7)
                     : ((pawns & ~fileH) >> 9) | ((pawns & ~fileA) >> 7);
}
// Squares from which a pawn of the side defends the square.
template <int side>
uint64_t pawnDefenders(int square) {
    return side == 0 ? blackPawnAttacks[square] : whitePawnAttacks[square];
}
