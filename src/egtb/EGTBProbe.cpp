#include "egtb/EGTBProbe.h"

#include <algorithm>

#include "board/board.h"
#include "platform/console.h"

int tablebaseScore(int t, int toMove) {
    if (t > 0) return 2 * t - 49534;
    if (t < 0) return 2 * t + 49532;
    return -toMove;
}

int syzygyScore(int wdl, int toMove) {
    if (wdl == 2) return syzygyWinScore;
    if (wdl == -2) return -syzygyWinScore;
    return -toMove;
}

EGTBProbe::EGTBProbe(const char* pathList, int cacheMB, bool slave) {
    const std::vector<std::string> directories = splitPathList(pathList);
    const std::vector<tableFile> files = tableFile::findAll(directories);
    if (!gaviota.start(directories, files, cacheMB)) {
        printInfo("Out of memory error\n");
        return;
    }
    syzygy.start(directories, files);
    probeLimit = std::max(gaviota.pieces, syzygy.pieces);
    if (slave) return;
    for (const tableFile& file : gaviota.unreadable)
        printInfo("*** Unable to read %s - file broken\n", file.path.c_str());
    for (const tableFile& file : gaviota.damaged) printInfo("*** %s corrupted\n", file.path.c_str());
    for (const tableFile& file : syzygy.damaged) printInfo("*** %s corrupted\n", file.path.c_str());
    if (probeLimit == 0) return;
    printInfo("Egtbs initializated(%d)\n", probeLimit);
    printInfo("Egtb cache size %luM\n", static_cast<unsigned long>(cacheMB));
}

bool EGTBProbe::DoEGTBProbe(const board& b, int& score) const {
    const int pieces = countBits(b.occupied);
    if (pieces > probeLimit) return false;
    tablePosition p;
    if (!toTablePosition(b, p)) return false;
    int value;
    if (pieces <= gaviota.pieces && gaviota.probe(p, value)) {
        score = tablebaseScore(value, b.toMove);
        return true;
    }
    if (pieces <= syzygy.pieces && syzygy.probeWdl(p, value)) {
        score = syzygyScore(value, b.toMove);
        return true;
    }
    return false;
}

void EGTBProbe::filterRootMoves(const board& root, uint16_t* moves) const {
    tablePosition p;
    if (moves[0] == 0 || moves[1] == 0 || countBits(root.occupied) > syzygy.pieces || !toTablePosition(root, p)) return;
    tableMove position, results[tableMaxMoves];
    const int count = syzygy.probeRoot(p, position, results);
    if (count < 0) return;
    int value;
    const bool exactDistance = countBits(root.occupied) <= gaviota.pieces && gaviota.probe(p, value);
    // For the winner the shortest way to the next zeroing move, for the loser the longest.
    const tableMove* progress = nullptr;
    int kept = 0;
    for (int i = 0; moves[i] != 0; i++) {
        const int from = tableSquare(moveFrom(moves[i])), to = tableSquare(moveTo(moves[i]));
        const tableMove* result = nullptr;
        for (int r = 0; r < count && result == nullptr; r++)
            if (results[r].from == from && results[r].to == to && results[r].promotion == movePromotion(moves[i]))
                result = &results[r];
        if (result != nullptr && result->wdl != position.wdl) continue;
        if (result != nullptr && (progress == nullptr || result->dtz < progress->dtz)) progress = result;
        moves[kept++] = moves[i];
    }
    moves[kept] = 0;
    if (exactDistance || position.wdl == 0 || progress == nullptr) return;
    for (int i = 0; moves[i] != 0; i++)
        if (tableSquare(moveFrom(moves[i])) == progress->from && tableSquare(moveTo(moves[i])) == progress->to &&
            movePromotion(moves[i]) == progress->promotion) {
            moves[0] = moves[i];
            moves[1] = 0;
            return;
        }
}
