#include "parallel/sharedData.h"

int splitBlock::takeMove(namedMutex& lock, int& index, int taker) {
    lockGuard held(lock);
    index = nextMove;
    if (index >= 100) return 0;
    const int move = moves[index];
    moves[moveScoreSlot + index] = static_cast<uint16_t>(alpha);
    takenBy[index] = static_cast<int8_t>(taker);
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

void splitBlock::leave(namedMutex& lock, int slot) {
    lockGuard held(lock);
    numSlaves--;
    // One store: a slave that dies here is either on the block or off it.
    workingMask &= ~(1 << slot);
}

bool splitBlock::dropLostProcess(namedMutex& lock, int slot) {
    lockGuard held(lock);
    if (!(workingMask >> slot & 1)) return false;
    // Its moves are taken one after another: only the last can be unfinished.
    for (int i = nextMove - 1; i >= 0; i--) {
        if (takenBy[i] != slot) continue;
        if (static_cast<int16_t>(moves[moveScoreSlot + i]) != notSearchedMark)
            moves[moveScoreSlot + i] = static_cast<uint16_t>(abandonedMark);
        break;
    }
    numSlaves--;
    workingMask &= ~(1 << slot);
    return true;
}

sharedDataMapping::sharedDataMapping(const char* instance, bool openInstead, int retryMs) {
    char name[160];
    objectName(name, sizeof name, "sharedData", instance);
    // Its faults go out without the I/O mutex, unlike the tables'.
    if (mapping.mapReported(name, sizeof(sharedData), openInstead, "", true, retryMs))
        data = static_cast<sharedData*>(mapping.view);
}

sharedDataMapping::~sharedDataMapping() { mapping.releaseReported(""); }
