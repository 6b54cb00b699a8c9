#include "egtb/syzygyTables.h"

#include <tbprobe.h>

#include "egtb/tableCheck.h"

namespace {

static_assert(TB_MAX_MOVES <= tableMaxMoves);

unsigned wdlOf(const tablePosition& p) {
    return tb_probe_wdl(p.side(0), p.side(1), p.type(5), p.type(4), p.type(3), p.type(2), p.type(1), p.type(0), 0,
                        static_cast<unsigned>(p.castling), static_cast<unsigned>(p.enPassant), p.whiteToMove);
}

unsigned rootOf(const tablePosition& p, unsigned* moveResults) {
    return tb_probe_root(p.side(0), p.side(1), p.type(5), p.type(4), p.type(3), p.type(2), p.type(1), p.type(0),
                         static_cast<unsigned>(p.fiftyMoves), static_cast<unsigned>(p.castling),
                         static_cast<unsigned>(p.enPassant), p.whiteToMove, moveResults);
}

tableMove moveOf(unsigned result) {
    const unsigned promotes = TB_GET_PROMOTES(result);
    const int wdl = static_cast<int>(TB_GET_WDL(result)) - 2;
    const int dtz = static_cast<int>(TB_GET_DTZ(result));
    // The library counts promotions queen 1 .. knight 4, the board knight 1 .. queen 4.
    return {static_cast<int>(TB_GET_FROM(result)), static_cast<int>(TB_GET_TO(result)),
            promotes ? 5 - static_cast<int>(promotes) : 0, wdl, wdl < 0 ? -dtz : (wdl > 0 ? dtz : 0)};
}

}  // namespace

void syzygyTables::start(const std::vector<std::string>& directories, const std::vector<tableFile>& files) {
    // The library takes one list separated by ':', and reads past the end of
    // one that ends in a separator: so only the directories themselves go in.
    // It is never released: its release complains about the distance tables
    // it has read, and the end of the process frees them anyway.
    if (directories.empty()) return;
    std::string pathList = directories[0];
    for (size_t i = 1; i < directories.size(); i++) pathList += ":" + directories[i];
    tb_init(pathList.c_str());
    pieces = static_cast<int>(TB_LARGEST);
    if (pieces == 0) return;

    // A distance probe reads the win/draw/loss tables of the positions after
    // each move, so those are tried first, and a distance table that leads
    // into a damaged one is not tried (it is left out with it anyway).
    unsigned results[TB_MAX_MOVES];
    for (const tableFile::kind kind : {tableFile::syzygyWdl, tableFile::syzygyDtz}) {
        std::vector<const tableFile*> checked;
        for (const tableFile& file : files)
            if (file.type == kind && !reachesDamaged(file.checkPosition(0), false)) checked.push_back(&file);
        const std::vector<tableHealth> health = checkTables(static_cast<int>(checked.size()), [&](int i) {
            bool answered = true;
            for (int variant = 0; variant < checkVariants; variant++) {
                const tablePosition p = checked[i]->checkPosition(variant);
                answered &= (kind == tableFile::syzygyWdl ? wdlOf(p) : rootOf(p, results)) != TB_RESULT_FAILED;
            }
            return answered;
        });
        // A table that does not answer may only miss a smaller one, and the
        // library has said what it found; only a table that crashes is left out.
        for (size_t i = 0; i < checked.size(); i++)
            if (health[i] == tableHealth::crashed) damaged.push_back(*checked[i]);
    }
}

bool syzygyTables::reachesDamaged(const tablePosition& p, bool distancesToo) const {
    for (const tableFile& file : damaged)
        if ((distancesToo || file.type == tableFile::syzygyWdl) && file.reachableFrom(p)) return true;
    return false;
}

bool syzygyTables::probeWdl(const tablePosition& p, int& wdl) const {
    if (!damaged.empty() && reachesDamaged(p, false)) return false;
    const unsigned result = wdlOf(p);
    wdl = static_cast<int>(result) - 2;
    return result != TB_RESULT_FAILED;
}

int syzygyTables::probeRoot(const tablePosition& p, tableMove& position, tableMove* moves) const {
    if (!damaged.empty() && reachesDamaged(p, true)) return -1;
    unsigned results[TB_MAX_MOVES];
    const unsigned result = rootOf(p, results);
    if (result == TB_RESULT_FAILED || result == TB_RESULT_CHECKMATE || result == TB_RESULT_STALEMATE) return -1;
    position = moveOf(result);
    int count = 0;
    while (count < TB_MAX_MOVES && results[count] != TB_RESULT_FAILED) {
        moves[count] = moveOf(results[count]);
        count++;
    }
    return count;
}
