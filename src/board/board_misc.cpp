#include <cstdio>
#include <initializer_list>

#include "board/board.h"

void squareToText(int square, char* out) {
    out[0] = static_cast<char>('h' - square % 8);
    out[1] = static_cast<char>('1' + square / 8);
    out[2] = 0;
}

void moveToText(int move, char* out) {
    move &= 0xFFFF;
    if (move == nullMove) {
        snprintf(out, 9, "NULLMOVE");
        return;
    }
    squareToText(moveFrom(move), out);
    squareToText(moveTo(move), out + 2);
    out[4] = movePromotion(move) ? "PNBRQKXX"[movePromotion(move)] : 0;
    out[5] = 0;
}

void moveToText(int move, char* out, bool uci) {
    moveToText(move, out);
    if (uci && movePromotion(move)) out[4] = static_cast<char>(out[4] - 'A' + 'a');
}

bool board::isMoveIllegal(int move) const {
    const int attacker = colourOf(toMove);
    const int kingSq = toMove == 1 ? bKingSq : wKingSq;
    if (attackedBy(kingSq, attacker)) return true;
    const int from = moveFrom(move), to = moveTo(move);
    const bool castling = toMove == 1 ? (from == 59 && bKingSq == to && (to == 57 || to == 61))
                                      : (from == 3 && wKingSq == to && (to == 1 || to == 5));
    return castling && (attackedBy(from, attacker) || attackedBy((from + to) / 2, attacker));
}

int board::convertMovestringToInt(const char* text) const {
    const char first = text[0];
    if (first == 0 || text[1] == 0) return 0;
    if (first == 'B' || first == 'K' || first == 'N' || first == 'Q' || first == 'R') return 0;
    if (text[1] == 'x' || text[2] == 'x' || first == 'O' || first == 'o') return 0;
    if (text[2] == 0 || text[2] == '\n' || text[3] == 0) return 0;
    const int from = 8 * (text[1] - '1') + ('h' - first);
    const int to = 8 * (text[3] - '1') + ('h' - text[2]);
    if (from < 0 || from > 63 || to < 0 || to > 63) return 0;
    int promo = 0;
    switch (text[4]) {
    case 'b':
    case 'B': promo = BISHOP; break;
    case 'n':
    case 'N': promo = KNIGHT; break;
    case 'q':
    case 'Q': promo = QUEEN; break;
    case 'r':
    case 'R': promo = ROOK; break;
    default: break;
    }
    const int key = promo * 4096 + to * 64 + from;
    uint16_t legal[moveBufferSize];
    generateLegalMoves(legal);
    for (int i = 0; legal[i]; i++)
        if ((legal[i] & 0x7FFF) == key) return legal[i];
    return 0;
}

static int historyIndex(int ply) { return ((ply % 150) + 150) % 150; }

const char* board::gameEndedMessage() const {
    if (fiftyMoves > 0) {
        const uint64_t current = keyHistory[historyIndex(ply)];
        bool seenOnce = false;
        for (int back = 1; back <= fiftyMoves; back++) {
            if (keyHistory[historyIndex(ply - back)] != current) continue;
            if (seenOnce) return "1/2-1/2 {draw by triple repetition}\n";
            seenOnce = true;
        }
        if (fiftyMoves >= 100) return "1/2-1/2 {50 moves rule}\n";
    }

    uint16_t legal[moveBufferSize];
    generateLegalMoves(legal);
    if (legal[0] == 0) {
        if (!inCheck()) return "1/2-1/2 {stalemate}\n";
        return toMove == 1 ? "0-1 {black mates}\n" : "1-0 {white mates}\n";
    }

    const int pieces = countBits(occupied);
    const uint64_t minors = bb[KNIGHT][WHITE] | bb[BISHOP][WHITE] | bb[KNIGHT][BLACK] | bb[BISHOP][BLACK];
    bool drawn = pieces == 2 || (pieces == 3 && minors);
    if (pieces == 4 && bb[BISHOP][WHITE] && bb[BISHOP][BLACK])
        drawn = findFirstBit(bb[BISHOP][WHITE]) % 2 == findFirstBit(bb[BISHOP][BLACK]) % 2;
    return drawn ? "1/2-1/2 {insufficient Material}\n" : nullptr;
}

bool board::isLegalPosition() const {
    constexpr uint64_t firstAndLastRank = 0xFF000000000000FFULL;
    if ((bb[PAWN][WHITE] | bb[PAWN][BLACK]) & firstAndLastRank) return false;
    for (int side : {WHITE, BLACK})
        if (countBits(bb[KING][side]) != 1 || countBits(bb[NOPIECE][side]) > 16 || countBits(bb[PAWN][side]) > 8)
            return false;
    return toMove == 1 ? !attackedBy(bKingSq, WHITE) : !attackedBy(wKingSq, BLACK);
}

bool board::printGameEndedMessage() const {
    const char* message = gameEndedMessage();
    if (message) printf("%s", message);
    return message != nullptr;
}

void board::printBoard() const {
    static const char pieceLetters[] = "pnbrqk.PNBRQK.";
    for (int rank = 7; rank >= 0; rank--) {
        printf("\n");
        for (int file = 0; file < 8; file++) {
            const int square = 8 * rank + 7 - file;
            const int white = (bb[NOPIECE][WHITE] >> square & 1) ? 1 : 0;
            printf("%c ", pieceLetters[7 * white + pieceOn[square]]);
        }
    }
    printf(toMove == 1 ? "\ntoMove=white" : "\ntoMove=black");
    if (castle) {
        printf("  castle=");
        if (castle & whiteKingSide) printf("K");
        if (castle & whiteQueenSide) printf("Q");
        if (castle & blackKingSide) printf("k");
        if (castle & blackQueenSide) printf("q");
    }
    if (enPassant) printf("  enpassant=%c%d", 'h' - enPassant % 8, 1 + enPassant / 8);
    board copy = *this;
    printf("  eval=%d", toMove * copy.evaluate(-mateScore, mateScore));
    printf("  lazy=%d  wMat=%d  bMat=%d", lazy, wMat, bMat);
    printf("\nboardkey= %d", static_cast<int32_t>(static_cast<uint32_t>(boardKey)));
    char fen[100];
    getFen(fen);
    printf("\n%s\n\n\n", fen);
}
