#include <chrono>
#include <cstdio>
#include <thread>

#include "game/game.h"
#include "game/roleProcess.h"
#include "game/timer.h"
#include "parallel/searchProcess.h"
#include "platform/console.h"
#include "platform/instance.h"
#include "platform/mutex.h"
#include "search/searchtree.h"
#include "tune/epdSuite.h"
#include "tune/tuner.h"

namespace {

bool isSentinel(int move) { return move == checkmateSentinel || move == stalemateSentinel; }

// The background search: on the position after the table's guess of the
// opponent's reply (command 2), or on the position as it stands (3).
void ponder(sharedData& shared, searchtree& tree, const board& position, int command) {
    if (!shared.ponderingActive || command == noCommand) return;
    board pondered = position;
    int guess = 0;
    if (command != ponderAsItStands) {
        guess = static_cast<uint16_t>(tree.table->probeBestMove(position.boardKey));
        if (guess && isLegalMove(position, guess)) pondered.makeMove(guess);
        else guess = 0;
    }
    if (guess) {
        char text[10];
        moveToText(guess, text);
        printInfo("===== Start Pondering moveGuess=%s=====\n", text);
    } else {
        printInfo("===== Start Pondering: no ponderingmove, start filling table =====\n");
    }
    shared.ponderResultMove = 0;
    shared.ponderKey = pondered.boardKey;
    shared.ponderStartTime = get_ms();
    shared.timer1.allottedMs = 10000000;
    shared.timer1.startTimer();
    const int best = tree.rootSearch(pondered);
    if (!isSentinel(best)) shared.ponderResultMove = static_cast<uint16_t>(best);
}

// The engine's move is played on this process's board, reported to the
// user-interface process and printed; false when the game is over.
bool playSearchResult(sharedData& shared, searchtree& tree, board& position, int move) {
    if (isSentinel(move)) {
        // No legal move: a UCI front end still waits for an answer.
        if (shared.outputMode == uciProtocol) printLine("bestmove 0000\n");
        return false;
    }
    shared.pendingEngineMove = static_cast<uint16_t>(move);
    shared.moveHistory[position.ply % 1000] = static_cast<uint16_t>(move);
    position.makeMove(move);
    printEngineMove(shared, *tree.table, move, position);
    const bool over = announceGameEnd(position);
    if (shared.postFlag && shared.outputMode == xboardProtocol) position.printBoard();
    if (over) {
        shared.clock.stopClock();
        return false;
    }
    shared.clock.startClock(chessclock::opponentsClock);
    return true;
}

// An infinite search answers only when told to stop, even when it ended
// early (a single legal move, a mate found).
void waitForStop(const sharedData& shared) {
    while (shared.timer1.allottedMs != 0 && shared.allSearchprocesEnabled != 0 && shared.searchCommand != noCommand)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

}  // namespace

// Runs the commands the user-interface process posts until the engine ends.
static void searchLoop(sharedData* shared, searchProcess& process, board& position, searchtree& tree,
                       namedEvent& startSearch, namedEvent& searchEnded) {
    while (shared->searchLoopRunFlag) {
        startSearch.wait(-1);
        if (!shared->searchLoopRunFlag) break;
        shared->searchPosition.load(position);
        const int command = shared->searchCommand;
        if (command == ponderWithGuess || command == ponderAsItStands) {
            shared->pendingEngineMove = 0;
            ponder(*shared, tree, position, command);
        } else if (command == tuneCommand || command == tuneLECommand) {
            tuner job(*shared, tree, position, command);
            command == tuneCommand ? job.tune() : job.tuneLE();
        } else if (command == epdCommand) {
            runEpdSuite(*shared, tree, position, command, shared->timer1.allottedMs);
        } else {
            const int move = tree.rootSearch(position);
            if (shared->untilStopped) waitForStop(*shared);
            // A stop in the meantime discards the result. The stop is posted
            // under the I/O mutex, so once it is in no move comes out.
            bool goesOn;
            {
                lockGuard io(mutex::io);
                goesOn = shared->searchCommand != noCommand && playSearchResult(*shared, tree, position, move);
            }
            if (goesOn && shared->outputMode != uciProtocol) ponder(*shared, tree, position, shared->searchCommand);
        }
        searchEnded.set();
    }
    // Waiting slaves wake, find the run flag cleared and leave.
    shared->runFlag = 0;
    for (int n = 1; n < shared->processCount && n < maxProcesses; n++) process.startSlave[n].set();
}

int game::runSearchProcess() {
    const char* instance = instanceName();
    char name[160];
    namedEvent startSearch, searchEnded;
    objectName(name, sizeof name, "handleStartSearch", instance);
    startSearch.openWhenCreated(name);
    objectName(name, sizeof name, "handleSearchEnded", instance);
    searchEnded.openWhenCreated(name);
    return runRoleProcess(0, [&](sharedData& record, searchProcess& process, board& position, searchtree& tree) {
        searchLoop(&record, process, position, tree, startSearch, searchEnded);
        return 0;
    });
}
