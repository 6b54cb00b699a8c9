#pragma once
#include <cstdint>
#include <memory>

#include "board/board.h"
#include "book/book.h"
#include "eval/evalHashtable.h"
#include "parallel/sharedData.h"
#include "platform/mutex.h"
#include "platform/namedEvent.h"
#include "search/hashtable.h"

// sharedData::searchCommand. A search whose command was set back to
// noCommand meanwhile plays nothing.
inline constexpr int noCommand = 0;
inline constexpr int searchAndPlay = 1;
inline constexpr int ponderWithGuess = 2;
inline constexpr int ponderAsItStands = 3;
inline constexpr int tuneCommand = 4;
inline constexpr int tuneLECommand = 5;
inline constexpr int epdCommand = 6;

// game::searchState. 3 like the command that starts it; there is no 2.
enum searchStateValue : int32_t { searchIdle = 0, searchPosted = 1, ponderAsItStandsPosted = 3 };

// The ids of setUciOption: the switches a UCI front end may change during a game.
enum uciOptionId : int {
    egtbOption = 1,
    nullMoveOption = 2,
    lateMovePruningOption = 3,
    bookOption = 4,
    extensionsOption = 5,
    futilityOption = 6,
};

// The engine as the protocol loops drive it, in the user-interface process.
// It never searches itself: it posts commands to the search process (role
// "0") through the shared record and two events, and that process prints
// the engine's moves.
class game {
public:
    namedEvent startSearch;
    namedEvent searchEnded;
    int32_t engineActive;
    int32_t processCount;
    char setupFen[100];
    book openingBook;
    evalHashtable evalCache;
    sharedDataMapping sharedOwner;
    sharedData* shared;
    board position;
    // searchPosted also for a ponder search on a guess; ponderAsItStandsPosted
    // for a UCI ponder search or an analysis.
    int32_t searchState;
    hashtable table;
    int moveOverheadMs;  // kept back from every time budget for the way to the front end

    explicit game(const char* instance);
    ~game();
    game(const game&) = delete;
    game& operator=(const game&) = delete;

    int makeMove(const char* text);
    int thinkAndMakeBestMove();
    void setupStartPosition();
    // An illegal position is refused with a message; the board stays as it was.
    bool setupPosition(const char* fen);
    void undoMove();
    void setSideToMove(int side);
    void associateEngineWithSide(int side) { shared->clock.associateEngineWithSide(side); }
    void setClock(int moves, int baseMs, int incrementMs);
    void stopClock() { shared->clock.stopClock(); }
    void setTimeWhite(int ms) { shared->clock.setTimeWhite(ms); }
    void setTimeBlack(int ms) { shared->clock.setTimeBlack(ms); }
    void setPonderingActive() { shared->ponderingActive = 1; }
    void setPonderingInactive() { shared->ponderingActive = 0; }
    void setUciOption(int id, int value);
    void resetHash();
    void startPonderingCurrentPosition();
    void startPondering();
    void stopPondering();
    void moveNow();
    void playOther();
    void giveHint();
    void postAnalyzeInfo();
    // The engine plays both sides at a fixed time a move until the game ends.
    void autoPlay();
    void tune() { postJob(tuneCommand); }
    void tuneLE() { postJob(tuneLECommand); }
    // Every position gets the time a move would get at the current time control.
    void benchEpd();

    void bench(int depth, int timeMs);
    void benchSpeed(int depth);
    // One search of the current position by the search process, waited for.
    void benchCurrentPosition(int timeMs);

    // The engine move the search process played, taken over onto this board.
    void takeOverPendingMove();

    // The loop of the search process (role "0"); returns when the engine ends.
    static int runSearchProcess();

    // Ends the engine with a message when the search process has died, or
    // has not answered waitedMs > boundMs after it was told to: without it
    // nothing would ever answer the front end.
    void watchSearchProcess(int waitedMs = 0, int boundMs = waitTimeoutMs);

private:
    void postSearch(int command);
    // Waits for the search process's end signal, at most boundMs.
    void waitForSearchEnd(int boundMs);
    void postJob(int command);
    void recordMove(int move);
};

// Is the move in the position's legal move list?
bool isLegalMove(const board& position, int move);

// The result line when the game has ended (an info string under UCI); true then.
bool announceGameEnd(const board& position);

// "move e2e4" or "bestmove e2e4 ponder e7e5", under the I/O mutex; after is
// the position after the move.
void printEngineMove(const sharedData& shared, const hashtable& table, int move, const board& after);
