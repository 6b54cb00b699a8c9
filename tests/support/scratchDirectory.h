#pragma once
#include <stdlib.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "settings/settingsFile.h"  // settingsFileName

// A fresh directory under /tmp, removed with all it holds when the test ends.
class scratchDirectory {
public:
    const std::string path = make();

    scratchDirectory() = default;
    scratchDirectory(const scratchDirectory&) = delete;
    ~scratchDirectory() {
        if (!path.empty()) std::system(("rm -rf '" + path + "'").c_str());
    }

    std::string file(const std::string& name) const { return path + "/" + name; }
    std::string read(const std::string& name) const {
        return (std::ostringstream() << std::ifstream(file(name), std::ios::binary).rdbuf()).str();
    }
    void write(const std::string& name, const std::string& bytes) const {
        std::ofstream(file(name), std::ios::binary | std::ios::trunc) << bytes;
    }

private:
    static std::string make() {
        char pattern[] = "/tmp/talvin-test-XXXXXX";
        return mkdtemp(pattern) ? pattern : "";
    }
};

// The working directory while this lives, for code that reads or writes its
// files there; other tests running beside this one never see them.
class workingDirectory {
public:
    explicit workingDirectory(const std::string& path) : home(getcwd(nullptr, 0)) {
        changed = chdir(path.c_str()) == 0;
    }
    workingDirectory(const workingDirectory&) = delete;
    ~workingDirectory() {
        if (changed && chdir(home) != 0) std::abort();
        free(home);
    }
    bool changed = false;

private:
    char* home;
};
