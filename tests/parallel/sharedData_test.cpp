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
        EXPECT_EQ(block->takeMove(lock, index, 1 + i % 2), moves[std::min(i, 3)]);
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

    // Slot 1 took moves 0 and 2, slot 2 move 1, slot 3 none. A slave that dies on the block leaves it with
    // the move it had in hand abandoned, but a fail-high mark stays; one that left is not on it any more.
    block->workingMask = 0b1110;
    block->numSlaves = 3;
    block->moves[moveScoreSlot + 2] = static_cast<uint16_t>(-35);
    block->markResult(lock, 1, notSearchedMark);
    block->leave(lock, 3);
    EXPECT_FALSE(block->dropLostProcess(lock, 3));
    EXPECT_TRUE(block->dropLostProcess(lock, 2));
    EXPECT_EQ(slot(1), notSearchedMark);
    EXPECT_TRUE(block->dropLostProcess(lock, 1));
    EXPECT_EQ(slot(2), abandonedMark);
    EXPECT_FALSE(block->dropLostProcess(lock, 1));
    EXPECT_EQ(block->workingMask, 0);
    EXPECT_EQ(block->numSlaves, 0);
    shm_unlink(name.c_str());
}
