#pragma once
#include <cstdint>

// What a book file can tell about a position, given as FEN.
class bookSource {
public:
    struct entry {
        char move[8];    // coordinate notation
        int annotation;  // the move's annotation byte
    };
    virtual ~bookSource() = default;
    virtual bool contains(const char* fen) = 0;
    // The position's moves in book order; false when the position cannot be read.
    virtual bool moves(const char* fen, entry* out, int capacity, int& count) = 0;
    virtual bool results(const char* fen, int& wins, int& draws, int& losses) = 0;
};

class board;

// The opening book: its path, the best-move-only rule, and the choice of a
// move among the book's moves by their recorded results.
class book {
public:
    char path[50];
    int bookBestMoveOnly;
    bookSource* source = nullptr;  // no book file reader: no position is in the book

    book();
    void setPath(const char* text);

    // The chosen move's text in moveText ("noMove" when the position could
    // not be read); false when the position is not in the book or nothing
    // could be chosen.
    bool chooseMove(const board& position, char* moveText, uint32_t random);
};
