#include "parallel/searchProcess.h"
#include "platform/mutex.h"
#include "search/searchtree.h"

void searchProcess::slaveStandBy(searchtree& tree, sharedData& shared) {
    const int n = processNumber;
    shared.processState[n] = processIdle;
    slaveAvailable.set();
    if (shared.runFlag == 0) return;
    for (;;) {
        while (!startSlave[n].wait(1000, helperSpinUs) && shared.runFlag) slaveAvailable.set();
        int b;
        {
            lockGuard mt(mutex::mt);
            b = shared.assignedSplitBlock[n];
        }
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
    board node{board::uninitialised{}};
    int depth, alpha, lastMove;
    {
        lockGuard held(lock);
        shared.assignedSplitBlock[n] = 0;
        tree.nodes[0] = tree.nodes[1] = 0;
        depth = block.depth;
        alpha = block.alpha;
        lastMove = block.lastMove;
        block.node.load(node);
    }
    tree.searchBlockMoves(b, node, depth, alpha, lastMove, false);
    {
        lockGuard mt(mutex::mt);
        shared.processState[n] = processIdle;
        shared.nodeTotals[0] += tree.nodes[0];
        shared.nodeTotals[1] += tree.nodes[1];
        tree.nodes[0] = tree.nodes[1] = 0;
    }
    block.leave(lock, n);
    splitBlockReady[b].set();
    slaveAvailable.set();
}
