#include <sched.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>

#include "parallel/searchProcess.h"
#include "platform/console.h"
#include "platform/mutex.h"
#include "search/moveGenerator.h"
#include "search/searchtree.h"

namespace {

// Read while other processes write it under a lock.
inline int32_t peek(const int32_t& field) {
    return std::atomic_ref<int32_t>(const_cast<int32_t&>(field)).load(std::memory_order_relaxed);
}

}  // namespace

void searchtree::searchBlockMoves(int b, const board& node, int depth, int alpha, int lastMove, bool owner,
                                  int rootFrom) {
    splitBlock& block = shared->splitBlocks[b];
    namedMutex& lock = process->splitBlockMutex[b];
    const bool inCheck = node.inCheck();
    const int side = sideIndex(node.toMove);
    const bool watched = owner && watchedBlockCount < maxWatchedBlocks;
    if (watched) watchedBlocks[watchedBlockCount++] = b;
    int index;
    for (int move = block.takeMove(lock, index, processSlot); move != 0;
         move = block.takeMove(lock, index, processSlot)) {
        if (rootFrom >= 0) announceRootMove(rootFrom + index);
        board child = node;
        child.makeMove(move);
        if (child.isMoveIllegal(move)) continue;
        const bool givesCheck = child.inCheck();
        const int extension =
            shared->enable_EXTENTIONS && lastMove != 0 && (givesCheck || moveTo(move) == node.recaptureSq);
        const int reduction = shared->enable_LMP && depth >= 2 && !givesCheck && !inCheck &&
                              static_cast<uint16_t>(table->probeBestMove(node.boardKey)) != 6 &&
                              node.pieceOn[moveTo(move)] == NOPIECE &&
                              shared->killers.getKillerMoveScore(move, node.ply, side) == 0 && lastMove != 0;
        if (reduction) block.countReducedMove(lock);
        int score = -alphaBeta(move, child, depth + (reduction ? 0 : extension) - reduction - 1, -alpha - 1, -alpha, b);
        if (reduction && score > alpha) score = -alphaBeta(move, child, depth - 1, -alpha - 1, -alpha, b);
        if (isAbort(score)) {
            block.markResult(lock, index, abandonedMark);
            break;
        }
        if (score > alpha) {
            block.markResult(lock, index, notSearchedMark);
            break;
        }
        // A slave's fail-high makes the owner's further moves pointless.
        if (owner && peek(block.failHigh)) break;
    }
    if (watched) watchedBlockCount--;
}

int searchtree::openSplitBlock(int lastMove, const board& node, int depth, int alpha, int beta, const uint16_t* moves,
                               int sbNum) {
    int count = 0;
    while (count < maxMovesPerList && moves[count] != 0) count++;
    if (count < 2) {
        // Nothing to share here: the idle process stays on offer for the next node.
        process->slaveAvailable.set();
        return 0;
    }
    // Taken and filled before the MT mutex, which is then held for the claims alone.
    const int blockNumber = takeFreeBlock(lastMove, node, depth, alpha, beta, moves, count, sbNum);
    if (blockNumber == 0) {
        std::atomic_ref<int64_t>(shared->counters.noBlock).fetch_add(1);
        printInfo("WARNING: No splitblock available!\n");
        return 0;
    }
    splitBlock& block = shared->splitBlocks[blockNumber];
    int claimed[maxProcesses], waitingAt[maxProcesses];
    int claimedCount = 0, lostMask = 0;
    {
        lockGuard mt(mutex::mt);
        for (int p = 0; p < shared->processCount && p < maxProcesses; p++) {
            if (p == processSlot || shared->processState[p] != processIdle || shared->processLost[p]) continue;
            if (shared->lifelines[p].cut()) {
                lostMask |= 1 << p;
                continue;
            }
            // In this order: a claimer that dies in between leaves the process
            // either unclaimed or on its block, where its death sends it.
            shared->assignedSplitBlock[p] = blockNumber;
            block.workingMask |= 1 << p;
            shared->processState[p] = processBusy;
            waitingAt[claimedCount] = shared->waitingForBlock[p];
            claimed[claimedCount++] = p;
        }
        block.numSlaves = claimedCount;
        if (claimedCount > 0) shared->counters.splits++;
    }
    for (int p = 0; lostMask != 0 && p < maxProcesses; p++)
        if (lostMask >> p & 1) noteLostProcess(p);
    if (claimedCount == 0) {
        releaseSplitBlock(blockNumber);
        return 0;
    }
    for (int i = 0; i < claimedCount; i++) {
        process->startSlave[claimed[i]].set();
        // An owner waiting for its own block sleeps on that block's event.
        if (waitingAt[i] != 0) process->splitBlockReady[waitingAt[i]].set();
    }
    return blockNumber;
}

int searchtree::takeFreeBlock(int lastMove, const board& node, int depth, int alpha, int beta, const uint16_t* moves,
                              int count, int sbNum) {
    for (int n = 2; n < splitBlockCount; n++) {
        splitBlock& block = shared->splitBlocks[n];
        if (peek(block.owner) != freeSplitBlock && !abandonedBlock(n)) continue;
        lockGuard held(process->splitBlockMutex[n]);
        if (block.owner != freeSplitBlock) {
            if (!abandonedBlock(n)) continue;  // taken meanwhile
            countBlocksInUse(-1);
        }
        memcpy(block.moves, moves, count * sizeof moves[0]);
        memcpy(block.moves + 100, moves + 100, count * sizeof moves[0]);
        block.moves[count] = 0;
        block.owner = processSlot;
        block.depth = depth;
        block.lastMove = static_cast<uint16_t>(lastMove);
        block.alpha = alpha;
        block.beta = beta;
        block.node.store(node);
        block.counter = 0;
        block.stop = 0;
        block.numSlaves = 0;
        block.nextMove = 0;
        block.reducedMoves = 0;
        block.failHigh = 0;
        block.parent = sbNum;
        block.workingMask = 0;
        countBlocksInUse(1);
        return n;
    }
    return 0;
}

void searchtree::stopBlock(int blockNumber) {
    shared->splitBlocks[blockNumber].stop = 1;
    for (int n = 2; n < splitBlockCount; n++)
        if (shared->splitBlocks[n].owner != freeSplitBlock && shared->splitBlocks[n].parent == blockNumber &&
            !shared->splitBlocks[n].stop)
            stopBlock(n);
}

bool searchtree::abandonedBlock(int blockNumber) {
    const splitBlock& block = shared->splitBlocks[blockNumber];
    const int owner = peek(block.owner);
    if (owner < 0 || owner >= maxProcesses || !shared->processLost[owner] || !shared->lifelines[owner].cut())
        return false;
    for (int p = 0; p < maxProcesses; p++)
        if (peek(block.workingMask) >> p & 1 && !shared->lifelines[p].cut()) return false;
    return true;
}

void searchtree::noteLostProcess(int p) {
    {
        lockGuard mt(mutex::mt);
        if (shared->processLost[p]) return;
        shared->processLost[p] = 1;
    }
    // Its own blocks have nobody to collect them: their slaves come back at
    // once, those claimed but not yet woken too, and the blocks are taken
    // again once nobody alive works on them.
    for (int n = 2; n < splitBlockCount; n++) {
        const splitBlock& orphan = shared->splitBlocks[n];
        if (peek(orphan.owner) != p) continue;
        stopBlock(n);
        for (int q = 0; q < maxProcesses; q++)
            if (orphan.workingMask >> q & 1 && peek(shared->assignedSplitBlock[q]) == n) process->startSlave[q].set();
    }
    printInfo("%sHelper process %d has stopped; the search goes on without it\n", uciOutput() ? "" : "# ", p);
}

bool searchtree::dropLostProcesses(int blockNumber) {
    splitBlock& block = shared->splitBlocks[blockNumber];
    bool dropped = false;
    for (int p = 0; p < maxProcesses; p++) {
        if (!(peek(block.workingMask) >> p & 1) || !shared->lifelines[p].cut()) continue;
        noteLostProcess(p);
        dropped |= block.dropLostProcess(process->splitBlockMutex[blockNumber], p);
    }
    return dropped;
}

bool searchtree::otherProcessIdle() const {
    for (int p = 0; p < shared->processCount && p < maxProcesses; p++)
        if (p != processSlot && peek(shared->processState[p]) == processIdle && !shared->processLost[p]) return true;
    return false;
}

void searchtree::stopFailedBlocks() {
    for (int i = 0; i < watchedBlockCount; i++) {
        splitBlock& block = shared->splitBlocks[watchedBlocks[i]];
        if (peek(block.failHigh) && !block.stop) stopBlock(watchedBlocks[i]);
    }
}

bool searchtree::closeSplitBlock(int blockNumber, int sbNum) {
    splitBlock& block = shared->splitBlocks[blockNumber];
    const bool parentStopped = sbNum != 0 && shared->splitBlocks[sbNum].stop;
    if (peek(block.failHigh) || parentStopped || searchStopped()) stopBlock(blockNumber);
    waitForSlaves(blockNumber);
    return block.failHigh != 0;
}

void searchtree::releaseSplitBlock(int blockNumber) {
    {
        lockGuard held(process->splitBlockMutex[blockNumber]);
        shared->splitBlocks[blockNumber].owner = freeSplitBlock;
    }
    countBlocksInUse(-1);
}

void searchtree::countBlocksInUse(int change) {
    const int inUse = std::atomic_ref<int32_t>(shared->counters.blocksInUse).fetch_add(change) + change;
    std::atomic_ref<int32_t> peak(shared->counters.blocksPeak);
    for (int seen = peak.load(); inUse > seen && !peak.compare_exchange_weak(seen, inUse);) {}
}

void searchtree::helpWhileWaiting(int blockNumber) {
    reportNodes();
    process->startSlave[processSlot].wait(0);  // the claim's wake-up, already seen
    // The block helped may lie on another line: this line's keys come back afterwards.
    uint64_t keys[150];
    memcpy(keys, keyHistory, sizeof keys);
    process->helpWithBlock(*this, *shared, blockNumber);
    memcpy(keyHistory, keys, sizeof keys);
}

void searchtree::waitForSlaves(int blockNumber) {
    using clock = std::chrono::steady_clock;
    splitBlock& block = shared->splitBlocks[blockNumber];
    // Idle meanwhile: a slave that splits below the block may claim this process.
    {
        lockGuard mt(mutex::mt);
        shared->processState[processSlot] = processIdle;
    }
    process->slaveAvailable.set();
    auto deadline = clock::now() + std::chrono::milliseconds(waitTimeoutMs);
    for (;;) {
        int assigned;
        {
            lockGuard mt(mutex::mt);
            assigned = shared->assignedSplitBlock[processSlot];
            const bool done = assigned == 0 && block.workingMask == 0;
            // Said again at every round: a wait nested in a job helped meanwhile has cleared it.
            if (assigned == 0) shared->waitingForBlock[processSlot] = done ? 0 : blockNumber;
            if (done) {
                shared->processState[processSlot] = processBusy;
                return;
            }
        }
        if (assigned != 0) {
            helpWhileWaiting(assigned);
            deadline = clock::now() + std::chrono::milliseconds(waitTimeoutMs);
            continue;
        }
        // The last slave is usually close: watch before sleeping.
        const auto spinEnd = clock::now() + std::chrono::microseconds(wakeSpinUs);
        while (peek(block.workingMask) != 0 && peek(shared->assignedSplitBlock[processSlot]) == 0 &&
               clock::now() < spinEnd)
            sched_yield();
        if (peek(block.workingMask) == 0 || peek(shared->assignedSplitBlock[processSlot]) != 0) continue;
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - clock::now()).count();
        const int slice = static_cast<int>(std::min<long long>(left, lifelineCheckMs));
        if (slice > 0 && process->splitBlockReady[blockNumber].wait(slice)) continue;
        // A slave that died never signals: its lifeline says so.
        if (dropLostProcesses(blockNumber) || clock::now() < deadline) continue;
        printInfo("Timeout sbNum=%d num=%d\n", blockNumber, block.numSlaves);
        lockGuard mt(mutex::mt);
        shared->counters.timeouts++;
        shared->processState[processSlot] = processBusy;
        shared->waitingForBlock[processSlot] = 0;
        // A process alive but never back (hung) would cost this wait again
        // at every split.
        for (int p = 0; p < maxProcesses; p++)
            if (block.workingMask >> p & 1) shared->processLost[p] = 1;
        return;
    }
}

int searchtree::split(int lastMove, board& node, int depth, int& alpha, int beta, moveGenerator& picker, int& bestMove,
                      int& bound, bool inCheck, int sbNum) {
    const int stageBefore = picker.stage;
    picker.addNoncapmovesToList();
    // After the hash move alone, the completed list starts again at its first entry.
    if (stageBefore == 1) picker.index = -1;
    const int blockNumber =
        openSplitBlock(lastMove, node, depth, alpha, beta, picker.list.moves + picker.index + 1, sbNum);
    if (blockNumber == 0) return noSplit;
    return alphaBetaMaster(blockNumber, lastMove, node, depth, alpha, beta, picker, bestMove, bound, inCheck, sbNum);
}

// The owner takes moves from the block like its slaves do. Once all are
// back, the moves that beat alpha are searched again with the full window,
// and the moves left unfinished go back to the node's own loop, which may
// split them again.
int searchtree::alphaBetaMaster(int blockNumber, int lastMove, board& node, int depth, int& alpha, int beta,
                                moveGenerator& picker, int& bestMove, int& bound, bool inCheck, int sbNum) {
    searchBlockMoves(blockNumber, node, depth, alpha, lastMove, true);
    const bool failedHigh = closeSplitBlock(blockNumber, sbNum);

    const splitBlock& block = shared->splitBlocks[blockNumber];
    uint16_t researches[maxMovesPerList];
    int researchCount = 0, restCount = 0;
    for (int i = 0; i < 100 && block.moves[i] != 0; i++) {
        const int mark = static_cast<int16_t>(block.moves[moveScoreSlot + i]);
        if (i >= block.nextMove || mark == abandonedMark) picker.list.moves[restCount++] = block.moves[i];
        else if (mark == notSearchedMark) researches[researchCount++] = block.moves[i];
    }
    picker.list.moves[restCount] = 0;
    picker.index = -1;
    releaseSplitBlock(blockNumber);

    if (searchStopped()) return timeUpScore;
    if (sbNum != 0 && shared->splitBlocks[sbNum].stop) return blockStoppedScore;
    if (failedHigh && researchCount == 0) printInfo("ERROR: No move to research after beta-cutoff\n");
    for (int i = 0; i < researchCount; i++) {
        const int move = researches[i];
        board child = node;
        child.makeMove(move);
        const int score = searchMove(node, child, move, depth, alpha, beta, inCheck, true, sbNum);
        int result;
        if (takeScore(node, move, depth, score, alpha, beta, bestMove, bound, result)) return result;
    }
    return noSplit;
}

int searchtree::searchRootMovesTogether(const board& root, int depth, int from, int best) {
    if (process == nullptr || shared->processCount < 2 || !(process->slaveAvailable.wait(0) || otherProcessIdle()))
        return 0;
    // The root's block: one ply more than its children, no last move.
    const int blockNumber = openSplitBlock(0, root, depth + 1, best, mateScore, rootList.moves + from, 0);
    if (blockNumber == 0) return 0;
    searchBlockMoves(blockNumber, root, depth + 1, best, 0, true, from);
    closeSplitBlock(blockNumber, 0);

    const splitBlock& block = shared->splitBlocks[blockNumber];
    enum { finished, beatBest, unfinished };
    int placed = 0, finishedCount = 0;
    for (int kind : {finished, beatBest, unfinished}) {
        for (int i = 0; from + i < rootMoveCount; i++) {
            const int mark = static_cast<int16_t>(block.moves[moveScoreSlot + i]);
            const int found = i >= block.nextMove || mark == abandonedMark ? unfinished
                              : mark == notSearchedMark                    ? beatBest
                                                                           : finished;
            if (found != kind) continue;
            rootList.moves[from + placed] = block.moves[i];
            rootList.setScore(from + placed++, best);
            if (kind == finished) finishedCount++;
        }
    }
    releaseSplitBlock(blockNumber);
    return finishedCount;
}
