#pragma once
#include <dirent.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

// What run prints on standard output.
template <class body>
std::string printed(body run) {
    testing::internal::CaptureStdout();
    run();
    return testing::internal::GetCapturedStdout();
}

// Runs body in a forked child with its standard output captured; returns what it printed. The child's exit
// status: 0, or what body passes to _exit.
template <class body>
std::string inChild(body run, int* status = nullptr) {
    int out[2];
    EXPECT_EQ(pipe(out), 0);
    fflush(stdout);  // or the child prints what this process still buffers
    const pid_t pid = fork();
    if (pid == 0) {
        dup2(out[1], 1);
        close(out[0]);
        setvbuf(stdout, nullptr, _IONBF, 0);
        run();
        _exit(0);
    }
    close(out[1]);
    std::string text;
    char buffer[256];
    for (ssize_t n; (n = read(out[0], buffer, sizeof buffer)) > 0;) text.append(buffer, n);
    close(out[0]);
    int childStatus = 0;
    waitpid(pid, &childStatus, 0);
    if (status) *status = WIFEXITED(childStatus) ? WEXITSTATUS(childStatus) : -1;
    return text;
}

// Names in /dev/shm that hold text.
inline int shmNamesWith(const std::string& text) {
    int count = 0;
    if (DIR* dir = opendir("/dev/shm")) {
        while (dirent* entry = readdir(dir)) count += std::string(entry->d_name).find(text) != std::string::npos;
        closedir(dir);
    }
    return count;
}

// A process as /proc shows it: its id, its name in parentheses, its state and its parent's id.
struct processEntry {
    int pid = 0, parent = 0;
    std::string name, state;
    std::string file(const char* which) const {
        return (std::ostringstream() << std::ifstream("/proc/" + std::to_string(pid) + "/" + which).rdbuf()).str();
    }
};

template <class visit>
void forEachProcess(visit run) {
    DIR* dir = opendir("/proc");
    while (dirent* entry = readdir(dir)) {
        processEntry p;
        p.pid = std::atoi(entry->d_name);
        if (p.pid <= 0) continue;
        std::ifstream("/proc/" + std::to_string(p.pid) + "/stat") >> p.name >> p.name >> p.state >> p.parent;
        run(p);
    }
    closedir(dir);
}

// The role processes of the engine started as enginePid, alive: they carry its tag in their environment.
inline std::vector<processEntry> roleProcessesOf(int enginePid) {
    std::vector<processEntry> found;
    const std::string tag = "TALVIN_INSTANCE=" + std::to_string(enginePid) + '\0';
    forEachProcess([&](const processEntry& p) {
        if (p.state != "Z" && p.file("environ").find(tag) != std::string::npos) found.push_back(p);
    });
    return found;
}

// A role process's argument: '0' the search process, '1' to '9' the slaves.
inline char roleOf(const processEntry& p) {
    const std::string command = p.file("cmdline");  // ends "0\0" or "1\0"...
    return command.size() >= 2 ? command[command.size() - 2] : 0;
}

// Occurrences of text in output from position from on.
inline int occurrences(const std::string& output, const std::string& text, size_t from = 0) {
    int n = 0;
    for (size_t at = output.find(text, from); at != std::string::npos; at = output.find(text, at + 1)) n++;
    return n;
}
