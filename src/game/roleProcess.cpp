#include "game/roleProcess.h"

#include "board/board.h"
#include "eval/evalHashtable.h"
#include "parallel/searchProcess.h"
#include "parallel/sharedData.h"
#include "platform/instance.h"
#include "platform/mutex.h"
#include "platform/processLauncher.h"
#include "search/searchtree.h"

int runRoleProcess(int number, const std::function<int(sharedData&, searchProcess&, board&, searchtree&)>& run) {
    const char* instance = instanceName();
    mutex::init(instance, true);
    // Declared so that teardown goes table, record, cache.
    evalHashtable evalCache(instance, true);
    sharedDataMapping sharedOwner(instance, true);
    if (sharedOwner.data == nullptr) return 1;
    sharedData& shared = *sharedOwner.data;
    mutex::mt.waitCounter = &shared.counters.mtWaits;
    // The search process makes the events and split-block mutexes, the slaves open them.
    searchProcess process(instance, number, shared.processCount, true, number != 0);
    board position(&shared.killers);
    board::evalCache = &evalCache;
    searchtree tree(&shared, &process.table, number, process.printInvertedScore != 0);
    tree.process = &process;
    if (process.tablebases->probeLimit > 0) tree.tablebases = process.tablebases.get();
    // Held until this process ends: the others learn of its death from it.
    shared.lifelines[number].hold();
    announceReady(&shared.processesReady);
    const int status = run(shared, process, position, tree);
    // A held lock must not outlive its memory: the C library keeps it on a list it walks at every lock.
    shared.lifelines[number].release();
    mutex::mt.waitCounter = nullptr;
    return status;
}
