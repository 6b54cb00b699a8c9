#include <cstdio>

#include "parallel/mutex.h"
#include "parallel/searchProcess.h"
#include "search/moveGenerator.h"
#include "search/searchtree.h"

int searchtree::split(int lastMove, board& node, int depth, int alpha, int beta, moveGenerator& picker, int bestMove,
                      int bound, bool inCheck, int sbNum) {
    const int stageBefore = picker.stage;
    mutex::waitMT();
    int claimed[maxProcesses];
    int count = 0;
    for (int p = 0; p < shared->processCount && p < maxProcesses; p++) {
        if (p != processSlot && shared->processState[p] == 1) {
            shared->processState[p] = 2;
            claimed[count++] = p;
        }
    }
    if (count == 0) {
        mutex::releaseMT();
        return noSplit;
    }
    int blockNumber = 0;
    for (int n = 2; n < splitBlockCount && blockNumber == 0; n++) {
        mutex::waitWithHandle(process->splitBlockMutex[n]);
        if (shared->splitBlocks[n].owner == freeSplitBlock) blockNumber = n;
        else mutex::releaseWithHandle(process->splitBlockMutex[n]);
    }
    if (blockNumber == 0) {
        mutex::waitIO();
        printf("WARNING: No splitblock available!\n");
        mutex::releaseIO();
        for (int i = 0; i < count; i++) shared->processState[claimed[i]] = 1;
        mutex::releaseMT();
        return noSplit;
    }

    splitBlock& block = shared->splitBlocks[blockNumber];
    picker.addNoncapmovesToList();
    const int first = stageBefore == 1 ? 0 : picker.index + 1;
    int n = 0;
    for (int i = first; i < maxMovesPerList && picker.list.moves[i] != 0; i++, n++) {
        block.moves[n] = picker.list.moves[i];
        block.moves[moveScoreSlot + n] = picker.list.moves[moveScoreSlot + i];
    }
    block.moves[n] = 0;
    block.owner = processSlot;
    block.depth = depth;
    block.lastMove = static_cast<uint16_t>(lastMove);
    block.alpha = alpha;
    block.beta = beta;
    block.node.store(node);
    block.counter = 0;
    block.stop = 0;
    block.numSlaves = count;
    block.nextMove = 0;
    block.reducedMoves = 0;
    block.failHigh = 0;
    block.parent = sbNum;
    for (int i = 0; i < count; i++) shared->assignedSplitBlock[claimed[i]] = blockNumber;
    mutex::releaseWithHandle(process->splitBlockMutex[blockNumber]);
    mutex::releaseMT();
    for (int i = 0; i < count; i++) process->startSlave[claimed[i]].set();
    return alphaBetaMaster(blockNumber, node, depth, alpha, beta, bestMove, bound, inCheck, sbNum);
}

void searchtree::stopBlock(int blockNumber) {
    shared->splitBlocks[blockNumber].stop = 1;
    for (int n = 2; n < splitBlockCount; n++)
        if (shared->splitBlocks[n].owner != freeSplitBlock && shared->splitBlocks[n].parent == blockNumber &&
            !shared->splitBlocks[n].stop)
            stopBlock(n);
}

void searchtree::waitForSlaves(int blockNumber) {
    splitBlock& block = shared->splitBlocks[blockNumber];
    // Idle meanwhile: a slave that splits below this block may claim the owner.
    mutex::waitMT();
    shared->processState[processSlot] = 1;
    mutex::releaseMT();
    int waitedMs = 0;
    for (;;) {
        mutex::waitMT();
        const int assigned = shared->assignedSplitBlock[processSlot];
        const bool done = assigned == 0 && block.numSlaves <= 0;
        if (done) shared->processState[processSlot] = 2;
        mutex::releaseMT();
        if (done) return;
        if (assigned != 0) {
            reportNodes();
            process->startSlave[processSlot].wait(0);
            process->helpWithBlock(*this, *shared, assigned);
            waitedMs = 0;
            continue;
        }
        if (process->splitBlockReady[blockNumber].wait(1)) continue;
        if (++waitedMs < waitTimeoutMs) continue;
        mutex::waitIO();
        printf("Timeout sbNum=%d num=%d\n", blockNumber, block.numSlaves);
        mutex::releaseIO();
        mutex::waitMT();
        shared->processState[processSlot] = 2;
        mutex::releaseMT();
        return;
    }
}

// The owner takes moves from the block like its slaves do, all at a null
// window on the block's alpha. A move that beats it stops the block; once
// every slave is back, the moves that beat alpha are searched again with
// the full window and whatever was left unfinished is searched here.
int searchtree::alphaBetaMaster(int blockNumber, board& node, int depth, int alpha, int beta, int bestMove, int bound,
                                bool inCheck, int sbNum) {
    splitBlock& block = shared->splitBlocks[blockNumber];
    namedMutex& lock = process->splitBlockMutex[blockNumber];
    const int blockAlpha = alpha;

    for (;;) {
        mutex::waitWithHandle(lock);
        const int index = block.nextMove;
        const int move = block.failHigh ? 0 : block.moves[index];
        if (move != 0) {
            block.moves[moveScoreSlot + index] = static_cast<uint16_t>(blockAlpha);
            block.nextMove++;
        }
        mutex::releaseWithHandle(lock);
        if (move == 0) break;

        board child = node;
        child.makeMove(move);
        if (child.isMoveIllegal(move)) continue;
        const int score = searchMove(node, child, move, depth, blockAlpha, blockAlpha + 1, inCheck, false, blockNumber);
        if (isAbort(score)) {
            mutex::waitWithHandle(lock);
            block.moves[moveScoreSlot + index] = static_cast<uint16_t>(abandonedMark);
            mutex::releaseWithHandle(lock);
            break;
        }
        if (score > blockAlpha) {
            mutex::waitWithHandle(lock);
            block.moves[moveScoreSlot + index] = static_cast<uint16_t>(notSearchedMark);
            block.failHigh = 1;
            mutex::releaseWithHandle(lock);
            break;
        }
    }

    const bool parentStopped = sbNum != 0 && shared->splitBlocks[sbNum].stop;
    if (block.failHigh || parentStopped || searchStopped()) stopBlock(blockNumber);
    waitForSlaves(blockNumber);

    // Copy what is left to do, then give the block back.
    movelist rest;
    int restCount = 0;
    bool researchFound = false;
    for (int i = 0; i < 100 && block.moves[i] != 0; i++) {
        const int mark = static_cast<int16_t>(block.moves[moveScoreSlot + i]);
        if (i < block.nextMove && mark != notSearchedMark && mark != abandonedMark) continue;
        researchFound |= mark == notSearchedMark;
        rest.moves[restCount] = block.moves[i];
        rest.setScore(restCount++, mark == notSearchedMark ? 1 : 0);
    }
    rest.moves[restCount] = 0;
    const bool failedHigh = block.failHigh != 0;
    mutex::waitWithHandle(lock);
    block.owner = freeSplitBlock;
    mutex::releaseWithHandle(lock);

    if (searchStopped()) return timeUpScore;
    if (sbNum != 0 && shared->splitBlocks[sbNum].stop) return blockStoppedScore;
    if (failedHigh && !researchFound) {
        mutex::waitIO();
        printf("ERROR: No move to research after beta-cutoff\n");
        mutex::releaseIO();
    }

    // Moves that beat alpha first, with the full window; then the rest.
    for (int pass = 1; pass >= 0; pass--) {
        for (int i = 0; i < restCount; i++) {
            if (rest.score(i) != pass) continue;
            const int move = rest.moves[i];
            board child = node;
            child.makeMove(move);
            if (child.isMoveIllegal(move)) continue;
            const int score = searchMove(node, child, move, depth, alpha, beta, inCheck, pass == 1, sbNum);
            int result;
            if (takeScore(node, move, depth, score, alpha, beta, bestMove, bound, result)) return result;
        }
    }
    table->recordHash(node.boardKey, depth, node.rootPly, alpha, bound, bestMove == 325 ? 0 : bestMove);
    return alpha;
}
