#pragma once
#include <poll.h>
#include <spawn.h>
#include <unistd.h>

#include <string>

extern char** environ;

// Starts binary in directory as a front end does: its standard input reads
// what is written to toChild, its standard output and error go to
// fromChild. Returns the child's id, or -1 with nothing left open.
inline pid_t spawnPiped(const char* binary, const char* directory, int& toChild, int& fromChild,
                        const char* argument1 = nullptr, const char* argument2 = nullptr) {
    int in[2], out[2];
    if (pipe(in) != 0) return -1;
    if (pipe(out) != 0) {
        close(in[0]);
        close(in[1]);
        return -1;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in[0], 0);
    posix_spawn_file_actions_adddup2(&actions, out[1], 1);
    posix_spawn_file_actions_adddup2(&actions, out[1], 2);
    posix_spawn_file_actions_addclose(&actions, in[1]);
    posix_spawn_file_actions_addclose(&actions, out[0]);
    posix_spawn_file_actions_addchdir_np(&actions, directory);
    char* arguments[] = {const_cast<char*>(binary), const_cast<char*>(argument1), const_cast<char*>(argument2),
                         nullptr};
    pid_t pid;
    const bool started = posix_spawn(&pid, binary, &actions, nullptr, arguments, environ) == 0;
    posix_spawn_file_actions_destroy(&actions);
    close(in[0]);
    close(out[1]);
    if (!started) {
        close(in[1]);
        close(out[0]);
        return -1;
    }
    toChild = in[1];
    fromChild = out[0];
    return pid;
}

// Appends what the child writes within timeoutMs to output; false on time-out
// or end of output.
inline bool readPiped(int fromChild, std::string& output, int timeoutMs) {
    pollfd p{fromChild, POLLIN, 0};
    if (poll(&p, 1, timeoutMs) <= 0) return false;
    char buffer[65536];
    const ssize_t n = read(fromChild, buffer, sizeof buffer);
    if (n <= 0) return false;
    output.append(buffer, n);
    return true;
}
