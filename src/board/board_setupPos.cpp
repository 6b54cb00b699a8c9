#include <cstring>

#include "board/board.h"

void board::setupStartPosition() { setupPosition("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1"); }

static bool isDigit(char c) { return c >= '0' && c <= '9'; }
static void skipBlanks(const char*& p) {
    while (*p == ' ') p++;
}

void board::setupPosition(const char* fen) {
    nullMoves = 0;
    verification = 0;
    for (auto& row : bb) row[WHITE] = row[BLACK] = 0;
    wMat = bMat = 0;
    std::memset(pieceOn, NOPIECE, sizeof pieceOn);

    static const char whiteLetters[] = "PNBRQK";
    static const char blackLetters[] = "pnbrqk";
    const char* p = fen;
    int square = 63;
    while (square >= 0 && *p) {
        char c = *p++;
        if (isDigit(c)) {
            square -= c - '0';
            continue;
        }
        const char* white = std::strchr(whiteLetters, c);
        const char* black = std::strchr(blackLetters, c);
        if (!white && !black) continue;
        int type = white ? int(white - whiteLetters) : int(black - blackLetters);
        int side = white ? WHITE : BLACK;
        addBit(bb[type][side], square);
        pieceOn[square] = static_cast<int8_t>(type);
        if (type == KING) {
            (side == WHITE ? wKingSq : bKingSq) = static_cast<uint8_t>(square);
        } else {
            (side == WHITE ? wMat : bMat) += pieceValue[type];
        }
        square--;
    }

    skipBlanks(p);
    toMove = *p == 'w' ? 1 : -1;
    if (*p) p++;
    skipBlanks(p);

    castle = 0;
    if (*p == 'K') {
        castle += whiteKingSide;
        p++;
    }
    if (*p == 'Q') {
        castle += whiteQueenSide;
        p++;
    }
    if (*p == 'k') {
        castle += blackKingSide;
        p++;
    }
    if (*p == 'q') {
        castle += blackQueenSide;
        p++;
    }
    // A right whose king or rook is off its square would castle a piece that is not there.
    const auto on = [&](int type, int side, int square) { return (bb[type][side] >> square & 1) != 0; };
    if (!on(KING, WHITE, 3) || !on(ROOK, WHITE, 0)) castle &= ~whiteKingSide;
    if (!on(KING, WHITE, 3) || !on(ROOK, WHITE, 7)) castle &= ~whiteQueenSide;
    if (!on(KING, BLACK, 59) || !on(ROOK, BLACK, 56)) castle &= ~blackKingSide;
    if (!on(KING, BLACK, 59) || !on(ROOK, BLACK, 63)) castle &= ~blackQueenSide;
    if (*p == '-') p++;
    skipBlanks(p);

    enPassant = 0;
    if (*p == '-') {
        p++;
    } else if (*p) {
        char file = *p++;
        char rank = *p;
        if (rank) p++;
        int square = static_cast<int8_t>(static_cast<uint8_t>(8 * rank - 32 - file));
        // Anything but a real square would index the tables out of bounds.
        if (square > 0 && square < 64) enPassant = static_cast<int8_t>(square);
    }

    skipBlanks(p);
    unsigned clock = 0;
    while (isDigit(*p)) clock = clock * 10 + (*p++ - '0');
    fiftyMoves = static_cast<int8_t>(static_cast<uint8_t>(clock));

    skipBlanks(p);
    ply = 0;
    bool negative = *p == '-' && isDigit(p[1]);
    if (negative || isDigit(*p)) {
        if (negative) p++;
        int moveNumber = 0;
        for (; isDigit(*p); p++)
            if (moveNumber < 100000000) moveNumber = moveNumber * 10 + (*p - '0');
        if (negative || moveNumber < 1) moveNumber = 1;
        ply = 2 * moveNumber - 1 - sideIndex(toMove);
    }

    bb[NOPIECE][WHITE] =
        bb[PAWN][WHITE] | bb[KNIGHT][WHITE] | bb[BISHOP][WHITE] | bb[ROOK][WHITE] | bb[QUEEN][WHITE] | bb[KING][WHITE];
    bb[NOPIECE][BLACK] =
        bb[PAWN][BLACK] | bb[KNIGHT][BLACK] | bb[BISHOP][BLACK] | bb[ROOK][BLACK] | bb[QUEEN][BLACK] | bb[KING][BLACK];
    occupied = bb[NOPIECE][WHITE] | bb[NOPIECE][BLACK];
    for (int type = KNIGHT; type <= QUEEN; type++) {
        pieceCount[sideIndex(1)][type] = static_cast<int8_t>(countBits(bb[type][WHITE]));
        pieceCount[sideIndex(-1)][type] = static_cast<int8_t>(countBits(bb[type][BLACK]));
    }
    totalMat = wMat + bMat;
    lazy = wMat - bMat;
    positionalScore = 0;
    // Brings the evaluation's own fields up to date. The key is still the
    // previous position's, so a cache store lands under that key.
    evaluate(-mateScore, mateScore);

    computeKey();
    for (int i = 0; i < 150; i++) keyHistory[i] = i;
    keyHistory[ply % 150] = boardKey;
}

void board::computeKey() {
    uint64_t key = 0;
    for (int side = WHITE; side <= BLACK; side++)
        for (int type = PAWN; type <= KING; type++)
            for (uint64_t set = bb[type][side]; set; deleteBit(set, findFirstBit(set)))
                zKeyset.addRemovePiece(key, type, side == WHITE ? 1 : -1, findFirstBit(set));
    if (enPassant) zKeyset.addRemoveEnpassantField(key, enPassant);
    if (toMove == -1) zKeyset.changeSides(key);
    zKeyset.updateCastle(key, castle);
    boardKey = key;
}

// Three-digit writer kept as the engine has always had it: the tens digit is
// written as the character 42 + hundreds digit.
static char* writeNumber(char* out, int number) {
    int hundreds = number / 100 % 10, tens = number / 10 % 10, units = number % 10;
    if (hundreds != 0) *out++ = static_cast<char>(42 + hundreds);
    if (tens != 0) *out++ = static_cast<char>(42 + hundreds);
    *out++ = static_cast<char>('0' + units);
    return out;
}

void board::getFen(char* out) const {
    static const char letters[2][7] = {"PNBRQK", "pnbrqk"};
    int run = 0;
    for (int square = 63; square >= 0; square--) {
        if (pieceOn[square] != NOPIECE) {
            if (run) *out++ = static_cast<char>('0' + run);
            run = 0;
            *out++ = letters[(bb[NOPIECE][WHITE] >> square & 1) ? 0 : 1][pieceOn[square]];
        } else {
            run++;
        }
        if (square % 8 == 0) {
            if (run) *out++ = static_cast<char>('0' + run);
            run = 0;
            if (square != 0) *out++ = '/';
        }
    }
    *out++ = ' ';
    *out++ = toMove == 1 ? 'w' : 'b';
    *out++ = ' ';
    if (castle == 0) *out++ = '-';
    if (castle & whiteKingSide) *out++ = 'K';
    if (castle & whiteQueenSide) *out++ = 'Q';
    if (castle & blackKingSide) *out++ = 'k';
    if (castle & blackQueenSide) *out++ = 'q';
    *out++ = ' ';
    if (enPassant) {
        squareToText(enPassant, out);
        out += 2;
    } else {
        *out++ = '-';
    }
    *out++ = ' ';
    out = writeNumber(out, fiftyMoves);
    *out++ = ' ';
    out = writeNumber(out, (ply + 1) / 2);
    *out = 0;
}
