#include "eval/evalHashtable.h"

#include <gtest/gtest.h>

#include "../support/sharedTable.h"

namespace {

constexpr int miss = evalHashtable::missValue;
constexpr uint64_t keyA = 0x9E3779B97F4A7C15ULL;

}  // namespace

TEST(evalHashtable, StoresScoresAlwaysReplacesAndComparesTheUpper48KeyBits) {
    const sharedTableName name{"sharedEvalHashtable", "TestEH-"};
    evalHashtable t(name.instance.c_str(), 1, false);
    EXPECT_EQ(t.probe(keyA), miss);
    EXPECT_EQ(t.probe(0x1234), 0);  // a zero word hits every key whose upper 48 bits are zero
    for (int score : {1, -2, 250, 32767, -32768}) {
        t.store(keyA, score);
        EXPECT_EQ(t.probe(keyA), score);
    }

    const uint64_t other = keyA + 7 * 65536;  // same slot, another position
    t.store(other, 99);
    EXPECT_EQ(t.probe(keyA), miss);
    EXPECT_EQ(t.probe(other), 99);

    // Keys apart only in the low 16 bits never share a slot; copy the word over to see what is compared.
    const uint64_t first = 0xABCDEF0123450101ULL, second = 0xABCDEF0123452202ULL;
    t.store(first, 321);
    t.entries[t.index(second)] = t.entries[t.index(first)];
    EXPECT_EQ(t.probe(second), 321);
    EXPECT_EQ(t.probe(second ^ (1ULL << 16)), miss);

    t.store(keyA | 0xFFFF, 5);  // the last slot
    t.reset();
    EXPECT_EQ(t.probe(other), miss);
    EXPECT_EQ(t.probe(keyA | 0xFFFF), miss);
}
