#pragma once
#include <cstdint>

// Program-wide tables, filled by the board constructor and read-only afterwards.
extern int32_t lastBit[65536];
extern int32_t bitCount[65536];
extern uint64_t bitMask[64];
extern uint64_t kingAttacks[64];
extern uint64_t knightAttacks[64];
extern uint64_t whitePawnAttacks[64];
extern uint64_t blackPawnAttacks[64];
extern uint64_t diagonalA[64];
extern uint64_t diagonalB[64];
extern uint64_t sameColourSquares[64];
extern int32_t distance[64][64];
extern uint64_t byteSpread[256];
// [pawn square][king square]: dDown > mB - 1, mW < dUp, mB < dDown, dUp > mW - 1
extern int32_t unstoppablePawn[64][64][4];

inline constexpr uint64_t fileA = 0x8080808080808080ULL;
inline constexpr uint64_t fileH = 0x0101010101010101ULL;
inline constexpr uint64_t rank1 = 0x00000000000000FFULL;
inline constexpr uint64_t rank2 = 0x000000000000FF00ULL;
inline constexpr uint64_t rank7 = 0x00FF000000000000ULL;
inline constexpr uint64_t rank8 = 0xFF00000000000000ULL;

// Highest set bit, so every walk over a set goes from square 63 down to 0.
// The instruction gives the same answers as the lastBit table.
inline int findFirstBit(uint64_t x) { return x ? 63 - __builtin_clzll(x) : 0; }
inline int countBits(uint64_t x) { return __builtin_popcountll(x); }
inline void addBit(uint64_t& b, int square) { b |= 1ULL << square; }
inline void deleteBit(uint64_t& b, int square) { b &= ~(1ULL << square); }
