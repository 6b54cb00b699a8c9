#include "search/hashtable.h"

#include <cstring>

#include "settings/settingsFile.h"

int32_t hashtable::entriesForSize(int sizeMB) { return tableEntriesForSize(sizeMB, 16, defaultEntryCount); }

hashtable::hashtable(const char* instance, bool openInstead)
    : hashtable(instance, readHashSizeSetting(settingsFileName), openInstead) {}

hashtable::hashtable(const char* instance, int sizeMB, bool openInstead) {
    entryCount = entriesForSize(sizeMB);
    entries = static_cast<uint64_t*>(mapping.mapTable("sharedHashtable", instance, entryCount, 16, openInstead));
    if (entries == nullptr) return;
    reset();
    ready = true;
}

void hashtable::reset() {
    if (entries) std::memset(entries, 0, static_cast<size_t>(entryCount) * 16);
}

hashtable::~hashtable() {
    entries = nullptr;
    ready = false;
    mapping.releaseReported("sharedHashtable");
}
