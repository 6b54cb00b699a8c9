#include "search/hashtable.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace {

constexpr int miss = hashtable::missValue;
constexpr int upper = hashtable::upperBound;
constexpr int lower = hashtable::lowerBound;
constexpr int exact = hashtable::exactBound;

// Every test runs in a directory of its own, because the constructor reads
// the settings file from the working directory, and under a table name of
// its own, removed afterwards.
class hashtableTest : public ::testing::Test {
protected:
    std::string previousDirectory;
    std::string directory;
    std::string instance;

    void SetUp() override {
        char buffer[4096];
        ASSERT_NE(getcwd(buffer, sizeof buffer), nullptr);
        previousDirectory = buffer;
        char pattern[] = "/tmp/talvin-tt-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        directory = pattern;
        ASSERT_EQ(chdir(directory.c_str()), 0);
        static int serial = 0;
        instance = "TestTT-" + std::to_string(getpid()) + "-" + std::to_string(++serial);
    }

    void TearDown() override {
        std::remove("talvin init.ini");
        EXPECT_EQ(chdir(previousDirectory.c_str()), 0);
        rmdir(directory.c_str());
        shm_unlink(("/sharedHashtable" + instance).c_str());
    }

    static void writeSettings(const char* text) {
        std::FILE* file = std::fopen("talvin init.ini", "w");
        ASSERT_NE(file, nullptr);
        std::fputs(text, file);
        std::fclose(file);
    }

    // A table of 65,536 entries built the engine's way, from the settings file.
    std::unique_ptr<hashtable> smallTable() {
        writeSettings("pref:size-hashtable=1\n");
        return std::make_unique<hashtable>(instance.c_str());
    }
};

constexpr uint64_t keyA = 0x9E3779B97F4A7C15ULL;
constexpr uint64_t slots = 65536;

}  // namespace

TEST_F(hashtableTest, EmptyTableMissesEveryKeyButZero) {
    auto table = smallTable();
    ASSERT_TRUE(table->ready);
    uint64_t key = 1;
    for (int i = 0; i < 1000; i++) {
        key = key * 6364136223846793005ULL + 1442695040888963407ULL;
        EXPECT_EQ(table->probeHash(key, 0, -20000, 20000), miss);
        EXPECT_EQ(table->probeBestMove(key), 0u);
    }
    // The all-zero entry is an upper bound of 0 at depth 0 for the key 0.
    EXPECT_EQ(table->probeHash(0, 0, 10, 20), 10);
    EXPECT_EQ(table->probeHash(0, 0, -10, 20), miss);
    EXPECT_EQ(table->probeHash(0, 1, 10, 20), miss);
}

TEST_F(hashtableTest, ScoresAreReturnedOnlyForDeepEnoughEntriesAndBoundsCutFailHard) {
    auto table = smallTable();
    table->recordHash(keyA, 5, 0, -123, exact, 0x1234);
    EXPECT_EQ(table->probeHash(keyA, 6, -100, 100), miss);
    EXPECT_EQ(table->probeHash(keyA, 5, -100, 100), -123);
    EXPECT_EQ(table->probeHash(keyA, 2, -100, 100), -123);
    EXPECT_EQ(table->probeHash(keyA ^ 1, 2, -100, 100), miss);

    const uint64_t keyU = keyA + 1, keyL = keyA + 2;
    table->recordHash(keyU, 4, 0, 30, upper, 0);
    EXPECT_EQ(table->probeHash(keyU, 4, 50, 60), 50);
    EXPECT_EQ(table->probeHash(keyU, 4, 30, 60), 30);
    EXPECT_EQ(table->probeHash(keyU, 4, 20, 60), miss);
    EXPECT_EQ(table->probeHash(keyU, 5, 50, 60), miss);

    table->recordHash(keyL, 4, 0, 30, lower, 0);
    EXPECT_EQ(table->probeHash(keyL, 4, 0, 20), 20);
    EXPECT_EQ(table->probeHash(keyL, 4, 0, 30), 30);
    EXPECT_EQ(table->probeHash(keyL, 4, 0, 40), miss);
}

TEST_F(hashtableTest, EntryLayoutIsTheSharedFormat) {
    auto table = smallTable();
    table->recordHash(keyA, 7, 70, -5, lower, 0xABCD);
    const uint64_t data = 0xABCDULL | (0xFFFBULL << 32) | (7ULL << 48) | (6ULL << 54) | (1ULL << 60);
    EXPECT_EQ(table->probeBestMove(keyA), data);
    const uint64_t slot = keyA % slots;
    EXPECT_EQ(table->entries[2 * slot], keyA ^ data);
    EXPECT_EQ(table->entries[2 * slot + 1], data);

    // A negative root ply keeps its signed remainder, packed to six bits.
    table->recordHash(keyA + 1, 3, -3, 0, exact, 0);
    EXPECT_EQ(hashtable::storedAge(table->probeBestMove(keyA + 1)), 61);

    // A half-written entry must read as a miss, not as another position's data.
    table->entries[2 * slot + 1] ^= 1ULL << 32;
    EXPECT_EQ(table->probeBestMove(keyA), 0u);
    EXPECT_EQ(table->probeHash(keyA, 0, -100, 100), miss);
}

TEST_F(hashtableTest, DeeperEntryOfTheSameSearchOwnsItsSlot) {
    auto table = smallTable();
    const uint64_t other = keyA + slots;  // same slot, another position
    table->recordHash(keyA, 8, 10, 100, exact, 0x111);
    const uint64_t before = table->probeBestMove(keyA);

    table->recordHash(keyA, 5, 10, 50, exact, 0x222);   // same position: not even the move
    table->recordHash(keyA, 5, 74, 50, exact, 0x222);   // ply 74 is the same search number
    table->recordHash(other, 7, 10, 50, exact, 0x333);  // other position
    EXPECT_EQ(table->probeBestMove(keyA), before);
    EXPECT_EQ(table->probeBestMove(other), 0u);

    // In a later search a shallower result only brings its move.
    table->recordHash(keyA, 5, 11, 50, lower, 0x222);
    EXPECT_EQ(table->probeBestMove(keyA), (before & hashtable::moveClearMask) | 0x222);
    EXPECT_EQ(table->probeHash(keyA, 8, -200, 200), 100);

    // Another position in a later search takes the slot whole.
    table->recordHash(other, 1, 11, -7, upper, 0);
    EXPECT_EQ(table->probeBestMove(keyA), 0u);
    EXPECT_EQ(table->probeBestMove(other), hashtable::pack(0, 1, 11, -7, upper));
}

TEST_F(hashtableTest, MoveZeroNeverErasesAStoredMove) {
    auto table = smallTable();
    table->recordHash(keyA, 5, 1, 10, lower, 0x4321);
    table->recordHash(keyA, 7, 1, 20, exact, 0);  // deeper: overwritten, move kept
    EXPECT_EQ(table->probeBestMove(keyA), hashtable::pack(0x4321, 7, 1, 20, exact));
    table->recordHash(keyA, 7, 1, 25, exact, 0);  // kept entry, no move: nothing written
    table->recordHash(keyA, 3, 2, 25, exact, 0);
    EXPECT_EQ(table->probeBestMove(keyA), hashtable::pack(0x4321, 7, 1, 20, exact));

    // Replacing another position with move 0 leaves no move behind.
    const uint64_t other = keyA + 3 * slots;
    table->recordHash(other, 9, 1, 0, exact, 0);
    EXPECT_EQ(table->probeBestMove(other) & 0xFFFF, 0u);
}

TEST_F(hashtableTest, AtEqualDepthOnlyANewerBoundOrEntryReplacesABound) {
    struct step {
        int storedBound, storedScore, newBound, newScore;
        bool overwritten;
    };
    const step steps[] = {
        {upper, 30, upper, 40, false}, {upper, 30, upper, 30, false}, {upper, 30, upper, 20, true},
        {upper, 30, lower, 40, true},  {upper, 30, exact, 40, true},  {lower, 30, lower, 20, false},
        {lower, 30, lower, 30, false}, {lower, 30, lower, 40, true},  {lower, 30, upper, 10, true},
        {lower, 30, exact, 10, true},  {exact, 30, exact, 40, false}, {exact, 30, upper, 10, false},
        {exact, 30, lower, 90, false},
    };
    auto table = smallTable();
    uint64_t key = keyA;
    for (const step& s : steps) {
        SCOPED_TRACE(testing::Message() << "stored " << s.storedBound << "/" << s.storedScore << ", new "
                                        << s.newBound << "/" << s.newScore);
        key += 17;
        table->recordHash(key, 6, 3, s.storedScore, s.storedBound, 0x100);
        table->recordHash(key, 6, 3, s.newScore, s.newBound, 0x200);
        const uint64_t expected = s.overwritten ? hashtable::pack(0x200, 6, 3, s.newScore, s.newBound)
                                                : hashtable::pack(0x200, 6, 3, s.storedScore, s.storedBound);
        EXPECT_EQ(table->probeBestMove(key), expected);
    }
}

TEST_F(hashtableTest, SizeSettingChoosesEntryCountAndIndexRule) {
    {
        writeSettings("pref:size-hashtable=64   (in MB)\n");
        hashtable table(instance.c_str());
        ASSERT_EQ(table.entryCount, 4194304);
        const uint64_t key = 0xFEDCBA9876543210ULL;
        EXPECT_EQ(table.index(key), key & 0x3FFFFF);
        table.recordHash(key, 1, 0, 5, exact, 0);
        table.recordHash(key + 2097152, 1, 0, 6, exact, 0);  // another slot at this size
        EXPECT_EQ(table.probeHash(key, 1, 0, 0), 5);
    }
    {
        writeSettings("pref:size-hashtable=32\n");
        hashtable table(instance.c_str());
        ASSERT_EQ(table.entryCount, 2097152);
        const uint64_t key = 0xFEDCBA9876543210ULL;
        EXPECT_EQ(table.index(key), key % 2097152);
        table.recordHash(key, 1, 0, 5, exact, 0);
        table.recordHash(key + 2097152, 1, 0, 6, exact, 0);  // the same slot
        EXPECT_EQ(table.probeHash(key, 1, 0, 0), miss);
    }
    {
        writeSettings("pref:size-hashtable=3.9\n");  // truncated: 3 MB, not a power of two
        hashtable table(instance.c_str());
        ASSERT_EQ(table.entryCount, 3 * 65536);
        EXPECT_EQ(table.index(UINT64_MAX), UINT64_MAX % (3 * 65536));
    }
    for (const char* text : {"pref:size-hashtable=0\n", "pref:size-hashtable=-8\n", "pref:size-hashtable=4096\n",
                             "pref:size-hashtable=junk\n", "pref:other=5\n"}) {
        writeSettings(text);
        hashtable table(instance.c_str());
        EXPECT_EQ(table.entryCount, hashtable::defaultEntryCount) << text;
    }
    std::remove("talvin init.ini");
    EXPECT_EQ(hashtable::entriesForSize(4095), 4095 * 65536);
    hashtable table(instance.c_str());
    EXPECT_EQ(table.entryCount, hashtable::defaultEntryCount);
}

TEST_F(hashtableTest, ResetAndDestructorMessages) {
    auto table = smallTable();
    table->recordHash(keyA, 4, 0, 1, exact, 0x55);
    table->reset();
    EXPECT_EQ(table->probeBestMove(keyA), 0u);

    testing::internal::CaptureStdout();
    table.reset();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "unmapping sharedHashtable....\nGetting rid of handle sharedHashtable....\n");
}

TEST_F(hashtableTest, ATableWithoutMappingMissesAndIgnoresRecords) {
    testing::internal::CaptureStdout();
    {
        hashtable table("no/such/name", 1, false);  // not a valid object name
        EXPECT_FALSE(table.ready);
        table.recordHash(keyA, 5, 0, 10, exact, 0x77);
        EXPECT_EQ(table.probeHash(keyA, 0, -100, 100), miss);
        EXPECT_EQ(table.probeHash(0, 0, 10, 20), miss);
        EXPECT_EQ(table.probeBestMove(keyA), 0u);
        table.reset();
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "ERROR! Could not create file mapping object sharedHashtable.\n");
}

TEST_F(hashtableTest, ProcessesShareOneTableByName) {
    // The creator sizes the table; the opener indexes by that size even
    // though its settings file says otherwise.
    hashtable parent(instance.c_str(), 1, false);
    ASSERT_TRUE(parent.ready);
    parent.recordHash(keyA, 3, 0, 9, exact, 0x99);

    int toChild[2], toParent[2];
    ASSERT_EQ(pipe(toChild), 0);
    ASSERT_EQ(pipe(toParent), 0);
    const pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        hashtable child(instance.c_str(), true);
        char byte = 'o';
        if (write(toParent[1], &byte, 1) != 1) _exit(10);
        if (read(toChild[0], &byte, 1) != 1) _exit(11);
        int status = 0;
        if (!child.ready || child.entryCount != 65536) status |= 1;
        if (child.probeHash(keyA + 1, 6, -100, 100) != -44) status |= 2;
        if ((child.probeBestMove(keyA + 1) & 0xFFFF) != 0x321) status |= 4;
        child.recordHash(keyA + 2, 2, 0, 17, lower, 0x456);
        _exit(status);
    }
    char byte;
    ASSERT_EQ(read(toParent[0], &byte, 1), 1);
    // Opening cleared the table once more.
    EXPECT_EQ(parent.probeBestMove(keyA), 0u);
    parent.recordHash(keyA + 1, 6, 0, -44, exact, 0x321);
    ASSERT_EQ(write(toChild[1], &byte, 1), 1);
    int status = 0;
    ASSERT_EQ(waitpid(pid, &status, 0), pid);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_EQ(parent.probeHash(keyA + 2, 2, 0, 10), 10);
    EXPECT_EQ(parent.probeBestMove(keyA + 2) & 0xFFFF, 0x456u);
    for (int fd : {toChild[0], toChild[1], toParent[0], toParent[1]}) close(fd);
}
