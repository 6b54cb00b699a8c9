#pragma once
#include <cstdint>

#include "board/board.h"

// Leaf positions of the legal move tree, counted with the engine's own
// generators, copy-make and legality test.
uint64_t perft(const board& position, int depth);
