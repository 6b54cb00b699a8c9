#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <string>

#include "parallel/sharedData.h"

// The split block's own side of the protocol, as owner and slaves use it.
TEST(SplitBlock, HandsOutEachMoveOnceAndMarksHowItEnded) {
    const std::string name = "/TestBlock-" + std::to_string(getpid());
    namedMutex lock;
    ASSERT_TRUE(lock.create(name.c_str()));
    auto block = std::make_unique<splitBlock>();
    block->alpha = -35;
    const uint16_t moves[] = {101, 202, 303, 0};
    for (int i = 0; i < 4; i++) {
        block->moves[i] = moves[i];
        block->moves[moveScoreSlot + i] = 7;  // ordering scores before the split
    }
    auto slot = [&](int i) { return static_cast<int16_t>(block->moves[moveScoreSlot + i]); };
    // Taken: marked with the block's alpha. The end of the list goes to every later taker.
    for (int i = 0; i < 5; i++) {
        int index = -1;
        EXPECT_EQ(block->takeMove(lock, index), moves[std::min(i, 3)]);
        EXPECT_EQ(index, std::min(i, 3));
        EXPECT_EQ(slot(index), -35);
    }
    EXPECT_EQ(block->nextMove, 3);
    block->markResult(lock, 0, abandonedMark);
    EXPECT_EQ(slot(0), abandonedMark);
    EXPECT_EQ(block->failHigh, 0);
    block->markResult(lock, 2, notSearchedMark);
    EXPECT_EQ(slot(2), notSearchedMark);
    EXPECT_EQ(block->failHigh, 1);  // only a move that beat alpha raises it
    block->countReducedMove(lock);
    EXPECT_EQ(block->reducedMoves, 1);
    shm_unlink(name.c_str());
}
