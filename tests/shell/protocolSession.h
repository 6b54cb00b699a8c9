#pragma once
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <memory>
#include <random>
#include <string>

#include "../support/process.h"
#include "../support/scratchDirectory.h"
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

    bool readSome(int timeoutMs) { return readPiped(fromEngine, output, timeoutMs); }
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

// A fresh scratch directory and engine per test; at the end the engine must
// have left no shared-memory name behind.
class ProtocolSession : public ::testing::Test {
protected:
    const scratchDirectory scratch;
    const std::string directory = scratch.path;
    std::unique_ptr<engineProcess> engine;
    int enginePid = 0;

    void start(const std::string& settingsFile = "") {
        if (!settingsFile.empty()) scratch.write(settingsFileName, settingsFile);
        engine = std::make_unique<engineProcess>(directory);
        enginePid = engine->pid;
    }
    void TearDown() override {
        engine.reset();
        EXPECT_EQ(namesLeft(), 0) << "shared-memory names left by engine " << enginePid;
    }
    int namesLeft() const { return shmNamesWith(std::string("(").append(std::to_string(enginePid)).append(")")); }
    std::string file(const std::string& name) const { return scratch.read(name); }
    // Sends a line and waits for the expected reply.
    void expectReply(const std::string& line, const std::string& reply, int timeoutMs = 10000) {
        const size_t from = engine->output.size();
        engine->send(line);
        EXPECT_TRUE(engine->waitFor(reply, timeoutMs, from)) << "after " << line << "no " << reply << "\ngot:\n"
                                                             << engine->output.substr(from);
    }
    // Each line sent in turn, with the reply it must get.
    void expectReplies(std::initializer_list<std::pair<std::string, std::string>> transcript) {
        for (const auto& [line, reply] : transcript) expectReply(line, reply);
    }
    // Sends a line, then waits for each reply in turn, each after the one before.
    void expectReplies(const std::string& line, std::initializer_list<std::string> replies) {
        size_t from = engine->output.size();
        engine->send(line);
        for (const std::string& reply : replies) {
            ASSERT_TRUE(engine->waitFor(reply, 10000, from)) << "after " << line << "no " << reply << "\ngot:\n"
                                                             << engine->output.substr(from);
            from = engine->output.find(reply, from) + reply.size();
        }
    }
    // Sends the commands as one write, or split at a random point after a random gap: a fast front end.
    void sendRacing(const std::string& commands, std::mt19937& random) {
        const size_t split = commands.find('\n', random() % commands.size());
        if (random() % 2 || split == std::string::npos) {
            engine->send(commands);
            return;
        }
        engine->send(commands.substr(0, split + 1));
        usleep(random() % 3000);
        engine->send(commands.substr(split + 1));
    }
    // "quit" releases the shared tables, as the last line says, and ends the engine cleanly.
    void quit() {
        expectReply("quit\n", "Getting rid of handle");
        EXPECT_EQ(engine->exitStatus(), 0);
    }
    // Sends search; once the output holds searching, kills the search process (the role process "0"): the engine
    // says so in message and exits with status 1.
    void expectSearchProcessLoss(const std::string& search, const std::string& searching, const std::string& message) {
        const size_t from = engine->output.size();
        engine->send(search);
        ASSERT_TRUE(engine->waitFor(searching, 10000, from));
        for (const processEntry& p : roleProcessesOf(enginePid))
            if (roleOf(p) == '0') kill(p.pid, SIGKILL);
        EXPECT_TRUE(engine->waitFor(message, 3000, from)) << engine->output.substr(from);
        EXPECT_EQ(engine->exitStatus(3000), 1);
    }
};
