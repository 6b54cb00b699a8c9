#include "search/hashtable.h"

#include <cstring>

#include "settings/settingsFile.h"

int32_t hashtable::entriesForSize(int sizeMB) { return tableEntriesForSize(sizeMB, 16, defaultEntryCount); }

hashtable::hashtable(const char* instance, bool openInstead) {
    int sizeMB = 0;
    const int32_t count = readHashSizeSetting(settingsFileName, sizeMB) ? entriesForSize(sizeMB) : defaultEntryCount;
    setUp(instance, count, openInstead);
}

hashtable::hashtable(const char* instance, int sizeMB, bool openInstead) {
    setUp(instance, entriesForSize(sizeMB), openInstead);
}

void hashtable::setUp(const char* instance, int32_t count, bool openInstead) {
    entryCount = count;
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
