#pragma once

inline constexpr int maxBookMoves = 64;

// What a book file can tell about a position, given as FEN.
class bookSource {
public:
    struct entry {
        char move[8];    // coordinate notation
        int annotation;  // the move's annotation byte
    };
    virtual ~bookSource() = default;
    // Opens the book unless it is open; false, with the book's message
    // printed, when it cannot be read.
    virtual bool open() = 0;
    // Is the position in the book? A book that cannot be read prints one
    // message a call and holds no position.
    virtual bool contains(const char* fen) = 0;
    // The position's legal book moves in book order; false when the position
    // cannot be read.
    virtual bool moves(const char* fen, entry* out, int capacity, int& count) = 0;
    // The game counts recorded for the position, wins being those of the side
    // that moved into it; false when the book records none.
    virtual bool results(const char* fen, int& wins, int& draws, int& losses) = 0;
};
