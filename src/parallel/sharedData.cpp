#include "parallel/sharedData.h"

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
    // Its faults go out without the I/O mutex, unlike the tables'.
    if (mapping.mapReported(name, sizeof(sharedData), openInstead, "", true, retryMs))
        data = static_cast<sharedData*>(mapping.view);
}

sharedDataMapping::~sharedDataMapping() { mapping.releaseReported(""); }
