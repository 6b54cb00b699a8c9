#pragma once
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "bookGames.h"

// Builds a CTG book (.ctg, .cto, .ctb) from games. Each game adds the
// positions before its first maxPlies moves, with the move played and the
// game's result, and the position after them with its result only. Moves
// keep the order in which they were first seen.
class ctgWriter {
public:
    int maxPlies = 40;
    // Positions reached by fewer games are left out; the moves into them stay.
    int minGames = 1;
    // The lowest level of the .cto table; 0 lets the writer use a single
    // page when everything fits in one.
    int tableLevel = 0;

    // False, with the reason in error, when a move cannot be stored in the
    // format (under-promotion, a third piece of a kind, a step without a
    // byte); the game's positions before that move stay in the book.
    bool addGame(const bookGame& game, std::string& error);
    // Writes the three files next to the .ctg path.
    bool write(const std::string& ctgPath, std::string& error);
    // Of the last book written.
    int storedPositions = 0;
    int dataPages = 0;

private:
    struct record {
        uint32_t games = 0, winsToMove = 0, winsJustMoved = 0, draws = 0;
        std::vector<uint8_t> moves;  // move byte, annotation byte, ...
    };
    std::map<std::string, record> positions;  // by encoding
};
