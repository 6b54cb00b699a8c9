#include "egtb/tablePosition.h"

#include "board/board.h"

namespace {

// Reverses the files of every rank: the board's h1 = 0 becomes a1 = 0.
uint64_t mirrorFiles(uint64_t x) {
    x = ((x >> 1) & 0x5555555555555555ULL) | ((x & 0x5555555555555555ULL) << 1);
    x = ((x >> 2) & 0x3333333333333333ULL) | ((x & 0x3333333333333333ULL) << 2);
    return ((x >> 4) & 0x0F0F0F0F0F0F0F0FULL) | ((x & 0x0F0F0F0F0F0F0F0FULL) << 4);
}

}  // namespace

bool toTablePosition(const board& b, tablePosition& p) {
    if (countBits(b.bb[KING][WHITE]) != 1 || countBits(b.bb[KING][BLACK]) != 1) return false;
    if ((b.bb[PAWN][WHITE] | b.bb[PAWN][BLACK]) & (rank1 | rank8)) return false;
    // The side that has just moved must not be in check.
    if (b.toMove == 1 ? b.attackedBy(b.bKingSq, WHITE) : b.attackedBy(b.wKingSq, BLACK)) return false;
    for (int colour = WHITE; colour <= BLACK; colour++)
        for (int type = PAWN; type <= KING; type++) p.pieces[colour][type] = mirrorFiles(b.bb[type][colour]);
    p.whiteToMove = b.toMove == 1;
    p.enPassant = b.enPassant ? tableSquare(b.enPassant) : 0;
    p.castling = b.castle;
    // The count is a byte: past 127 it turns negative.
    p.fiftyMoves = b.fiftyMoves < 0 || b.fiftyMoves > 100 ? 100 : b.fiftyMoves;
    return true;
}
