#include "parallel/mutex.h"
#include "parallel/searchProcess.h"
#include "search/searchtree.h"

namespace {

// Takes the block's next move and marks it taken with the block's alpha.
int takeMove(splitBlock& block, namedMutex& lock, int alpha, int& index) {
    mutex::waitWithHandle(lock);
    index = block.nextMove;
    const int move = index < 100 ? block.moves[index] : 0;
    if (index < 100) block.moves[100 + index] = static_cast<uint16_t>(alpha);
    if (move != 0) block.nextMove++;
    mutex::releaseWithHandle(lock);
    return move;
}

void markResult(splitBlock& block, namedMutex& lock, int index, int mark, bool failHigh) {
    mutex::waitWithHandle(lock);
    block.moves[100 + index] = static_cast<uint16_t>(mark);
    if (failHigh) block.failHigh = 1;
    mutex::releaseWithHandle(lock);
}

}  // namespace

void searchProcess::slaveStandBy(searchtree& tree, sharedData& shared) {
    const int n = processNumber;
    shared.processState[n] = 1;
    slaveAvailable.set();
    if (shared.runFlag == 0) return;
    for (;;) {
        while (!startSlave[n].wait(1000) && shared.runFlag) slaveAvailable.set();
        mutex::waitMT();
        const int b = shared.assignedSplitBlock[n];
        mutex::releaseMT();
        if (b > 0 && b < splitBlockCount && shared.runFlag) helpWithBlock(tree, shared, b);
        if (shared.runFlag == 0) return;
    }
}

void searchProcess::helpWithBlock(searchtree& tree, sharedData& shared, int b) {
    const int n = processNumber;
    splitBlock& block = shared.splitBlocks[b];
    namedMutex& lock = splitBlockMutex[b];

    // A tuning run may have moved the weights since the last block.
    adoptEvalWeights(shared.tunedWeights);
    mutex::waitWithHandle(lock);
    shared.assignedSplitBlock[n] = 0;
    tree.nodes[0] = tree.nodes[1] = 0;
    const int depth = block.depth, alpha = block.alpha, lastMove = block.lastMove;
    board node;
    block.node.load(node);
    mutex::releaseWithHandle(lock);

    int index;
    int move = takeMove(block, lock, alpha, index);
    const bool inCheck = node.inCheck();
    const int side = (node.toMove + 1) / 2;
    while (move != 0) {
        board child = node;
        child.makeMove(move);
        if (!child.isMoveIllegal(move)) {
            const bool givesCheck = child.inCheck();
            const int extension =
                shared.enable_EXTENTIONS && lastMove != 0 && (givesCheck || moveTo(move) == node.recaptureSq);
            const int reduction = shared.enable_LMP && depth >= 2 && !givesCheck && !inCheck &&
                                  (tree.table->probeBestMove(node.boardKey) & 0xFFFF) != 6 &&
                                  node.pieceOn[moveTo(move)] == NOPIECE &&
                                  shared.killers.getKillerMoveScore(move, node.ply, side) == 0 && lastMove != 0;
            if (reduction) {
                mutex::waitWithHandle(lock);
                block.reducedMoves++;
                mutex::releaseWithHandle(lock);
            }
            const int e = reduction ? 0 : extension;
            board searched = child;
            int score = -tree.alphaBeta(move, searched, depth + e - reduction - 1, -alpha - 1, -alpha, b);
            if (reduction && score > alpha && score != -timeUpScore) {
                searched = child;
                score = -tree.alphaBeta(move, searched, depth - 1, -alpha - 1, -alpha, b);
            }
            if (score == -blockStoppedScore || score == -timeUpScore) {
                markResult(block, lock, index, abandonedMark, false);
                break;
            }
            if (score > alpha) {
                markResult(block, lock, index, notSearchedMark, true);
                break;
            }
        }
        move = takeMove(block, lock, alpha, index);
    }

    mutex::waitMT();
    shared.processState[n] = 1;
    shared.nodeTotals[0] += tree.nodes[0];
    shared.nodeTotals[1] += tree.nodes[1];
    tree.nodes[0] = tree.nodes[1] = 0;
    mutex::releaseMT();
    mutex::waitWithHandle(lock);
    block.numSlaves--;
    mutex::releaseWithHandle(lock);
    splitBlockReady[b].set();
    slaveAvailable.set();
}
