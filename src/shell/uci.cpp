#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "game/game.h"
#include "platform/console.h"
#include "platform/instance.h"
#include "settings/settingsFile.h"
#include "shell/protocols.h"

namespace {

const char* checkText(char value) { return value == 't' ? "true\n" : "false\n"; }

void announce(const settingsFileValues& v) {
    printf("id name %s_UCI\n", engineName);
    printf("id author the Talvin team\n");
    printf("option name number_of_processors type spin min 0 max 8 default %d\n", v.numberOfProcessors);
    printf("option name Hash type spin min 1 max 4096 default %d\n", v.hashMB);
    printf("option name OwnBook type check default %s", checkText(v.ownBook));
    printf("option name BookBestMoveOnly type check default %s", checkText(v.bookBestMoveOnly));
    printf("option name BookPath type string default %s", v.bookPath);
    printf("option name EGTB type check default %s", checkText(v.egtb));
    printf("option name NalimovPath type string default %s", v.nalimovPath);
    printf("option name NalimovCache type spin 1 min 1 max 256 default %d\n", v.nalimovCacheMB);
    printf("option name Ponder type check default %s", checkText(v.ponder));
    printf("option name Extentions type check default %s", checkText(v.extentions));
    printf("option name Null-move Pruning type check default %s", checkText(v.nullMovePruning));
    printf("option name Late-move Pruning type check default %s", checkText(v.lateMovePruning));
    printf("option name Futility Pruning type check default %s", checkText(v.futilityPruning));
    printf("option name print_Inverted_Score type check default %s", checkText(v.printInvertedScore));
    printf("option name DrawScore type spin min -900 max 900 default %d\n", v.drawScore);
    printf("option name Queen type spin min -100 max 2000 default %d\n", v.queen);
    printf("option name Rook type spin min -100 max 1000 default %d\n", v.rook);
    printf("option name Bishop type spin min -100 max 900 default %d\n", v.bishop);
    printf("option name Knight type spin min -100 max 900 default %d\n", v.knight);
    printf("option name Pawn type spin min -100 max 900 default %d\n", v.pawn);
    printf("uciok\n");
}

// One "setoption" line of the first phase.
void collectOption(settingsFileValues& v, const char* line) {
    struct textOption {
        const char* prefix;
        char* value;
    } texts[] = {{"setoption name NalimovPath value ", v.nalimovPath}, {"setoption name BookPath value ", v.bookPath}};
    struct numberOption {
        const char* prefix;
        int* value;
    } numbers[] = {{"setoption name Hash value ", &v.hashMB},
                   {"setoption name NalimovCache value ", &v.nalimovCacheMB},
                   {"setoption name DrawScore value ", &v.drawScore},
                   {"setoption name Queen value ", &v.queen},
                   {"setoption name Rook value ", &v.rook},
                   {"setoption name Bishop value ", &v.bishop},
                   {"setoption name Knight value ", &v.knight},
                   {"setoption name Pawn value ", &v.pawn},
                   {"setoption name number_of_processors value ", &v.numberOfProcessors}};
    struct checkOption {
        const char* prefix;
        char* value;
    } checks[] = {{"setoption name OwnBook value ", &v.ownBook},
                  {"setoption name BookBestMoveOnly value ", &v.bookBestMoveOnly},
                  {"setoption name print_Inverted_Score value ", &v.printInvertedScore},
                  {"setoption name Ponder value ", &v.ponder},
                  {"setoption name EGTB value ", &v.egtb},
                  {"setoption name Extentions value ", &v.extentions},
                  {"setoption name Null-move Pruning value ", &v.nullMovePruning},
                  {"setoption name Late-move Pruning value ", &v.lateMovePruning},
                  {"setoption name Futility Pruning value ", &v.futilityPruning}};
    for (const textOption& o : texts)
        if (startsWith(line, o.prefix)) {
            snprintf(o.value, optionPathMaxLength + 1, "%s", line + strlen(o.prefix));
            return;
        }
    for (const numberOption& o : numbers)
        if (startsWith(line, o.prefix)) {
            *o.value = atoi(line + strlen(o.prefix));
            return;
        }
    for (const checkOption& o : checks)
        if (startsWith(line, o.prefix)) {
            *o.value = line[strlen(o.prefix)];
            return;
        }
}

void changeOption(game& g, const char* rest) {
    constexpr int ponderSwitch = 0;  // not a game option: pondering has setters of its own
    struct {
        const char* text;
        int id;
    } switches[] = {{"Ponder value ", ponderSwitch},
                    {"EGTB value ", egtbOption},
                    {"Extentions value ", extensionsOption},
                    {"Null-move Pruning value ", nullMoveOption},
                    {"Late-move Pruning value ", lateMovePruningOption},
                    {"Futility Pruning value ", futilityOption},
                    {"OwnBook value ", bookOption}};
    for (const auto& s : switches) {
        if (!startsWith(rest, s.text)) continue;
        const char* value = rest + strlen(s.text);
        const int on = startsWith(value, "true") ? 1 : startsWith(value, "false") ? 0 : -1;
        if (on < 0) return;
        if (s.id == ponderSwitch) {
            if (on) g.setPonderingActive();
            else g.setPonderingInactive();
        } else {
            g.setUciOption(s.id, on);
        }
        return;
    }
}

// The text after a parameter name that follows a blank, or null when absent.
const char* goParameter(const char* line, const char* name) {
    for (const char* p = strchr(line, ' '); p; p = strchr(p + 1, ' '))
        if (startsWith(p + 1, name)) return p + 1 + strlen(name);
    return nullptr;
}

long long goValue(const char* line, const char* name) {
    const char* value = goParameter(line, name);
    return value ? atoll(value) : 0;
}

bool goFlag(const char* line, const char* name) { return goParameter(line, name) != nullptr; }

// Set by a "position" that was refused: the next "go" searches nothing.
bool positionRefused = false;

// Every limit a "go" names holds, alone or together with a clock: a time
// (movetime, the clock), a depth, a node count, a mate distance; infinite
// waits for "stop" whatever the search finds.
void go(game& g, const char* line) {
    sharedData& shared = *g.shared;
    if (positionRefused) {
        printInfo("Illegal position: no search\n");
        printLine("bestmove 0000\n");
        return;
    }
    const bool white = g.position.toMove == 1;
    const bool infinite = goFlag(line, "infinite");
    const int movetime = static_cast<int>(goValue(line, "movetime "));
    const bool clockGiven = goFlag(line, white ? "wtime " : "btime ");
    const int depth = static_cast<int>(goValue(line, "depth "));
    const int mate = static_cast<int>(goValue(line, "mate "));
    const long long nodes = goValue(line, "nodes ");
    // The clock first: every setClock puts the depth limit back to 35.
    if (infinite) {
        g.setClock(0, 0, 99999999);
        g.resetHash();
    } else if (movetime > 0) {
        g.setClock(0, 0, movetime);
    } else if (clockGiven || goFlag(line, "movestogo ") || goFlag(line, white ? "winc " : "binc ")) {
        g.setClock(static_cast<int>(goValue(line, "movestogo ")),
                   static_cast<int>(goValue(line, white ? "wtime " : "btime ")),
                   static_cast<int>(goValue(line, white ? "winc " : "binc ")));
    } else if (depth > 0 || mate > 0 || nodes > 0) {
        g.setClock(0, 0, 99999999);  // no time named: only the named limit ends the search
    }
    // The times bound every budget, a movetime's too, and update the clock for a ponder hit.
    if (!infinite && goFlag(line, "wtime ")) g.setTimeWhite(static_cast<int>(goValue(line, "wtime ")));
    if (!infinite && goFlag(line, "btime ")) g.setTimeBlack(static_cast<int>(goValue(line, "btime ")));
    // Depth N ends with iteration N. A mate in N is 2N - 1 plies, and the
    // search sees it one ply later, where the side mated has no move: at
    // most 2N iterations; the search stops by itself once it has a mate.
    if (depth > 0) shared.maxDepth = depth - 1;
    if (mate > 0) shared.maxDepth = std::min(shared.maxDepth, 2 * mate - 1);
    shared.nodeLimit = nodes > 0 ? nodes : 0;
    shared.untilStopped = infinite;
    if (goFlag(line, "ponder")) {
        g.setPonderingActive();
        g.startPondering();
        return;
    }
    g.engineActive = 1;
    g.associateEngineWithSide(g.position.toMove);
    g.thinkAndMakeBestMove();
}

void setPosition(game& g, const char* line) {
    g.engineActive = 0;
    g.stopClock();
    g.stopPondering();
    bool accepted = true;
    if (startsWith(line, "position startpos")) g.setupStartPosition();
    else if (startsWith(line, "position fen ")) accepted = g.setupPosition(line + 13);
    positionRefused = !accepted;
    if (!accepted) return;
    const char* m = strchr(line, 'm');
    if (m == nullptr || !startsWith(m, "moves ")) return;
    for (const char* p = m + 6; *p;) {
        while (*p == ' ') p++;
        if (*p == 0 || *p == '\n' || *p == '\r') return;
        if (!g.makeMove(p)) return;
        while (*p && *p != ' ') p++;
    }
}

}  // namespace

int runUci() {
    settingsFileValues values;
    announce(values);
    char line[lineBufferSize];
    bool ended = fgets(line, sizeof line, stdin) == nullptr;
    while (!ended && startsWith(line, "setoption")) {
        collectOption(values, line);
        ended = fgets(line, sizeof line, stdin) == nullptr;
    }
    writeSettingsFile(settingsFileName, engineName, values);
    setUciOutput();  // before the other processes start: they print too
    game g(instanceName());
    g.shared->outputMode = uciProtocol;
    g.setClock(0, 0, 5000);
    while (!ended && !startsWith(line, "quit")) {
        if (startsWith(line, "isready")) printLine("readyok\n");
        else if (startsWith(line, "ucinewgame")) {
            g.engineActive = 0;
            g.stopClock();
            g.stopPondering();
        } else if (startsWith(line, "position")) setPosition(g, line);
        else if (startsWith(line, "stop")) g.moveNow();
        else if (startsWith(line, "ponderhit")) {
            g.engineActive = 1;
            g.associateEngineWithSide(g.position.toMove);
            g.thinkAndMakeBestMove();
        } else if (startsWith(line, "setoption name ")) changeOption(g, line + 15);
        else if (startsWith(line, "go")) go(g, line);
        ended = !readCommandLine(g, line);
    }
    g.stopPondering();
    return 0;
}
