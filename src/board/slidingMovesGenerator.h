#pragma once

#include <cstdint>

// Magic-bitboard attack tables for rooks and bishops. Built once at start-up
// and read-only afterwards; queen attacks are the union of the two look-ups.
class slidingMovesGenerator {
public:
    uint64_t rookMask[64], bishopMask[64];
    uint64_t rookMagic[64], bishopMagic[64];
    int32_t rookShift[64], bishopShift[64];
    int32_t rookOffset[64], bishopOffset[64];
    uint64_t rookAttacks[102400];
    uint64_t bishopAttacks[5248];

    slidingMovesGenerator();

    // Every square along each ray up to and including the first occupied one,
    // whatever its colour; callers remove their own pieces.
    uint64_t rookMoves(int square, uint64_t occupancy) const {
        return rookAttacks[rookOffset[square] +
                           (((occupancy & rookMask[square]) * rookMagic[square]) >> rookShift[square])];
    }

    uint64_t bishopMoves(int square, uint64_t occupancy) const {
        return bishopAttacks[bishopOffset[square] +
                             (((occupancy & bishopMask[square]) * bishopMagic[square]) >> bishopShift[square])];
    }
};
