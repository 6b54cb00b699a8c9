// talvin-label: makes the tuner's reference file from positions scored by a
// stronger UCI engine at a fixed depth.
//   talvin-label [--depth N] [--engine PATH] [--skip-plies N] [--max N]
//                [--output FILE] FILE.epd|FILE.pgn...
// Every position of an EPD file, and every position after the first
// skip-plies moves of each game of a PGN file, is searched by the engine
// (default /usr/games/stockfish, depth 10) and written as a FEN line and a
// score line ("+35": centipawns from the side to move's view) to FILE
// (default "!finalResults.txt"). Skipped: repeated positions, positions with
// fewer than two legal moves, and positions the engine sees as a mate.
#include <sys/wait.h>
#include <unistd.h>

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include "board/board.h"
#include "board/san.h"
#include "tune/epdRecord.h"

namespace {

// The reference engine on two pipes.
class uciEngine {
public:
    bool start(const char* path) {
        int in[2], out[2];
        if (pipe(in) != 0 || pipe(out) != 0) return false;
        pid = fork();
        if (pid == 0) {
            dup2(in[0], 0);
            dup2(out[1], 1);
            close(in[1]);
            close(out[0]);
            execl(path, path, static_cast<char*>(nullptr));
            _exit(127);
        }
        close(in[0]);
        close(out[1]);
        toEngine = fdopen(in[1], "w");
        fromEngine = fdopen(out[0], "r");
        send("uci\n");
        return waitFor("uciok") && (send("isready\n"), waitFor("readyok"));
    }
    ~uciEngine() {
        if (toEngine) {
            send("quit\n");
            fclose(toEngine);
        }
        if (fromEngine) fclose(fromEngine);
        if (pid > 0) waitpid(pid, nullptr, 0);
    }
    void send(const std::string& text) {
        fputs(text.c_str(), toEngine);
        fflush(toEngine);
    }
    bool waitFor(const char* word) {
        char line[4096];
        while (fgets(line, sizeof line, fromEngine))
            if (strncmp(line, word, strlen(word)) == 0) return true;
        return false;
    }
    // The score of the last full iteration; false for a mate or no answer.
    bool score(const std::string& fen, int depth, int& centipawns) {
        send("position fen " + fen + "\ngo depth " + std::to_string(depth) + "\n");
        char line[4096];
        bool found = false, mate = false;
        while (fgets(line, sizeof line, fromEngine)) {
            if (strncmp(line, "bestmove", 8) == 0) return found && !mate;
            const char* s = strstr(line, " score ");
            if (strncmp(line, "info", 4) != 0 || !s || strstr(line, "bound")) continue;
            mate = strncmp(s, " score mate ", 12) == 0;
            if (!mate && strncmp(s, " score cp ", 10) == 0) centipawns = atoi(s + 10);
            found = true;
        }
        return false;
    }

private:
    pid_t pid = -1;
    FILE* toEngine = nullptr;
    FILE* fromEngine = nullptr;
};

struct labeller {
    uciEngine& engine;
    FILE* out;
    int depth, maxPositions;
    int written = 0, skipped = 0;
    std::set<std::string> seen;

    bool full() const { return maxPositions > 0 && written >= maxPositions; }

    void add(const board& position) {
        if (full()) return;
        char fen[128];
        position.getFen(fen);
        // The engine's own writer numbers moves its own way: the clocks are
        // written here as other programs read them. Repeats are told apart
        // without the clocks.
        std::string key = fen;
        for (int fields = 0, i = 0; i < int(key.size()); i++)
            if (key[i] == ' ' && ++fields == 4) key.resize(i);
        const std::string text =
            key + " " + std::to_string(position.fiftyMoves) + " " + std::to_string(position.ply / 2 + 1);
        uint16_t legal[moveBufferSize];
        position.generateLegalMoves(legal);
        int score = 0;
        if (!seen.insert(key).second || legal[0] == 0 || legal[1] == 0 || !engine.score(text, depth, score)) {
            skipped++;
            return;
        }
        fprintf(out, "%s\n%+d\n", text.c_str(), score);
        written++;
    }
};

void labelEpd(const char* path, board& position, labeller& l) {
    std::ifstream file(path);
    epdRecord record;
    std::string line, error;
    for (int number = 1; std::getline(file, line) && !l.full(); number++) {
        if (line.find_first_not_of(" \t\r") == std::string::npos) continue;
        if (record.parse(line.c_str(), position, error)) l.add(position);
        else fprintf(stderr, "%s:%d: %s\n", path, number, error.c_str());
    }
}

// Moves of every game, with tags, comments, variations, move numbers and
// annotation glyphs passed over. A game with a move that cannot be read is
// left at that move.
void labelPgn(const char* path, board& position, labeller& l, int skipPlies) {
    std::ifstream file(path);
    std::stringstream text;
    text << file.rdbuf();
    const std::string pgn = text.str();
    int plies = 0, variationDepth = 0, game = 0;
    bool inMoves = false, broken = false;
    position.setupStartPosition();
    for (size_t i = 0; i < pgn.size() && !l.full();) {
        const char c = pgn[i];
        if (isspace(static_cast<unsigned char>(c))) {
            i++;
        } else if (c == '{') {
            const size_t end = pgn.find('}', i);
            i = end == std::string::npos ? pgn.size() : end + 1;
        } else if (c == ';' || (c == '%' && (i == 0 || pgn[i - 1] == '\n'))) {
            const size_t end = pgn.find('\n', i);
            i = end == std::string::npos ? pgn.size() : end + 1;
        } else if (c == '(' || c == ')') {
            variationDepth += c == '(' ? 1 : -1;
            i++;
        } else if (c == '[' && variationDepth == 0) {
            const size_t end = pgn.find(']', i);
            const std::string tag = pgn.substr(i + 1, (end == std::string::npos ? pgn.size() : end) - i - 1);
            i = end == std::string::npos ? pgn.size() : end + 1;
            if (inMoves || game == 0) {
                position.setupStartPosition();
                plies = 0;
                inMoves = broken = false;
                game++;
            }
            const size_t quote = tag.find('"'), last = tag.rfind('"');
            if (tag.rfind("FEN ", 0) == 0 && quote != last)
                position.setupPosition(tag.substr(quote + 1, last - quote - 1).c_str());
        } else {
            size_t end = i;
            while (end < pgn.size() && !isspace(static_cast<unsigned char>(pgn[end])) && !strchr("{}();[", pgn[end]))
                end++;
            std::string token = pgn.substr(i, end - i);
            i = end;
            if (variationDepth > 0 || broken || token[0] == '$') continue;
            inMoves = true;
            if (token == "1-0" || token == "0-1" || token == "1/2-1/2" || token == "*") continue;
            token.erase(0, token.find_first_not_of("0123456789."));
            if (token.empty()) continue;
            const int move = sanToMove(position, token.c_str());
            if (move == 0) {
                fprintf(stderr, "%s: game %d: cannot read move %s; rest of the game skipped\n", path, game,
                        token.c_str());
                broken = true;
                continue;
            }
            position.makeMove(move);
            if (++plies > skipPlies) l.add(position);
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    int depth = 10, skipPlies = 8, maxPositions = 0;
    const char* enginePath = "/usr/games/stockfish";
    const char* output = "!finalResults.txt";
    int first = 1;
    for (; first < argc && argv[first][0] == '-'; first++) {
        const char* a = argv[first];
        const bool hasValue = first + 1 < argc;
        if (!strcmp(a, "--depth") && hasValue) depth = atoi(argv[++first]);
        else if (!strcmp(a, "--engine") && hasValue) enginePath = argv[++first];
        else if (!strcmp(a, "--skip-plies") && hasValue) skipPlies = atoi(argv[++first]);
        else if (!strcmp(a, "--max") && hasValue) maxPositions = atoi(argv[++first]);
        else if (!strcmp(a, "--output") && hasValue) output = argv[++first];
        else break;
    }
    if (first >= argc || argv[first][0] == '-') {
        fprintf(stderr,
                "usage: talvin-label [--depth N] [--engine PATH] [--skip-plies N] [--max N] [--output FILE] "
                "FILE.epd|FILE.pgn...\n");
        return 2;
    }
    uciEngine engine;
    if (!engine.start(enginePath)) {
        fprintf(stderr, "cannot start %s as a UCI engine\n", enginePath);
        return 2;
    }
    FILE* out = fopen(output, "w");
    if (!out) {
        fprintf(stderr, "cannot write %s\n", output);
        return 2;
    }
    board position;
    labeller l{engine, out, depth, maxPositions, 0, 0, {}};
    for (int i = first; i < argc; i++) {
        const std::string path = argv[i];
        if (!std::ifstream(path)) {
            fprintf(stderr, "cannot open %s\n", path.c_str());
            continue;
        }
        if (path.size() > 4 && path.compare(path.size() - 4, 4, ".pgn") == 0) labelPgn(argv[i], position, l, skipPlies);
        else labelEpd(argv[i], position, l);
    }
    fclose(out);
    fprintf(stderr, "%d positions written to %s, %d skipped\n", l.written, output, l.skipped);
    return 0;
}
