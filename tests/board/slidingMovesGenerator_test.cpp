#include <gtest/gtest.h>

#include <cstdint>

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

}  // namespace

// Every subset of every mask, alone and with every square outside the mask occupied as well: a bad magic or mask
// shows up here.
TEST(SlidingMovesGeneratorTest, LookupsMatchRayWalk) {
    const auto& g = generator();
    for (int s = 0; s < 64; ++s) {
        for (bool rook : {false, true}) {
            const uint64_t mask = rook ? g.rookMask[s] : g.bishopMask[s];
            uint64_t subset = 0;
            do {
                for (uint64_t o : {subset, subset | ~mask})
                    ASSERT_EQ(rook ? g.rookMoves(s, o) : g.bishopMoves(s, o), naiveAttacks(s, o, rook))
                        << "square " << s << " rook " << rook << " occupancy " << o;
                subset = (subset - mask) & mask;
            } while (subset != 0);
        }
    }
}
