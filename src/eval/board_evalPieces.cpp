#include <algorithm>
#include <cstdint>

#include "board/board.h"
#include "eval/evalInfo.h"
#include "eval/evalTables.h"
#include "eval/evalWeights.h"

namespace {

// (sum + largest) / 2 over the side's front passed pawns, in its own favour.
template <int us>
int passedPawnPart(const board& b, uint64_t passed, uint64_t attackedByEnemy) {
    constexpr int them = us ^ 1;
    const uint64_t own = passed & b.bb[PAWN][us];
    const int ownKing = us == WHITE ? b.wKingSq : b.bKingSq;
    const int enemyKing = us == WHITE ? b.bKingSq : b.wKingSq;
    const int8_t* defender = b.pieceCount[us == WHITE ? 0 : 1];
    int sum = 0, largest = 0;
    for (uint64_t set = own; set;) {
        const int square = findFirstBit(set);
        deleteBit(set, square);
        if (own & frontFile[us][square]) continue;
        const int rank = us == WHITE ? square / 8 : 7 - square / 8;
        int value = (passedRankQuadratic * rank * rank) / 10 + passedBase + (rank * passedRankLinear) / 10;

        if (rank < 7) {  // a pawn on its last rank (a broken position) has no stop square
            const int stop = us == WHITE ? square + 8 : square - 8;
            if (b.bb[NOPIECE][them] >> stop & 1) value += passedBlockedPenalty;
            else if (!b.attackedBy(stop, them)) value += passedFreeStopBonus;
        }
        const uint64_t supporters = b.bb[PAWN][us] & pawnSupport[us][square];
        if (supporters) {
            value += passedSupportedBonus;
            if (supporters & passed) value += passedConnectedBonus;
        }

        // The flag read with Black to move is the neighbouring king square's;
        // that reading is kept. Off the table (index -1 or -2) reads as not set.
        const int flag = (square * 64 + enemyKing) * 4 + (us == WHITE ? 1 : 0) + 2 * b.toMove;
        if (flag >= 0 && unstoppablePawn[flag >> 8][flag >> 2 & 63][flag & 3]) {
            const int minorOnly = (unstoppableBonus * unstoppableMinorFactor) / 4;
            if (defender[ROOK] || defender[QUEEN]) value += unstoppableBonus;
            else if (defender[BISHOP]) value += minorOnly;
            else value += (unstoppablePawnsOnlyFactor * minorOnly) / 4;
        } else if (!(frontFile[us][square] & attackedByEnemy) && !defender[QUEEN] && defender[ROOK] < 2) {
            const int minorOnly = (freePathMinorFactor * freePathBonus) / 4;
            if (defender[ROOK]) value += freePathBonus;
            else if (defender[BISHOP]) value += minorOnly;
            else value += (freePathPawnsOnlyFactor * minorOnly) / 4;
        }

        value = (value * (distance[square][enemyKing] - distance[square][ownKing] + 8)) / 8;
        sum += value;
        largest = std::max(largest, value);
    }
    return (sum + largest) / 2;
}

template <int us>
int candidateScore(const board& b, uint64_t passed, uint64_t candidates) {
    const int8_t* enemy = b.pieceCount[us == WHITE ? 0 : 1];
    int score = 0;
    for (uint64_t set = candidates & b.bb[PAWN][us]; set;) {
        const int square = findFirstBit(set);
        deleteBit(set, square);
        const int steps = us == WHITE ? square / 8 - 2 : 5 - square / 8;
        int value = steps * candidateWeight;
        if (!enemy[QUEEN]) {
            value = (steps * candidateWeight * candidateNoQueenFactor) / 4;
            if (!enemy[ROOK] && !enemy[BISHOP] && !passed) value = (value * candidateBareFactor) / 4;
        }
        score += value;
    }
    return score;
}

template <int us>
int rookScore(const board& b, evalInfo& info) {
    constexpr int them = us ^ 1, sign = us == WHITE ? 1 : -1;
    uint64_t(&attacks)[2][7] = info.attacks;
    int& units = info.unitsAgainstKing[them];
    constexpr uint64_t seventh = us == WHITE ? rank7 : rank2;
    const int enemyKing = us == WHITE ? b.bKingSq : b.wKingSq;
    const bool kingOnBackRank = enemyKing / 8 == (us == WHITE ? 7 : 0);
    const uint64_t heavy = b.bb[ROOK][us] | b.bb[QUEEN][us];
    const uint64_t kingZone = attacks[them][KING] | attacks[them][evalInfo::KING_FRONT];
    const uint64_t guarded = attacks[them][PAWN] | attacks[them][KNIGHT] | attacks[them][BISHOP];
    int score = 0;
    for (uint64_t set = b.bb[ROOK][us]; set;) {
        const int square = findFirstBit(set);
        deleteBit(set, square);
        score += pieceSquare[us][ROOK][square];
        // Through its own rooks and queens.
        const uint64_t reach = b.smg.rookMoves(square, b.occupied & ~heavy);
        attacks[us][ROOK] |= reach;
        int kingUnits =
            (reach & kingAttacks[enemyKing]) ? tropism(ROOK, 1) : tropism(ROOK, distance[square][enemyKing]);
        int value = 0;
        if (!(b.bb[PAWN][us] & fileOf(square))) {
            if (b.bb[ROOK][us] & frontFile[us][square]) value += rookDoubledBonus;
            if (b.bb[PAWN][them] & fileOf(square)) {
                value += rookHalfOpenBonus;
                kingUnits = std::max(kingUnits, rookHalfOpenUnits);
            } else {
                value += rookOpenFileBonus;
                kingUnits = std::max(kingUnits, rookOpenFileUnits);
            }
        }
        if (kingUnits < rookAttackUnitsMin && (reach & kingZone & ~guarded)) kingUnits = rookAttackUnitsMin;
        units += kingUnits;
        if ((seventh >> square & 1) && (kingOnBackRank || (b.bb[PAWN][them] & seventh))) {
            value += rookSeventhBonus;
            if (b.smg.rookMoves(square, b.occupied) & seventh & heavy) value += rookSeventhDoubledBonus;
        }
        value += (rookMobilityWeight * (countBits(reach) - 4)) / 10;
        score += sign * value;
    }
    return score;
}

template <int us>
int queenScore(const board& b, evalInfo& info) {
    constexpr int them = us ^ 1, sign = us == WHITE ? 1 : -1;
    uint64_t(&attacks)[2][7] = info.attacks;
    int& units = info.unitsAgainstKing[them];
    constexpr uint64_t homeRank = us == WHITE ? rank1 : rank8;
    constexpr uint64_t homeSquare = us == WHITE ? 1ULL << 4 : 1ULL << 60;  // d1, d8
    const int pawn = pieceValue[PAWN], total = b.totalMat;
    const int enemyKing = us == WHITE ? b.bKingSq : b.wKingSq;
    const uint64_t kingZone = attacks[them][KING] | attacks[them][evalInfo::KING_FRONT];
    const uint64_t guarded = attacks[them][PAWN] | attacks[them][KNIGHT] | attacks[them][BISHOP] | attacks[them][ROOK];
    const uint64_t minorsAtHome = (b.bb[KNIGHT][us] | b.bb[BISHOP][us]) & homeRank;
    const bool enemyHasQueen = b.pieceCount[us == WHITE ? 0 : 1][QUEEN];
    int score = 0;
    for (uint64_t set = b.bb[QUEEN][us]; set;) {
        const int square = findFirstBit(set);
        deleteBit(set, square);
        const uint64_t reach = b.smg.rookMoves(square, b.occupied & ~b.bb[ROOK][us]) |
                               b.smg.bishopMoves(square, b.occupied & ~b.bb[BISHOP][us]);
        attacks[us][QUEEN] |= reach;
        int kingUnits = tropism(QUEEN, distance[square][enemyKing]);
        if (reach & kingAttacks[enemyKing]) kingUnits = std::max(kingUnits, tropism(QUEEN, 1));
        if (kingUnits < queenAttackUnitsMin && (reach & kingZone & ~guarded)) kingUnits = queenAttackUnitsMin;
        units += kingUnits;
        score += pieceSquare[us][QUEEN][square];
        int value = 0;
        if (total >= 40 * pawn) value += (queenMobilityWeight * (countBits(reach) - 8)) / 10;
        if (total >= 65 * pawn && !(b.bb[QUEEN][us] & homeSquare)) value += countBits(minorsAtHome) * queenEarlyPenalty;
        // 78 pawns, not the start total.
        if (!enemyHasQueen) value += ((78 * pawn - total) * queenAloneBonus) / nonZero(78 * pawn);
        score += sign * value;
    }
    return score;
}

template <int us>
int shelter(const board& b, int king) {
    const uint64_t pawns = b.bb[PAWN][us];
    const uint64_t span = frontFile[us][king] | frontSides[us][king];
    const uint64_t shield = pawns & span;
    const uint64_t nextToKing = kingAttacks[king] & span;
    const int value = 3 * countBits(shield & nextToKing) + 2 * countBits(nextToKing & ~shield & backward<us>(shield));
    const bool homeRanks = us == WHITE ? king < 16 : king >= 48;
    if (!homeRanks) return value;
    if (king % 8 < 4) return (pawns & fileG) && (pawns & fileH) ? value : value / 2;  // files e-h
    return (pawns & fileA) && (pawns & fileB) ? value : value / 2;
}

// Every square a side attacks.
uint64_t allAttacks(const evalInfo& info, int side) {
    const uint64_t(&attacks)[7] = info.attacks[side];
    return attacks[PAWN] | attacks[KNIGHT] | attacks[BISHOP] | attacks[ROOK] | attacks[QUEEN] | attacks[KING];
}

}  // namespace

int board::evaluatePassedPawns(const evalInfo& info) const {
    const int whitePart = passedPawnPart<WHITE>(*this, info.passed, allAttacks(info, BLACK));
    const int blackPart = passedPawnPart<BLACK>(*this, info.passed, allAttacks(info, WHITE));
    const int doubleStart = 2 * maxMaterial;
    return static_cast<int>(static_cast<int64_t>(whitePart - blackPart) * (doubleStart - totalMat) /
                            nonZero(doubleStart));
}

int board::evaluateHiddenPassedPawns(const evalInfo& info) const {
    return candidateScore<WHITE>(*this, info.passed, info.candidates) -
           candidateScore<BLACK>(*this, info.passed, info.candidates);
}

int board::evaluateRooks(evalInfo& info) const {
    const int white = rookScore<WHITE>(*this, info);
    return white + rookScore<BLACK>(*this, info);
}

int board::evaluateQueens(evalInfo& info) const {
    const int white = queenScore<WHITE>(*this, info);
    return white + queenScore<BLACK>(*this, info);
}

bool board::drivenAwayByPawn(int square, int side) const {
    // Arrival squares must be empty and not covered by the piece's own pawns.
    if (side == 1) {
        const uint64_t closed = occupied | pawnAttackSet<WHITE>(bb[PAWN][WHITE]);
        const uint64_t attackFrom = whitePawnAttacks[square] & ~closed;
        if ((attackFrom << 8) & bb[PAWN][BLACK]) return true;
        return square / 8 == 3 && ((((attackFrom << 8) & ~closed) << 8) & bb[PAWN][BLACK]);
    }
    const uint64_t closed = occupied | pawnAttackSet<BLACK>(bb[PAWN][BLACK]);
    const uint64_t attackFrom = blackPawnAttacks[square] & ~closed;
    if ((attackFrom >> 8) & bb[PAWN][WHITE]) return true;
    return square / 8 == 4 && ((((attackFrom >> 8) & ~closed) >> 8) & bb[PAWN][WHITE]);
}

int board::calculatePStructW(int kingSquare) const { return shelter<WHITE>(*this, kingSquare); }
int board::calculatePStructB(int kingSquare) const { return shelter<BLACK>(*this, kingSquare); }
