#include "parallel/sharedData.h"

#include <cstdio>

#include "platform/console.h"

int splitBlock::takeMove(namedMutex& lock, int& index) {
    lockGuard held(lock);
    index = nextMove;
    if (index >= 100) return 0;
    const int move = moves[index];
    moves[moveScoreSlot + index] = static_cast<uint16_t>(alpha);
    if (move != 0) nextMove++;
    return move;
}

void splitBlock::markResult(namedMutex& lock, int index, int mark) {
    lockGuard held(lock);
    moves[moveScoreSlot + index] = static_cast<uint16_t>(mark);
    if (mark == notSearchedMark) failHigh = 1;
}

void splitBlock::countReducedMove(namedMutex& lock) {
    lockGuard held(lock);
    reducedMoves++;
}

sharedDataMapping::sharedDataMapping(const char* instance, bool openInstead, int retryMs) {
    char name[160];
    objectName(name, sizeof name, "sharedData", instance);
    const namedMapping::result result = mapping.createOrOpen(name, sizeof(sharedData), openInstead, retryMs);
    if (result == namedMapping::notCreated) {
        writeInfo("ERROR! Could not create file mapping object.\n");
        return;
    }
    if (result == namedMapping::notMapped) {
        writeInfo("ERROR! Could not map view of file.\n");
        mapping.closeHandle();
        return;
    }
    data = static_cast<sharedData*>(mapping.view);
}

sharedDataMapping::~sharedDataMapping() {
    if (mapping.view) {
        printInfo("unmapping....\n");
        mapping.unmap();
    }
    if (mapping.handle >= 0) {
        printInfo("Getting rid of handle....\n");
        mapping.closeHandle();
    }
}
