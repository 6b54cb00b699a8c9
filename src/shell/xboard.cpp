#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "game/game.h"
#include "platform/console.h"
#include "platform/instance.h"
#include "shell/protocols.h"

namespace {

// "level MPS BASE INC": BASE in minutes, optionally min:sec; INC in seconds.
void setLevel(game& g, const char* line) {
    const char* p = strchr(line, ' ');
    const int moves = p ? atoi(p) : 0;
    p = p ? strchr(p + 1, ' ') : nullptr;
    int baseMs = 0;
    if (p) {
        baseMs = atoi(p) * 60000;
        const char* end = strchr(p + 1, ' ');
        const char* colon = strchr(p + 1, ':');
        if (colon && (!end || colon < end)) baseMs += atoi(colon + 1) * 1000;
        p = end;
    }
    // A fractional increment ("0.1") is kept, not cut to whole seconds.
    const int incrementMs = p ? static_cast<int>(strtod(p, nullptr) * 1000) : 0;
    printLine("moves=%d starttime=%d inc=%d\n", moves, baseMs, incrementMs);
    g.setClock(moves, baseMs, incrementMs);
}

void printFeatures() {
    printLine(
        "feature myname=\"%s\"\nfeature sigint=0\nfeature sigterm=0\nfeature variants=normal\n"
        "feature ping=1\nfeature setboard=1\nfeature done=1\n",
        engineName);
}

void dispatch(game& g, const char* line, bool& analyze) {
    sharedData& shared = *g.shared;
    chessclock& clock = shared.clock;
    if (startsWith(line, ".")) g.postAnalyzeInfo();
    else if (startsWith(line, "xboard")) {
    } else if (startsWith(line, "tunele")) g.tuneLE();
    else if (startsWith(line, "benchepd")) g.benchEpd();
    else if (startsWith(line, "tune")) g.tune();
    else if (startsWith(line, "speed ")) {
        g.engineActive = 1;
        g.benchSpeed(atoi(line + 6));
    } else if (startsWith(line, "accepted") || startsWith(line, "rejected") || startsWith(line, "random")) {
    } else if (startsWith(line, "result")) g.stopPondering();
    else if (startsWith(line, "remove")) {
        // xboard's Retract Move: two plies back, the same side to play.
        g.stopPondering();
        g.stopClock();
        g.undoMove();
        g.undoMove();
        if (analyze) g.startPondering();
    } else if (startsWith(line, "analyze")) {
        analyze = true;
        g.engineActive = 0;
        g.stopClock();
        g.setPonderingActive();
        g.startPondering();  // the position on the board, not the one after a guessed move
    } else if (startsWith(line, "exit")) {
        g.stopPondering();
        analyze = false;
    } else if (startsWith(line, "hard")) g.setPonderingActive();
    else if (startsWith(line, "easy")) g.setPonderingInactive();
    else if (startsWith(line, "undo")) {
        g.engineActive = 0;
        g.stopClock();
        g.stopPondering();
        g.undoMove();
        if (analyze) g.startPondering();
    } else if (startsWith(line, "post")) shared.postFlag = 1;
    else if (startsWith(line, "nopost")) shared.postFlag = 0;
    else if (startsWith(line, "hint")) g.giveHint();
    else if (startsWith(line, "setboard")) g.setupPosition(strlen(line) > 9 ? line + 9 : "");
    else if (startsWith(line, "force")) {
        g.engineActive = 0;
        g.stopPondering();
        g.stopClock();
    } else if (startsWith(line, "white")) {
        g.setSideToMove(1);
        g.stopClock();
    } else if (startsWith(line, "black")) {
        g.setSideToMove(-1);
        g.stopClock();
    } else if (startsWith(line, "playothe")) g.playOther();
    else if (startsWith(line, "new")) {
        g.stopPondering();  // the old game's move must not land on the new board
        g.setupStartPosition();
        g.engineActive = 1;
        g.associateEngineWithSide(-1);
        g.setClock(0, 0, 5000);
    } else if (startsWith(line, "go")) {
        g.engineActive = 1;
        g.associateEngineWithSide(g.position.toMove);
        g.thinkAndMakeBestMove();
    } else if (startsWith(line, "auto")) g.autoPlay();
    else if (startsWith(line, "ping")) printLine("pong %d\n", strlen(line) > 5 ? atoi(line + 5) : 0);
    else if (startsWith(line, "sd ")) shared.maxDepth = atoi(line + 3);
    else if (startsWith(line, "time")) clock.setTime(clock.enginePlaysWhite ? 1 : 0, atoi(line + 4) * 10);
    else if (startsWith(line, "otim")) clock.setTime(clock.enginePlaysBlack ? 1 : 0, atoi(line + 4) * 10);
    else if (startsWith(line, "st ")) g.setClock(0, 0, atoi(line + 3) * 1000);
    else if (startsWith(line, "?")) g.moveNow();
    else if (startsWith(line, "bench ")) {
        g.engineActive = 1;
        g.bench(atoi(line + 6), 100000);
    } else if (startsWith(line, "bench")) {
        g.engineActive = 1;
        g.bench(12, 10000);
    } else if (startsWith(line, "mp")) g.engineActive = 1;
    else if (startsWith(line, "protover")) printFeatures();
    else if (startsWith(line, "level")) setLevel(g, line);
    else if (line[0] >= 'a' && line[0] <= 'h' && line[1] >= '1' && line[1] <= '8') {
        if (g.makeMove(line) && g.engineActive) g.thinkAndMakeBestMove();
        if (analyze) g.startPondering();
    } else {
        printLine("Error: (unknown command):%s\n", line);
    }
}

}  // namespace

int runXboard(char* line) {
    printf("feature done=0\n");
    game g(instanceName());
    g.setClock(0, 0, 5000);
    bool analyze = false;
    while (!startsWith(line, "quit")) {
        dispatch(g, line, analyze);
        // End of input ends the engine as "quit" would.
        if (!readCommandLine(g, line)) break;
        g.takeOverPendingMove();
    }
    g.engineActive = 0;
    g.stopPondering();
    return 0;
}
