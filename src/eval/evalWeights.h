#pragma once
#include <array>
#include <cstdint>

// The evaluation's tunable weights, one list in the order the tuner addresses
// them by. The names below are how the evaluation reads them.
inline constexpr int evalWeightCount = 80;
using evalWeightList = std::array<int, evalWeightCount>;
extern evalWeightList evalWeights;
extern const evalWeightList defaultEvalWeights;
// Names in list order, as the weights file writes them.
extern const char* const evalWeightNames[evalWeightCount];

// Folded into every evaluation-cache key: a score cached under other
// weights, by this process before a change or by another process, never
// matches. 0 for the built-in weights, so their cache keys are the position keys.
extern uint64_t evalWeightsKey;

// Every change of the weights at run time goes through these: they renew
// the cache key and forget the last positional score, which came from the
// old weights.
void setEvalWeight(int index, int value);
void setEvalWeights(const evalWeightList& values);
void resetEvalWeights();

// The weights as one process hands them to the others through shared
// memory; generation 0 is the start-up set every process read itself.
struct publishedEvalWeights {
    int32_t generation;
    int32_t values[evalWeightCount];
};
void publishEvalWeights(publishedEvalWeights& to);
// Takes the published weights over when they are newer than this process's.
void adoptEvalWeights(const publishedEvalWeights& from);

inline int& developmentWeight = evalWeights[0];
inline int& uncastledPenalty = evalWeights[1];
inline int& blockedCentrePawnPenalty = evalWeights[2];
inline int& rookImbalanceWeight = evalWeights[3];
inline int& minorDeficitWeight = evalWeights[4];
inline int& minorDeficitWeight3 = evalWeights[5];
inline int& kingShelterWeight = evalWeights[6];
inline int& knightOnlyPenalty = evalWeights[7];
inline int& backwardPawnWeight = evalWeights[8];
inline int& backwardOpenFileWeight = evalWeights[9];
inline int& backwardCentreWeight = evalWeights[10];
inline int& isolatedPawnPenalty = evalWeights[11];
inline int& doubledPawnPenalty = evalWeights[12];
inline int& candidateWeight = evalWeights[13];
inline int& candidateNoQueenFactor = evalWeights[14];
inline int& candidateBareFactor = evalWeights[15];
inline int& passedRankQuadratic = evalWeights[16];
inline int& passedRankLinear = evalWeights[17];
inline int& passedBase = evalWeights[18];
inline int& passedBlockedPenalty = evalWeights[19];
inline int& passedFreeStopBonus = evalWeights[20];
inline int& passedSupportedBonus = evalWeights[21];
inline int& passedConnectedBonus = evalWeights[22];
inline int& unstoppableBonus = evalWeights[23];
inline int& unstoppableMinorFactor = evalWeights[24];
inline int& unstoppablePawnsOnlyFactor = evalWeights[25];
inline int& freePathBonus = evalWeights[26];
inline int& freePathMinorFactor = evalWeights[27];
inline int& freePathPawnsOnlyFactor = evalWeights[28];
inline int& knightEndgameWeight = evalWeights[29];
inline int& outpostBonus = evalWeights[30];
inline int& centralOutpostBonus = evalWeights[31];
inline int& bishopPairBonus = evalWeights[32];
inline int& bishopMobilityWeight = evalWeights[33];
inline int& bishopOwnPawnColourWeight = evalWeights[34];
inline int& bishopSecondPawnColourWeight = evalWeights[35];
inline int& bishopBlockedCentreWeight = evalWeights[36];
inline int& bishopEndgamePawnWeight = evalWeights[37];
inline int& bishopPawnDefendedBonus = evalWeights[38];
inline int& rookDoubledBonus = evalWeights[39];
inline int& rookOpenFileBonus = evalWeights[40];
inline int& rookHalfOpenBonus = evalWeights[41];
inline int& rookSeventhBonus = evalWeights[42];
inline int& rookSeventhDoubledBonus = evalWeights[43];
inline int& rookMobilityWeight = evalWeights[44];
inline int& queenMobilityWeight = evalWeights[45];
inline int& queenAloneBonus = evalWeights[46];
inline int& queenEarlyPenalty = evalWeights[47];
inline int& kingPawnWingBonus = evalWeights[48];
inline int& kingCentreWeight = evalWeights[49];
inline int& passedRaceWeight = evalWeights[50];
inline int& shelterDangerWeight = evalWeights[51];
inline int& kingDangerWeight = evalWeights[52];
inline int& noQueenShift = evalWeights[53];
inline int& noRookShift1 = evalWeights[54];
inline int& noRookShift2 = evalWeights[55];
inline int& queenAttackUnitsMin = evalWeights[56];
inline int& rookAttackUnitsMin = evalWeights[57];
inline int& bishopKingLineUnits = evalWeights[58];
inline int& knightTropismMin = evalWeights[59];

// Attack units of a knight, bishop, rook or queen (piece type 1..4) by its
// king distance. Distances 1..5 are the weights 60..79, five per piece; the
// others count nothing.
inline int tropism(int piece, int distance) {
    return distance >= 1 && distance <= 5 ? evalWeights[54 + 5 * piece + distance] : 0;
}

// Not in the tuner's list.
inline constexpr int rookOpenFileUnits = 1;
inline constexpr int rookHalfOpenUnits = 1;
