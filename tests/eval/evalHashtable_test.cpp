#include "eval/evalHashtable.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace {

constexpr int miss = evalHashtable::missValue;

// Each test works in a directory of its own (the constructor reads the
// settings file from the working directory) and under its own object name.
class evalHashtableTest : public ::testing::Test {
protected:
    std::string previousDirectory;
    std::string directory;
    std::string instance;

    void SetUp() override {
        char buffer[4096];
        ASSERT_NE(getcwd(buffer, sizeof buffer), nullptr);
        previousDirectory = buffer;
        char pattern[] = "/tmp/talvin-eh-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        directory = pattern;
        ASSERT_EQ(chdir(directory.c_str()), 0);
        static int serial = 0;
        instance = "TestEH-" + std::to_string(getpid()) + "-" + std::to_string(++serial);
    }

    void TearDown() override {
        std::remove("talvin init.ini");
        EXPECT_EQ(chdir(previousDirectory.c_str()), 0);
        rmdir(directory.c_str());
        shm_unlink(("/sharedEvalHashtable" + instance).c_str());
    }

    static void writeSettings(const char* text) {
        std::FILE* file = std::fopen("talvin init.ini", "w");
        ASSERT_NE(file, nullptr);
        std::fputs(text, file);
        std::fclose(file);
    }

    std::unique_ptr<evalHashtable> smallTable() {
        writeSettings("pref:size-hashtable=1\n");
        return std::make_unique<evalHashtable>(instance.c_str());
    }
};

constexpr uint64_t keyA = 0x9E3779B97F4A7C15ULL;

}  // namespace

TEST_F(evalHashtableTest, StoresScoresAndAlwaysReplaces) {
    auto table = smallTable();
    ASSERT_EQ(table->entryCount, 65536);
    EXPECT_EQ(table->probe(keyA), miss);
    // A zero word is taken as a hit for keys whose upper 48 bits are zero.
    EXPECT_EQ(table->probe(0x1234), 0);

    for (int score : {0, 1, -1, 250, -250, 32767, -32768}) {
        table->store(keyA, score);
        EXPECT_EQ(table->probe(keyA), score);
    }
    // The word is the interface between processes: key bits over the score.
    table->store(keyA, -2);
    EXPECT_EQ(table->entries[keyA % 65536], (keyA & 0xFFFFFFFFFFFF0000ULL) | 0xFFFE);

    const uint64_t other = keyA + 7 * 65536;  // same slot, another position
    table->store(other, 99);
    EXPECT_EQ(table->probe(keyA), miss);
    EXPECT_EQ(table->probe(other), 99);

    table->reset();
    EXPECT_EQ(table->probe(other), miss);
}

TEST_F(evalHashtableTest, OnlyTheUpper48KeyBitsAreCompared) {
    auto table = smallTable();
    // The index keeps such keys apart in every real table; put one key's
    // word where the other looks to see what the comparison accepts.
    const uint64_t first = 0xABCDEF0123450000ULL | 0x0101;
    const uint64_t second = 0xABCDEF0123450000ULL | 0x2202;
    table->store(first, 321);
    table->entries[table->index(second)] = table->entries[table->index(first)];
    EXPECT_EQ(table->probe(second), 321);
    EXPECT_EQ(table->probe(second ^ (1ULL << 16)), miss);
}

TEST_F(evalHashtableTest, TheMissValueIsNeverAHit) {
    auto table = smallTable();
    table->store(keyA, miss);
    EXPECT_EQ(table->probe(keyA), miss);
    table->store(keyA, miss);  // re-evaluated and stored again, still a miss
    EXPECT_EQ(table->probe(keyA), miss);
    table->store(keyA, miss - 1);
    EXPECT_EQ(table->probe(keyA), miss - 1);
}

TEST_F(evalHashtableTest, SizeSettingChoosesEntryCountAndIndexRule) {
    const uint64_t key = 0xFEDCBA9876543210ULL;
    {
        auto table = smallTable();
        EXPECT_EQ(table->index(key), key % 65536);
        table->store(key, 5);
        table->store(key + 65536, 6);
        EXPECT_EQ(table->probe(key), miss);
    }
    {
        writeSettings("pref:size-hashtable=2.7\n");
        evalHashtable table(instance.c_str());
        EXPECT_EQ(table.entryCount, 2 * 65536);
    }
    {
        writeSettings("pref:size-hashtable=3\n");
        evalHashtable table(instance.c_str());
        EXPECT_EQ(table.index(key), key % (3 * 65536));
    }
    {
        std::remove("talvin init.ini");
        evalHashtable table(instance.c_str());
        ASSERT_EQ(table.entryCount, 0x400000);
        EXPECT_EQ(table.index(key), key & 0x3FFFFF);
        table.store(key, 5);
        table.store(key + 0x400000, 6);
        EXPECT_EQ(table.probe(key), miss);
        EXPECT_EQ(table.probe(key + 0x400000), 6);
    }
    for (const char* text : {"pref:size-hashtable=0\n", "pref:size-hashtable=-3\n", "pref:size-hashtable=8192\n"}) {
        writeSettings(text);
        evalHashtable table(instance.c_str());
        EXPECT_EQ(table.entryCount, 0x400000) << text;
    }
    EXPECT_EQ(evalHashtable::entriesForSize(4096), 4096 * 65536);
}

TEST_F(evalHashtableTest, MessagesAndATableWithoutMapping) {
    testing::internal::CaptureStdout();
    {
        evalHashtable table("no/such/name", 1, false);
        table.store(keyA, 10);
        EXPECT_EQ(table.probe(keyA), miss);
        EXPECT_EQ(table.probe(0x1234), miss);
        table.reset();
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "ERROR! Could not create file mapping object sharedEvalHashtable.\n");

    auto table = smallTable();
    testing::internal::CaptureStdout();
    table.reset();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "unmapping sharedEvalHashtable....\nGetting rid of handle sharedEvalHashtable....\n");
}

TEST_F(evalHashtableTest, ProcessesShareOneTableByName) {
    evalHashtable parent(instance.c_str(), 1, false);
    parent.store(keyA, -77);

    const pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        // No settings file here: the opener must still index by the creator's size.
        evalHashtable child(instance.c_str(), true);
        int status = 0;
        if (child.entryCount != 65536) status |= 1;
        if (child.probe(keyA) != -77) status |= 2;
        child.store(keyA + 1, 55);
        _exit(status);
    }
    int status = 0;
    ASSERT_EQ(waitpid(pid, &status, 0), pid);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_EQ(parent.probe(keyA + 1), 55);
}
