#include <utility>

#include "board/board.h"
#include "board/killerMoveTable.h"

namespace {

constexpr int queenPromotion = QUEEN << 12;
constexpr int doublePushFlag = 1 << 15;

template <int delta>
inline uint64_t shiftBy(uint64_t set) {
    if constexpr (delta > 0) return set << delta;
    else return set >> -delta;
}

// Appends moves while there is room: at most 99 moves, the terminator goes in entry 99.
struct moveWriter {
    uint16_t* buffer;
    int count = 0;
    void add(int move) {
        if (count < maxMovesPerList) buffer[count++] = static_cast<uint16_t>(move);
    }
    void addTargets(uint64_t targets, int delta, int flags) {
        for (; targets; deleteBit(targets, findFirstBit(targets))) {
            int to = findFirstBit(targets);
            add((to - delta) | (to << 6) | flags);
        }
    }
    void addUnderPromotions(uint64_t targets, int delta) {
        for (; targets; deleteBit(targets, findFirstBit(targets))) {
            int to = findFirstBit(targets);
            int move = (to - delta) | (to << 6);
            add(move | ROOK << 12);
            add(move | BISHOP << 12);
            add(move | KNIGHT << 12);
        }
    }
    template <class attacksFn>
    void addPieceMoves(uint64_t pieces, uint64_t allowed, attacksFn attacks) {
        for (; pieces; deleteBit(pieces, findFirstBit(pieces))) {
            int from = findFirstBit(pieces);
            for (uint64_t targets = attacks(from) & allowed; targets; deleteBit(targets, findFirstBit(targets)))
                add(from | findFirstBit(targets) << 6);
        }
    }
};

}  // namespace

// Its tie order is part of the engine's move order.
void sortMoves(uint16_t* buffer, int n) {
    int16_t* score = reinterpret_cast<int16_t*>(buffer + moveScoreSlot);
    int gap = n;
    for (;;) {
        gap = (gap + 1) / 2;
        bool swapped = false;
        for (int i = 0; i < n - gap; i++) {
            if (score[i + gap] > score[i]) {
                std::swap(buffer[i], buffer[i + gap]);
                std::swap(score[i], score[i + gap]);
                swapped = true;
            }
        }
        if (!swapped && gap < 2) break;
    }
}

namespace {

inline int pawnDivisor() { return pieceValue[PAWN] ? pieceValue[PAWN] : 1; }

template <int us>
struct directions {
    static constexpr int them = us ^ 1;
    static constexpr int up = us == WHITE ? 8 : -8;
    static constexpr int upA = us == WHITE ? 9 : -7;  // one file towards a
    static constexpr int upH = us == WHITE ? 7 : -9;  // one file towards h
    static constexpr uint64_t lastRank = us == WHITE ? rank8 : rank1;
    static constexpr uint64_t seventhRank = us == WHITE ? rank7 : rank2;
    static constexpr uint64_t secondRank = us == WHITE ? rank2 : rank7;
};

template <int us>
int captureMoves(const board& b, uint16_t* buffer) {
    using d = directions<us>;
    const uint64_t pawns = b.bb[PAWN][us];
    const uint64_t enemy = b.bb[NOPIECE][d::them];
    const uint64_t empty = ~b.occupied;
    const uint64_t pawnsA = shiftBy<d::upA>(pawns & ~fileA);
    const uint64_t pawnsH = shiftBy<d::upH>(pawns & ~fileH);
    moveWriter w{buffer};

    w.addTargets(shiftBy<d::up>(pawns & d::seventhRank) & empty, d::up, queenPromotion);
    w.addTargets(pawnsA & enemy & ~d::lastRank, d::upA, 0);
    w.addTargets(pawnsH & enemy & ~d::lastRank, d::upH, 0);
    if (b.enPassant) {
        const uint64_t target = 1ULL << b.enPassant;
        w.addTargets(pawnsA & target, d::upA, 0);
        w.addTargets(pawnsH & target, d::upH, 0);
    }
    w.addTargets(pawnsA & enemy & d::lastRank, d::upA, queenPromotion);
    w.addTargets(pawnsH & enemy & d::lastRank, d::upH, queenPromotion);
    w.addPieceMoves(b.bb[KNIGHT][us], enemy, [](int from) { return knightAttacks[from]; });
    const int kingSq = us == WHITE ? b.wKingSq : b.bKingSq;
    w.addPieceMoves(1ULL << kingSq, enemy, [](int from) { return kingAttacks[from]; });
    const uint64_t occupied = b.occupied;
    w.addPieceMoves(b.bb[ROOK][us] | b.bb[QUEEN][us], enemy,
                    [occupied](int from) { return board::smg.rookMoves(from, occupied); });
    w.addPieceMoves(b.bb[BISHOP][us] | b.bb[QUEEN][us], enemy,
                    [occupied](int from) { return board::smg.bishopMoves(from, occupied); });
    return w.count;
}

template <int us>
int nonCaptureMoves(const board& b, uint16_t* buffer) {
    using d = directions<us>;
    const uint64_t pawns = b.bb[PAWN][us];
    const uint64_t enemy = b.bb[NOPIECE][d::them];
    const uint64_t empty = ~b.occupied;
    moveWriter w{buffer};

    w.addTargets(shiftBy<d::up>(pawns) & empty & ~d::lastRank, d::up, 0);
    const uint64_t singleFromSecond = shiftBy<d::up>(pawns & d::secondRank) & empty;
    w.addTargets(shiftBy<d::up>(singleFromSecond) & empty, 2 * d::up, doublePushFlag);
    w.addUnderPromotions(shiftBy<d::up>(pawns & d::seventhRank) & empty, d::up);
    w.addUnderPromotions(shiftBy<d::upA>(pawns & ~fileA) & enemy & d::lastRank, d::upA);
    w.addUnderPromotions(shiftBy<d::upH>(pawns & ~fileH) & enemy & d::lastRank, d::upH);
    w.addPieceMoves(b.bb[KNIGHT][us], empty, [](int from) { return knightAttacks[from]; });
    const int kingSq = us == WHITE ? b.wKingSq : b.bKingSq;
    w.addPieceMoves(1ULL << kingSq, empty, [](int from) { return kingAttacks[from]; });
    const uint64_t occupied = b.occupied;
    w.addPieceMoves(b.bb[ROOK][us] | b.bb[QUEEN][us], empty,
                    [occupied](int from) { return board::smg.rookMoves(from, occupied); });
    w.addPieceMoves(b.bb[BISHOP][us] | b.bb[QUEEN][us], empty,
                    [occupied](int from) { return board::smg.bishopMoves(from, occupied); });

    if constexpr (us == WHITE) {
        if ((b.castle & whiteKingSide) && !(b.occupied & 0x6ULL)) w.add(67);     // e1g1: g1, f1 empty
        if ((b.castle & whiteQueenSide) && !(b.occupied & 0x70ULL)) w.add(323);  // e1c1: d1, c1, b1 empty
    } else {
        if ((b.castle & blackKingSide) && !(b.occupied & (0x6ULL << 56))) w.add(3707);    // e8g8
        if ((b.castle & blackQueenSide) && !(b.occupied & (0x70ULL << 56))) w.add(3963);  // e8c8
    }
    return w.count;
}

}  // namespace

int board::scoreCapture(int move) const {
    if (movePromotion(move)) return 24576;
    const int to = moveTo(move);
    const int captured = pieceValue[pieceOn[to]];
    const int attacker = pieceValue[pieceOn[moveFrom(move)]];
    if (!attackedBy(to, colourOf(-toMove))) return 28672 + captured / pawnDivisor();
    if (captured > attacker) return 28672 + (captured - attacker) / pawnDivisor();
    if (captured == attacker) return 20480;
    return 16384;
}

int board::scoreNonCapture(int move) const {
    const int side = sideIndex(toMove);
    const int killer = killers->getKillerMoveScore(move, ply, side);
    if (killer) return 8192 + killer;
    if (movePromotion(move)) return 0;
    return 4096 + findFirstBit(killers->counters[side][move & 0xFFF]);
}

void board::generateCaptureMoves(uint16_t* buffer) const {
    const int n = toMove == 1 ? captureMoves<WHITE>(*this, buffer) : captureMoves<BLACK>(*this, buffer);
    buffer[n] = 0;
    for (int i = 0; i < n; i++) buffer[moveScoreSlot + i] = static_cast<uint16_t>(scoreCapture(buffer[i]));
    sortMoves(buffer, n);
}

void board::generateNonCaptureMoves(uint16_t* buffer) const {
    const int n = toMove == 1 ? nonCaptureMoves<WHITE>(*this, buffer) : nonCaptureMoves<BLACK>(*this, buffer);
    buffer[n] = 0;
    for (int i = 0; i < n; i++) buffer[moveScoreSlot + i] = static_cast<uint16_t>(scoreNonCapture(buffer[i]));
    sortMoves(buffer, n);
}

void board::generateLegalMoves(uint16_t* list) const {
    uint16_t buffer[moveBufferSize];
    int count = 0;
    for (int stage = 0; stage < 2; stage++) {
        if (stage == 0) generateCaptureMoves(buffer);
        else generateNonCaptureMoves(buffer);
        for (int i = 0; buffer[i]; i++) {
            board next = *this;
            next.makeMove(buffer[i]);
            if (!next.isMoveIllegal(buffer[i])) list[count++] = buffer[i];
        }
    }
    list[count] = 0;
}
