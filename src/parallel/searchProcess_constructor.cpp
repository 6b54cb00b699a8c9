#include <cerrno>
#include <chrono>
#include <cstdio>
#include <thread>

#include "eval/evalWeightsFile.h"
#include "parallel/searchProcess.h"
#include "platform/console.h"
#include "settings/settingsFile.h"

searchProcess::searchProcess(const char* instance, int number, int processCount, bool tableExists, bool objectsExist,
                             int retryMs)
    : processNumber(number), table(instance, tableExists) {
    nalimovCacheMB = readNalimovCacheSetting(settingsFileName);
    printInvertedScore = readPrintInvertedScoreSetting(settingsFileName);
    readEgtbPathSetting(settingsFileName, egtbPath, sizeof egtbPath);
    tablebases = std::make_unique<EGTBProbe>(egtbPath, nalimovCacheMB, number != 0);
    loadEvalWeightsSetting(false);

    char name[160];
    auto event = [&](namedEvent& handle, const char* stem, const char* suffix) {
        objectName(name, sizeof name, stem, instance, suffix);
        if (objectsExist) handle.openWhenCreated(name, retryMs);
        else handle.create(name);
    };
    event(slaveAvailable, "handleSlaveAvailable", "");
    event(slaveAvailable2, "handleSlaveAvailable2", "");
    char suffix[16];
    for (int n = 0; n < processCount && n < maxProcesses; n++) {
        snprintf(suffix, sizeof suffix, "%d", n);
        event(startSlave[n], "handleStartSlave", suffix);
    }
    for (int n = 0; n < splitBlockCount; n++) {
        snprintf(suffix, sizeof suffix, "_%d", n);
        event(splitBlockReady[n], "handleSbReady_", suffix);
        objectName(name, sizeof name, "Mutex_SBlock_", instance, suffix);
        if (!objectsExist) {
            if (!splitBlockMutex[n].create(name)) printInfo("Create Mutex- no handle, ERROR= %d\n", errno);
            continue;
        }
        while (!splitBlockMutex[n].open(name)) std::this_thread::sleep_for(std::chrono::milliseconds(retryMs));
    }
}
