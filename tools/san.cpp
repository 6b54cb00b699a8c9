#include "san.h"

#include <cstring>
#include <string>

static int pieceFromLetter(char c) {
    const char* p = std::strchr("PNBRQK", c);
    return c && p ? int(p - "PNBRQK") : -1;
}

static int castleMove(const board& position, bool kingSide, const uint16_t* legal) {
    for (int i = 0; legal[i]; i++) {
        const int from = moveFrom(legal[i]), to = moveTo(legal[i]);
        // h1 is square 0, so the king side lies towards lower squares
        if (position.pieceOn[from] == KING && to == from + (kingSide ? -2 : 2)) return legal[i];
    }
    return 0;
}

int sanToMove(const board& position, const char* san) {
    std::string s(san);
    while (!s.empty() && std::strchr("+#!?", s.back())) s.pop_back();
    uint16_t legal[moveBufferSize];
    position.generateLegalMoves(legal);
    if (s == "O-O" || s == "0-0") return castleMove(position, true, legal);
    if (s == "O-O-O" || s == "0-0-0") return castleMove(position, false, legal);

    int piece = PAWN;
    if (!s.empty() && pieceFromLetter(s[0]) > PAWN) {
        piece = pieceFromLetter(s[0]);
        s.erase(0, 1);
    }
    int promotion = 0;
    if (piece == PAWN && s.size() > 2 && pieceFromLetter(s.back()) > PAWN) {
        promotion = pieceFromLetter(s.back());
        s.pop_back();
        if (s.back() == '=') s.pop_back();
    }
    if (s.size() < 2) return 0;
    const char toFile = s[s.size() - 2], toRank = s.back();
    if (toFile < 'a' || toFile > 'h' || toRank < '1' || toRank > '8') return 0;
    const int to = 8 * (toRank - '1') + ('h' - toFile);
    s.resize(s.size() - 2);

    char file = 0, rank = 0;
    for (char c : s) {
        if (c >= 'a' && c <= 'h') file = c;
        else if (c >= '1' && c <= '8') rank = c;
        else if (c != 'x') return 0;
    }
    int found = 0;
    for (int i = 0; legal[i]; i++) {
        const int m = legal[i], from = moveFrom(m);
        if (position.pieceOn[from] != piece || moveTo(m) != to || movePromotion(m) != promotion) continue;
        if (file && 'h' - from % 8 != file) continue;
        if (rank && '1' + from / 8 != rank) continue;
        if (found) return 0;
        found = m;
    }
    return found;
}
