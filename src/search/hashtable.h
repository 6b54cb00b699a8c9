#pragma once
#include <atomic>
#include <cstdint>

#include "platform/namedMapping.h"

// The transposition table: one flat array of 16-byte entries in a named
// shared mapping, read and written by every engine process without locks.
//
// Entry: check word (key XOR data word), then the data word:
//   bits  0-15 move, 32-47 score (signed 16-bit), 48-53 depth,
//   54-59 age (root ply modulo 64), 60-61 bound (0 upper, 1 lower, 2 exact).
// A torn entry (two writers at once) fails the XOR test and reads as a miss.
class hashtable {
public:
    static constexpr int defaultEntryCount = 2097152;  // 32 MB
    static constexpr int maskedEntryCount = 0x400000;  // 64 MB: the one size indexed by a mask
    static constexpr uint64_t indexMask = 0x3FFFFF;
    static constexpr uint64_t moveClearMask = ~uint64_t{0xFFFF};
    static constexpr int missValue = 16310;
    static constexpr int upperBound = 0;
    static constexpr int lowerBound = 1;
    static constexpr int exactBound = 2;

    int32_t entryCount = defaultEntryCount;
    bool ready = false;
    namedMapping mapping;
    uint64_t* entries = nullptr;  // 2 × entryCount words; null when the table could not be set up

    // Sized by "pref:size-hashtable=" in the settings file. With openInstead
    // the mapping another process created is opened (waiting until it exists).
    explicit hashtable(const char* instance, bool openInstead = false);
    // Sized by sizeMB directly, for tools that must not depend on the settings file.
    hashtable(const char* instance, int sizeMB, bool openInstead);
    ~hashtable();
    hashtable(const hashtable&) = delete;
    hashtable& operator=(const hashtable&) = delete;

    // Entry count for a size setting in MB, or the default for one the
    // mapping cannot take.
    static int32_t entriesForSize(int sizeMB);

    void reset();

    uint64_t index(uint64_t key) const {
        return entryCount == maskedEntryCount ? (key & indexMask) : key % static_cast<uint64_t>(entryCount);
    }

    // Stored score, or the window edge on a bound that cuts (fail-hard), or missValue.
    int probeHash(uint64_t key, int depth, int alpha, int beta) const {
        if (entries == nullptr) return missValue;
        uint64_t check, data;
        read(index(key), check, data);
        if ((check ^ data) != key || depth > storedDepth(data)) return missValue;
        const int score = storedScore(data);
        switch (storedBound(data)) {
        case exactBound: return score;
        case upperBound: return alpha >= score ? alpha : missValue;
        case lowerBound: return beta <= score ? beta : missValue;
        default: return missValue;
        }
    }

    // The data word of the entry of this position (its low 16 bits are the
    // hash move), or 0.
    uint64_t probeBestMove(uint64_t key) const {
        if (entries == nullptr) return 0;
        uint64_t check, data;
        read(index(key), check, data);
        return (check ^ data) == key ? data : 0;
    }

    void recordHash(uint64_t key, int depth, int age, int score, int bound, int move) {
        if (entries == nullptr) return;
        const uint64_t slot = index(key);
        uint64_t check, data;
        read(slot, check, data);
        const int storedD = storedDepth(data);
        const int a = age % 64;  // negative for a negative ply, which then never equals a stored age

        // A deeper result of the same search owns the slot, whatever position it is.
        if (depth < storedD && a == storedAge(data)) return;

        const uint64_t newMove = static_cast<uint16_t>(move);
        if ((check ^ data) != key) {
            write(slot, key, pack(newMove, depth, a, score, bound));
            return;
        }

        bool overwrite;
        const int storedS = storedScore(data);
        const int16_t newScore = static_cast<int16_t>(score);
        if (depth > storedD) {
            overwrite = true;
        } else if (depth < storedD) {
            overwrite = false;
        } else {
            switch (storedBound(data)) {
            case upperBound: overwrite = !(newScore >= storedS && bound == upperBound); break;
            case lowerBound: overwrite = !(newScore <= storedS && bound == lowerBound); break;
            default: overwrite = false; break;  // an exact result yields only to a deeper one
            }
        }

        const uint64_t storedMove = data & 0xFFFF;
        if (overwrite) {
            write(slot, key, pack(newMove != 0 ? newMove : storedMove, depth, a, score, bound));
        } else if (newMove != 0 && newMove != storedMove) {
            write(slot, key, (data & moveClearMask) | newMove);
        }
    }

    static int storedDepth(uint64_t data) { return static_cast<int>((data >> 48) & 63); }
    static int storedAge(uint64_t data) { return static_cast<int>((data >> 54) & 63); }
    static int storedBound(uint64_t data) { return static_cast<int>((data >> 60) & 3); }
    static int storedScore(uint64_t data) { return static_cast<int16_t>(data >> 32); }

    // The depth goes in unmasked: the search stores 0..63 only, and anything
    // larger would run into the age bits.
    static uint64_t pack(uint64_t move, int depth, int age, int score, int bound) {
        return move | (uint64_t{static_cast<uint16_t>(score)} << 32) | (static_cast<uint64_t>(depth) << 48) |
               (uint64_t(age & 63) << 54) | (uint64_t(bound & 3) << 60);
    }

private:
    // Each word once, so the tests work on one consistent copy.
    void read(uint64_t slot, uint64_t& check, uint64_t& data) const {
        check = std::atomic_ref<uint64_t>(entries[2 * slot]).load(std::memory_order_relaxed);
        data = std::atomic_ref<uint64_t>(entries[2 * slot + 1]).load(std::memory_order_relaxed);
    }
    // Check word first, then the data word.
    void write(uint64_t slot, uint64_t key, uint64_t data) {
        std::atomic_ref<uint64_t>(entries[2 * slot]).store(key ^ data, std::memory_order_relaxed);
        std::atomic_ref<uint64_t>(entries[2 * slot + 1]).store(data, std::memory_order_release);
    }
};
