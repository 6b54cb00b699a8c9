#include "board/san.h"

#include <cctype>
#include <cstring>

namespace {

constexpr char pieceLetters[] = "PNBRQK";

int pieceFromLetter(char c) {
    const char* p = c ? std::strchr(pieceLetters, c) : nullptr;
    return p ? int(p - pieceLetters) : -1;
}

char fileLetter(int square) { return static_cast<char>('h' - square % 8); }
char rankDigit(int square) { return static_cast<char>('1' + square / 8); }

bool isCastling(const board& position, int move) {
    const int from = moveFrom(move), to = moveTo(move);
    return position.pieceOn[from] == KING && (to == from + 2 || to == from - 2);
}

int castleMove(const board& position, bool kingSide, const uint16_t* legal) {
    for (int i = 0; legal[i]; i++) {
        const int from = moveFrom(legal[i]), to = moveTo(legal[i]);
        // h1 is square 0, so the king side lies towards lower squares
        if (position.pieceOn[from] == KING && to == from + (kingSide ? -2 : 2)) return legal[i];
    }
    return 0;
}

}  // namespace

int sanToMoves(const board& position, const char* san, uint16_t* moves) {
    moves[0] = 0;
    char s[16];
    size_t n = std::strlen(san);
    if (n >= sizeof s) return 0;
    std::memcpy(s, san, n + 1);
    if (n > 4 && std::strcmp(s + n - 4, "e.p.") == 0) s[n -= 4] = '\0';
    while (n > 0 && std::strchr("+#!?", s[n - 1])) s[--n] = '\0';
    uint16_t legal[moveBufferSize];
    position.generateLegalMoves(legal);
    const bool kingSide = !std::strcmp(s, "O-O") || !std::strcmp(s, "0-0");
    if (kingSide || !std::strcmp(s, "O-O-O") || !std::strcmp(s, "0-0-0")) {
        moves[0] = static_cast<uint16_t>(castleMove(position, kingSide, legal));
        moves[1] = 0;
        return moves[0] ? 1 : 0;
    }

    const char* p = s;
    int piece = PAWN;
    if (pieceFromLetter(*p) > PAWN) piece = pieceFromLetter(*p++);
    int promotion = 0;
    if (piece == PAWN && n > 2) {
        const bool marked = s[n - 2] == '=';
        const char letter = marked ? static_cast<char>(std::toupper(s[n - 1])) : s[n - 1];
        if (pieceFromLetter(letter) > PAWN) {
            promotion = pieceFromLetter(letter);
            s[n -= marked ? 2 : 1] = '\0';
        }
    }
    // The target is the last file letter and the last rank digit; letters and
    // digits before them narrow down the moving piece.
    const char *toFile = nullptr, *toRank = nullptr;
    for (const char* c = p; *c; c++) {
        if (*c >= 'a' && *c <= 'h') toFile = c;
        if (*c >= '1' && *c <= '8') toRank = c;
    }
    if (!toFile || !toRank) return 0;
    const int to = 8 * (*toRank - '1') + ('h' - *toFile);
    char file = 0, rank = 0;
    for (const char* c = p; *c; c++) {
        if (c == toFile || c == toRank || *c == 'x' || *c == ':' || *c == '-') continue;
        if (*c >= 'a' && *c <= 'h' && !file) file = *c;
        else if (*c >= '1' && *c <= '8' && !rank) rank = *c;
        else return 0;
    }
    int found = 0;
    for (int i = 0; legal[i]; i++) {
        const int m = legal[i], from = moveFrom(m);
        if (position.pieceOn[from] != piece || moveTo(m) != to || movePromotion(m) != promotion) continue;
        if (file && fileLetter(from) != file) continue;
        if (rank && rankDigit(from) != rank) continue;
        moves[found++] = legal[i];
    }
    moves[found] = 0;
    return found;
}

int sanToMove(const board& position, const char* san) {
    uint16_t moves[moveBufferSize];
    return sanToMoves(position, san, moves) == 1 ? moves[0] : 0;
}

void moveToSan(const board& position, int move, char* out) {
    const int from = moveFrom(move), to = moveTo(move), piece = position.pieceOn[from];
    char* p = out;
    if (isCastling(position, move)) {
        std::strcpy(p, to < from ? "O-O" : "O-O-O");
        p += std::strlen(p);
    } else {
        const bool capture = position.pieceOn[to] != NOPIECE || (piece == PAWN && from % 8 != to % 8);
        if (piece == PAWN) {
            if (capture) *p++ = fileLetter(from);
        } else {
            *p++ = pieceLetters[piece];
            uint16_t legal[moveBufferSize];
            position.generateLegalMoves(legal);
            bool rival = false, rivalOnFile = false, rivalOnRank = false;
            for (int i = 0; legal[i]; i++) {
                const int other = moveFrom(legal[i]);
                if (other == from || moveTo(legal[i]) != to || position.pieceOn[other] != piece) continue;
                rival = true;
                rivalOnFile |= other % 8 == from % 8;
                rivalOnRank |= other / 8 == from / 8;
            }
            if (rival && (!rivalOnFile || rivalOnRank)) *p++ = fileLetter(from);
            if (rivalOnFile) *p++ = rankDigit(from);
        }
        if (capture) *p++ = 'x';
        *p++ = fileLetter(to);
        *p++ = rankDigit(to);
        if (movePromotion(move)) {
            *p++ = '=';
            *p++ = pieceLetters[movePromotion(move)];
        }
    }
    board after = position;
    after.makeMove(move);
    if (after.inCheck()) {
        uint16_t replies[moveBufferSize];
        after.generateLegalMoves(replies);
        *p++ = replies[0] ? '+' : '#';
    }
    *p = '\0';
}
