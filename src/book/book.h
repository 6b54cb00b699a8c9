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
    // A path ending in ".bin" is a Polyglot book, any other a CTG book.
    void setPath(const char* text);

    // The chosen move's text in moveText ("noMove" when the position could
    // not be read); false when the position is not in the book or nothing
    // could be chosen.
    bool chooseMove(const board& position, char* moveText, uint32_t random);
};
