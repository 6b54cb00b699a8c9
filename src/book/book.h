#pragma once
#include <cstdint>
#include <memory>

#include "book/bookSource.h"

class board;

// The opening book: its path, the best-move-only rule, and the choice of a
// move among the book's moves by their recorded results.
class book {
public:
    char path[51];  // at most 50 characters
    int bookBestMoveOnly;
    std::unique_ptr<bookSource> source;

    book();
    void setPath(const char* text);
    // A path ending in ".bin" is a Polyglot book, any other a CTG book.
    static std::unique_ptr<bookSource> sourceFor(const char* path);

    // The chosen move's text in moveText ("noMove" when the position could
    // not be read); false when the position is not in the book or nothing
    // could be chosen.
    bool chooseMove(const board& position, char* moveText, uint32_t random);
    // A book move's weight in the choice, its annotation aside: W + D / 2 of
    // the position the move leads to, wins counted for the side that plays
    // it; 1 when the book records no games there.
    static int resultWeight(bookSource& source, const board& position, const char* move);
};
