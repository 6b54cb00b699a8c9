#pragma once
#include <cstdint>

#include "egtb/gaviotaTables.h"
#include "egtb/syzygyTables.h"

class board;

// A Syzygy win or loss: beyond every evaluation, short of the mate scores
// (a Gaviota mate in n moves scores 16000 - 2n, so at least 15746 up to
// mates in 127).
inline constexpr int syzygyWinScore = 15000;

// The tablebase value t as a score for the side to move: 2t - 49534 for a
// win, 2t + 49532 for a loss, and for a draw one centipawn away from the
// side to move (-1 with White to move, +1 with Black).
int tablebaseScore(int t, int toMove);
// Win/draw/loss (-2 .. 2) as a score: a win or loss the fifty-move rule
// turns into a draw scores as a draw.
int syzygyScore(int wdl, int toMove);

// The engine's endgame tablebases: the Gaviota and Syzygy tables found in
// the directories of one path list. One per process (the libraries keep
// global state).
class EGTBProbe {
public:
    int probeLimit = 0;  // largest number of pieces, kings included, of the tables found; 0 when none
    gaviotaTables gaviota;
    syzygyTables syzygy;

    // Start-up: the cache of cacheMB MiB, the tables, and (unless this is a
    // slave) the lines that say what was found.
    EGTBProbe(const char* pathList, int cacheMB, bool slave);
    // A score for the side to move, Gaviota's exact distance first, else
    // Syzygy's result; false when no table answers.
    bool DoEGTBProbe(const board& b, int& score) const;
    // Drops from the root moves (a list ended by 0) those that spoil the
    // position's Syzygy result under the fifty-move rule. Without a Gaviota
    // distance for the position, a won or lost one keeps only the move the
    // distance to zeroing favours, so that the win comes in time.
    void filterRootMoves(const board& root, uint16_t* moves) const;
};
