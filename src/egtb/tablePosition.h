#pragma once
#include <cstdint>

class board;

// A position as the probing libraries take it: squares a1 = 0 .. h8 = 63
// (the board counts files the other way round), one bitboard per colour and
// piece type.
struct tablePosition {
    uint64_t pieces[2][6];  // [WHITE/BLACK][PAWN..KING]
    bool whiteToMove;
    int enPassant;   // target square, 0 when there is none
    int castling;    // 1 K, 2 Q, 4 k, 8 q
    int fiftyMoves;  // reversible plies, 0..100

    uint64_t side(int colour) const {
        const uint64_t* p = pieces[colour];
        return p[0] | p[1] | p[2] | p[3] | p[4] | p[5];
    }
    uint64_t type(int pieceType) const { return pieces[0][pieceType] | pieces[1][pieceType]; }
    int pieceCount(int colour, int pieceType) const { return __builtin_popcountll(pieces[colour][pieceType]); }
};

// False when the libraries must not see the position: they take it on trust
// and some of them stop the program on a king too many or too few, a pawn on
// the first or last rank, or a king that could be taken.
bool toTablePosition(const board& b, tablePosition& p);

// The board's square in the libraries' numbering and back (the same mirror).
inline int tableSquare(int square) { return square ^ 7; }
