#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "board/board.h"

// Legal positions of one material (white's and black's pieces besides the
// kings, as FEN letters: "BN", "p"), spread by a fixed pseudo-random walk,
// either side to move. The prototype lends its program-wide tables.
std::vector<board> sampleTablePositions(const board& prototype, const std::string& white, const std::string& black,
                                        int count, uint32_t seed = 12345);
