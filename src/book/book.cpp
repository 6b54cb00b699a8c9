#include "book/book.h"

#include <strings.h>
#include <cstdio>
#include <cstring>

#include "board/board.h"
#include "book/ctgBook.h"
#include "book/polyglotBook.h"
#include "platform/console.h"

namespace {

constexpr int neverChosen = -9999999;

int moveWeight(bookSource& source, const board& position, const bookSource::entry& move) {
    if (move.annotation >= 64 && move.annotation <= 127) return neverChosen;
    return book::resultWeight(source, position, move.move);
}

}  // namespace

int book::resultWeight(bookSource& source, const board& position, const char* move) {
    board next = position;
    const int legalMove = next.convertMovestringToInt(move);
    if (legalMove == 0) return 1;
    next.makeMove(legalMove);
    char fen[128];
    next.getFen(fen);
    int wins = 0, draws = 0, losses = 0;
    if (!source.results(fen, wins, draws, losses) || wins + draws + losses == 0) return 1;
    return wins + draws / 2;
}

book::book() : bookBestMoveOnly(1) { setPath("bookTalvin.ctg"); }

void book::setPath(const char* text) {
    snprintf(path, sizeof path, "%s", text);
    source = sourceFor(path);
}

std::unique_ptr<bookSource> book::sourceFor(const char* path) {
    const size_t length = strlen(path);
    if (length >= 4 && strcasecmp(path + length - 4, ".bin") == 0) return std::make_unique<polyglotBook>(path);
    return std::make_unique<ctgBook>(path);
}

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
        weight[i] = moveWeight(*source, position, entries[i]);
        if (weight[i] > max) max = weight[i];
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
    if (bookBestMoveOnly) {
        if (candidateCount == 0) return false;
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
    printInfo("ERROR: no move returned from openingbook while present\n");
    return false;
}
