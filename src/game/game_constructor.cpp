#include <cstdio>
#include <cstdlib>

#include "eval/evalWeightsFile.h"
#include "game/game.h"
#include "platform/console.h"
#include "platform/processLauncher.h"
#include "settings/settingsFile.h"

void game::watchSearchProcess(int waitedMs, int boundMs) {
    reapEndedHelpers();  // a helper that died is noted by the searching processes
    if (searchProcessAlive() && waitedMs <= boundMs) return;
    // Restarting it would mean making every shared object anew, and the
    // names are gone: the engine ends cleanly instead and says why.
    killSearchProcess();  // hung
    const char* message = "The search process has stopped working; the engine exits";
    if (shared->outputMode == uciProtocol) printLine("info string %s\n", message);
    else printLine("tellusererror %s\n", message);
    exit(1);
}

void game::waitForSearchEnd(int boundMs) {
    constexpr int sliceMs = 100;
    for (int waitedMs = 0; !searchEnded.wait(sliceMs); waitedMs += sliceMs) watchSearchProcess(waitedMs, boundMs);
}

game::game(const char* instance)
    : evalCache(instance),
      sharedOwner(instance, false),
      shared(sharedOwner.data),
      position(shared ? &shared->killers : nullptr),
      table(instance) {
    if (shared == nullptr) exit(1);  // nothing works without the record; the message is out
    board::evalCache = &evalCache;
    setupStartPosition();
    shared->ponderingActive = 0;
    engineActive = 1;
    searchState = searchIdle;
    shared->clock.setClock(1, 1000, 0);
    shared->maxDepth = 35;
    shared->postFlag = 1;
    shared->searchLoopRunFlag = 1;
    shared->runFlag = 1;
    shared->searchCommand = noCommand;
    shared->outputMode = xboardProtocol;
    shared->allSearchprocesEnabled = 1;
    shared->enable_EGTB = shared->enable_NMP = shared->enable_LMP = 1;
    shared->enable_FUTPRUN = shared->enable_EXTENTIONS = shared->enable_BOOK = 1;
    for (splitBlock& block : shared->splitBlocks) block.owner = freeSplitBlock;
    for (lifeline& line : shared->lifelines) line.init();
    char name[160];
    objectName(name, sizeof name, "handleStartSearch", instance);
    startSearch.create(name);
    objectName(name, sizeof name, "handleSearchEnded", instance);
    searchEnded.create(name);

    processCount = 1;
    gameSettings settings;
    readGameSettings(settingsFileName, settings);
    openingBook.setPath(settings.bookPath);
    openingBook.bookBestMoveOnly = settings.bookBestMoveOnly;
    shared->ponderingActive = settings.pondering;
    shared->enable_EGTB = settings.enableEGTB;
    shared->enable_NMP = settings.enableNMP;
    shared->enable_LMP = settings.enableLMP;
    shared->enable_FUTPRUN = settings.enableFUTPRUN;
    shared->enable_BOOK = settings.enableBOOK;
    shared->enable_EXTENTIONS = settings.enableEXTENTIONS;
    processCount = settings.processCount;
    moveOverheadMs = settings.moveOverheadMs;
    shared->processCount = processCount;
    // The role processes read the same file; only this process speaks of faults.
    loadEvalWeightsSetting(true);
    startRoleProcesses(processCount, &shared->processesReady);
}

game::~game() {
    shared->searchLoopRunFlag = 0;
    shared->runFlag = 0;
    shared->timer1.allottedMs = 0;
    startSearch.set();
    // Let the search process finish its output and leave; it is killed with
    // this process anyway, so the wait is bounded.
    reapRoleProcesses(3000);
}
