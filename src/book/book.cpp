#include "book/book.h"

#include <cstdio>
#include <cstring>

#include "board/board.h"

namespace {

constexpr int neverChosen = -9999999;
constexpr int maxBookMoves = 64;

}  // namespace

book::book() : bookBestMoveOnly(1) { setPath("bookTalvin.ctg"); }

void book::setPath(const char* text) { snprintf(path, sizeof path, "%s", text); }

bool book::chooseMove(const board& position, char* moveText, uint32_t random) {
    char fen[128];
    position.getFen(fen);
    if (source == nullptr || !source->contains(fen)) return false;

    bookSource::entry entries[maxBookMoves];
    int count = 0;
    if (!source->moves(fen, entries, maxBookMoves, count)) {
        strcpy(moveText, "noMove");
        return true;
    }
    int weight[maxBookMoves];
    int max = 0;
    for (int i = 0; i < count; i++) {
        board next = position;
        const int move = next.convertMovestringToInt(entries[i].move);
        int wins = 0, draws = 0, losses = 0;
        char nextFen[128] = "";
        if (move) {
            next.makeMove(move);
            next.getFen(nextFen);
        }
        if (entries[i].annotation >= 64 && entries[i].annotation <= 127) weight[i] = neverChosen;
        else if (!move || !source->contains(nextFen) || !source->results(nextFen, wins, draws, losses) ||
                 wins + draws + losses == 0)
            weight[i] = 1;
        else weight[i] = wins + draws / 2;
        if (i == 0 || weight[i] > max) max = weight[i];
    }
    const int threshold = bookBestMoveOnly ? max : max / 20;
    int candidates[maxBookMoves];
    int candidateCount = 0;
    long long total = 0;
    for (int i = 0; i < count; i++) {
        // A marked move stays out even when every move is marked.
        if (weight[i] >= threshold && weight[i] != neverChosen) {
            candidates[candidateCount++] = i;
            total += weight[i];
        }
    }
    if (candidateCount == 0) return false;
    if (bookBestMoveOnly) {
        strcpy(moveText, entries[candidates[random % candidateCount]].move);
        return true;
    }
    long long r = static_cast<long long>(random % static_cast<unsigned long long>(total + 1));
    for (int i = 0; i < candidateCount; i++) {
        r -= weight[candidates[i]];
        if (r < 1) {
            strcpy(moveText, entries[candidates[i]].move);
            return true;
        }
    }
    printf("ERROR: no move returned from openingbook while present\n");
    return false;
}
