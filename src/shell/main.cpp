#include <cstdio>
#include <cstring>

#include "game/game.h"
#include "game/roleProcess.h"
#include "parallel/searchProcess.h"
#include "platform/instance.h"
#include "platform/processLauncher.h"
#include "search/searchtree.h"
#include "settings/settingsFile.h"
#include "shell/protocols.h"

namespace {

int runSlave(int number) {
    return runRoleProcess(number, [](sharedData& shared, searchProcess& process, board&, searchtree& tree) {
        process.slaveStandBy(tree, shared);
        return 0;
    });
}

void printVersion() { printf("%s (Talvin %s)\n", engineName, engineVersion); }

void printHelp() {
    printVersion();
    printf(
        "A chess engine for graphical front ends. Start it without arguments and\n"
        "send \"xboard\" (xboard/WinBoard protocol 2) or \"uci\" as the first line.\n"
        "Settings are read from \"%s\" in the working directory; in UCI\n"
        "mode the engine writes that file from the front end's options.\n"
        "  --help     this text\n"
        "  --version  name and version\n",
        settingsFileName);
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

    if (argc == 2 && strcmp(argv[1], "--version") == 0) {
        printVersion();
        return 0;
    }
    if (argc == 2 && strcmp(argv[1], "--help") == 0) {
        printHelp();
        return 0;
    }

    startJanitor();
    mutex::init(instanceName(), false);
    printf("%s\n\nChoose mode: Type xboard or uci\n", engineName);
    static char line[lineBufferSize];
    if (fgets(line, sizeof line, stdin) == nullptr) return 0;
    return strncmp(line, "uci", 3) == 0 ? runUci() : runXboard(line);
}
