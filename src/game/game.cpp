#include "game/game.h"

#include <cstdio>
#include <cstring>
#include <random>

#include "game/timer.h"
#include "parallel/mutex.h"

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
    char text[10], ponder[10] = "noMove";
    moveToText(move, text);
    const bool uci = shared.outputMode == 2;
    if (uci && shared.ponderingActive) {
        const int reply = legalTableMove(table, after);
        if (reply) moveToText(reply, ponder);
    }
    lockGuard held(mutex::io);
    printf("%smove %s", uci ? "best" : "", text);
    if (uci && shared.ponderingActive) printf(" ponder %s", ponder);
    printf("\n");
}

void game::recordMove(int move) {
    shared->moveHistory[position.ply % 1000] = static_cast<uint16_t>(move);
    if (position.ply >= 1000) shared->undoLimitPly = 10000;
}

int game::makeMove(const char* text) {
    stopPondering();
    const int move = position.convertMovestringToInt(text);
    if (move == 0) {
        printf("Error (ambiguous move): %s\n", text);
        return 0;
    }
    recordMove(move);
    position.makeMove(move);
    if (position.printGameEndedMessage()) stopClock();
    else if (engineActive) shared->clock.startClock(0);
    if (shared->outputMode == 1) position.printBoard();
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
    if (post) mutex::printLocked("start thinkAndMakeBestMove\n");
    stopPondering();
    chessclock& clock = shared->clock;
    clock.chargeRunningClock();
    int allotted = clock.allocateTime();
    clock.startClock(0);

    int move = 0;
    if (shared->enable_BOOK) {
        printf("probe TalvinBook: %s\n", openingBook.path);
        char text[16] = "";
        if (openingBook.chooseMove(position, text, bookRandom())) move = position.convertMovestringToInt(text);
        printf("#move=%s\n", text);
    }
    if (move == 0 && shared->ponderingActive && position.boardKey == shared->ponderKey) {
        const int elapsed = get_ms() - shared->ponderStartTime;
        if (elapsed < static_cast<int>(static_cast<int64_t>(allotted) * 8 / 10)) allotted -= elapsed;
        else move = shared->ponderResultMove;
    }
    if (post) {
        lockGuard held(mutex::io);
        printf("===========time next move: %d ms===========\n", allotted);
    }
    if (move == 0) {
        shared->timer1.allottedMs = allotted;
        shared->timer1.startTimer();
        postSearch(searchAndPlay);
        return 1;
    }

    recordMove(move);
    position.makeMove(move);
    printEngineMove(*shared, table, move, position);
    if (position.printGameEndedMessage()) {
        if (post) position.printBoard();
        stopClock();
        return 0;
    }
    clock.startClock(1);
    if (post) position.printBoard();
    if (shared->ponderingActive) postSearch(ponderWithGuess);
    return 1;
}

void game::autoPlay() {
    setClock(0, 0, 1000);
    while (thinkAndMakeBestMove()) {
        if (shared->searchCommand != searchAndPlay) continue;  // a book move; its ponder search ends with the next call
        // The search process ponders after its move, so its end signal may
        // be far off: the move itself is what is waited for.
        while (shared->pendingEngineMove == 0) {
            if (searchEnded.wait(1)) {
                searchState = 0;
                break;
            }
        }
        if (shared->pendingEngineMove == 0) return;
        takeOverPendingMove();
        if (position.gameEndedMessage()) return;
    }
}

void game::setupStartPosition() {
    setupPosition("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1");
}

void game::setupPosition(const char* fen) {
    snprintf(setupFen, sizeof setupFen, "%s", fen);
    position.setupPosition(fen);
    shared->undoLimitPly = position.ply;
    if (shared->postFlag && shared->outputMode != 2) position.printBoard();
}

void game::undoMove() {
    const int target = position.ply - 1;
    if (position.ply <= shared->undoLimitPly) {
        printf("Cannot undo!\n");
        return;
    }
    position.setupPosition(setupFen);
    while (position.ply < target) {
        const int move = shared->moveHistory[position.ply % 1000];
        if (move == 0) break;
        position.makeMove(move);
    }
    resetHash();
    if (shared->postFlag) position.printBoard();
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
        case 1: shared->enable_EGTB = value; break;
        case 2: shared->enable_NMP = value; break;
        case 3: shared->enable_LMP = value; break;
        case 4: shared->enable_BOOK = value; break;
        case 5: shared->enable_EXTENTIONS = value; break;
        case 6: shared->enable_FUTPRUN = value; break;
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
    startSearch.set();
    searchState = command == ponderAsItStands ? 3 : 1;
}

void game::postJob(int command) {
    stopPondering();
    postSearch(command);
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
    if (searchState == 0) return;
    shared->searchCommand = 0;
    shared->timer1.allottedMs = 0;  // the running search ends at its next node
    searchEnded.wait(-1);
    shared->pendingEngineMove = 0;
    searchState = 0;
}

void game::moveNow() {
    shared->timer1.allottedMs = 0;
    if (searchState == 3 && shared->outputMode == 2) {
        // The ponder search stores its result before it reports its end.
        if (!searchEnded.wait(10000)) return;
        searchState = 0;
        char text[10] = "0000";
        if (shared->ponderResultMove) moveToText(shared->ponderResultMove, text);
        lockGuard held(mutex::io);
        printf("\nbestmove %s\n", text);
    }
}

void game::playOther() {
    engineActive = 1;
    associateEngineWithSide(-position.toMove);
    shared->clock.startClock(1);
    startPonderingCurrentPosition();
}

void game::giveHint() {
    const int move = legalTableMove(table, position);
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
