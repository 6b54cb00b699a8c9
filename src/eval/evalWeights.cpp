#include "eval/evalWeights.h"

#include <atomic>

#include "board/board.h"

// clang-format off
constexpr evalWeightList defaultEvalWeights = {
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

const char* const evalWeightNames[evalWeightCount] = {
    "developmentWeight", "uncastledPenalty", "blockedCentrePawnPenalty", "rookImbalanceWeight",
    "minorDeficitWeight", "minorDeficitWeight3", "kingShelterWeight", "knightOnlyPenalty",
    "backwardPawnWeight", "backwardOpenFileWeight", "backwardCentreWeight", "isolatedPawnPenalty",
    "doubledPawnPenalty", "candidateWeight", "candidateNoQueenFactor", "candidateBareFactor",
    "passedRankQuadratic", "passedRankLinear", "passedBase", "passedBlockedPenalty",
    "passedFreeStopBonus", "passedSupportedBonus", "passedConnectedBonus", "unstoppableBonus",
    "unstoppableMinorFactor", "unstoppablePawnsOnlyFactor", "freePathBonus", "freePathMinorFactor",
    "freePathPawnsOnlyFactor", "knightEndgameWeight", "outpostBonus", "centralOutpostBonus",
    "bishopPairBonus", "bishopMobilityWeight", "bishopOwnPawnColourWeight", "bishopSecondPawnColourWeight",
    "bishopBlockedCentreWeight", "bishopEndgamePawnWeight", "bishopPawnDefendedBonus", "rookDoubledBonus",
    "rookOpenFileBonus", "rookHalfOpenBonus", "rookSeventhBonus", "rookSeventhDoubledBonus",
    "rookMobilityWeight", "queenMobilityWeight", "queenAloneBonus", "queenEarlyPenalty",
    "kingPawnWingBonus", "kingCentreWeight", "passedRaceWeight", "shelterDangerWeight",
    "kingDangerWeight", "noQueenShift", "noRookShift1", "noRookShift2",
    "queenAttackUnitsMin", "rookAttackUnitsMin", "bishopKingLineUnits", "knightTropismMin",
    "knightTropism1", "knightTropism2", "knightTropism3", "knightTropism4", "knightTropism5",
    "bishopTropism1", "bishopTropism2", "bishopTropism3", "bishopTropism4", "bishopTropism5",
    "rookTropism1", "rookTropism2", "rookTropism3", "rookTropism4", "rookTropism5",
    "queenTropism1", "queenTropism2", "queenTropism3", "queenTropism4", "queenTropism5",
};
// clang-format on

evalWeightList evalWeights = defaultEvalWeights;
uint64_t evalWeightsKey = 0;

namespace {

int adoptedGeneration = 0;

uint64_t fingerprint(const evalWeightList& values) {
    uint64_t h = 0x9E3779B97F4A7C15ULL;
    for (int value : values) {
        h ^= static_cast<uint32_t>(value);
        h *= 0xBF58476D1CE4E5B9ULL;
        h ^= h >> 31;
    }
    return h;
}

void weightsChanged() {
    static const uint64_t builtIn = fingerprint(defaultEvalWeights);
    evalWeightsKey = fingerprint(evalWeights) ^ builtIn;
    board::lastPositionalScore = 0;
}

}  // namespace

void setEvalWeight(int index, int value) {
    evalWeights[index] = value;
    weightsChanged();
}

void setEvalWeights(const evalWeightList& values) {
    evalWeights = values;
    weightsChanged();
}

void resetEvalWeights() { setEvalWeights(defaultEvalWeights); }

void publishEvalWeights(publishedEvalWeights& to) {
    for (int i = 0; i < evalWeightCount; i++) to.values[i] = evalWeights[i];
    std::atomic_ref<int32_t>(to.generation).fetch_add(1, std::memory_order_release);
    adoptedGeneration = to.generation;
}

void adoptEvalWeights(const publishedEvalWeights& from) {
    const int generation =
        std::atomic_ref<int32_t>(const_cast<int32_t&>(from.generation)).load(std::memory_order_acquire);
    if (generation == adoptedGeneration) return;
    adoptedGeneration = generation;
    evalWeightList values;
    for (int i = 0; i < evalWeightCount; i++) values[i] = from.values[i];
    setEvalWeights(values);
}
