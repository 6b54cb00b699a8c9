#include <cstdio>
#include <cstring>

#include "game/game.h"
#include "parallel/instance.h"
#include "parallel/mutex.h"
#include "parallel/processLauncher.h"
#include "parallel/searchProcess.h"
#include "search/searchtree.h"
#include "shell/protocols.h"

namespace {

int runSlave(int number) {
    const char* instance = instanceName();
    mutex::init(instance, true);
    evalHashtable evalCache(instance, true);
    sharedDataMapping sharedOwner(instance, true);
    if (sharedOwner.data == nullptr) return 1;
    sharedData& shared = *sharedOwner.data;
    searchProcess process(instance, number, shared.processCount, true, true);
    board position(&shared.killers);
    board::evalCache = &evalCache;
    searchtree tree(&shared, &process.table, number, process.printInvertedScore != 0);
    tree.process = &process;
    if (process.tablebases->probeLimit > 0) tree.tablebases = process.tablebases.get();
    announceReady(&shared);
    process.slaveStandBy(tree, shared);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    setvbuf(stdin, nullptr, _IONBF, 0);
    setvbuf(stdout, nullptr, _IONBF, 0);

    // Only the first character of a single argument chooses the role.
    if (argc == 2 && argv[1][0] >= '0' && argv[1][0] <= '9') {
        adoptParentInstance();
        dieWithParent();
        return argv[1][0] == '0' ? game::runSearchProcess() : runSlave(argv[1][0] - '0');
    }

    startJanitor();
    mutex::init(instanceName(), false);
    printf("%s\n\nChoose mode: Type xboard or uci\n", engineName);
    static char line[lineBufferSize];
    if (fgets(line, sizeof line, stdin) == nullptr) return 0;
    return strncmp(line, "uci", 3) == 0 ? runUci() : runXboard(line);
}
