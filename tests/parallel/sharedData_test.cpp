#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

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

    int index = -1;
    for (int i = 0; i < 3; i++) {
        EXPECT_EQ(block->takeMove(lock, index), moves[i]);
        EXPECT_EQ(index, i);
        EXPECT_EQ(slot(i), -35);  // taken: the block's alpha
    }
    // The end of the list is handed out to every later taker; its slot is marked too.
    for (int i = 0; i < 2; i++) {
        EXPECT_EQ(block->takeMove(lock, index), 0);
        EXPECT_EQ(index, 3);
        EXPECT_EQ(block->nextMove, 3);
    }
    EXPECT_EQ(slot(3), -35);

    block->markResult(lock, 0, abandonedMark);
    EXPECT_EQ(slot(0), abandonedMark);
    EXPECT_EQ(block->failHigh, 0);
    block->markResult(lock, 2, notSearchedMark);
    EXPECT_EQ(slot(2), notSearchedMark);
    EXPECT_EQ(block->failHigh, 1);
    block->countReducedMove(lock);
    EXPECT_EQ(block->reducedMoves, 1);
    shm_unlink(name.c_str());
}
