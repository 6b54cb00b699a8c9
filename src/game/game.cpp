#include "game/game.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <random>

#include "game/timer.h"
#include "platform/console.h"
#include "platform/mutex.h"

namespace {

// The table's move for the position, if it is a legal one.
int legalTableMove(const hashtable& table, const board& position) {
    const int move = static_cast<uint16_t>(table.probeBestMove(position.boardKey));
    return move != 0 && isLegalMove(position, move) ? move : 0;
}

uint32_t bookRandom() {
    static std::mt19937 generator(std::random_device{}());
    return generator();
}

}  // namespace

bool isLegalMove(const board& position, int move) {
    uint16_t legal[moveBufferSize];
    position.generateLegalMoves(legal);
    for (int i = 0; legal[i]; i++)
        if (legal[i] == move) return true;
    return false;
}

void printEngineMove(const sharedData& shared, const hashtable& table, int move, const board& after) {
    const bool uci = shared.outputMode == uciProtocol;
    char text[10], ponder[10] = "";
    moveToText(move, text, uci);
    if (uci && shared.ponderingActive) {
        const int reply = legalTableMove(table, after);
        if (reply) moveToText(reply, ponder, true);
    }
    // Without a reply to ponder on the ponder part is left out.
    if (uci) printLine("bestmove %s%s%s\n", text, ponder[0] ? " ponder " : "", ponder);
    else printLine("move %s\n", text);
}

bool announceGameEnd(const board& position) {
    const char* message = position.gameEndedMessage();
    if (message) printInfo("%s", message);
    return message != nullptr;
}

void game::recordMove(int move) {
    shared->moveHistory[position.ply % 1000] = static_cast<uint16_t>(move);
    if (position.ply >= 1000) shared->undoLimitPly = 10000;
}

int game::makeMove(const char* text) {
    stopPondering();
    const int move = position.convertMovestringToInt(text);
    if (move == 0) {
        printInfo("Error (ambiguous move): %s\n", text);
        return 0;
    }
    recordMove(move);
    position.makeMove(move);
    if (announceGameEnd(position)) stopClock();
    else if (engineActive) shared->clock.startClock(chessclock::enginesClock);
    if (shared->outputMode == xboardProtocol) position.printBoard();
    return 1;
}

void game::takeOverPendingMove() {
    const int move = shared->pendingEngineMove;
    if (move == 0) return;
    shared->pendingEngineMove = 0;
    recordMove(move);
    position.makeMove(move);
}

int game::thinkAndMakeBestMove() {
    const bool post = shared->postFlag != 0;
    // Only the console sees the board; an infinite search plays no book or ponder move.
    const bool showBoard = post && shared->outputMode == xboardProtocol;
    const bool analysing = shared->untilStopped != 0;
    if (post) printInfo("start thinkAndMakeBestMove\n");
    stopPondering();
    chessclock& clock = shared->clock;
    clock.chargeRunningClock();
    int allotted = clock.moveBudget(moveOverheadMs);
    clock.startClock(chessclock::enginesClock);

    int move = 0;
    if (shared->enable_BOOK && !analysing) {
        printInfo("probe TalvinBook: %s\n", openingBook.path);
        char text[16] = "";
        if (openingBook.chooseMove(position, text, bookRandom())) move = position.convertMovestringToInt(text);
        printInfo("#move=%s\n", text);
    }
    if (move == 0 && !analysing && shared->ponderingActive && position.boardKey == shared->ponderKey) {
        const int elapsed = get_ms() - shared->ponderStartTime;
        if (elapsed < static_cast<int>(static_cast<int64_t>(allotted) * 8 / 10)) allotted -= elapsed;
        else move = shared->ponderResultMove;
    }
    if (post) printInfo("===========time next move: %d ms===========\n", allotted);
    if (move == 0) {
        shared->timer1.allottedMs = allotted;
        shared->timer1.startTimer();
        postSearch(searchAndPlay);
        return 1;
    }

    recordMove(move);
    position.makeMove(move);
    printEngineMove(*shared, table, move, position);
    if (announceGameEnd(position)) {
        if (showBoard) position.printBoard();
        stopClock();
        return 0;
    }
    clock.startClock(chessclock::opponentsClock);
    if (showBoard) position.printBoard();
    if (shared->ponderingActive) postSearch(ponderWithGuess);
    return 1;
}

void game::autoPlay() {
    setClock(0, 0, 1000);
    while (thinkAndMakeBestMove()) {
        if (shared->searchCommand != searchAndPlay) continue;  // a book move; its ponder search ends with the next call
        // The search process ponders after its move, so its end signal may
        // be far off: the move itself is what is waited for.
        for (int waitedMs = 0; shared->pendingEngineMove == 0; waitedMs++) {
            if (searchEnded.wait(1)) {
                searchState = searchIdle;
                break;
            }
            watchSearchProcess(waitedMs, shared->timer1.allottedMs + waitTimeoutMs);
        }
        if (shared->pendingEngineMove == 0) return;
        takeOverPendingMove();
        if (position.gameEndedMessage()) return;
    }
}

void game::setupStartPosition() { setupPosition("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1"); }

bool game::setupPosition(const char* fen) {
    const board previous = position;
    uint64_t previousKeys[150];
    std::memcpy(previousKeys, keyHistory, sizeof previousKeys);
    position.setupPosition(fen);
    if (!position.isLegalPosition()) {
        position = previous;
        std::memcpy(keyHistory, previousKeys, sizeof previousKeys);
        if (shared->outputMode == uciProtocol) printInfo("Illegal position\n");
        else printLine("tellusererror Illegal position\n");
        return false;
    }
    snprintf(setupFen, sizeof setupFen, "%s", fen);
    shared->undoLimitPly = position.ply;
    if (shared->postFlag && shared->outputMode == xboardProtocol) position.printBoard();
    return true;
}

void game::undoMove() {
    const int target = position.ply - 1;
    if (position.ply <= shared->undoLimitPly) {
        printInfo("Cannot undo!\n");
        return;
    }
    position.setupPosition(setupFen);
    while (position.ply < target) {
        const int move = shared->moveHistory[position.ply % 1000];
        if (move == 0) break;
        position.makeMove(move);
    }
    resetHash();
    if (shared->postFlag && shared->outputMode == xboardProtocol) position.printBoard();
}

void game::setSideToMove(int side) {
    if (position.toMove == side) return;
    position.toMove = static_cast<int8_t>(side);
    board::zKeyset.changeSides(position.boardKey);
}

void game::setClock(int moves, int baseMs, int incrementMs) {
    shared->maxDepth = 35;
    shared->clock.setClock(moves, baseMs, incrementMs);
}

void game::setUciOption(int id, int value) {
    switch (id) {
    case egtbOption: shared->enable_EGTB = value; break;
    case nullMoveOption: shared->enable_NMP = value; break;
    case lateMovePruningOption: shared->enable_LMP = value; break;
    case bookOption: shared->enable_BOOK = value; break;
    case extensionsOption: shared->enable_EXTENTIONS = value; break;
    case futilityOption: shared->enable_FUTPRUN = value; break;
    default: break;
    }
}

void game::resetHash() {
    evalCache.reset();
    table.reset();
}

void game::postSearch(int command) {
    shared->searchPosition.store(position);
    shared->searchCommand = command;
    shared->allSearchprocesEnabled = 1;
    startSearch.set();
    searchState = command == ponderAsItStands ? ponderAsItStandsPosted : searchPosted;
}

void game::postJob(int command) {
    stopPondering();
    postSearch(command);
}

void game::benchEpd() {
    stopPondering();
    // At least a moment: a zero budget reads as a stop.
    shared->timer1.allottedMs = std::max(1, shared->clock.allocateTime());
    postSearch(epdCommand);
}

void game::startPonderingCurrentPosition() {
    if (!shared->ponderingActive) return;
    // One background search at a time: a second one posted behind a running
    // search would leave an end signal that the next stop mistakes for its own.
    stopPondering();
    postSearch(ponderWithGuess);
}

void game::startPondering() {
    if (!shared->ponderingActive) return;
    stopPondering();
    postSearch(ponderAsItStands);
}

void game::stopPondering() {
    if (searchState == searchIdle) return;
    // Taken under the I/O mutex, under which the search process looks at the
    // command before it prints its move: once the stop is in, no move of
    // the stopped search comes out.
    {
        lockGuard io(mutex::io);
        shared->searchCommand = noCommand;
    }
    // The search ends at its next node. The flag, unlike the budget, is
    // never set by the search process, so a stop that comes before the
    // search has started (and set its budget) is not lost.
    shared->allSearchprocesEnabled = 0;
    shared->timer1.allottedMs = 0;
    waitForSearchEnd(waitTimeoutMs);
    shared->pendingEngineMove = 0;
    searchState = searchIdle;
}

void game::moveNow() {
    shared->timer1.allottedMs = 0;
    // A UCI stop ends whatever runs, a ponder search too.
    if (shared->outputMode == uciProtocol) shared->allSearchprocesEnabled = 0;
    if (searchState == ponderAsItStandsPosted && shared->outputMode == uciProtocol) {
        // The ponder search stores its result before it reports its end.
        waitForSearchEnd(waitTimeoutMs);
        searchState = searchIdle;
        char text[10] = "0000";
        if (shared->ponderResultMove) moveToText(shared->ponderResultMove, text, true);
        printLine("bestmove %s\n", text);
    }
}

void game::playOther() {
    engineActive = 1;
    associateEngineWithSide(-position.toMove);
    shared->clock.startClock(chessclock::opponentsClock);
    startPonderingCurrentPosition();
}

void game::giveHint() {
    // Without a table move the first legal move is the hint: the command is always answered.
    uint16_t legal[moveBufferSize];
    position.generateLegalMoves(legal);
    const int tableMove = legalTableMove(table, position);
    const int move = tableMove ? tableMove : legal[0];
    if (move == 0) return;
    char text[10];
    moveToText(move, text);
    lockGuard held(mutex::io);
    printf("hint: %s\n", text);
}

void game::postAnalyzeInfo() {
    int total = 0;
    while (total < 100 && shared->rootMoves[total]) total++;
    const int current = shared->rootMoveNumber;
    char text[10];
    moveToText(current >= 1 && current <= total ? shared->rootMoves[current - 1] : 0, text);
    lockGuard held(mutex::io);
    printf("stat01: %d %lld %d %d %d %s\n", shared->timer1.getTimePassedBy(),
           static_cast<long long>(shared->nodeTotals[0] + shared->nodeTotals[1]), shared->rootDepth, total - current,
           total, text);
}
