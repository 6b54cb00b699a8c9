#pragma once
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <string>

#include "scratchDirectory.h"

// A shared table's name of the test's own; its object is removed at the end
// even when the test failed before the table could remove it.
class sharedTableName {
public:
    const std::string instance;

    sharedTableName(const char* object, const char* prefix)
        : instance(std::string(prefix) + std::to_string(getpid()) + "-" + std::to_string(++serial)), object(object) {}
    sharedTableName(const sharedTableName&) = delete;
    ~sharedTableName() { shm_unlink(("/" + object + instance).c_str()); }

private:
    static inline int serial = 0;
    const std::string object;
};

// The "pref:size-hashtable=" line (nullptr: no settings file) and the entry
// count a table made without a size then has; its index is the key modulo
// that count.
struct sizeSetting {
    const char* settings;
    int count;
};

template <class table, size_t n>
void expectSizeSettings(const std::string& instance, const sizeSetting (&cases)[n]) {
    const scratchDirectory directory;
    const workingDirectory inside(directory.path);
    ASSERT_TRUE(inside.changed);
    for (const sizeSetting& c : cases) {
        std::remove(settingsFileName);
        if (c.settings) directory.write(settingsFileName, c.settings);
        const table t(instance.c_str());
        EXPECT_EQ(t.entryCount, c.count) << (c.settings ? c.settings : "no file");
        EXPECT_EQ(t.index(UINT64_MAX), UINT64_MAX % c.count) << c.count;
    }
}
