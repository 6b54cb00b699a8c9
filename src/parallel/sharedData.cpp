#include "parallel/sharedData.h"

#include <cstdio>

#include "parallel/console.h"

sharedDataMapping::sharedDataMapping(const char* instance, bool openInstead, int retryMs) {
    char name[160];
    objectName(name, sizeof name, "sharedData", instance);
    const namedMapping::result result = mapping.createOrOpen(name, sizeof(sharedData), openInstead, retryMs);
    if (result == namedMapping::notCreated) {
        writeInfo("ERROR! Could not create file mapping object.\n");
        return;
    }
    if (result == namedMapping::notMapped) {
        writeInfo("ERROR! Could not map view of file.\n");
        mapping.closeHandle();
        return;
    }
    data = static_cast<sharedData*>(mapping.view);
}

sharedDataMapping::~sharedDataMapping() {
    if (mapping.view) {
        printInfo("unmapping....\n");
        mapping.unmap();
    }
    if (mapping.handle >= 0) {
        printInfo("Getting rid of handle....\n");
        mapping.closeHandle();
    }
}
