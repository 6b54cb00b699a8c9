#include "book/bookBoard.h"

#include <cctype>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int knightSteps[8][2] = {{1, 2}, {2, 1}, {2, -1}, {1, -2}, {-1, -2}, {-2, -1}, {-2, 1}, {-1, 2}};
constexpr int kingSteps[8][2] = {{1, 0}, {1, 1}, {0, 1}, {-1, 1}, {-1, 0}, {-1, -1}, {0, -1}, {1, -1}};

bool onBoard(int file, int rank) { return file >= 0 && file < 8 && rank >= 0 && rank < 8; }
bool isWhite(char piece) { return piece >= 'A' && piece <= 'Z'; }
int sign(int x) { return (x > 0) - (x < 0); }

// King and rook home squares of each right, in the order of the right bits.
struct castlingRight {
    int bit, king, rook;
};
constexpr castlingRight castlingRights[4] = {{bookBoard::whiteShort, 4, 7},
                                             {bookBoard::whiteLong, 4, 0},
                                             {bookBoard::blackShort, 60, 63},
                                             {bookBoard::blackLong, 60, 56}};

}  // namespace

bool bookBoard::setup(const char* fen) {
    std::memset(piece, empty, sizeof piece);
    const char* p = fen;
    int whiteKings = 0, blackKings = 0;
    for (int rank = 7; rank >= 0; rank--) {
        int file = 0;
        while (file < 8) {
            const char c = *p++;
            if (c >= '1' && c <= '8') {
                file += c - '0';
            } else if (c != '\0' && std::strchr("PNBRQKpnbrqk", c)) {
                if ((c == 'P' || c == 'p') && (rank == 0 || rank == 7)) return false;
                whiteKings += c == 'K';
                blackKings += c == 'k';
                piece[squareOf(file++, rank)] = c;
            } else {
                return false;
            }
        }
        if (file != 8 || (rank > 0 && *p++ != '/')) return false;
    }
    if (whiteKings != 1 || blackKings != 1 || *p++ != ' ') return false;
    if (*p != 'w' && *p != 'b') return false;
    whiteToMove = *p++ == 'w';
    while (*p == ' ') p++;

    castling = 0;
    for (; *p && *p != ' '; p++) {
        if (*p == 'K') castling |= whiteShort;
        if (*p == 'Q') castling |= whiteLong;
        if (*p == 'k') castling |= blackShort;
        if (*p == 'q') castling |= blackLong;
    }
    dropLostRights();
    while (*p == ' ') p++;

    enPassantFile = noEnPassant;
    if (*p >= 'a' && *p <= 'h' && p[1] == (whiteToMove ? '6' : '3')) keepEnPassantIfCapturable(*p - 'a');
    return true;
}

void bookBoard::dropLostRights() {
    for (const castlingRight& right : castlingRights) {
        const char king = right.king < 8 ? 'K' : 'k', rook = right.king < 8 ? 'R' : 'r';
        if (piece[right.king] != king || piece[right.rook] != rook) castling &= ~right.bit;
    }
}

// Both formats hash an en passant file only when a capture there is at least pseudo-legal.
void bookBoard::keepEnPassantIfCapturable(int file) {
    const int rank = whiteToMove ? 4 : 3;
    const char ours = whiteToMove ? 'P' : 'p', theirs = whiteToMove ? 'p' : 'P';
    if (piece[squareOf(file, rank)] != theirs || piece[squareOf(file, whiteToMove ? 5 : 2)] != empty) return;
    if ((file > 0 && piece[squareOf(file - 1, rank)] == ours) || (file < 7 && piece[squareOf(file + 1, rank)] == ours))
        enPassantFile = file;
}

bool bookBoard::attacked(int square, bool byWhite) const {
    const int file = fileOf(square), rank = rankOf(square);
    const int pawnRank = byWhite ? rank - 1 : rank + 1;
    const char pawn = byWhite ? 'P' : 'p', knight = byWhite ? 'N' : 'n', king = byWhite ? 'K' : 'k';
    const char bishop = byWhite ? 'B' : 'b', rook = byWhite ? 'R' : 'r', queen = byWhite ? 'Q' : 'q';
    for (int side = -1; side <= 1; side += 2)
        if (onBoard(file + side, pawnRank) && piece[squareOf(file + side, pawnRank)] == pawn) return true;
    for (int i = 0; i < 8; i++) {
        const int nf = file + knightSteps[i][0], nr = rank + knightSteps[i][1];
        if (onBoard(nf, nr) && piece[squareOf(nf, nr)] == knight) return true;
        const int kf = file + kingSteps[i][0], kr = rank + kingSteps[i][1];
        if (onBoard(kf, kr) && piece[squareOf(kf, kr)] == king) return true;
    }
    // kingSteps alternate straight and diagonal directions
    for (int i = 0; i < 8; i++) {
        const char slider = i % 2 == 0 ? rook : bishop;
        int f = file + kingSteps[i][0], r = rank + kingSteps[i][1];
        while (onBoard(f, r) && piece[squareOf(f, r)] == empty) f += kingSteps[i][0], r += kingSteps[i][1];
        if (onBoard(f, r) && (piece[squareOf(f, r)] == slider || piece[squareOf(f, r)] == queen)) return true;
    }
    return false;
}

bool bookBoard::pathClear(int from, int to) const {
    const int step = sign(fileOf(to) - fileOf(from)) + 8 * sign(rankOf(to) - rankOf(from));
    for (int square = from + step; square != to; square += step)
        if (piece[square] != empty) return false;
    return true;
}

bool bookBoard::castlingAllowed(int from, int to) const {
    for (const castlingRight& right : castlingRights) {
        if (!(castling & right.bit) || right.king != from || (to > from) != (right.rook > from)) continue;
        const int step = to > from ? 1 : -1;
        return pathClear(from, right.rook) && !attacked(from, !whiteToMove) && !attacked(from + step, !whiteToMove);
    }
    return false;
}

bool bookBoard::isLegal(int from, int to) const {
    if (from < 0 || from > 63 || to < 0 || to > 63 || from == to) return false;
    const char mover = piece[from], target = piece[to];
    if (mover == empty || isWhite(mover) != whiteToMove) return false;
    if (target != empty && isWhite(target) == whiteToMove) return false;
    const int df = fileOf(to) - fileOf(from), dr = rankOf(to) - rankOf(from);
    const int adf = std::abs(df), adr = std::abs(dr);
    bool shapeOk = false;
    switch (std::toupper(mover)) {
    case 'P': {
        const int forward = whiteToMove ? 1 : -1;
        const bool enPassant = target == empty && fileOf(to) == enPassantFile && rankOf(to) == (whiteToMove ? 5 : 2);
        shapeOk = (df == 0 && dr == forward && target == empty) ||
                  (df == 0 && dr == 2 * forward && rankOf(from) == (whiteToMove ? 1 : 6) && target == empty &&
                   piece[(from + to) / 2] == empty) ||
                  (adf == 1 && dr == forward && (target != empty || enPassant));
        break;
    }
    case 'N': shapeOk = adf * adr == 2; break;
    case 'B': shapeOk = adf == adr && pathClear(from, to); break;
    case 'R': shapeOk = (df == 0 || dr == 0) && pathClear(from, to); break;
    case 'Q': shapeOk = (adf == adr || df == 0 || dr == 0) && pathClear(from, to); break;
    case 'K': shapeOk = (adf <= 1 && adr <= 1) || (dr == 0 && adf == 2 && castlingAllowed(from, to)); break;
    default: break;
    }
    if (!shapeOk) return false;
    bookBoard after = *this;
    after.makeMove(from, to, 0);
    const char ownKing = whiteToMove ? 'K' : 'k';
    const char* king = static_cast<const char*>(std::memchr(after.piece, ownKing, sizeof after.piece));
    return !after.attacked(static_cast<int>(king - after.piece), !whiteToMove);
}

void bookBoard::makeMove(int from, int to, char promotion) {
    const char mover = piece[from];
    const bool white = isWhite(mover);
    const int df = fileOf(to) - fileOf(from);
    if ((mover == 'P' || mover == 'p') && df != 0 && piece[to] == empty)
        piece[squareOf(fileOf(to), rankOf(from))] = empty;
    if ((mover == 'K' || mover == 'k') && std::abs(df) == 2) {
        const int rank = rankOf(from);
        const int rookFrom = squareOf(df > 0 ? 7 : 0, rank), rookTo = squareOf(df > 0 ? 5 : 3, rank);
        piece[rookTo] = piece[rookFrom];
        piece[rookFrom] = empty;
    }
    piece[to] = mover;
    piece[from] = empty;
    if ((mover == 'P' || mover == 'p') && (rankOf(to) == 0 || rankOf(to) == 7)) {
        const char type = promotion ? static_cast<char>(std::toupper(promotion)) : 'Q';
        piece[to] = white ? type : static_cast<char>(std::tolower(type));
    }
    dropLostRights();
    whiteToMove = !whiteToMove;
    enPassantFile = noEnPassant;
    if ((mover == 'P' || mover == 'p') && std::abs(rankOf(to) - rankOf(from)) == 2)
        keepEnPassantIfCapturable(fileOf(to));
}

void bookMoveText(int from, int to, char promotion, char* out) {
    out[0] = static_cast<char>('a' + fileOf(from));
    out[1] = static_cast<char>('1' + rankOf(from));
    out[2] = static_cast<char>('a' + fileOf(to));
    out[3] = static_cast<char>('1' + rankOf(to));
    out[4] = promotion ? static_cast<char>(std::tolower(promotion)) : '\0';
    out[5] = '\0';
}
