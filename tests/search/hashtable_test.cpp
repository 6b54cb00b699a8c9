#include "search/hashtable.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <iterator>
#include <memory>

#include "../support/process.h"
#include "../support/sharedTable.h"

namespace {

constexpr int miss = hashtable::missValue, upper = hashtable::upperBound, lower = hashtable::lowerBound,
              exact = hashtable::exactBound;
constexpr uint64_t keyA = 0x9E3779B97F4A7C15ULL, slots = 65536;
const auto pack = hashtable::pack;

class hashtableTest : public ::testing::Test {
protected:
    const sharedTableName name{"sharedHashtable", "TestTT-"};
    const std::string& instance = name.instance;

    std::unique_ptr<hashtable> table() { return std::make_unique<hashtable>(instance.c_str(), 1, false); }
};

}  // namespace

TEST_F(hashtableTest, ProbeNeedsKeyAndDepthBoundsCutFailHardAndATornEntryMisses) {
    auto t = table();
    t->recordHash(keyA, 5, 0, -123, exact, 0x1234);
    t->recordHash(keyA + 1, 4, 0, 30, upper, 0);
    t->recordHash(keyA + 2, 4, 0, 30, lower, 0);
    // Below: another key in the slot, an empty slot, and a zero entry (key 0, upper bound 0).
    const struct {
        uint64_t key;
        int depth, alpha, beta, expected;
    } cases[] = {
        {keyA, 5, -100, 100, -123},     {keyA, 6, -100, 100, miss}, {keyA + slots, 0, -100, 100, miss},
        {keyA + 3, 0, -100, 100, miss}, {keyA + 1, 4, 50, 60, 50},  {keyA + 1, 4, 30, 60, 30},
        {keyA + 1, 4, 20, 60, miss},    {keyA + 2, 4, 0, 20, 20},   {keyA + 2, 4, 0, 30, 30},
        {keyA + 2, 4, 0, 40, miss},     {0, 0, 10, 20, 10},         {0, 1, 10, 20, miss},
    };
    for (const auto& c : cases)
        EXPECT_EQ(t->probeHash(c.key, c.depth, c.alpha, c.beta), c.expected) << c.key % 8 << " @" << c.depth;

    t->recordHash(keyA + 5, 3, -3, 0, exact, 0);  // a negative ply keeps its signed remainder, in six bits
    EXPECT_EQ(hashtable::storedAge(t->probeBestMove(keyA + 5)), 61);

    t->entries[2 * (keyA % slots) + 1] ^= 1ULL << 32;  // half written: a miss, not another position's data
    EXPECT_EQ(t->probeBestMove(keyA), 0u);
    EXPECT_EQ(t->probeHash(keyA, 0, -100, 100), miss);
}

TEST_F(hashtableTest, DeeperResultsOfTheSameSearchOwnTheSlotAndMoveZeroErasesNoMove) {
    auto t = table();
    const uint64_t other = keyA + slots;  // same slot, another position
    const uint64_t first = pack(0x111, 8, 10, 100, exact);
    const struct {
        uint64_t key;
        int depth, age, score, bound, move;
        uint64_t owner, data;
    } steps[] = {
        {keyA, 8, 10, 100, exact, 0x111, keyA, first},
        {keyA, 5, 10, 50, exact, 0x222, keyA, first},   // same search, shallower: not even the move
        {keyA, 5, 74, 50, exact, 0x222, keyA, first},   // ply 74 is the same search number
        {other, 7, 10, 50, exact, 0x333, keyA, first},  // nor another position
        {keyA, 5, 11, 50, lower, 0x222, keyA, pack(0x222, 8, 10, 100, exact)},  // later search: only its move
        {keyA, 9, 11, 20, exact, 0, keyA, pack(0x222, 9, 11, 20, exact)},       // deeper: replaced, move kept
        {keyA, 9, 11, 25, exact, 0, keyA, pack(0x222, 9, 11, 20, exact)},       // kept, no move: nothing written
        {other, 1, 12, -7, upper, 0, other, pack(0, 1, 12, -7, upper)},         // later search takes the slot whole
    };
    for (size_t i = 0; i < std::size(steps); ++i) {
        const auto& s = steps[i];
        t->recordHash(s.key, s.depth, s.age, s.score, s.bound, s.move);
        EXPECT_EQ(t->probeBestMove(s.owner), s.data) << "step " << i;
        EXPECT_EQ(t->probeBestMove(s.owner == keyA ? other : keyA), 0u) << "step " << i;
    }
}

TEST_F(hashtableTest, AtEqualDepthOnlyANewerBoundOrEntryReplacesABound) {
    const struct {
        int storedBound, newBound, newScore;
        bool overwritten;
    } steps[] = {
        // stored score 30
        {upper, upper, 40, false}, {upper, upper, 30, false}, {upper, upper, 20, true},  {upper, lower, 40, true},
        {upper, exact, 40, true},  {lower, lower, 20, false}, {lower, lower, 30, false}, {lower, lower, 40, true},
        {lower, upper, 10, true},  {lower, exact, 10, true},  {exact, exact, 40, false}, {exact, upper, 10, false},
        {exact, lower, 90, false},
    };
    auto t = table();
    uint64_t key = keyA;
    for (const auto& s : steps) {
        t->recordHash(key += 17, 6, 3, 30, s.storedBound, 0x100);
        t->recordHash(key, 6, 4, s.newScore, s.newBound, 0x200);  // a later search, so a replacement shows
        EXPECT_EQ(t->probeBestMove(key),
                  s.overwritten ? pack(0x200, 6, 4, s.newScore, s.newBound) : pack(0x200, 6, 3, 30, s.storedBound))
            << "stored bound " << s.storedBound << ", new " << s.newBound << "/" << s.newScore;
    }
}

TEST_F(hashtableTest, SizeSettingChoosesTheEntryCountAndTheIndexIsTheKeyModuloIt) {
    const int fallback = hashtable::defaultEntryCount;
    expectSizeSettings<hashtable>(instance,
                                  {
                                      {"pref:size-hashtable=64   (in MB)\n", 0x400000},
                                      {"pref:size-hashtable=3.9\n", 3 * 65536},  // truncated, and no power of two
                                      {"pref:size-hashtable=0\n", fallback},
                                      {"pref:size-hashtable=4096\n", fallback},
                                      {nullptr, fallback},
                                  });
    EXPECT_EQ(hashtable::entriesForSize(4095), 4095 * 65536);
}

TEST_F(hashtableTest, ProcessesShareTheTableByNameAndSetUpAndTeardownReport) {
    auto parent = table();
    ASSERT_TRUE(parent->ready);
    const uint64_t lastSlot = keyA | 0xFFFF;
    parent->recordHash(lastSlot, 3, 0, 9, exact, 0x99);
    int status = -1;
    inChild(
        [&] {
            hashtable child(instance.c_str(), 2, true);  // the creator's size wins
            child.recordHash(keyA + 2, 2, 0, 17, lower, 0x456);
            _exit(child.ready && child.entryCount == 65536 ? 0 : 1);
        },
        &status);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(parent->probeBestMove(lastSlot), 0u);  // opening clears the whole table
    EXPECT_EQ(parent->probeBestMove(keyA + 2), pack(0x456, 2, 0, 17, lower));

    // A table without mapping ignores everything.
    EXPECT_EQ(printed([&] {
                  hashtable broken("no/such/name", 1, false);  // not a valid object name
                  EXPECT_FALSE(broken.ready);
                  broken.recordHash(0, 5, 0, 10, exact, 0x77);
                  EXPECT_EQ(broken.probeHash(0, 0, 10, 20), miss);
                  EXPECT_EQ(broken.probeBestMove(0), 0u);
                  broken.reset();
              }),
              "ERROR! Could not create file mapping object sharedHashtable.\n");
    EXPECT_EQ(printed([&] { parent.reset(); }),
              "unmapping sharedHashtable....\nGetting rid of handle sharedHashtable....\n");
}
