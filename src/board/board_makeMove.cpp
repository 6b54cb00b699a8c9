#include <algorithm>
#include <array>
#include <cstdio>

#include "board/board.h"

namespace {

constexpr uint8_t noRecapture = 0xFF;

// The castling right a rook on its home corner stands for.
constexpr std::array<uint8_t, 64> rookCornerRight = [] {
    std::array<uint8_t, 64> rights{};
    rights[0] = whiteKingSide;
    rights[7] = whiteQueenSide;
    rights[56] = blackKingSide;
    rights[63] = blackQueenSide;
    return rights;
}();

int castlingOf(int side) { return side == 1 ? whiteCastling : blackCastling; }

}  // namespace

// The piece helpers keep bitboards, occupancy, piece array, key, material and
// counts together. Counts are kept for knight..queen only. side is +1 or -1.
inline void board::removePiece(int type, int side, int square) {
    const int colour = colourOf(side);
    deleteBit(bb[type][colour], square);
    deleteBit(bb[NOPIECE][colour], square);
    deleteBit(occupied, square);
    pieceOn[square] = NOPIECE;
    zKeyset.addRemovePiece(boardKey, type, side, square);
    (side == 1 ? wMat : bMat) -= pieceValue[type];
    totalMat -= pieceValue[type];
    lazy -= side * pieceValue[type];
    if (type != PAWN && type != KING) pieceCount[sideIndex(side)][type]--;
}

inline void board::placePiece(int type, int side, int square) {
    const int colour = colourOf(side);
    addBit(bb[type][colour], square);
    addBit(bb[NOPIECE][colour], square);
    addBit(occupied, square);
    pieceOn[square] = static_cast<int8_t>(type);
    zKeyset.addRemovePiece(boardKey, type, side, square);
    (side == 1 ? wMat : bMat) += pieceValue[type];
    totalMat += pieceValue[type];
    lazy += side * pieceValue[type];
    if (type != PAWN && type != KING) pieceCount[sideIndex(side)][type]++;
}

inline void board::shiftPiece(int type, int side, int from, int to) {
    const int colour = colourOf(side);
    for (uint64_t* set : {&bb[type][colour], &bb[NOPIECE][colour], &occupied}) {
        deleteBit(*set, from);
        addBit(*set, to);
    }
    pieceOn[to] = static_cast<int8_t>(type);
    pieceOn[from] = NOPIECE;
    zKeyset.addRemovePiece(boardKey, type, side, from);
    zKeyset.addRemovePiece(boardKey, type, side, to);
}

inline void board::dropCastlingRights(int rights) {
    rights &= castle;
    if (rights) {
        zKeyset.updateCastle(boardKey, rights);
        castle = static_cast<uint8_t>(castle & ~rights);
    }
}

// A rook leaving or lost from its home corner takes that corner's right along;
// a rook of the other colour standing there does not.
inline void board::rookOffCorner(int square, int rookSide) {
    dropCastlingRights(rookCornerRight[square] & castlingOf(rookSide));
}

void board::makeMove(int move) {
    move &= 0xFFFF;
    if (move == nullMove) {
        zKeyset.changeSides(boardKey);
        zKeyset.addRemoveEnpassantField(boardKey, enPassant);
        nullMoves++;
        enPassant = 0;
        toMove = static_cast<int8_t>(-toMove);
        return;
    }

    const int from = moveFrom(move), to = moveTo(move);
    // A stray move word must not index past the piece tables.
    const int promo = std::min(movePromotion(move), int(QUEEN));
    const int moving = pieceOn[from];
    const int captured = pieceOn[to];
    const int side = toMove;
    nullMoves = 0;

    if (captured != NOPIECE) {
        if (captured == ROOK) rookOffCorner(to, -side);
        removePiece(captured, -side, to);
    }

    if (moving == PAWN && promo) {
        removePiece(PAWN, side, from);
        placePiece(promo, side, to);
    } else {
        shiftPiece(moving, side, from, to);
    }

    switch (moving) {
    case PAWN: {
        // Black's test alone guards against square 0; a white pawn never gets there.
        // (A board set up without a king can still move a pawn from the king's
        // stale square anywhere, so the victim is kept on the board.)
        const int victim = side == 1 ? to - 8 : to + 8;
        const bool enPassantCapture =
            (side == 1 ? to == enPassant : (enPassant != 0 && to == enPassant)) && victim >= 0 && victim < 64;
        if (enPassantCapture) removePiece(PAWN, -side, victim);
        break;
    }
    case ROOK: rookOffCorner(from, side); break;
    case KING:
        (side == 1 ? wKingSq : bKingSq) = static_cast<uint8_t>(to);
        dropCastlingRights(castlingOf(side));
        if (!(kingAttacks[from] >> to & 1)) {  // castling: the rook crosses over
            if (side == 1) shiftPiece(ROOK, side, to == 1 ? 0 : 7, to == 1 ? 2 : 4);
            else shiftPiece(ROOK, side, to == 57 ? 56 : 63, to == 57 ? 58 : 60);
        }
        break;
    default: break;
    }

    if (captured == KING) {
        char text[9];
        moveToText(move, text);
        printf(side == 1 ? "\n king has been captured! Move=" : "\n king has been captured!\n");
        printf("%s", text);
        printBoard();
    }

    recaptureSq = pieceValue[captured] == pieceValue[moving] ? static_cast<uint8_t>(to) : noRecapture;

    toMove = static_cast<int8_t>(-toMove);
    zKeyset.changeSides(boardKey);
    if (enPassant) {
        zKeyset.addRemoveEnpassantField(boardKey, enPassant);
        enPassant = 0;
    }
    if (move & 0x8000) {
        enPassant = static_cast<int8_t>((from + to) / 2);
        zKeyset.addRemoveEnpassantField(boardKey, enPassant);
    }

    fiftyMoves = (captured == NOPIECE && moving != PAWN) ? static_cast<int8_t>(fiftyMoves + 1) : 0;
    ply++;
    keyHistory[ply % 150] = boardKey;
}
