#include <gtest/gtest.h>

#include <cstdint>
#include <random>

#include "board/slidingMovesGenerator.h"

namespace {

// Far too large for the stack; built once for the whole file.
const slidingMovesGenerator& generator() {
    static slidingMovesGenerator g;
    return g;
}

// Reference attack set walked on file/rank coordinates (file a = 0), independent
// of the square-step arithmetic used to build the tables.
uint64_t naiveAttacks(int square, uint64_t occupancy, bool rook) {
    static const int dirs[2][4][2] = {{{1, 1}, {1, -1}, {-1, 1}, {-1, -1}}, {{1, 0}, {-1, 0}, {0, 1}, {0, -1}}};
    uint64_t result = 0;
    for (const auto& d : dirs[rook]) {
        for (int file = 7 - square % 8 + d[0], rank = square / 8 + d[1];
             file >= 0 && file <= 7 && rank >= 0 && rank <= 7; file += d[0], rank += d[1]) {
            const uint64_t bit = 1ULL << (8 * rank + 7 - file);
            result |= bit;
            if (occupancy & bit) break;
        }
    }
    return result;
}

} // namespace

TEST(SlidingMovesGeneratorTest, RaysEndAtFirstBlockerInclusive) {
    const auto& g = generator();
    const uint64_t hFileAboveH1 = 0x0101010101010100ULL;
    EXPECT_EQ(g.rookMoves(0, 0), 0xFEULL | hFileAboveH1);
    EXPECT_EQ(g.rookMoves(0, 1ULL << 4), 0x1EULL | hFileAboveH1); // d1
    // Own square and pieces behind the blocker are irrelevant.
    EXPECT_EQ(g.rookMoves(0, (1ULL << 4) | (1ULL << 6) | 1ULL), 0x1EULL | hFileAboveH1);

    EXPECT_EQ(g.bishopMoves(0, 0), 0x8040201008040200ULL);  // h1
    EXPECT_EQ(g.bishopMoves(7, 0), 0x0102040810204000ULL);  // a1
    EXPECT_EQ(g.bishopMoves(56, 0), 0x0002040810204080ULL); // h8
    EXPECT_EQ(g.bishopMoves(63, 0), 0x0040201008040201ULL); // a8
    EXPECT_EQ(g.bishopMoves(0, 1ULL << 27), 0x0000000008040200ULL); // e4
}

TEST(SlidingMovesGeneratorTest, FixedConstantsAndTableLayout) {
    const auto& g = generator();
    EXPECT_EQ(g.rookMask[0], 0x000101010101017EULL);
    EXPECT_EQ(g.bishopMask[0], 0x0040201008040200ULL);
    EXPECT_EQ(g.rookMagic[0], 0x0080001020400080ULL);
    EXPECT_EQ(g.rookMagic[1], 0x0040001000200040ULL);
    EXPECT_EQ(g.bishopMagic[0], 0x0002020202020200ULL);
    EXPECT_EQ(g.bishopMagic[1], 0x0002020202020000ULL);

    // Masks that kept an edge square would overrun these totals.
    EXPECT_EQ(g.rookShift[0], 52);
    EXPECT_EQ(g.bishopShift[27], 55);
    EXPECT_EQ(g.rookOffset[0], 0);
    EXPECT_EQ(g.bishopOffset[0], 0);
    for (int s = 0; s < 63; ++s) {
        EXPECT_EQ(g.rookOffset[s + 1] - g.rookOffset[s], 1 << (64 - g.rookShift[s])) << s;
        EXPECT_EQ(g.bishopOffset[s + 1] - g.bishopOffset[s], 1 << (64 - g.bishopShift[s])) << s;
    }
    EXPECT_EQ(g.rookOffset[63] + (1 << (64 - g.rookShift[63])), 102400);
    EXPECT_EQ(g.bishopOffset[63] + (1 << (64 - g.bishopShift[63])), 5248);
}

// Every subset of every mask, then whole-board occupancies of varying density
// (bits outside the masks included): a bad magic or mask shows up here.
TEST(SlidingMovesGeneratorTest, LookupsMatchRayWalk) {
    const auto& g = generator();
    std::mt19937_64 rng(12345);
    for (int s = 0; s < 64; ++s) {
        for (bool rook : {false, true}) {
            const uint64_t mask = rook ? g.rookMask[s] : g.bishopMask[s];
            uint64_t o = 0;
            do {
                ASSERT_EQ(rook ? g.rookMoves(s, o) : g.bishopMoves(s, o), naiveAttacks(s, o, rook))
                    << "square " << s << " rook " << rook << " occupancy " << o;
                o = (o - mask) & mask;
            } while (o != 0);
        }
        for (int i = 0; i < 3000; ++i) {
            uint64_t o = rng();
            if (i % 3 != 0) o &= rng();
            if (i % 3 == 2) o &= rng();
            ASSERT_EQ(g.rookMoves(s, o), naiveAttacks(s, o, true)) << "square " << s << " occupancy " << o;
            ASSERT_EQ(g.bishopMoves(s, o), naiveAttacks(s, o, false)) << "square " << s << " occupancy " << o;
        }
    }
}
