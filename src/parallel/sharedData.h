#pragma once
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "board/board.h"
#include "board/killerMoveTable.h"
#include "eval/evalWeights.h"
#include "game/chessclock.h"
#include "game/timer.h"
#include "platform/lifeline.h"
#include "platform/mutex.h"
#include "platform/namedMapping.h"
#include "platform/processLauncher.h"

inline constexpr int splitBlockCount = 100;
inline constexpr int freeSplitBlock = 9999;

// sharedData::outputMode: the front end's protocol (the console counts as xboard).
enum protocol : int32_t { xboardProtocol = 1, uciProtocol = 2 };

// sharedData::processState. Zero until the process first reports, and never
// claimed then.
enum processStateValue : int32_t { processIdle = 1, processBusy = 2 };

// A board and the key history that goes with it, as handed between processes.
struct positionImage {
    alignas(board) unsigned char image[sizeof(board)];
    uint64_t keys[150];

    void store(const board& position) {
        std::memcpy(image, &position, sizeof(board));
        std::memcpy(keys, keyHistory, sizeof keys);
    }
    // Copies the board into position and the keys into this process's keyHistory.
    void load(board& position) const {
        std::memcpy(static_cast<void*>(&position), image, sizeof(board));
        std::memcpy(keyHistory, keys, sizeof keys);
    }
};

struct splitBlock {
    int32_t owner;  // process slot of the owner, freeSplitBlock when free
    int32_t depth;
    uint16_t lastMove;
    int32_t alpha;
    int32_t beta;
    positionImage node;
    uint16_t moves[moveBufferSize];  // moves in 0..99 ended by 0, result slots in 100..199
    int32_t counter;                 // cleared when the block is claimed
    int32_t stop;                    // every node searched for the block returns at once when set
    int32_t numSlaves;
    int32_t nextMove;  // index of the next move to hand out
    int32_t reducedMoves;
    int32_t failHigh;
    int32_t parent;       // block of the node that split, 0 for none
    int32_t workingMask;  // bit p: process slot p was claimed for the block and is not back yet
    int8_t takenBy[100];  // process slot that took the move at that index

    // The block's side of the split protocol, for its owner and its slaves
    // alike; lock is the block's own mutex.
    // Hands out the next move (0 at the end of the list) to process slot
    // taker and marks it taken with the block's alpha; index says where it
    // was read.
    int takeMove(namedMutex& lock, int& index, int taker);
    // How a taken move ended: notSearchedMark (it beat alpha; also raises the
    // fail-high flag) or abandonedMark.
    void markResult(namedMutex& lock, int index, int mark);
    void countReducedMove(namedMutex& lock);
    // A slave's last step: it is back from the block.
    void leave(namedMutex& lock, int slot);
    // Takes a process that died on the block off it; the move it had in hand
    // is marked abandoned, to be searched again. False when it was not on it.
    bool dropLostProcess(namedMutex& lock, int slot);
};

// How the parallel search went, for its statistics line; counted by the
// processes that share nodes only, so a single process pays nothing.
struct parallelCounters {
    int64_t splits;    // nodes shared
    int64_t mtWaits;   // takes of the MT mutex that found it held
    int64_t timeouts;  // waits for a block's slaves that ran out
    int64_t noBlock;   // shares given up for want of a free block
    int32_t blocksInUse;
    int32_t blocksPeak;
};

// The record every engine process maps: search clock, killer table, game
// state, switches, split blocks and the positions handed over.
struct sharedData {
    timer timer1;
    killerMoveTable killers;

    // game controller and search process
    int32_t searchLoopRunFlag;
    int32_t searchCommand;
    int32_t outputMode;  // xboardProtocol or uciProtocol
    int32_t maxDepth;
    int32_t postFlag;
    int32_t ponderingActive;
    chessclock clock;
    uint16_t moveHistory[1000];
    int32_t undoLimitPly;
    positionImage searchPosition;
    uint16_t pendingEngineMove;
    uint16_t ponderResultMove;
    uint64_t ponderKey;
    int32_t ponderStartTime;

    // root search
    uint16_t rootMoves[100];
    int16_t rootScores[100];
    positionImage rootPosition;
    int32_t rootBestScore;
    int32_t rootMoveNumber;
    int32_t rootDepth;     // iteration being searched, as printed
    int64_t nodeLimit;     // the search stops at this many nodes; 0: no limit
    int32_t untilStopped;  // an infinite search: its move waits for the front end's stop

    // search switches
    int32_t enable_EGTB;
    int32_t enable_NMP;
    int32_t enable_LMP;
    int32_t enable_FUTPRUN;
    int32_t enable_EXTENTIONS;
    int32_t enable_BOOK;

    splitBlock splitBlocks[splitBlockCount];
    positionImage slavePosition;

    int32_t processCount;
    int32_t allSearchprocesEnabled;
    int32_t processState[maxProcesses];  // processIdle: available for a split; processBusy
    int32_t assignedSplitBlock[maxProcesses];
    int32_t waitingForBlock[maxProcesses];  // block an owner waits for while idle, 0 none: a claim wakes it there
    int32_t processLost[maxProcesses];      // died or never came back from a block: not claimed again
    lifeline lifelines[maxProcesses];       // held by each role process while it lives
    int32_t runFlag;
    int64_t nodeTotals[2];              // alphaBeta nodes, quiescence nodes
    parallelCounters counters;          // cleared at the start of every search
    int32_t processesReady;             // role processes that have opened every object
    publishedEvalWeights tunedWeights;  // the tuner's weights, for the slaves
};

static_assert(std::is_trivially_copyable_v<sharedData>);
static_assert(std::is_standard_layout_v<sharedData>);

// Creates (user-interface process) or opens (role processes) the mapping of
// the record.
class sharedDataMapping {
public:
    namedMapping mapping;
    sharedData* data = nullptr;

    sharedDataMapping(const char* instance, bool openInstead, int retryMs = 100);
    ~sharedDataMapping();
};
