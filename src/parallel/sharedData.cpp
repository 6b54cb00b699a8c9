#include "parallel/sharedData.h"

#include <chrono>
#include <cstdio>
#include <thread>

#include "parallel/mutex.h"

sharedDataMapping::sharedDataMapping(const char* instance, bool openInstead, int retryMs) {
    char name[160];
    objectName(name, sizeof name, "sharedData", instance);
    namedMapping::result result;
    if (openInstead) {
        while ((result = mapping.open(name)) == namedMapping::notCreated)
            std::this_thread::sleep_for(std::chrono::milliseconds(retryMs));
    } else {
        result = mapping.create(name, sizeof(sharedData));
    }
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
        mutex::waitIO();
        printf("unmapping....\n");
        mutex::releaseIO();
        mapping.unmap();
    }
    if (mapping.handle >= 0) {
        mutex::waitIO();
        printf("Getting rid of handle....\n");
        mutex::releaseIO();
        mapping.closeHandle();
    }
}
