#pragma once
#include <cstdint>
#include <memory>

#include "egtb/EGTBProbe.h"
#include "parallel/sharedData.h"
#include "platform/mutex.h"
#include "platform/namedEvent.h"
#include "search/hashtable.h"

// What every searching process (the search process and the slaves) holds:
// its number, the transposition table, its tablebases, and the events and
// split-block mutexes of the parallel search.
class searchtree;

class searchProcess {
public:
    int processNumber;
    hashtable table;
    int nalimovCacheMB;
    int printInvertedScore;
    char egtbPath[1000];
    std::unique_ptr<EGTBProbe> tablebases;

    namedEvent slaveAvailable;
    namedEvent slaveAvailable2;
    namedEvent startSlave[maxProcesses];
    namedEvent splitBlockReady[splitBlockCount];
    namedMutex splitBlockMutex[splitBlockCount];

    // The table is opened when another process created it (tableExists); the
    // events and split-block mutexes are opened, waiting until they exist,
    // when objectsExist, else created.
    searchProcess(const char* instance, int processNumber, int processCount, bool tableExists, bool objectsExist,
                  int retryMs = 100);

    // A slave's life: wait for a split block, search its moves one at a time
    // for the block's owner, report, and wait again until the engine ends.
    void slaveStandBy(searchtree& tree, sharedData& shared);
    // One job: the moves of block b, taken one at a time until none is left
    // or one beats the block's alpha. Leaves this process idle.
    void helpWithBlock(searchtree& tree, sharedData& shared, int b);
};
