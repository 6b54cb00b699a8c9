#include "board/zorbicKeyset.h"

int zorbicKeyset::nextRandom() {
    randomState = randomState * 214013u + 2531011u;
    return (randomState >> 16) & 0x7FFF;
}

uint64_t zorbicKeyset::getRandom64() {
    uint64_t r1 = nextRandom();
    uint64_t r2 = nextRandom();
    uint64_t r3 = nextRandom();
    uint64_t r4 = nextRandom();
    uint64_t r5 = nextRandom();
    return r1 ^ (r2 << 15) ^ (r3 << 30) ^ (r4 << 45) ^ (r5 << 60);
}

zorbicKeyset::zorbicKeyset() {
    for (int type = 0; type < 7; type++)
        for (int colour = 0; colour < 2; colour++)
            for (int square = 0; square < 64; square++) keys[type * 128 + colour * 64 + square] = getRandom64();
    keys[enPassantBase] = 0;
    keys[832] = 0;
    keys[sideToMoveBase] = getRandom64();
    uint64_t single[4];
    for (uint64_t& c : single) c = getRandom64();
    for (int rights = 0; rights < 16; rights++) {
        uint64_t key = 0;
        for (int bit = 0; bit < 4; bit++)
            if (rights & (1 << bit)) key ^= single[bit];
        keys[castleBase + rights] = key;
    }
}
