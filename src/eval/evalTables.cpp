#include "eval/evalTables.h"

int pieceSquare[2][6][64];
int kingCentre[64];
uint64_t frontFile[2][64];
uint64_t frontSides[2][64];
uint64_t pawnSupport[2][64];

namespace {

// White's values as read on a diagram: rank 8 first, files a to h. The
// asymmetric entries are part of the tuned set.
// clang-format off
constexpr int8_t diagrams[6][64] = {
    {  0,   0,   0,   0,   0,   0,   0,   0,
       5,   8,  14,  21,  21,  14,   8,   5,
       3,   7,  10,  20,  20,  10,   7,   3,
       3,   6,   9,  19,  19,   9,   6,   3,
       2,   4,   8,  14,  15,   6,   4,   2,
       1,   2,   4,   7,   7,   0,   2,   1,
       0,   0,   0,  -8,  -8,   0,   0,   0,
       0,   0,   0,   0,   0,   0,   0,   0},
    {-20, -10, -10, -10, -10, -10, -10, -20,
     -12,  -8,   0,   4,   4,   0,  -8, -12,
     -10,   5,  10,  12,  12,  10,   5, -10,
      -9,   7,  11,  14,  14,  11,   7,  -9,
      -9,   1,   7,  10,  10,   7,   1,  -9,
     -10,   0,   5,   7,   7,   5,   0, -10,
     -12,  -8,  -5,  -4,  -4,  -5,  -8, -12,
     -20, -10, -10, -10, -10, -10, -10, -20},
    {  0,   0,   0,   0,   0,   0,   0,   0,
       0,   4,   6,   4,   4,   6,   4,   0,
       0,   6,   8,   8,   8,   8,   6,   0,
       0,   4,  14,  10,  10,  14,   4,   0,
       0,   4,   8,  10,  10,   8,   4,   0,
       0,   6,   8,  15,  15,   8,   6,   0,
       0,   8,   6,   4,   4,   6,   8,   0,
       0,   0,   0,   0,   0,   0,   0,   0},
    {  5,   7,   8,  10,  10,   8,   7,   5,
       4,   4,   4,   5,   5,   4,   4,   4,
       0,   1,   5,   9,   9,   5,   1,   0,
       0,   1,   4,   6,   6,   4,   1,   0,
       0,   1,   3,   4,   4,   3,   1,   0,
       0,   0,   2,   3,   3,   2,   0,   0,
       0,   0,   1,   2,   2,   1,   0,   0,
       0,  -1,   1,   6,   6,   1,  -1,   0},
    { -2,   1,   2,   3,   3,   2,   1,  -2,
      -1,   2,   3,   4,   4,   3,   2,  -1,
       4,   9,  10,  11,  11,  10,   9,   4,
       0,   3,   7,   8,   8,   7,   0,   0,
       0,   2,   4,   5,   5,   4,   2,   0,
       0,   1,   3,   4,   4,   3,   1,   0,
      -1,   0,   1,   2,   2,   1,   0,  -1,
      -5,   0,   0,   0,   0,   0,   0,  -5},
    {-40, -40, -40, -40, -40, -40, -40, -40,
     -40, -40, -40, -40, -40, -40, -40, -40,
     -40, -40, -40, -40, -40, -40, -40, -40,
     -40, -40, -40, -40, -40, -40, -40, -40,
     -35, -35, -35, -35, -35, -35, -35, -35,
     -30, -30, -30, -30, -30, -30, -30, -30,
     -20, -20, -20, -20, -20, -20, -20, -20,
       7,  19,  16,  -7,  -6,  -7,   6,  -3},
};

constexpr int8_t centreDiagram[64] = {
    -1, -1, -1, -1, -1, -1, -1, -1,
    -1,  0,  0,  0,  0,  0,  0, -1,
    -1,  0,  1,  1,  1,  1,  0, -1,
    -1,  0,  1,  2,  2,  1,  0, -1,
    -1,  0,  1,  2,  2,  1,  0, -1,
    -1,  0,  1,  1,  1,  1,  0, -1,
    -1,  0,  0,  0,  0,  0,  0, -1,
    -1, -1, -1, -1, -1, -1, -1, -1,
};
// clang-format on

}  // namespace

static int buildEvalTables() {
    // Diagram cell 0 is a8 = square 63; square ^ 56 mirrors the rank.
    for (int square = 0; square < 64; square++) {
        for (int type = 0; type < 6; type++) {
            pieceSquare[0][type][square] = diagrams[type][63 - square];
            pieceSquare[1][type][square] = -diagrams[type][63 - (square ^ 56)];
        }
        kingCentre[square] = centreDiagram[63 - square];

        const int rankStart = square & 56;
        const uint64_t above = rankStart < 56 ? ~0ULL << (rankStart + 8) : 0;
        const uint64_t below = (1ULL << rankStart) - 1;
        const uint64_t rank = rankOf(square), sides = adjacentFiles(square);
        frontFile[0][square] = fileOf(square) & above;
        frontFile[1][square] = fileOf(square) & below;
        frontSides[0][square] = sides & above;
        frontSides[1][square] = sides & below;
        pawnSupport[0][square] = sides & (rank | rank >> 8);
        pawnSupport[1][square] = sides & (rank | rank << 8);
    }
    return 0;
}

// Every process needs them, and they depend on nothing that is read at run time.
[[maybe_unused]] const int evalTablesBuilt = buildEvalTables();
