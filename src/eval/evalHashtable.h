#pragma once
#include <atomic>
#include <cstdint>

#include "platform/namedMapping.h"

// The evaluation cache: one 64-bit word per slot in a named shared mapping,
// used by every engine process without locks. A word holds the key's upper
// 48 bits over the score (signed 16-bit, White's view); one slot per index,
// always replaced. Each word is written in one store, so a reader sees it
// old or new but never mixed.
class evalHashtable {
public:
    static constexpr int defaultEntryCount = 0x400000;  // 32 MiB, the one size indexed by a mask
    static constexpr uint64_t indexMask = 0x3FFFFF;
    static constexpr int missValue = 16310;

    uint64_t keyMask = 0xFFFFFFFFFFFF0000ULL;
    int32_t entryCount = defaultEntryCount;
    namedMapping mapping;
    uint64_t* entries = nullptr;  // null when the table could not be set up

    // Sized by "pref:size-hashtable=" (N gives N × 65,536 entries). With
    // openInstead the mapping another process created is opened (waiting
    // until it exists).
    explicit evalHashtable(const char* instance, bool openInstead = false);
    // Sized by the setting's value given directly, for tools.
    evalHashtable(const char* instance, int sizeSetting, bool openInstead);
    ~evalHashtable();
    evalHashtable(const evalHashtable&) = delete;
    evalHashtable& operator=(const evalHashtable&) = delete;

    static int32_t entriesForSize(int sizeSetting);

    void reset();

    uint64_t index(uint64_t key) const {
        return entryCount == defaultEntryCount ? (key & indexMask) : key % static_cast<uint64_t>(entryCount);
    }

    // The cached score, or missValue. A position whose true score is the miss
    // value therefore never hits and is evaluated every time.
    int probe(uint64_t key) const {
        if (entries == nullptr) return missValue;
        const uint64_t word = std::atomic_ref<uint64_t>(entries[index(key)]).load(std::memory_order_relaxed);
        if ((word ^ key) & keyMask) return missValue;
        return static_cast<int16_t>(word & 0xFFFF);
    }

    void store(uint64_t key, int score) {
        if (entries == nullptr) return;
        std::atomic_ref<uint64_t>(entries[index(key)])
            .store((key & keyMask) | (static_cast<uint64_t>(score) & 0xFFFF), std::memory_order_relaxed);
    }
};
