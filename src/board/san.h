#pragma once
#include "board/board.h"

// Standard algebraic notation, as test suites and game scores write moves.

// The legal move a SAN text names in the position ("Nbd7", "exd6", "exd6e.p.",
// "e8=Q+", "O-O"), or 0 when it names none or more than one. Forgiving about
// what is not needed to tell moves apart: check and mate marks, annotations,
// a missing or misplaced "x".
int sanToMove(const board& position, const char* san);

// Every legal move the text fits, for texts that leave the piece open; the
// count, with the moves in moves ended by 0.
int sanToMoves(const board& position, const char* san, uint16_t* moves);

// The SAN text of a legal move, with disambiguation, promotion and check or
// mate mark; out needs room for 10 characters.
void moveToSan(const board& position, int move, char* out);
