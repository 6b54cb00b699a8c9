#include <cstdio>
#include <cstring>

#include "egtb/EGTBProbe.h"
#include "platform/console.h"
#include "platform/mutex.h"
#include "search/searchtree.h"

namespace {

// Appends formatted text, cut at the end of the buffer.
template <class... values>
void append(char* out, int size, const char* format, values... v) {
    const int length = static_cast<int>(strlen(out));
    if (length < size - 1) snprintf(out + length, size - length, format, v...);
}

}  // namespace

void printMove(int move) {
    char text[10];
    moveToText(move, text);
    printf("%s", text);
}

void searchtree::reportNodes() {
    shared->nodeTotals[0] += nodes[0];
    shared->nodeTotals[1] += nodes[1];
    nodes[0] = nodes[1] = 0;
}

void searchtree::announceRootMove(int i) {
    shared->rootMoveNumber = i + 1;
    if (shared->outputMode == uciProtocol && shared->postFlag && shared->timer1.getTimePassedBy() > 1000) {
        char text[10];
        moveToText(rootList.moves[i], text, true);
        printLine("info currmovenumber %d currmove %s\n", i + 1, text);
    }
}

void searchtree::printThinking(const board& position, int firstMove, char* out, int size) const {
    board b = position;
    for (int move = firstMove, count = 0; move != 0 && count < 64; count++) {
        if (isRepetition(b)) break;
        char text[10];
        moveToText(move, text, shared->outputMode == uciProtocol);
        append(out, size, "%s ", text);
        b.makeMove(move);
        move = static_cast<uint16_t>(table->probeBestMove(b.boardKey));
        const int us = colourOf(b.toMove);
        if (move != 0 && !(b.bb[NOPIECE][us] >> moveFrom(move) & 1)) break;
    }
    append(out, size, "%s", "\n");
}

void searchtree::printThinkingLine(const board& position, int depthShown, int score, int firstMove) {
    if (!shared->postFlag) return;
    reportNodes();
    const long long n = shared->nodeTotals[0] + shared->nodeTotals[1];
    const long long t = shared->timer1.getTimePassedBy() / 10;
    if (printInvertedScore && position.toMove == -1) score = -score;
    char line[1200] = "";
    if (shared->outputMode == uciProtocol)
        append(line, sizeof line, "info depth %d score cp %d time %lld nodes %lld nps %lld pv ", depthShown, score, t,
               n, t ? n / t : 0);
    else append(line, sizeof line, " %d  %d  %lld  %lld ", depthShown, score, t, n);
    printThinking(position, firstMove, line, sizeof line);
    printLine("%s", line);
}

int searchtree::rootSearch(const board& position) {
    shared->killers.reset();
    nodes[0] = nodes[1] = 0;
    shared->nodeTotals[0] = shared->nodeTotals[1] = 0;
    parallelCounters& counters = shared->counters;
    counters.splits = counters.mtWaits = counters.timeouts = counters.noBlock = 0;
    counters.blocksPeak = counters.blocksInUse;  // blocks of a dead helper may wait to be taken again
    shared->processState[processSlot] = processBusy;
    // A helper that died between searches is noted now, not at its first claim.
    for (int p = 1; process != nullptr && p < shared->processCount && p < maxProcesses; p++)
        if (!shared->processLost[p] && shared->lifelines[p].cut()) noteLostProcess(p);
    board root = position;
    root.rootPly = root.ply;
    shared->rootPosition.store(root);

    uint16_t legal[moveBufferSize];
    root.generateLegalMoves(legal);
    if (tablebases && shared->enable_EGTB) tablebases->filterRootMoves(root, legal);
    rootMoveCount = 0;
    while (legal[rootMoveCount] != 0 && rootMoveCount < maxMovesPerList) {
        rootList.moves[rootMoveCount] = legal[rootMoveCount];
        rootList.setScore(rootMoveCount, 0);
        rootMoveCount++;
    }
    rootList.moves[rootMoveCount] = 0;
    memcpy(shared->rootMoves, rootList.moves, sizeof shared->rootMoves);

    if (rootMoveCount == 0) return root.inCheck() ? checkmateSentinel : stalemateSentinel;
    if (rootMoveCount == 1) return rootList.moves[0];

    const bool uci = shared->outputMode == uciProtocol;
    const bool post = shared->postFlag != 0;
    int previous = root.evaluate(-mateScore, mateScore);
    int bestMove = rootList.moves[0];
    int movesSearched = 0;
    bool onlyFirstMove = false;
    int d = 0;
    for (;; d++) {
        completedDepth = d + 1;
        shared->rootDepth = d + 1;
        const int first = rootList.moves[0];
        announceRootMove(0);
        board child = root;
        child.makeMove(first);
        int score = -alphaBeta(first, child, d, -(previous + 100), 100 - previous, 0);
        if (!isAbort(score) && (score >= previous + 100 || score <= previous - 100)) {
            child = root;
            child.makeMove(first);
            score = -alphaBeta(first, child, d, -mateScore, mateScore, 0);
        }
        if (shared->processCount > 0) {
            lockGuard mt(mutex::mt);
            // The last slot, not this process's own, which stays busy: kept, it
            // decides which processes the next splits can claim.
            shared->processState[shared->processCount - 1] = processIdle;
        }
        if (isAbort(score) || searchStopped()) {
            onlyFirstMove = true;
            break;
        }
        bestMove = first;
        movesSearched = 1;
        shared->rootBestScore = score;
        if (score == mateScore) {
            if (post) printInfo(" winning move, break!\n");
            break;
        }
        rootList.setScore(0, score);
        int best = score;
        printThinkingLine(root, d + 1, score, first);

        for (int i = 1; i < rootMoveCount; i++) {
            if (searchStopped() || best == mateScore) break;
            i += searchRootMovesTogether(root, d, i, best);
            movesSearched = i;
            if (i == rootMoveCount) break;
            const int move = rootList.moves[i];
            announceRootMove(i);
            child = root;
            child.makeMove(move);
            score = -alphaBeta(move, child, d, -best - 1, -best, 0);
            if (!isAbort(score) && score > best) {
                child = root;
                child.makeMove(move);
                score = -alphaBeta(move, child, d, -mateScore, mateScore, 0);
            }
            if (isAbort(score)) {
                rootList.setScore(i, abandonedMark);
                break;
            }
            rootList.setScore(i, score);
            movesSearched = i + 1;
            if (score > best) {
                best = score;
                bestMove = move;
                shared->rootBestScore = score;
                printThinkingLine(root, d + 1, score, move);
            }
        }
        rootList.sortAfterSearch(movesSearched);
        memcpy(shared->rootMoves, rootList.moves, sizeof shared->rootMoves);
        previous = best;

        if (searchStopped() || best == mateScore) break;
        if (best == -mateScore) {
            if (post) printInfo(" depth=%d all losing moves, break!\n", d + 1);
            break;
        }
        shared->killers.resetKillers();
        if (d >= shared->maxDepth) break;
    }

    // The statistics are not part of either protocol: info strings under UCI.
    char statistics[600] = "";
    if (post) {
        if (onlyFirstMove) {
            append(statistics, sizeof statistics, " depth=%d only first move examined\n", d + 1);
        } else {
            append(statistics, sizeof statistics, " depth=%d\n moves searched=%d", d + 1, movesSearched);
            append(statistics, sizeof statistics, "pShared->allSearchprocesEnabled=%d\n",
                   shared->allSearchprocesEnabled);
            append(statistics, sizeof statistics, "pShared->timer1.timeIsUp()=%d\n", shared->timer1.timeIsUp() ? 1 : 0);
        }
    }
    reportNodes();
    const long long total = shared->nodeTotals[0] + shared->nodeTotals[1];
    const int elapsed = shared->timer1.getTimePassedBy();
    char text[10];
    moveToText(bestMove, text, uci);
    append(statistics, sizeof statistics, " Nodes=%lld\n", total);
    if (elapsed > 0)
        append(statistics, sizeof statistics, " average speed= %lld.kNPS  total time elapsed= %d\n", total / elapsed,
               elapsed);
    if (shared->processCount > 1)
        append(statistics, sizeof statistics,
               " splits=%lld blocks in use=%d peak=%d MT waits=%lld (%lld/s) no free block=%lld time-outs=%lld\n",
               static_cast<long long>(counters.splits), counters.blocksInUse, counters.blocksPeak,
               static_cast<long long>(counters.mtWaits),
               elapsed > 0 ? static_cast<long long>(counters.mtWaits) * 1000 / elapsed : 0LL,
               static_cast<long long>(counters.noBlock), static_cast<long long>(counters.timeouts));
    append(statistics, sizeof statistics, " foundmove=%s\n\n", text);
    printInfo("%s", statistics);
    return bestMove;
}
