#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <thread>

#include "../support/process.h"
#include "pipedProcess.h"

namespace {

// The miniature engine with three role processes; closes its pipes when it goes.
struct engineRun {
    int input = -1, output = -1;  // the engine's standard input and output
    const pid_t pid = spawnPiped(IPC_HELPER, ".", input, output, "engine", "3");
    const std::string tag = std::to_string(pid);
    ~engineRun() {
        close(input);
        close(output);
    }
    // Quits; the engine must exit cleanly.
    void quit() const {
        int status = 0;
        EXPECT_EQ(write(input, "quit\n", 5), 5);
        waitpid(pid, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    // The engine itself, its watcher and its role processes, alive.
    int processes() const {
        int count = static_cast<int>(roleProcessesOf(pid).size());
        forEachProcess([&](const processEntry& p) {
            count += p.state != "Z" && (p.pid == pid || p.name == "(janitor-" + tag + ")");
        });
        return count;
    }
    // Polls for up to two seconds until nothing of the engine is left.
    bool nothingLeft() const {
        for (int i = 0; i < 200; i++) {
            if (shmNamesWith("Talvin_v8.05_x64(" + tag + ")") == 0 && processes() == 0) return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return false;
    }
};

}  // namespace

TEST(Lifetime, NormalExitLeavesNothing) {
    const engineRun run;
    std::string line;
    for (char c; read(run.output, &c, 1) == 1 && c != '\n';) line += c;
    EXPECT_EQ(line, "ready Talvin_v8.05_x64(" + run.tag + ")");
    EXPECT_EQ(shmNamesWith("Talvin_v8.05_x64(" + run.tag + ")"), 0);  // names go once every process has opened them
    EXPECT_EQ(run.processes(), 5);                                    // engine, watcher, three roles
    run.quit();
    EXPECT_TRUE(run.nothingLeft());
}

// Killed at any moment, the engine leaves nothing; its role processes killed at any stage, it goes on working.
TEST(Lifetime, KillingTheEngineOrItsRolesAtAnyMomentLeavesNothing) {
    const struct {
        int delayMs;
        bool roles;
    } kills[] = {{0, false},  {1, false},   {2, false},   {5, false}, {10, false}, {20, false},
                 {50, false}, {100, false}, {200, false}, {0, true},  {5, true},   {50, true}};
    for (const auto& k : kills) {
        const engineRun run;
        std::this_thread::sleep_for(std::chrono::milliseconds(k.delayMs));
        if (k.roles) {
            forEachProcess([&](const processEntry& p) {
                if (p.parent == run.pid && p.name != "(janitor-" + run.tag + ")") kill(p.pid, SIGKILL);
            });
            run.quit();
        } else {
            kill(run.pid, SIGKILL);
            waitpid(run.pid, nullptr, 0);
        }
        EXPECT_TRUE(run.nothingLeft()) << (k.roles ? "roles" : "engine") << " killed after " << k.delayMs << " ms";
    }
}
