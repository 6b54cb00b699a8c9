#include <gtest/gtest.h>

#include "board/zorbicKeyset.h"

TEST(ZorbicKeyset, DrawnFromTheSeedOneGenerator) {
    static zorbicKeyset keys;
    // The first five values of the generator seeded with 1.
    const uint64_t r[5] = {41, 18467, 6334, 26500, 19169};
    EXPECT_EQ(keys.keys[0], r[0] ^ (r[1] << 15) ^ (r[2] << 30) ^ (r[3] << 45) ^ (r[4] << 60));

    static zorbicKeyset again;
    for (int i = 0; i < 913; i++) ASSERT_EQ(keys.keys[i], again.keys[i]) << i;
}

TEST(ZorbicKeyset, FixedEntriesAndCastleComposition) {
    static zorbicKeyset z;
    EXPECT_EQ(z.keys[768], 0u);
    EXPECT_EQ(z.keys[832], 0u);
    EXPECT_EQ(z.keys[897], 0u);
    EXPECT_NE(z.keys[896], 0u);
    for (int rights = 0; rights < 16; rights++) {
        uint64_t expected = 0;
        for (int bit : {1, 2, 4, 8})
            if (rights & bit) expected ^= z.keys[897 + bit];
        EXPECT_EQ(z.keys[897 + rights], expected) << rights;
    }
    uint64_t key = 12345;
    z.addRemoveEnpassantField(key, 0);
    EXPECT_EQ(key, 12345u);
    z.addRemovePiece(key, 3, -1, 20);
    EXPECT_EQ(key, 12345u ^ z.keys[3 * 128 + 0 + 20]);
    z.addRemovePiece(key, 3, -1, 20);
    EXPECT_EQ(key, 12345u);
}
