#include "eval/evalWeights.h"

// clang-format off
constexpr std::array<int, evalWeightCount> defaultEvalWeights = {
    0, -2, -12, -44, 40, 71, 2, -3,          // development .. knights only
    -2, -27, -8, -1, -17,                    // backward, isolated, doubled pawns
    6, 6, 6,                                 // candidates
    56, -8, -56, -11, 16, 5, 6,              // passed pawns
    23, 4, 24, 17, 12, 8,                    // unstoppable and free path
    -4, 9, 8,                                // knights
    40, 21, -7, -13, -23, 5, 3,              // bishops
    9, 11, 9, 28, -5, 15,                    // rooks
    -4, 48, -6,                              // queens
    14, 9, 11,                               // king placement and reach
    8, -29, 2, 1, 3,                         // king danger
    6, 9, 8, 3,                              // least attack units
    7, 10, 7, 2, 0,                          // knight tropism, distances 1..5
    7, 1, 4, 3, 1,                           // bishop
    3, 1, 1, 1, 0,                           // rook
    22, 9, 1, 1, 0,                          // queen
};
// clang-format on

std::array<int, evalWeightCount> evalWeights = defaultEvalWeights;

void resetEvalWeights() { evalWeights = defaultEvalWeights; }
