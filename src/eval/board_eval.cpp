#include <algorithm>
#include <cstdint>

#include "board/board.h"
#include "eval/evalHashtable.h"
#include "eval/evalInfo.h"
#include "eval/evalTables.h"
#include "eval/evalWeights.h"

evalHashtable* board::evalCache = nullptr;
thread_local int board::lastPositionalScore = 0;

namespace {

constexpr int lazyMargin = 175;
constexpr int shelterBase = 6000;  // fixed: does not follow the pawn value

constexpr int dangerCurve[51] = {0,  0,  1,  1,  1,  2,  2,  3,  3,  4,  5,  7,  9,  11, 13, 15,  18,
                                 21, 24, 27, 30, 34, 38, 42, 46, 50, 54, 58, 62, 66, 70, 73, 76,  79,
                                 82, 85, 87, 89, 91, 93, 95, 96, 97, 97, 98, 98, 99, 99, 99, 100, 100};

constexpr uint64_t filesAB = 0xC0C0C0C0C0C0C0C0ULL;
constexpr uint64_t filesGH = 0x0303030303030303ULL;
constexpr uint64_t centralOutposts = 0x0000003C3C000000ULL;     // c4-f4, c5-f5
constexpr uint64_t whiteCentrePawns = 1ULL << 12 | 1ULL << 11;  // d2, e2
constexpr uint64_t blackCentrePawns = 1ULL << 52 | 1ULL << 51;  // d7, e7

// Every term below is from White's view.

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

// Minor pieces still at home and kings not castled, while much material is on.
int development(const board& b) {
    if (b.totalMat <= 70 * pieceValue[PAWN]) return 0;
    const uint64_t whiteMinors = b.bb[KNIGHT][WHITE] | b.bb[BISHOP][WHITE];
    const uint64_t blackMinors = b.bb[KNIGHT][BLACK] | b.bb[BISHOP][BLACK];
    int score = (countBits(whiteMinors & rank1) - countBits(blackMinors & rank8)) * developmentWeight;
    if (!castled(b.wKingSq, b.bb[ROOK][WHITE], 0)) score += 3 * uncastledPenalty;
    if (!castled(b.bKingSq, b.bb[ROOK][BLACK], 56)) score -= 3 * uncastledPenalty;
    return score;
}

// Centre pawns on their start squares with a man in front.
int blockedCentrePawns(const board& b) {
    return countBits(b.bb[PAWN][WHITE] & whiteCentrePawns & b.occupied >> 8) * blockedCentrePawnPenalty -
           countBits(b.bb[PAWN][BLACK] & blackCentrePawns & b.occupied << 8) * blockedCentrePawnPenalty;
}

int minorDeficit(int queens, int rooks, int weight) { return ((9 - queens - rooks) * weight) / 9; }

// Minor pieces against heavy ones. The heavy pieces counted are those of the
// side short of minors.
int minorImbalance(const board& b) {
    const int8_t* whiteCount = b.pieceCount[sideIndex(1)];
    const int8_t* blackCount = b.pieceCount[sideIndex(-1)];
    const int whiteQueens = whiteCount[QUEEN], whiteRooks = whiteCount[ROOK];
    const int blackQueens = blackCount[QUEEN], blackRooks = blackCount[ROOK];
    switch (whiteCount[KNIGHT] + whiteCount[BISHOP] - blackCount[KNIGHT] - blackCount[BISHOP] + 3) {
    case 3:
        if (whiteQueens == blackQueens && whiteRooks != blackRooks)
            return (whiteRooks - blackRooks) * rookImbalanceWeight;
        break;
    case 2:
        if (!(blackQueens < whiteQueens || blackRooks < whiteRooks || !b.bb[PAWN][BLACK]))
            return -minorDeficit(whiteQueens, whiteRooks, minorDeficitWeight);
        break;
    case 1:
        if (!(blackQueens < whiteQueens || blackRooks + 1 < whiteRooks))
            return -minorDeficit(whiteQueens, whiteRooks, minorDeficitWeight);
        break;
    case 0:
        if ((whiteQueens <= blackQueens + 1 && whiteRooks == blackRooks) ||
            (whiteQueens == blackQueens && whiteRooks <= blackRooks + 2))
            return -minorDeficit(whiteQueens, whiteRooks, minorDeficitWeight3);
        break;
    case 4:
        if (!(whiteQueens < blackQueens || whiteRooks < blackRooks || !b.bb[PAWN][WHITE]))
            return minorDeficit(blackQueens, blackRooks, minorDeficitWeight);
        break;
    case 5:
        if (!(whiteQueens < blackQueens || whiteRooks + 1 < blackRooks))
            return minorDeficit(blackQueens, blackRooks, minorDeficitWeight);
        break;
    case 6:
        if ((blackQueens <= whiteQueens + 1 && blackRooks == whiteRooks) ||
            (blackQueens == whiteQueens && blackRooks <= whiteRooks + 2))
            return minorDeficit(blackQueens, blackRooks, minorDeficitWeight3);
        break;
    default: break;
    }
    return 0;
}

// With castling rights held, the better of the two castled shelters counts.
// Keeps each side's shelter for the king danger.
int kingShelter(const board& b, evalInfo& info) {
    const int total = b.totalMat;
    if (total <= 60 * pieceValue[PAWN]) return 0;
    const int divisor = nonZero(maxMaterial - shelterBase);
    const int castle = b.castle;
    int score = 0;
    int& white = info.shelter[WHITE];
    if (castle & whiteCastling) {
        white = std::max(castle & whiteKingSide ? b.calculatePStructW(1) : 0,
                         castle & whiteQueenSide ? b.calculatePStructW(6) : 0);
        score += ((white * (total - shelterBase) * kingShelterWeight * 2) / 3) / divisor;
    } else {
        white = b.calculatePStructW(b.wKingSq);
        score += ((total - shelterBase) * white * kingShelterWeight) / divisor;
    }
    int& black = info.shelter[BLACK];
    if (castle & blackCastling) {
        black = std::max(castle & blackKingSide ? b.calculatePStructB(57) : 0,
                         castle & blackQueenSide ? b.calculatePStructB(62) : 0);
        score -= ((black * (total - shelterBase) * kingShelterWeight * 2) / 3) / divisor;
    } else {
        black = b.calculatePStructB(b.bKingSq);
        score -= ((total - shelterBase) * black * kingShelterWeight) / divisor;
    }
    return score;
}

// Knights alone are poor at holding pawns on both wings.
int knightsOnly(const board& b) {
    const uint64_t pawns = b.bb[PAWN][WHITE] | b.bb[PAWN][BLACK];
    if (b.totalMat > 40 * pieceValue[PAWN] || !(pawns & filesAB) || !(pawns & filesGH)) return 0;
    const int8_t* whiteCount = b.pieceCount[sideIndex(1)];
    const int8_t* blackCount = b.pieceCount[sideIndex(-1)];
    int score = 0;
    if (!whiteCount[BISHOP] && !whiteCount[ROOK] && !whiteCount[QUEEN]) score += 4 * knightOnlyPenalty;
    if (!blackCount[BISHOP] && !blackCount[ROOK] && !blackCount[QUEEN]) score -= 4 * knightOnlyPenalty;
    return score;
}

void findPawnAttacks(const board& b, evalInfo& info) {
    const uint64_t whitePawns = b.bb[PAWN][WHITE], blackPawns = b.bb[PAWN][BLACK];
    const uint64_t whiteLeft = (whitePawns & ~fileA) << 9, whiteRight = (whitePawns & ~fileH) << 7;
    const uint64_t blackLeft = (blackPawns & ~fileH) >> 9, blackRight = (blackPawns & ~fileA) >> 7;
    info.attacks[WHITE][PAWN] = whiteLeft | whiteRight;
    info.attacks[BLACK][PAWN] = blackLeft | blackRight;
    info.pawnControl[WHITE] = ((whiteLeft | whiteRight) & ~(blackLeft & blackRight)) | (whiteLeft & whiteRight);
    info.pawnControl[BLACK] = ((blackLeft | blackRight) & ~(whiteLeft & whiteRight)) | (blackLeft & blackRight);
    // The piece terms or their attacks into these.
    for (uint64_t* pieceAttacks : info.attacks)
        pieceAttacks[KNIGHT] = pieceAttacks[BISHOP] = pieceAttacks[ROOK] = pieceAttacks[QUEEN] = 0;
}

void findKingZones(const board& b, evalInfo& info) {
    const int white = b.wKingSq, black = b.bKingSq;
    info.attacks[WHITE][KING] = kingAttacks[white];
    info.attacks[BLACK][KING] = kingAttacks[black];
    info.attacks[WHITE][evalInfo::KING_FRONT] = (((kingAttacks[white] | 1ULL << white) & rankOf(white)) << 8) << 8;
    info.attacks[BLACK][evalInfo::KING_FRONT] = (((kingAttacks[black] | 1ULL << black) & rankOf(black)) >> 8) >> 8;
}

// Pawns that are undefended, cannot advance to a square their side controls,
// and cannot be defended by a neighbour stepping up safely.
template <int us>
uint64_t backwardPawns(const board& b, const evalInfo& info) {
    constexpr int them = us ^ 1;
    constexpr uint64_t startRank = us == WHITE ? rank2 : rank7;
    const uint64_t own = b.bb[PAWN][us], enemy = b.bb[PAWN][them];
    const uint64_t ownControl = info.pawnControl[us], enemyControl = info.pawnControl[them];
    const uint64_t doubleStep =
        startRank & ~backward<us>(enemy) & ~backward<us>(backward<us>(enemy)) & backward<us>(backward<us>(ownControl));
    const uint64_t rescuable = pawnAttackSet<us>(forward<us>(own) & ~enemyControl);
    return own & ~pawnAttackSet<us>(own) & ~backward<us>(ownControl) & ~doubleStep & ~rescuable;
}

template <int us>
int backwardScore(const board& b, const evalInfo& info) {
    const uint64_t pawns = backwardPawns<us>(b, info), enemyPawns = b.bb[PAWN][us ^ 1];
    const int total = b.totalMat, divisor = nonZero(maxMaterial);
    return (countBits(pawns) * total * backwardPawnWeight) / divisor +
           (countBits(pawns & ~filesOf(enemyPawns)) * total * backwardOpenFileWeight) / divisor +
           (countBits(pawns & centreFiles) * total * backwardCentreWeight) / divisor;
}

int backwardPawnTerm(const board& b, const evalInfo& info) {
    if (b.totalMat <= 20 * pieceValue[PAWN]) return 0;
    return backwardScore<WHITE>(b, info) - backwardScore<BLACK>(b, info);
}

// Table values, doubled and isolated pawns; collects the passed pawns and the
// candidates.
template <int us>
int pawnWalk(const board& b, evalInfo& info) {
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
        if (!stoppers) addBit(info.passed, square);
        else if (countBits(stoppers) == 1 && (own & pawnSupport[us][square]) && advanced)
            addBit(info.candidates, square);
    }
    return score;
}

// The middlegame table while material is on; in the endgame the king's
// distance to the centre or to the only pawn wing.
int kingPlacement(const board& b) {
    const int wKingSq = b.wKingSq, bKingSq = b.bKingSq;
    if (b.totalMat > 40 * pieceValue[PAWN])
        return pieceSquare[WHITE][KING][wKingSq] + pieceSquare[BLACK][KING][bKingSq];
    const uint64_t pawns = b.bb[PAWN][WHITE] | b.bb[PAWN][BLACK];
    const int rook = pieceValue[ROOK];
    int score = 0;
    if (b.wMat < rook && rook <= b.bMat) score += kingCentreWeight * kingCentre[wKingSq];
    // The else arms hang on this second test alone, so a White king short
    // of a rook's worth gets the wing or centre term as well.
    if (b.bMat < rook && rook <= b.wMat) {
        score -= kingCentreWeight * kingCentre[bKingSq];
    } else if (!(pawns & kingSide) || !(pawns & queenSide)) {
        const uint64_t wing = pawns & kingSide ? kingSide : queenSide;  // no pawns: files a-d
        if (wing >> wKingSq & 1) score += kingPawnWingBonus;
        if (wing >> bKingSq & 1) score -= kingPawnWingBonus;
    } else {
        score += (kingCentre[wKingSq] - kingCentre[bKingSq]) * kingCentreWeight;
    }
    return score;
}

// Knights and bishops of one side; fills the side's knight and bishop attack
// slots and adds the attack units against the enemy king.
template <int us>
int minorPieces(const board& b, evalInfo& info) {
    constexpr int them = us ^ 1, sign = us == WHITE ? 1 : -1;
    const int pawn = pieceValue[PAWN], total = b.totalMat;
    const int enemyKing = us == WHITE ? b.bKingSq : b.wKingSq;
    const uint64_t ownPawns = b.bb[PAWN][us], enemyPawns = b.bb[PAWN][them];
    const uint64_t ownMen = b.bb[NOPIECE][us], enemyMen = b.bb[NOPIECE][them];
    int& units = info.unitsAgainstKing[them];
    int score = 0;

    for (uint64_t set = b.bb[KNIGHT][us]; set;) {
        const int square = findFirstBit(set);
        deleteBit(set, square);
        info.attacks[us][KNIGHT] |= knightAttacks[square];
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
    const uint64_t stuckPawns = ownPawns & backward<us>(b.occupied | info.pawnControl[them]);
    for (uint64_t set = b.bb[BISHOP][us]; set;) {
        const int square = findFirstBit(set);
        deleteBit(set, square);
        const uint64_t reach = b.smg.bishopMoves(square, b.occupied);
        info.attacks[us][BISHOP] |= reach;
        int kingUnits = tropism(BISHOP, distance[square][enemyKing]);
        if (reach & kingAttacks[enemyKing]) kingUnits = std::max(kingUnits, tropism(BISHOP, 1));
        const uint64_t kingLines = diagonalA[enemyKing] | diagonalB[enemyKing];
        if (kingUnits < bishopKingLineUnits && (reach & kingLines & ~info.attacks[them][PAWN] & ~enemyMen))
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

int bishopPair(const board& b) {
    const int white = b.pieceCount[sideIndex(1)][BISHOP], black = b.pieceCount[sideIndex(-1)][BISHOP];
    if (white == black) return 0;
    if (white == 2) return bishopPairBonus;
    if (black == 2) return -bishopPairBonus;
    return 0;
}

// Grows each king's reachable area in turns, the side to move first. A side
// widens only from squares the other has not claimed, that enemy pawns, knights
// and bishops do not attack and that hold none of its own men but the king.
// Counts the enemy pawns only one king reaches.
int kingRace(const board& b, const evalInfo& info) {
    const uint64_t(&attacks)[2][7] = info.attacks;
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

int passedRace(const board& b, const evalInfo& info) {
    const int pawn = pieceValue[PAWN], total = b.totalMat;
    if (total >= 40 * pawn) return 0;
    return ((50 * pawn - total) * kingRace(b, info) * passedRaceWeight) / nonZero(50 * pawn);
}

// The attack units and the shelter's gaps through the danger curve, eased
// as the attacker's heavy pieces go.
int kingDanger(const board& b, const evalInfo& info) {
    const int8_t* whiteCount = b.pieceCount[sideIndex(1)];
    const int8_t* blackCount = b.pieceCount[sideIndex(-1)];
    const int whiteShelter = info.shelter[WHITE], blackShelter = info.shelter[BLACK];
    int againstWhite = dangerPenalty(info.unitsAgainstKing[WHITE] + ((9 - whiteShelter) * shelterDangerWeight) / 9);
    int againstBlack = dangerPenalty(info.unitsAgainstKing[BLACK] + ((9 - blackShelter) * shelterDangerWeight) / 9);
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
    return againstWhite - againstBlack;
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

    evalInfo info;
    int score = lazy;
    score += development(*this);
    score += blockedCentrePawns(*this);
    score += minorImbalance(*this);
    score += kingShelter(*this, info);
    score += knightsOnly(*this);
    findPawnAttacks(*this, info);
    score += backwardPawnTerm(*this, info);
    score += pawnWalk<WHITE>(*this, info);
    score += pawnWalk<BLACK>(*this, info);
    score += kingPlacement(*this);
    findKingZones(*this, info);
    score += minorPieces<WHITE>(*this, info);
    score += minorPieces<BLACK>(*this, info);
    score += bishopPair(*this);
    if (bb[ROOK][WHITE] | bb[ROOK][BLACK]) score += evaluateRooks(info);
    if (bb[QUEEN][WHITE] | bb[QUEEN][BLACK]) score += evaluateQueens(info);
    score += passedRace(*this, info);
    score += kingDanger(*this, info);
    if (info.passed) score += evaluatePassedPawns(info);
    if (info.candidates) score += evaluateHiddenPassedPawns(info);

    lastPositionalScore = positionalScore = score - lazy;
    if (evalCache) evalCache->store(cacheKey, score);
    return fiftyMoveScaled(score) * side;
}

// The piece terms that share the working state with the terms above. They live
// in this file so that they inline into evaluate: out of line they cost 4 %.
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
