#pragma once
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "../support/process.h"
#include "../support/scratchDirectory.h"
#include "engineProcess.h"

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
    // "quit" releases the shared tables, as the last line says, and ends the engine cleanly.
    void quit() {
        expectReply("quit\n", "Getting rid of handle");
        EXPECT_EQ(engine->exitStatus(), 0);
    }
};
