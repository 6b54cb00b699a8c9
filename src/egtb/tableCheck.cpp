#include "egtb/tableCheck.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>

namespace {

// Well inside the 10 s the user-interface process waits for the search
// process to come up, for both libraries together.
constexpr int checkTimeoutMs = 3000;

// What the child reports: table i begun (state -1), answered (1) or not (0).
struct report {
    int table;
    int state;
};

[[noreturn]] void probeInChild(int from, int count, const std::function<bool(int)>& probe, int out) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    // A crash here is expected now and then: no core file.
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    // The libraries' own messages were printed once already, by the parent.
    const int quiet = open("/dev/null", O_WRONLY);
    dup2(quiet, 1);
    dup2(quiet, 2);
    for (int i = from; i < count; i++) {
        report r{i, -1};
        if (write(out, &r, sizeof r) != sizeof r) break;
        r.state = probe(i) ? 1 : 0;
        if (write(out, &r, sizeof r) != sizeof r) break;
    }
    _exit(0);
}

}  // namespace

std::vector<tableHealth> checkTables(int count, const std::function<bool(int)>& probe) {
    std::vector<tableHealth> health(count, tableHealth::sound);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(checkTimeoutMs);
    int next = 0;
    bool timeUp = false;
    while (next < count && !timeUp) {
        int channel[2];
        if (pipe(channel) != 0) break;
        fflush(stdout);
        const pid_t child = fork();
        if (child == 0) {
            close(channel[0]);
            probeInChild(next, count, probe, channel[1]);
        }
        close(channel[1]);
        int begun = -1;
        while (child > 0) {
            const auto left =
                std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
            pollfd ready{channel[0], POLLIN, 0};
            const int polled = left.count() > 0 ? poll(&ready, 1, static_cast<int>(left.count())) : 0;
            if (polled < 0 && errno == EINTR) continue;
            report r;
            if (polled <= 0) timeUp = true;
            if (polled <= 0 || read(channel[0], &r, sizeof r) != sizeof r)
                break;  // out of time, or the child has ended
            if (r.state < 0) {
                begun = r.table;
                continue;
            }
            health[r.table] = r.state ? tableHealth::sound : tableHealth::failed;
            begun = -1;
        }
        if (child > 0) {
            kill(child, SIGKILL);
            waitpid(child, nullptr, 0);
        }
        close(channel[0]);
        if (child < 0 || begun < 0 || timeUp) break;
        health[begun] = tableHealth::crashed;
        next = begun + 1;
    }
    return health;
}
