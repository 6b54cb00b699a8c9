#include "search/localSearch.h"

#include "platform/instance.h"

localSearch::localSearch(int hashMB)
    : shared(std::make_unique<sharedData>()),
      table(instanceName(), hashMB, false),
      tree(shared.get(), &table, 0, false) {
    // Nothing else opens these tables, so their names can go at once.
    removeInstanceObjects();
    board::killers = &shared->killers;
    sharedData& s = *shared;
    s.outputMode = xboardProtocol;
    s.postFlag = 0;
    s.processCount = 1;
    s.allSearchprocesEnabled = 1;
    s.enable_EGTB = s.enable_NMP = s.enable_LMP = s.enable_FUTPRUN = s.enable_EXTENTIONS = 1;
    s.killers.reset();
}

void localSearch::clearTables() {
    table.reset();
    shared->killers.reset();
}

localSearch::result localSearch::run(const board& position, int depthLimit, int timeMs) {
    shared->maxDepth = depthLimit;
    shared->timer1.allottedMs = timeMs;
    shared->timer1.startTimer();
    shared->rootBestScore = 0;
    const int move = tree.rootSearch(position);
    return {move, shared->rootBestScore, shared->nodeTotals[0] + shared->nodeTotals[1], tree.completedDepth};
}
