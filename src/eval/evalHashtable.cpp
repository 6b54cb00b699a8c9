#include "eval/evalHashtable.h"

#include <cstring>

#include "settings/settingsFile.h"

int32_t evalHashtable::entriesForSize(int sizeSetting) {
    return tableEntriesForSize(sizeSetting, 8, defaultEntryCount);
}

evalHashtable::evalHashtable(const char* instance, bool openInstead)
    : evalHashtable(instance, readHashSizeSetting(settingsFileName), openInstead) {}

evalHashtable::evalHashtable(const char* instance, int sizeSetting, bool openInstead) {
    entryCount = entriesForSize(sizeSetting);
    entries = static_cast<uint64_t*>(mapping.mapTable("sharedEvalHashtable", instance, entryCount, 8, openInstead));
    // Unlike the hash table, which every process clears at start, the cache
    // would otherwise fault its pages in during the first searches.
    mapping.prefault();
}

void evalHashtable::reset() {
    if (entries) std::memset(entries, 0, static_cast<size_t>(entryCount) * 8);
}

evalHashtable::~evalHashtable() {
    entries = nullptr;
    mapping.releaseReported("sharedEvalHashtable");
}
