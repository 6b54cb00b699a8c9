#include "eval/evalHashtable.h"

#include <cstring>

#include "settings/settingsFile.h"

int32_t evalHashtable::entriesForSize(int sizeSetting) {
    return tableEntriesForSize(sizeSetting, 8, defaultEntryCount);
}

evalHashtable::evalHashtable(const char* instance, bool openInstead) {
    int sizeSetting = 0;
    const int32_t count =
        readHashSizeSetting(settingsFileName, sizeSetting) ? entriesForSize(sizeSetting) : defaultEntryCount;
    setUp(instance, count, openInstead);
}

evalHashtable::evalHashtable(const char* instance, int sizeSetting, bool openInstead) {
    setUp(instance, entriesForSize(sizeSetting), openInstead);
}

void evalHashtable::setUp(const char* instance, int32_t count, bool openInstead) {
    entryCount = count;
    entries = static_cast<uint64_t*>(mapping.mapTable("sharedEvalHashtable", instance, entryCount, 8, openInstead));
}

void evalHashtable::reset() {
    if (entries) std::memset(entries, 0, static_cast<size_t>(entryCount) * 8);
}

evalHashtable::~evalHashtable() {
    entries = nullptr;
    mapping.releaseReported("sharedEvalHashtable");
}
