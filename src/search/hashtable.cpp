#include "search/hashtable.h"

#include <cstdio>
#include <cstring>

#include "platform/console.h"
#include "settings/settingsFile.h"

int32_t hashtable::entriesForSize(int sizeMB) {
    // The mapping size travels as 32 bits, so 4096 MB and more would wrap to
    // a tiny or empty table; such a setting, like one of 0 MB or less, keeps
    // the default instead.
    if (sizeMB <= 0 || sizeMB >= 4096) return defaultEntryCount;
    return sizeMB * 65536;
}

hashtable::hashtable(const char* instance, bool openInstead) {
    int sizeMB = 0;
    const int32_t count = readHashSizeSetting(settingsFileName, sizeMB) ? entriesForSize(sizeMB) : defaultEntryCount;
    setUp(instance, count, openInstead);
}

hashtable::hashtable(const char* instance, int sizeMB, bool openInstead) {
    setUp(instance, entriesForSize(sizeMB), openInstead);
}

void hashtable::setUp(const char* instance, int32_t count, bool openInstead) {
    char name[160];
    objectName(name, sizeof name, "sharedHashtable", instance);
    entryCount = count;
    const namedMapping::result result = mapping.createOrOpen(name, static_cast<size_t>(count) * 16, openInstead);
    if (result == namedMapping::notCreated) {
        printInfo("ERROR! Could not create file mapping object sharedHashtable.\n");
        return;
    }
    if (result == namedMapping::notMapped) {
        printInfo("ERROR! Could not map view of file sharedHashtable.\n");
        mapping.closeHandle();
        return;
    }
    // The creator's size is the one every process must index by, whatever
    // the settings file says by now.
    if (openInstead) entryCount = static_cast<int32_t>(mapping.size / 16);
    entries = static_cast<uint64_t*>(mapping.view);
    reset();
    ready = true;
}

void hashtable::reset() {
    if (entries) std::memset(entries, 0, static_cast<size_t>(entryCount) * 16);
}

hashtable::~hashtable() {
    entries = nullptr;
    ready = false;
    if (mapping.view) {
        printInfo("unmapping sharedHashtable....\n");
        mapping.unmap();
    }
    if (mapping.handle >= 0) {
        printInfo("Getting rid of handle sharedHashtable....\n");
        mapping.closeHandle();
    }
}
