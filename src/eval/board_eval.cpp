#include <algorithm>

#include "board/board.h"
#include "eval/evalHashtable.h"
#include "eval/evalTables.h"
#include "eval/evalWeights.h"

evalHashtable* board::evalCache = nullptr;
int board::lastPositionalScore = 0;

namespace {

constexpr int lazyMargin = 175;
constexpr int shelterBase = 6000;  // fixed: does not follow the pawn value

constexpr int dangerCurve[51] = {0,  0,  1,  1,  1,  2,  2,  3,  3,  4,  5,  7,  9,  11, 13, 15, 18,
                                 21, 24, 27, 30, 34, 38, 42, 46, 50, 54, 58, 62, 66, 70, 73, 76, 79,
                                 82, 85, 87, 89, 91, 93, 95, 96, 97, 97, 98, 98, 99, 99, 99, 100, 100};

constexpr uint64_t filesAB = 0xC0C0C0C0C0C0C0C0ULL;
constexpr uint64_t filesGH = 0x0303030303030303ULL;
constexpr uint64_t centralOutposts = 0x0000003C3C000000ULL;  // c4-f4, c5-f5
constexpr uint64_t whiteCentrePawns = 1ULL << 12 | 1ULL << 11;  // d2, e2
constexpr uint64_t blackCentrePawns = 1ULL << 52 | 1ULL << 51;  // d7, e7

// Shift counts are tunable weights; keep them defined.
int shiftDown(int value, int count) { return value >> std::clamp(count, 0, 31); }

int dangerPenalty(int danger) {
    if (danger < 0) return 0;
    if (danger <= 50) return (kingDangerWeight * dangerCurve[danger]) / 10;
    return kingDangerWeight * 10;
}

// King on a, b or c of its first rank with a rook on c or d, or on g or h
// with a rook on e or f. home is the square number of the rank's h-file square.
bool castled(int king, uint64_t rooks, int home) {
    const int file = king - home;
    if (file >= 5 && file <= 7) return rooks >> (home + 4) & 3;
    if (file == 0 || file == 1) return rooks >> (home + 2) & 3;
    return false;
}

int minorDeficit(int queens, int rooks, int weight) { return ((9 - queens - rooks) * weight) / 9; }

// Pawns that are undefended, cannot advance to a square their side controls,
// and cannot be defended by a neighbour stepping up safely.
template <int us>
uint64_t backwardPawns(uint64_t own, uint64_t enemy, uint64_t ownControl, uint64_t enemyControl) {
    constexpr uint64_t startRank = us == WHITE ? rank2 : rank7;
    const uint64_t doubleStep =
        startRank & ~backward<us>(enemy) & ~backward<us>(backward<us>(enemy)) & backward<us>(backward<us>(ownControl));
    const uint64_t rescuable = pawnAttackSet<us>(forward<us>(own) & ~enemyControl);
    return own & ~pawnAttackSet<us>(own) & ~backward<us>(ownControl) & ~doubleStep & ~rescuable;
}

int backwardScore(uint64_t pawns, uint64_t enemyPawns, int total, int startTotal) {
    const int divisor = nonZero(startTotal);
    return (countBits(pawns) * total * backwardPawnWeight) / divisor +
           (countBits(pawns & ~filesOf(enemyPawns)) * total * backwardOpenFileWeight) / divisor +
           (countBits(pawns & centreFiles) * total * backwardCentreWeight) / divisor;
}

// Table values, doubled and isolated pawns; collects the passed pawns and the
// candidates. White's view.
template <int us>
int pawnWalk(const board& b, uint64_t& passed, uint64_t& candidates) {
    constexpr int them = us ^ 1, sign = us == WHITE ? 1 : -1;
    const uint64_t own = b.bb[PAWN][us], enemy = b.bb[PAWN][them];
    int score = 0;
    for (uint64_t set = own; set;) {
        const int square = findFirstBit(set);
        deleteBit(set, square);
        score += pieceSquare[us][PAWN][square];
        if (!(own & adjacentFiles(square))) score += sign * isolatedPawnPenalty;
        if (own & frontFile[us][square]) score += sign * doubledPawnPenalty;
        if (enemy & frontFile[us][square]) continue;
        const uint64_t stoppers = enemy & frontSides[us][square];
        const bool advanced = us == WHITE ? square / 8 >= 3 : square / 8 <= 4;
        if (!stoppers) addBit(passed, square);
        else if (countBits(stoppers) == 1 && (own & pawnSupport[us][square]) && advanced) addBit(candidates, square);
    }
    return score;
}

// Knights and bishops of one side, White's view; fills the side's knight and
// bishop attack slots and adds the attack units against the enemy king.
template <int us>
int minorPieces(const board& b, uint64_t (&attacks)[2][7], uint64_t enemyControl, int& units) {
    constexpr int them = us ^ 1, sign = us == WHITE ? 1 : -1;
    const int pawn = pieceValue[PAWN], total = b.totalMat;
    const int enemyKing = us == WHITE ? b.bKingSq : b.wKingSq;
    const uint64_t ownPawns = b.bb[PAWN][us], enemyPawns = b.bb[PAWN][them];
    const uint64_t ownMen = b.bb[NOPIECE][us], enemyMen = b.bb[NOPIECE][them];
    int score = 0;

    for (uint64_t set = b.bb[KNIGHT][us]; set;) {
        const int square = findFirstBit(set);
        deleteBit(set, square);
        attacks[us][KNIGHT] |= knightAttacks[square];
        int reach = tropism(KNIGHT, distance[square][enemyKing]);
        if (reach < knightTropismMin && (knightAttacks[square] & knightAttacks[enemyKing])) reach = knightTropismMin;
        units += reach;
        score += pieceSquare[us][KNIGHT][square];
        int value = 0;
        if (total <= 40 * pawn) value += ((40 * pawn - total) * knightEndgameWeight) / nonZero(10 * pawn);
        const uint64_t defenders = ownPawns & pawnDefenders<us>(square);
        if (defenders && total >= 30 * pawn && !b.drivenAwayByPawn(square, sign)) {
            const bool unchallenged = !(b.bb[BISHOP][them] & (diagonalA[square] | diagonalB[square])) &&
                                      !(b.bb[KNIGHT][them] & knightAttacks[square]);
            if (unchallenged || countBits(defenders) == 2)
                value += outpostBonus + (centralOutposts >> square & 1 ? centralOutpostBonus : 0);
        }
        score += sign * value;
    }

    // Pawns that cannot step forward safely.
    const uint64_t stuckPawns = ownPawns & backward<us>(b.occupied | enemyControl);
    for (uint64_t set = b.bb[BISHOP][us]; set;) {
        const int square = findFirstBit(set);
        deleteBit(set, square);
        const uint64_t reach = b.smg.bishopMoves(square, b.occupied);
        attacks[us][BISHOP] |= reach;
        int kingUnits = tropism(BISHOP, distance[square][enemyKing]);
        if (reach & kingAttacks[enemyKing]) kingUnits = std::max(kingUnits, tropism(BISHOP, 1));
        const uint64_t kingLines = diagonalA[enemyKing] | diagonalB[enemyKing];
        if (kingUnits < bishopKingLineUnits && (reach & kingLines & ~attacks[them][PAWN] & ~enemyMen))
            kingUnits = bishopKingLineUnits;
        units += kingUnits;
        score += pieceSquare[us][BISHOP][square];

        const uint64_t colour = sameColourSquares[square];
        const uint64_t blockedCentre = ownPawns & centreFiles & reach & backward<us>(enemyMen);
        int value = (countBits(reach) * bishopMobilityWeight - 4 * bishopMobilityWeight) / 10;
        value += (countBits(ownPawns & colour) * bishopOwnPawnColourWeight) / 4;
        value += (countBits(stuckPawns & colour) * bishopSecondPawnColourWeight) / 4;
        value += (countBits(blockedCentre) * bishopBlockedCentreWeight) / 4;
        if (ownPawns & pawnDefenders<us>(square)) value += bishopPawnDefendedBonus;
        if (total <= 40 * pawn)
            value += (countBits(enemyPawns & forward<us>(ownMen) & colour) * bishopEndgamePawnWeight) / 4;
        score += sign * value;
    }
    return score;
}

// Grows each king's reachable area in turns, the side to move first. A side
// widens only from squares the other has not claimed, that enemy pawns, knights
// and bishops do not attack and that hold none of its own men but the king.
int kingRace(const board& b, const uint64_t (&attacks)[2][7]) {
    uint64_t area[2] = {1ULL << b.wKingSq, 1ULL << b.bKingSq};
    uint64_t barred[2];
    for (int side = WHITE; side <= BLACK; side++)
        barred[side] = attacks[side ^ 1][PAWN] | attacks[side ^ 1][KNIGHT] | attacks[side ^ 1][BISHOP] |
                       (b.bb[NOPIECE][side] & ~b.bb[KING][side]);
    bool finished[2] = {false, false};
    for (int side = colourOf(b.toMove); !finished[WHITE] || !finished[BLACK]; side ^= 1) {
        if (finished[side]) continue;
        uint64_t from = area[side] & ~area[side ^ 1] & ~barred[side];
        from |= ((from & ~fileA) << 1) | ((from & ~fileH) >> 1);
        const uint64_t grown = area[side] | from | from << 8 | from >> 8;
        finished[side] = grown == area[side];
        area[side] = grown;
    }
    return countBits(b.bb[PAWN][BLACK] & area[WHITE] & ~area[BLACK]) -
           countBits(b.bb[PAWN][WHITE] & area[BLACK] & ~area[WHITE]);
}

}  // namespace

int board::evaluate(int alpha, int beta) {
    const int side = toMove;
    const int estimate1 = (lastPositionalScore + lazy) * side;
    const int estimate2 = (positionalScore + lazy) * side;
    if (estimate1 + lazyMargin < alpha && estimate2 + lazyMargin < alpha) return alpha;
    if (beta < estimate1 - lazyMargin && beta < estimate2 - lazyMargin) return beta;

    const int clock = fiftyMoves;
    const auto fiftyMoveScaled = [clock](int score) { return clock > 50 ? score * (100 - clock) / 50 : score; };
    const uint64_t cacheKey = boardKey ^ evalWeightsKey;
    if (evalCache) {
        const int cached = evalCache->probe(cacheKey);
        if (cached != evalHashtable::missValue) return fiftyMoveScaled(cached) * side;
    }

    const int pawn = pieceValue[PAWN], total = totalMat, startTotal = maxMaterial;
    const int8_t* whiteCount = pieceCount[1];
    const int8_t* blackCount = pieceCount[0];
    const uint64_t whitePawns = bb[PAWN][WHITE], blackPawns = bb[PAWN][BLACK], pawns = whitePawns | blackPawns;
    int score = lazy;

    if (total > 70 * pawn) {
        const uint64_t whiteMinors = bb[KNIGHT][WHITE] | bb[BISHOP][WHITE];
        const uint64_t blackMinors = bb[KNIGHT][BLACK] | bb[BISHOP][BLACK];
        score += (countBits(whiteMinors & rank1) - countBits(blackMinors & rank8)) * developmentWeight;
        if (!castled(wKingSq, bb[ROOK][WHITE], 0)) score += 3 * uncastledPenalty;
        if (!castled(bKingSq, bb[ROOK][BLACK], 56)) score -= 3 * uncastledPenalty;
    }

    score += countBits(whitePawns & whiteCentrePawns & occupied >> 8) * blockedCentrePawnPenalty;
    score -= countBits(blackPawns & blackCentrePawns & occupied << 8) * blockedCentrePawnPenalty;

    {
        const int whiteQueens = whiteCount[QUEEN], whiteRooks = whiteCount[ROOK];
        const int blackQueens = blackCount[QUEEN], blackRooks = blackCount[ROOK];
        // The heavy pieces counted are those of the side short of minors.
        switch (whiteCount[KNIGHT] + whiteCount[BISHOP] - blackCount[KNIGHT] - blackCount[BISHOP] + 3) {
        case 3:
            if (whiteQueens == blackQueens && whiteRooks != blackRooks)
                score += (whiteRooks - blackRooks) * rookImbalanceWeight;
            break;
        case 2:
            if (!(blackQueens < whiteQueens || blackRooks < whiteRooks || !blackPawns))
                score -= minorDeficit(whiteQueens, whiteRooks, minorDeficitWeight);
            break;
        case 1:
            if (!(blackQueens < whiteQueens || blackRooks + 1 < whiteRooks))
                score -= minorDeficit(whiteQueens, whiteRooks, minorDeficitWeight);
            break;
        case 0:
            if ((whiteQueens <= blackQueens + 1 && whiteRooks == blackRooks) ||
                (whiteQueens == blackQueens && whiteRooks <= blackRooks + 2))
                score -= minorDeficit(whiteQueens, whiteRooks, minorDeficitWeight3);
            break;
        case 4:
            if (!(whiteQueens < blackQueens || whiteRooks < blackRooks || !whitePawns))
                score += minorDeficit(blackQueens, blackRooks, minorDeficitWeight);
            break;
        case 5:
            if (!(whiteQueens < blackQueens || whiteRooks + 1 < blackRooks))
                score += minorDeficit(blackQueens, blackRooks, minorDeficitWeight);
            break;
        case 6:
            if ((blackQueens <= whiteQueens + 1 && blackRooks == whiteRooks) ||
                (blackQueens == whiteQueens && blackRooks <= whiteRooks + 2))
                score += minorDeficit(blackQueens, blackRooks, minorDeficitWeight3);
            break;
        default:
            break;
        }
    }

    // With castling rights held, the better of the two castled shelters counts.
    int whiteShelter = 0, blackShelter = 0;
    if (total > 60 * pawn) {
        const int divisor = nonZero(startTotal - shelterBase);
        if (castle & 3) {
            whiteShelter = std::max(castle & 1 ? calculatePStructW(1) : 0, castle & 2 ? calculatePStructW(6) : 0);
            score += ((whiteShelter * (total - shelterBase) * kingShelterWeight * 2) / 3) / divisor;
        } else {
            whiteShelter = calculatePStructW(wKingSq);
            score += ((total - shelterBase) * whiteShelter * kingShelterWeight) / divisor;
        }
        if (castle & 12) {
            blackShelter = std::max(castle & 4 ? calculatePStructB(57) : 0, castle & 8 ? calculatePStructB(62) : 0);
            score -= ((blackShelter * (total - shelterBase) * kingShelterWeight * 2) / 3) / divisor;
        } else {
            blackShelter = calculatePStructB(bKingSq);
            score -= ((total - shelterBase) * blackShelter * kingShelterWeight) / divisor;
        }
    }

    if (total <= 40 * pawn && (pawns & filesAB) && (pawns & filesGH)) {
        if (!whiteCount[BISHOP] && !whiteCount[ROOK] && !whiteCount[QUEEN]) score += 4 * knightOnlyPenalty;
        if (!blackCount[BISHOP] && !blackCount[ROOK] && !blackCount[QUEEN]) score -= 4 * knightOnlyPenalty;
    }

    // Squares a side's pawns control: attacked by one of them and not by two
    // enemy pawns, or attacked by two of them.
    const uint64_t whiteLeft = (whitePawns & ~fileA) << 9, whiteRight = (whitePawns & ~fileH) << 7;
    const uint64_t blackLeft = (blackPawns & ~fileH) >> 9, blackRight = (blackPawns & ~fileA) >> 7;
    const uint64_t whiteControl = ((whiteLeft | whiteRight) & ~(blackLeft & blackRight)) | (whiteLeft & whiteRight);
    const uint64_t blackControl = ((blackLeft | blackRight) & ~(whiteLeft & whiteRight)) | (blackLeft & blackRight);
    if (total > 20 * pawn) {
        score += backwardScore(backwardPawns<WHITE>(whitePawns, blackPawns, whiteControl, blackControl), blackPawns,
                               total, startTotal);
        score -= backwardScore(backwardPawns<BLACK>(blackPawns, whitePawns, blackControl, whiteControl), whitePawns,
                               total, startTotal);
    }

    uint64_t passed = 0, candidates = 0;
    score += pawnWalk<WHITE>(*this, passed, candidates);
    score += pawnWalk<BLACK>(*this, passed, candidates);

    if (total > 40 * pawn) {
        score += pieceSquare[WHITE][KING][wKingSq] + pieceSquare[BLACK][KING][bKingSq];
    } else {
        const int rook = pieceValue[ROOK];
        if (wMat < rook && rook <= bMat) score += kingCentreWeight * kingCentre[wKingSq];
        // The else arms hang on this second test alone, so a White king short
        // of a rook's worth gets the wing or centre term as well.
        if (bMat < rook && rook <= wMat) {
            score -= kingCentreWeight * kingCentre[bKingSq];
        } else if (!(pawns & kingSide) || !(pawns & queenSide)) {
            const uint64_t wing = pawns & kingSide ? kingSide : queenSide;  // no pawns: files a-d
            if (wing >> wKingSq & 1) score += kingPawnWingBonus;
            if (wing >> bKingSq & 1) score -= kingPawnWingBonus;
        } else {
            score += (kingCentre[wKingSq] - kingCentre[bKingSq]) * kingCentreWeight;
        }
    }

    uint64_t attacks[2][7] = {};
    attacks[WHITE][PAWN] = whiteLeft | whiteRight;
    attacks[BLACK][PAWN] = blackLeft | blackRight;
    attacks[WHITE][KING] = kingAttacks[wKingSq];
    attacks[BLACK][KING] = kingAttacks[bKingSq];
    attacks[WHITE][KING_FRONT] = (((kingAttacks[wKingSq] | 1ULL << wKingSq) & rankOf(wKingSq)) << 8) << 8;
    attacks[BLACK][KING_FRONT] = (((kingAttacks[bKingSq] | 1ULL << bKingSq) & rankOf(bKingSq)) >> 8) >> 8;
    int unitsAgainstWhite = 0, unitsAgainstBlack = 0;
    score += minorPieces<WHITE>(*this, attacks, blackControl, unitsAgainstBlack);
    score += minorPieces<BLACK>(*this, attacks, whiteControl, unitsAgainstWhite);
    if (whiteCount[BISHOP] != blackCount[BISHOP]) {
        if (whiteCount[BISHOP] == 2) score += bishopPairBonus;
        else if (blackCount[BISHOP] == 2) score -= bishopPairBonus;
    }

    if (bb[ROOK][WHITE] | bb[ROOK][BLACK]) score += evaluateRooks(attacks, unitsAgainstWhite, unitsAgainstBlack);
    if (bb[QUEEN][WHITE] | bb[QUEEN][BLACK]) score += evaluateQueens(attacks, unitsAgainstWhite, unitsAgainstBlack);

    if (total < 40 * pawn) score += ((50 * pawn - total) * kingRace(*this, attacks) * passedRaceWeight) / nonZero(50 * pawn);

    int againstWhite = dangerPenalty(unitsAgainstWhite + ((9 - whiteShelter) * shelterDangerWeight) / 9);
    int againstBlack = dangerPenalty(unitsAgainstBlack + ((9 - blackShelter) * shelterDangerWeight) / 9);
    if (!blackCount[QUEEN]) {
        againstWhite = shiftDown(againstWhite, noQueenShift);
        if (!blackCount[ROOK]) againstWhite = shiftDown(shiftDown(againstWhite, noRookShift1), noRookShift2);
    }
    if (!whiteCount[QUEEN]) {
        againstBlack = shiftDown(againstBlack, noQueenShift);
        if (!whiteCount[ROOK]) {
            againstBlack = shiftDown(againstBlack, noRookShift1);
            // Only against Black does the last shift also need the attacker's bishops gone.
            if (!whiteCount[BISHOP]) againstBlack = shiftDown(againstBlack, noRookShift2);
        }
    }
    score += againstWhite - againstBlack;

    if (passed) {
        const uint64_t byBlack = attacks[BLACK][PAWN] | attacks[BLACK][KNIGHT] | attacks[BLACK][BISHOP] |
                                 attacks[BLACK][ROOK] | attacks[BLACK][QUEEN] | attacks[BLACK][KING];
        const uint64_t byWhite = attacks[WHITE][PAWN] | attacks[WHITE][KNIGHT] | attacks[WHITE][BISHOP] |
                                 attacks[WHITE][ROOK] | attacks[WHITE][QUEEN] | attacks[WHITE][KING];
        score += evaluatePassedPawns(passed, byBlack, byWhite);
    }
    if (candidates) score += evaluateHiddenPassedPawns(passed, candidates);

    lastPositionalScore = positionalScore = score - lazy;
    if (evalCache) evalCache->store(cacheKey, score);
    return fiftyMoveScaled(score) * side;
}
