#include "eval/evalHashtable.h"

#include <cstdio>
#include <cstring>

#include "platform/console.h"
#include "settings/settingsFile.h"

int32_t evalHashtable::entriesForSize(int sizeSetting) {
    // Mapping sizes travel as 32 bits: a setting that would make 4096 MB or
    // more, like one of 0 or less, keeps the default.
    if (sizeSetting <= 0 || sizeSetting >= 8192) return defaultEntryCount;
    return sizeSetting * 65536;
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
    char name[160];
    objectName(name, sizeof name, "sharedEvalHashtable", instance);
    entryCount = count;
    const namedMapping::result result = mapping.createOrOpen(name, static_cast<size_t>(count) * 8, openInstead);
    if (result == namedMapping::notCreated) {
        printInfo("ERROR! Could not create file mapping object sharedEvalHashtable.\n");
        return;
    }
    if (result == namedMapping::notMapped) {
        printInfo("ERROR! Could not map view of file sharedEvalHashtable.\n");
        mapping.closeHandle();
        return;
    }
    // Every process must index by the creator's size.
    if (openInstead) entryCount = static_cast<int32_t>(mapping.size / 8);
    entries = static_cast<uint64_t*>(mapping.view);
}

void evalHashtable::reset() {
    if (entries) std::memset(entries, 0, static_cast<size_t>(entryCount) * 8);
}

evalHashtable::~evalHashtable() {
    entries = nullptr;
    if (mapping.view) {
        printInfo("unmapping sharedEvalHashtable....\n");
        mapping.unmap();
    }
    if (mapping.handle >= 0) {
        printInfo("Getting rid of handle sharedEvalHashtable....\n");
        mapping.closeHandle();
    }
}
