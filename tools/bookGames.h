#pragma once
#include <functional>
#include <string>
#include <vector>

#include "board/board.h"

enum gameResult { whiteWins, blackWins, drawn, unknownResult };

// One move of a game with the position before it. Squares count 8 * rank +
// file from a1 = 0, as the book formats do.
struct bookGamePly {
    std::string fen;
    int from, to;
    char promotion;  // 'q', 'r', 'b', 'n' or 0
    int annotation;  // 0 when none was given
};

struct bookGame {
    std::vector<bookGamePly> plies;
    std::string finalFen;  // the position after the last move
    gameResult result;
};

// Reads the games of a PGN text (pgn true) or of move lines, one game a line,
// and hands each game with at least one move to onGame. Moves are in SAN or
// coordinate notation; a game ends with its result (1-0, 0-1, 1/2-1/2, *),
// a missing result counts as *. "$N" after a move sets its annotation byte
// to N, as do the suffixes ! ? !! ?? !? ?! (1 to 6). PGN comments, variations
// and tags are skipped, except a FEN tag, which sets the start position. A
// move that is not legal ends its game there; warnings says where. Returns
// the number of games read.
int readBookGames(const std::string& text, bool pgn, const board& prototype,
                  const std::function<void(const bookGame&)>& onGame, std::vector<std::string>& warnings);
