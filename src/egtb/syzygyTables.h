#pragma once
#include <string>
#include <vector>

#include "egtb/tableFile.h"
#include "egtb/tablePosition.h"

// A root move and the result it keeps: wdl -2 loss, -1 loss the fifty-move
// rule saves, 0 draw, 1 win the rule spoils, 2 win; dtz the distance in plies
// to the next capture, pawn move or mate.
struct tableMove {
    int from, to, promotion;  // squares a1 = 0; promotion piece type, 0 for none
    int wdl;
    int dtz;
};

inline constexpr int tableMaxMoves = 256;

// Syzygy tables (win/draw/loss and distance to zeroing) through Debian's
// libfathom, which keeps one state per process.
class syzygyTables {
public:
    int pieces = 0;                  // largest table found, 0 when none
    std::vector<tableFile> damaged;  // left out, with every position that may lead into them

    void start(const std::vector<std::string>& directories, const std::vector<tableFile>& files);
    // Win/draw/loss (-2 .. 2) as after a capture or pawn move.
    bool probeWdl(const tablePosition& p, int& wdl) const;
    // The result of the position under its fifty-move count (position.wdl,
    // .dtz, .from/.to the library's choice) and of every legal move; the
    // number of moves, or -1 when the tables cannot tell.
    int probeRoot(const tablePosition& p, tableMove& position, tableMove* moves) const;

private:
    bool reachesDamaged(const tablePosition& p, bool distancesToo) const;
};
