#pragma once
#include <string>
#include <vector>

#include "board/board.h"

// One line of an EPD file, as test suites write them: four FEN fields, the
// clocks when present (bare numbers or the hmvc and fmvn operations), then
// "opcode operands;" operations of which id, bm and am are read.
class epdRecord {
public:
    std::string fen;                  // six FEN fields; "0 1" when the line gives no clocks
    std::string id;                   // without its quotes; empty when there is none
    std::string bestText, avoidText;  // the bm and am operands as written
    std::vector<int> bestMoves, avoidMoves;

    // Sets the position up on position and reads the moves in SAN. False,
    // with the reason in error, when the position is not a legal one or a
    // move of bm or am names no legal move.
    bool parse(const char* line, board& position, std::string& error);

    // Solved: one of the best moves, and none of the moves to avoid.
    bool solvedBy(int move) const;
};
