#pragma once
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <string>

#include "pipedProcess.h"

// The engine binary run through pipes in a scratch directory, as a front
// end runs it. Every read has a time-out, so a hung engine fails the test.
class engineProcess {
public:
    std::string output;  // everything read so far
    pid_t pid = -1;

    explicit engineProcess(const std::string& directory) {
        pid = spawnPiped(TALVIN_BINARY, directory.c_str(), toEngine, fromEngine);
    }
    ~engineProcess() {
        if (toEngine >= 0) close(toEngine);
        if (pid > 0 && !finished(5000)) kill(pid, SIGKILL);
        if (pid > 0) waitpid(pid, nullptr, 0);
        if (fromEngine >= 0) close(fromEngine);
    }

    void send(const std::string& text) {
        if (write(toEngine, text.data(), text.size()) < 0) {}
    }
    void closeInput() {
        close(toEngine);
        toEngine = -1;
    }

    // Reads until the output holds text (after position from), or the time is up.
    bool waitFor(const std::string& text, int timeoutMs = 10000, size_t from = 0) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
        while (output.find(text, from) == std::string::npos) {
            const auto left =
                std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
            if (left.count() <= 0 || !readSome(static_cast<int>(left.count()))) return false;
        }
        return true;
    }

    // Waits for the process to end, reading what it still prints; the exit status or -1.
    int exitStatus(int timeoutMs = 10000) {
        if (!finished(timeoutMs)) return -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    int toEngine = -1, fromEngine = -1, status = 0;
    bool reaped = false;

    bool readSome(int timeoutMs) {
        pollfd p{fromEngine, POLLIN, 0};
        if (poll(&p, 1, timeoutMs) <= 0) return false;
        char buffer[4096];
        const ssize_t n = read(fromEngine, buffer, sizeof buffer);
        if (n <= 0) return false;
        output.append(buffer, n);
        return true;
    }
    bool finished(int timeoutMs) {
        if (reaped) return true;
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
        while (std::chrono::steady_clock::now() < deadline) {
            readSome(10);
            if (waitpid(pid, &status, WNOHANG) == pid) {
                while (readSome(10)) {}
                reaped = true;
                pid = -1;
                return true;
            }
        }
        return false;
    }
};
