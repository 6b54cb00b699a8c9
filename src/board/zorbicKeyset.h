#pragma once
#include <cstdint>

// Index of a side (+1 White, -1 Black) in the piece counts, the killer tables
// and the piece keys: White 1, Black 0.
inline int sideIndex(int side) { return (side + 1) / 2; }

// Position keys. Drawn from a fixed-seed generator so that every process of
// the engine holds the same keys and can share hash tables.
class zorbicKeyset {
public:
    static constexpr int enPassantBase = 768;
    static constexpr int sideToMoveBase = 896;
    static constexpr int castleBase = 897;

    uint64_t keys[913];

    zorbicKeyset();
    uint64_t getRandom64();

    void addRemovePiece(uint64_t& key, int type, int side, int square) const {
        key ^= keys[type * 128 + sideIndex(side) * 64 + square];
    }
    void addRemoveEnpassantField(uint64_t& key, int square) const { key ^= keys[enPassantBase + square]; }
    void changeSides(uint64_t& key) const { key ^= keys[sideToMoveBase]; }
    void updateCastle(uint64_t& key, int rights) const { key ^= keys[castleBase + rights]; }

private:
    uint32_t randomState = 1;
    int nextRandom();
};
