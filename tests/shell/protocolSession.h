#pragma once
#include <dirent.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include "engineProcess.h"

// A fresh scratch directory and engine per test; at the end the engine must
// have left no shared-memory name behind.
class ProtocolSession : public ::testing::Test {
protected:
    std::string directory;
    std::unique_ptr<engineProcess> engine;
    int enginePid = 0;

    void SetUp() override {
        char pattern[] = "/tmp/talvin-protocol-XXXXXX";
        directory = mkdtemp(pattern);
    }
    void start(const std::string& settingsFile = "") {
        if (!settingsFile.empty()) std::ofstream(directory + "/talvin init.ini") << settingsFile;
        engine = std::make_unique<engineProcess>(directory);
        enginePid = engine->pid;
    }
    void TearDown() override {
        engine.reset();
        EXPECT_EQ(namesLeft(), 0) << "shared-memory names left by engine " << enginePid;
        std::system(("rm -rf '" + directory + "'").c_str());
    }
    int namesLeft() const {
        char tag[32];
        snprintf(tag, sizeof tag, "(%d)", enginePid);
        int count = 0;
        if (DIR* dir = opendir("/dev/shm")) {
            while (dirent* entry = readdir(dir)) count += strstr(entry->d_name, tag) != nullptr;
            closedir(dir);
        }
        return count;
    }
    std::string file(const std::string& name) const {
        std::ifstream in(directory + "/" + name);
        std::stringstream text;
        text << in.rdbuf();
        return text.str();
    }
    // Sends a line and waits for the expected reply.
    void expectReply(const std::string& line, const std::string& reply, int timeoutMs = 10000) {
        const size_t from = engine->output.size();
        engine->send(line);
        EXPECT_TRUE(engine->waitFor(reply, timeoutMs, from)) << "after " << line << "no " << reply << "\ngot:\n"
                                                             << engine->output.substr(from);
    }
};
