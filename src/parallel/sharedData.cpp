#include "parallel/sharedData.h"

#include <cstdio>

#include "parallel/mutex.h"

sharedDataMapping::sharedDataMapping(const char* instance, bool openInstead, int retryMs) {
    char name[160];
    objectName(name, sizeof name, "sharedData", instance);
    const namedMapping::result result = mapping.createOrOpen(name, sizeof(sharedData), openInstead, retryMs);
    if (result == namedMapping::notCreated) {
        printf("ERROR! Could not create file mapping object.\n");
        return;
    }
    if (result == namedMapping::notMapped) {
        printf("ERROR! Could not map view of file.\n");
        mapping.closeHandle();
        return;
    }
    data = static_cast<sharedData*>(mapping.view);
}

sharedDataMapping::~sharedDataMapping() {
    if (mapping.view) {
        mutex::printLocked("unmapping....\n");
        mapping.unmap();
    }
    if (mapping.handle >= 0) {
        mutex::printLocked("Getting rid of handle....\n");
        mapping.closeHandle();
    }
}
