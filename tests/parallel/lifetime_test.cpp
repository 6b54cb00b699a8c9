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

// The miniature engine with its role processes; closes its pipes when it goes.
struct engineRun {
    pid_t pid = -1;
    int input = -1, output = -1;  // the engine's standard input and output
    explicit engineRun(int roles) {
        pid = spawnPiped(IPC_HELPER, ".", input, output, "engine", std::to_string(roles).c_str());
        EXPECT_GT(pid, 0);
    }
    ~engineRun() {
        close(input);
        close(output);
    }
};

std::string readLine(int fd) {
    std::string line;
    char c;
    while (read(fd, &c, 1) == 1 && c != '\n') line += c;
    return line;
}

// The engine itself, its watcher, and the role processes (which inherit the tag).
int processesOf(const std::string& tag) {
    int count = 0;
    forEachProcess([&](const processEntry& p) {
        count += p.state != "Z" && (std::to_string(p.pid) == tag || p.name == "(janitor-" + tag + ")" ||
                                    p.file("environ").find("TALVIN_INSTANCE=" + tag + '\0') != std::string::npos);
    });
    return count;
}

// Polls for up to two seconds until nothing of the instance is left.
bool nothingLeft(const std::string& tag) {
    for (int i = 0; i < 200; i++) {
        if (shmNamesWith("Talvin_v8.05_x64(" + tag + ")") == 0 && processesOf(tag) == 0) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

}  // namespace

TEST(Lifetime, NormalExitLeavesNothing) {
    engineRun run(3);
    const std::string tag = std::to_string(run.pid);
    EXPECT_EQ(readLine(run.output), "ready Talvin_v8.05_x64(" + tag + ")");
    EXPECT_EQ(shmNamesWith("Talvin_v8.05_x64(" + tag + ")"), 0);  // names go once every process has opened them
    EXPECT_EQ(processesOf(tag), 5);                               // engine, watcher, three roles
    ASSERT_EQ(write(run.input, "quit\n", 5), 5);
    int status = 0;
    waitpid(run.pid, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_TRUE(nothingLeft(tag));
}

TEST(Lifetime, KillingTheEngineAtAnyMomentLeavesNothing) {
    for (int delayMs : {0, 1, 2, 5, 10, 20, 50, 100, 200}) {
        engineRun run(3);
        const std::string tag = std::to_string(run.pid);
        std::this_thread::sleep_for(std::chrono::milliseconds(delayMs));
        kill(run.pid, SIGKILL);
        waitpid(run.pid, nullptr, 0);
        EXPECT_TRUE(nothingLeft(tag)) << "killed after " << delayMs << " ms";
    }
}

TEST(Lifetime, KillingARoleProcessLeavesTheEngineWorking) {
    for (int delayMs : {0, 5, 50}) {
        engineRun run(2);
        const std::string tag = std::to_string(run.pid);
        std::this_thread::sleep_for(std::chrono::milliseconds(delayMs));
        // Kill every child but the watcher, whatever stage it is in.
        forEachProcess([&](const processEntry& p) {
            if (std::to_string(p.parent) == tag && p.name != "(janitor-" + tag + ")") kill(p.pid, SIGKILL);
        });
        ASSERT_EQ(write(run.input, "quit\n", 5), 5);
        int status = 0;
        waitpid(run.pid, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
        EXPECT_TRUE(nothingLeft(tag)) << "role killed after " << delayMs << " ms";
    }
}
