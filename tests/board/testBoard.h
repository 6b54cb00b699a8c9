#pragma once
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "board/board.h"

// One constructed board per test binary: the constructor rebuilds the
// program-wide tables, so tests copy this one instead.
inline board boardFrom(const char* fen) {
    static board prototype;
    board b = prototype;
    b.setupPosition(fen);
    return b;
}

inline std::string fenOf(const board& b) {
    char fen[128];
    b.getFen(fen);
    return fen;
}

inline std::string moveText(int move) {
    char text[9];
    moveToText(move, text);
    return text;
}

// Makes a move given as text; fails the test if it is not legal.
inline void play(board& b, const char* text) {
    const int move = b.convertMovestringToInt(text);
    EXPECT_NE(move, 0) << "illegal move " << text;
    if (move) b.makeMove(move);
}

// The board after the moves, given as text with blanks between them.
inline board boardAfter(const char* fen, const std::string& moves) {
    board b = boardFrom(fen);
    std::istringstream list(moves);
    for (std::string move; list >> move;) play(b, move.c_str());
    return b;
}

inline std::string listText(const uint16_t* moves) {
    std::string text;
    for (int i = 0; moves[i]; i++) {
        if (i) text += ' ';
        text += moveText(moves[i]);
    }
    return text;
}
