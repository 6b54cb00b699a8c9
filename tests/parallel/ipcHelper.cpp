// A miniature engine for the process tests: "engine N" plays the
// user-interface process and starts N role processes; a digit argument plays
// a role process. All of them open the engine's shared objects.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>

#include "eval/evalHashtable.h"
#include "parallel/searchProcess.h"
#include "parallel/sharedData.h"
#include "platform/instance.h"
#include "platform/mutex.h"
#include "platform/namedEvent.h"
#include "platform/processLauncher.h"
#include "search/hashtable.h"

static void openStartEvent(namedEvent& event, bool openInstead) {
    char name[160];
    objectName(name, sizeof name, "handleStartSearch", instanceName());
    if (openInstead) event.openWhenCreated(name);
    else event.create(name);
}

static int roleProcess(int role) {
    dieWithParent();
    adoptParentInstance();
    mutex::init(instanceName(), true);
    sharedDataMapping shared(instanceName(), true);
    evalHashtable evalCache(instanceName(), true);
    searchProcess process(instanceName(), role, shared.data->processCount, true, role != 0);
    namedEvent start;
    openStartEvent(start, true);
    announceReady(&shared.data->processesReady);
    while (shared.data->runFlag) start.wait(1000);
    return 0;
}

static int engineProcess(int roles) {
    startJanitor();
    mutex::init(instanceName(), false);
    sharedDataMapping shared(instanceName(), false);
    shared.data->runFlag = 1;
    shared.data->processCount = roles;
    evalHashtable evalCache(instanceName());
    hashtable table(instanceName());
    namedEvent start;
    openStartEvent(start, false);
    startRoleProcesses(roles, &shared.data->processesReady);
    printf("ready %s\n", instanceName());
    fflush(stdout);
    std::string line;
    while (std::getline(std::cin, line) && line != "quit") {}
    shared.data->runFlag = 0;
    for (int i = 0; i < roles; i++) start.set();
    return 0;
}

int main(int argc, char** argv) {
    setvbuf(stdout, nullptr, _IONBF, 0);
    if (argc == 2 && argv[1][0] >= '0' && argv[1][0] <= '9' && argv[1][1] == 0) return roleProcess(argv[1][0] - '0');
    if (argc == 3 && std::strcmp(argv[1], "engine") == 0) return engineProcess(std::atoi(argv[2]));
    printf("usage: ipcHelper engine N\n");
    return 2;
}
