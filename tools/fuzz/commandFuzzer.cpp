// Seeded random driver of the command loop: runs the engine through pipes,
// as a front end does, and sends it random sequences of real commands,
// positions and moves, garbage and 10,000-character lines, in one write or
// with random gaps. After every batch a ping (xboard) or isready (UCI) must
// be answered within a bound; a session ends with quit, the end of input or
// a kill, and then no process and no /dev/shm name of the engine may be left.
//   talvin-command-fuzz TALVIN SECONDS [SEED]
// Prints the seed and the commands of a failing session, exits 1 on a hang,
// a crash or a leftover; 0 after SECONDS without one.
#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "pipedProcess.h"

namespace {

using clock_type = std::chrono::steady_clock;
constexpr int answerBoundMs = 30000;  // the longest a command may go unanswered
constexpr int exitBoundMs = 15000;

std::mt19937 rng;
int pick(int n) { return static_cast<int>(rng() % n); }
template <class T, size_t n>
const T& pick(const T (&items)[n]) {
    return items[pick(n)];
}

const char* const fens[] = {
    "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1",
    "r1bq1rk1/pp2bppp/2n1pn2/3p4/2PP4/2N1PN2/PP3PPP/R2QKB1R w KQ - 0 9",
    "7k/8/6K1/8/8/8/8/R7 w - - 0 1",      // mate in one
    "7k/P7/8/8/8/8/8/K7 w - - 0 1",       // promotion
    "k7/8/8/8/8/8/8/K7 b - - 99 80",      // bare kings, fifty-move count
    "4k3/8/8/8/8/8/8/4K2R w KQkq - 0 1",  // rights without rooks
    "8/8/8/8/8/8/8/8 w - - 0 1",          // no kings
    "4k3/4R3/8/8/8/8/8/4K3 w - - 0 1",    // side not to move in check
    "PPPPPPPP/8/8/8/8/8/8/pppppppp w",    // pawns on the back ranks
    "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1",
    "x/y/z",
    "",
    "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq z9 -5 -1",
};
const char* const moves[] = {"e2e4", "e7e5", "g1f3", "b8c6", "d2d4", "e1g1", "e7e8q", "a7a8N", "a2a1",
                             "h7h8", "e2e5", "e1c1", "d7d5", "c2c4", "a1a8", "zz",    "e2",    "e2e4e5e6"};

std::string garbage() {
    std::string text;
    const int length = pick(4) == 0 ? 10000 + pick(200) : pick(40);
    for (int i = 0; i < length; i++) text += static_cast<char>(pick(4) ? 32 + pick(95) : 1 + pick(255));
    for (char& c : text)
        if (c == '\n') c = ' ';
    return text;
}

std::string moveList() {
    std::string text;
    for (int n = pick(6); n > 0; n--) text += std::string(" ") + pick(moves);
    return text;
}

std::string xboardCommand() {
    switch (pick(26)) {
    case 0: return "new";
    case 1: return "force";
    case 2: return "go";
    case 3: return "?";
    case 4: return "analyze";
    case 5: return "exit";
    case 6: return "undo";
    case 7: return "remove";
    case 8: return pick(2) ? "hard" : "easy";
    case 9: return pick(2) ? "post" : "nopost";
    case 10: return "hint";
    case 11: return ".";
    case 12: return pick(2) ? "white" : "black";
    case 13: return "playother";
    case 14: return "sd " + std::to_string(pick(12));
    case 15: return "st " + std::to_string(pick(3));
    case 16: return pick(2) ? "level 40 0:05 0" : pick(2) ? "level 0 0:02 0.05" : "level 40 5 2";
    case 17: return (pick(2) ? "time " : "otim ") + std::to_string(pick(3000) - 100);
    case 18: return std::string("setboard ") + pick(fens);
    case 19:
    case 20:
    case 21: return pick(moves);
    case 22: return "result 1-0 {done}";
    case 23: return pick(2) ? "protover 2" : "accepted setboard";
    default: return garbage();
    }
}

std::string uciCommand() {
    switch (pick(20)) {
    case 0: return "ucinewgame";
    case 1:
    case 2: return "position startpos moves" + moveList();
    case 3: return std::string("position fen ") + pick(fens) + (pick(2) ? " moves" + moveList() : "");
    case 4: return "go movetime " + std::to_string(pick(300));
    case 5: return "go depth " + std::to_string(pick(7));
    case 6: return "go nodes " + std::to_string(pick(50000));
    case 7: return "go mate " + std::to_string(pick(4));
    case 8: return "go infinite";
    case 9: return "go ponder wtime " + std::to_string(pick(3000)) + " btime " + std::to_string(pick(3000));
    case 10:
        return "go wtime " + std::to_string(pick(5000) - 50) + " btime " + std::to_string(pick(5000)) +
               (pick(2) ? " winc 50 binc 50" : "") + (pick(2) ? " movestogo " + std::to_string(pick(40)) : "");
    case 11:
    case 12: return "stop";
    case 13: return "ponderhit";
    case 14:
        return std::string("setoption name ") + (pick(2) ? "Ponder" : "OwnBook") + " value " +
               (pick(2) ? "true" : "false");
    case 15: return "go";
    default: return garbage();
    }
}

struct engine {
    pid_t pid = -1;
    int input = -1, output = -1;
    std::string text;  // all it printed

    engine(const char* binary, const std::string& directory) {
        pid = spawnPiped(binary, directory.c_str(), input, output);
        if (pid < 0) exit(2);
    }
    void send(const std::string& s) {
        if (input >= 0 && write(input, s.data(), s.size()) < 0) {}
    }
    // Reads until text appears after from; false on time-out or end of output.
    bool waitFor(const std::string& wanted, size_t from, int ms) {
        const auto deadline = clock_type::now() + std::chrono::milliseconds(ms);
        while (text.find(wanted, from) == std::string::npos) {
            const int left = static_cast<int>(
                std::chrono::duration_cast<std::chrono::milliseconds>(deadline - clock_type::now()).count());
            if (left <= 0 || !readPiped(output, text, left)) return false;
        }
        return true;
    }
    // Exit status, -2 for a signal, -1 when it does not end in time.
    int finish(int ms) {
        const auto deadline = clock_type::now() + std::chrono::milliseconds(ms);
        int status = 0;
        while (waitpid(pid, &status, WNOHANG) == 0) {
            if (clock_type::now() > deadline) {
                kill(pid, SIGKILL);
                waitpid(pid, nullptr, 0);
                return -1;
            }
            waitFor("\x01never", text.size(), 10);
        }
        return WIFEXITED(status) ? WEXITSTATUS(status) : -2;
    }
};

// Names in /dev/shm and processes that still carry the engine's tag.
int leftovers(int enginePid) {
    int count = 0;
    char tag[32], variable[48];
    snprintf(tag, sizeof tag, "(%d)", enginePid);
    const int variableLength =
        snprintf(variable, sizeof variable, "TALVIN_INSTANCE=%d", enginePid) + 1;  // with its end
    for (int attempt = 0; attempt < 300; attempt++) {
        count = 0;
        if (DIR* dir = opendir("/dev/shm")) {
            while (dirent* entry = readdir(dir)) count += strstr(entry->d_name, tag) != nullptr;
            closedir(dir);
        }
        if (DIR* dir = opendir("/proc")) {
            while (dirent* entry = readdir(dir)) {
                if (atoi(entry->d_name) <= 0) continue;
                std::ifstream in(std::string("/proc/") + entry->d_name + "/environ");
                const std::string environment((std::istreambuf_iterator<char>(in)), {});
                std::string name, state;
                std::ifstream(std::string("/proc/") + entry->d_name + "/stat") >> name >> name >> state;
                count += state != "Z" && environment.find(variable, 0, variableLength) != std::string::npos;
            }
            closedir(dir);
        }
        if (count == 0) return 0;
        usleep(10000);
    }
    return count;
}

// One session; the failure, or empty.
std::string session(const char* binary, std::string& log) {
    char pattern[] = "/tmp/talvin-fuzz-XXXXXX";
    const std::string directory = mkdtemp(pattern);
    if (pick(3) == 0)
        std::ofstream(directory + "/talvin init.ini")
            << "pref:MAXPROCESSES=" << pick(3) << "\npref:pondering=" << pick(2) << "\n";
    engine e(binary, directory);
    const bool uci = pick(2);
    std::string failure;
    auto send = [&](const std::string& s) {
        log += s;
        e.send(s);
    };
    send(uci ? "uci\n" : "xboard\nprotover 2\n");
    if (uci && pick(2))
        send("setoption name number_of_processors value " + std::to_string(pick(2) ? pick(3) : 100000) + "\n");
    for (int batch = 0, rounds = 5 + pick(40); batch < rounds && failure.empty(); batch++) {
        std::string commands;
        for (int n = 1 + pick(6); n > 0; n--) commands += (uci ? uciCommand() : xboardCommand()) + "\n";
        const std::string sync = uci ? "isready\n" : "ping " + std::to_string(batch) + "\n";
        const std::string answer = uci ? "readyok\n" : "pong " + std::to_string(batch) + "\n";
        const size_t from = e.text.size();
        if (pick(2)) {
            send(commands + sync);
        } else {
            const size_t split = commands.find('\n', pick(static_cast<int>(commands.size())));
            send(commands.substr(0, split + 1));
            usleep(pick(5000));
            send(commands.substr(split + 1) + sync);
        }
        if (!e.waitFor(answer, from, answerBoundMs)) failure = "no answer to " + sync;
    }
    const int ending = pick(3);
    if (failure.empty()) {
        if (ending == 0) send("quit\n");
        if (ending <= 1) {
            close(e.input);
            e.input = -1;
            const int status = e.finish(exitBoundMs);
            if (status != 0) failure = "exit status " + std::to_string(status) + " after the end of input";
        } else {
            kill(e.pid, SIGKILL);
            e.finish(exitBoundMs);
        }
    } else {
        kill(e.pid, SIGKILL);
        e.finish(exitBoundMs);
    }
    for (const char* crash : {"AddressSanitizer", "runtime error:", "LeakSanitizer"})
        if (e.text.find(crash) != std::string::npos) failure += std::string(" ") + crash;
    if (const int left = leftovers(e.pid); left != 0) failure += " " + std::to_string(left) + " leftovers";
    if (e.input >= 0) close(e.input);
    close(e.output);
    std::system(("rm -rf '" + directory + "'").c_str());
    if (!failure.empty())
        log += "\n--- engine output (end) ---\n" + e.text.substr(e.text.size() > 20000 ? e.text.size() - 20000 : 0);
    return failure;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        fprintf(stderr, "usage: %s TALVIN SECONDS [SEED]\n", argv[0]);
        return 2;
    }
    signal(SIGPIPE, SIG_IGN);
    // The engine starts in a scratch directory: its path must not depend on ours.
    char binary[4096];
    if (realpath(argv[1], binary) == nullptr) {
        perror(argv[1]);
        return 2;
    }
    const unsigned seed = argc > 3 ? static_cast<unsigned>(atol(argv[3])) : static_cast<unsigned>(time(nullptr));
    rng.seed(seed);
    const auto end = clock_type::now() + std::chrono::seconds(atoi(argv[2]));
    int sessions = 0;
    while (clock_type::now() < end) {
        std::string log;
        const std::string failure = session(binary, log);
        sessions++;
        if (!failure.empty()) {
            printf("FAILED (seed %u, session %d): %s\n--- commands ---\n%s\n", seed, sessions, failure.c_str(),
                   log.c_str());
            return 1;
        }
    }
    printf("seed %u: %d sessions, no hang, crash or leftover\n", seed, sessions);
    return 0;
}
