#include <dirent.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

extern char** environ;

namespace {

struct engineRun {
    pid_t pid = -1;
    int input = -1;   // the engine's standard input
    int output = -1;  // the engine's standard output
};

engineRun startEngine(int roles) {
    int in[2], out[2];
    EXPECT_EQ(pipe(in), 0);
    EXPECT_EQ(pipe(out), 0);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in[0], 0);
    posix_spawn_file_actions_adddup2(&actions, out[1], 1);
    posix_spawn_file_actions_addclose(&actions, in[1]);
    posix_spawn_file_actions_addclose(&actions, out[0]);
    const std::string count = std::to_string(roles);
    char* arguments[] = {const_cast<char*>(IPC_HELPER), const_cast<char*>("engine"), const_cast<char*>(count.c_str()), nullptr};
    engineRun run;
    EXPECT_EQ(posix_spawn(&run.pid, IPC_HELPER, &actions, nullptr, arguments, environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    close(in[0]);
    close(out[1]);
    run.input = in[1];
    run.output = out[0];
    return run;
}

std::string readLine(int fd) {
    std::string line;
    char c;
    while (read(fd, &c, 1) == 1 && c != '\n') line += c;
    return line;
}

// Entries in /dev/shm and live processes that carry the instance tag.
int shmEntriesOf(const std::string& tag) {
    int count = 0;
    DIR* dir = opendir("/dev/shm");
    while (dirent* entry = readdir(dir)) {
        if (std::string(entry->d_name).find(tag) != std::string::npos) count++;
    }
    closedir(dir);
    return count;
}

// The engine itself, its watcher, and the role processes (which inherit the tag).
int processesOf(const std::string& tag) {
    int count = 0;
    DIR* dir = opendir("/proc");
    while (dirent* entry = readdir(dir)) {
        if (!isdigit(entry->d_name[0])) continue;
        std::string name, state;
        std::ifstream(std::string("/proc/") + entry->d_name + "/stat") >> name >> name >> state;
        if (state == "Z") continue;
        std::ifstream environment(std::string("/proc/") + entry->d_name + "/environ");
        std::stringstream text;
        text << environment.rdbuf();
        if (entry->d_name == tag || name == "(janitor-" + tag + ")" ||
            text.str().find("TALVIN_INSTANCE=" + tag + '\0') != std::string::npos)
            count++;
    }
    closedir(dir);
    return count;
}

// Polls for up to two seconds until nothing of the instance is left.
bool nothingLeft(const std::string& tag) {
    for (int i = 0; i < 200; i++) {
        if (shmEntriesOf("Talvin_v8.05_x64(" + tag + ")") == 0 && processesOf(tag) == 0) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

}  // namespace

TEST(Lifetime, NormalExitLeavesNothing) {
    engineRun run = startEngine(3);
    const std::string tag = std::to_string(run.pid);
    EXPECT_EQ(readLine(run.output), "ready Talvin_v8.05_x64(" + tag + ")");
    EXPECT_EQ(shmEntriesOf("Talvin_v8.05_x64(" + tag + ")"), 0);  // names go once every process has opened them
    EXPECT_EQ(processesOf(tag), 5);  // engine, watcher, three roles
    ASSERT_EQ(write(run.input, "quit\n", 5), 5);
    int status = 0;
    waitpid(run.pid, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_TRUE(nothingLeft(tag));
    close(run.input);
    close(run.output);
}

TEST(Lifetime, KillingTheEngineAtAnyMomentLeavesNothing) {
    for (int delayMs : {0, 1, 2, 5, 10, 20, 50, 100, 200}) {
        engineRun run = startEngine(3);
        const std::string tag = std::to_string(run.pid);
        std::this_thread::sleep_for(std::chrono::milliseconds(delayMs));
        kill(run.pid, SIGKILL);
        waitpid(run.pid, nullptr, 0);
        EXPECT_TRUE(nothingLeft(tag)) << "killed after " << delayMs << " ms";
        close(run.input);
        close(run.output);
    }
}

TEST(Lifetime, KillingARoleProcessLeavesTheEngineWorking) {
    for (int delayMs : {0, 5, 50}) {
        engineRun run = startEngine(2);
        const std::string tag = std::to_string(run.pid);
        std::this_thread::sleep_for(std::chrono::milliseconds(delayMs));
        // Kill every child but the watcher, whatever stage it is in.
        DIR* dir = opendir("/proc");
        while (dirent* entry = readdir(dir)) {
            if (!isdigit(entry->d_name[0])) continue;
            std::string name, state, parent;
            std::ifstream(std::string("/proc/") + entry->d_name + "/stat") >> name >> name >> state >> parent;
            if (parent == tag && name != "(janitor-" + tag + ")") kill(std::atoi(entry->d_name), SIGKILL);
        }
        closedir(dir);
        ASSERT_EQ(write(run.input, "quit\n", 5), 5);
        int status = 0;
        waitpid(run.pid, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
        EXPECT_TRUE(nothingLeft(tag)) << "role killed after " << delayMs << " ms";
        close(run.input);
        close(run.output);
    }
}
