#pragma once
#include "board/board.h"

// The legal move a SAN text names in the position ("Nbd7", "exd6", "e8=Q+",
// "O-O"), or 0 when it names none or more than one.
int sanToMove(const board& position, const char* san);
