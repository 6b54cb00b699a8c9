#pragma once
#include <cstdint>

#include "board/board.h"
#include "parallel/sharedData.h"
#include "search/hashtable.h"
#include "search/movelist.h"

inline constexpr int timeUpScore = -16300;
inline constexpr int blockStoppedScore = 16302;
inline constexpr int stalemateSentinel = 195;
inline constexpr int checkmateSentinel = 130;
// Futility pruning one and two plies from the horizon.
inline constexpr int futilityMargin = 350;
inline constexpr int futilityMargin2 = 500;

// A child's score that says its search was abandoned (time up, block stopped).
inline bool isAbort(int score) { return score == -blockStoppedScore || score == -timeUpScore; }

class EGTBProbe;
class moveGenerator;
class searchProcess;

// The search of one engine process: iterative deepening at the root, the
// fail-hard alpha-beta below it and the capture search at its leaves. Shared
// state (clock, switches, killers, node totals) lives in the shared record.
class searchtree {
public:
    sharedData* shared;
    hashtable* table;
    int processSlot;                        // this process's index among the engine processes
    searchProcess* process = nullptr;       // events and block mutexes; none in a single-process search
    bool printInvertedScore;                // thinking scores from White's view
    int64_t nodes[2] = {0, 0};              // alphaBeta and quiescence nodes since the last report
    const EGTBProbe* tablebases = nullptr;  // set when tables were found

    movelist rootList;
    int rootMoveCount = 0;
    int completedDepth = 0;  // last iteration started, as printed (d + 1)

    searchtree(sharedData* shared, hashtable* table, int processSlot, bool printInvertedScore);

    // Best move, or the checkmate/stalemate sentinel when there is none.
    int rootSearch(const board& position);
    int alphaBeta(int lastMove, board& position, int depth, int alpha, int beta, int sbNum);
    int quiescence(int lastMove, board& position, int alpha, int beta);

    // Appends the principal variation that the table holds after firstMove.
    void printThinking(const board& position, int firstMove, char* out, int size) const;
    void printThinkingLine(const board& position, int depthShown, int score, int firstMove);

    // The moves of split block b, searched for it by its owner or by one of
    // its slaves alike: taken one at a time, each at a null window on the
    // block's alpha, until the list ends, a move beats alpha or is abandoned,
    // or (owner) the block has failed high. rootFrom >= 0 marks a root block
    // whose moves start at that index of the root list.
    void searchBlockMoves(int b, const board& node, int depth, int alpha, int lastMove, bool owner, int rootFrom = -1);

private:
    static constexpr int noSplit = 32000;  // no score: the node goes on serially
    static constexpr int maxWatchedBlocks = 64;
    // Nodes from this remaining depth on are shared once their first move is
    // searched: a split costs a few microseconds, so even small subtrees pay.
    static constexpr int minSplitDepth = 3;

    // The blocks whose moves this process searches as their owner, innermost
    // last: a slave's fail-high in one of them makes the owner's own move
    // pointless, so the owner's nodes look at them now and then.
    int watchedBlocks[maxWatchedBlocks];
    int watchedBlockCount = 0;

    // One move of a node, with extension, futility, reduction and re-searches.
    int searchMove(const board& node, board& child, int move, int depth, int alpha, int beta, bool inCheck, bool first,
                   int sbNum);
    // Takes one searched move's score into the node: true when the node ends
    // here, with its value in result (mate, cut-off, abort).
    bool takeScore(const board& node, int move, int depth, int score, int& alpha, int beta, int& bestMove, int& bound,
                   int& result);
    // Hands the node's remaining moves to idle processes and searches them
    // together. The node's result when it ends there (cut-off, mate, abort);
    // otherwise noSplit, with alpha, bestMove and bound brought up to date
    // and the moves still to search left in the picker.
    int split(int lastMove, board& node, int depth, int& alpha, int beta, moveGenerator& picker, int& bestMove,
              int& bound, bool inCheck, int sbNum);
    int alphaBetaMaster(int blockNumber, int lastMove, board& node, int depth, int& alpha, int beta,
                        moveGenerator& picker, int& bestMove, int& bound, bool inCheck, int sbNum);
    // Claims every idle process and a free split block for the node's moves
    // (ended by 0) and wakes the claimed processes; the block number, or 0
    // when there is not enough to share, nobody to share with or no block.
    int openSplitBlock(int lastMove, const board& node, int depth, int alpha, int beta, const uint16_t* moves,
                       int sbNum);
    // After the owner's own part: stops the block when it failed high or the
    // search ends, and waits for its slaves. True when it failed high.
    bool closeSplitBlock(int blockNumber, int sbNum);
    // Finds a free split block (or one left by a dead owner), makes it this
    // process's and fills it with the node; its number, or 0 when none is free.
    int takeFreeBlock(int lastMove, const board& node, int depth, int alpha, int beta, const uint16_t* moves, int count,
                      int sbNum);
    void releaseSplitBlock(int blockNumber);
    void countBlocksInUse(int change);
    // Waits until the block's slaves are back, helping them meanwhile.
    void waitForSlaves(int blockNumber);
    // One job for a block that claimed this process while it waited.
    void helpWhileWaiting(int blockNumber);
    // Stops the block and every block split below it.
    void stopBlock(int blockNumber);
    // Stops the watched blocks in which a slave's move has beaten alpha.
    void stopFailedBlocks();
    // A claimed slave's death is looked for this often while its owner waits.
    static constexpr int lifelineCheckMs = 10;
    // A block whose owner has died and on which no live process works.
    bool abandonedBlock(int blockNumber);
    // Process p has died (or never came back): it is not claimed again, its
    // blocks are stopped, and the engine says so, once.
    void noteLostProcess(int p);
    // Takes the dead processes off the block; true when there were any.
    bool dropLostProcesses(int blockNumber);
    // True when another process is idle: one back from a block is idle a
    // moment before it signals so, and a node that missed the signal would
    // go on alone until its next move is searched.
    bool otherProcessIdle() const;
    // Searches the root moves from the index from on together with idle
    // processes, each at a null window on best. The moves found not to beat
    // best are placed first (from on, score best), then those that beat it,
    // then the unfinished ones; returns how many were found not to beat
    // best (0 when nobody could be claimed).
    int searchRootMovesTogether(const board& root, int depth, int from, int best);
    // Sets the root move being searched, for "stat01" and UCI's currmove.
    void announceRootMove(int i);
    bool searchStopped() const {
        return shared->timer1.timeIsUp() || shared->allSearchprocesEnabled == 0 || nodeLimitReached();
    }
    bool nodeLimitReached() const {
        return shared->nodeLimit != 0 &&
               nodes[0] + nodes[1] + shared->nodeTotals[0] + shared->nodeTotals[1] >= shared->nodeLimit;
    }
    void reportNodes();
};

// True when the position's key occurs within its reversible-move window.
bool isRepetition(const board& position);
void printMove(int move);
