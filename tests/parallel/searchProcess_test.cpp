#include <dirent.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <set>
#include <string>

#include "parallel/searchProcess.h"

// The objects of the parallel search exist under their exact names.
TEST(SearchProcess, CreatesEveryEventAndSplitBlockMutexByName) {
    const std::string instance = "TestSP-" + std::to_string(getpid());
    std::set<std::string> names;
    {
        testing::internal::CaptureStdout();
        searchProcess process(instance.c_str(), 0, 3, false, false);
        testing::internal::GetCapturedStdout();
        DIR* dir = opendir("/dev/shm");
        while (dirent* entry = readdir(dir))
            if (std::string(entry->d_name).find(instance) != std::string::npos) names.insert(entry->d_name);
        closedir(dir);
        for (const std::string& name : names) unlink(("/dev/shm/" + name).c_str());
    }
    EXPECT_EQ(names.size(), 1u + 2u + 3u + 100u + 100u);
    for (const std::string name : {"sharedHashtable", "handleSlaveAvailable", "handleSlaveAvailable2"})
        EXPECT_EQ(names.count(name + instance), 1u) << name;
    EXPECT_EQ(names.count("handleStartSlave" + instance + "0"), 1u);
    EXPECT_EQ(names.count("handleStartSlave" + instance + "2"), 1u);
    EXPECT_EQ(names.count("handleSbReady_" + instance + "_0"), 1u);
    EXPECT_EQ(names.count("Mutex_SBlock_" + instance + "_0"), 1u);
    EXPECT_EQ(names.count("Mutex_SBlock_" + instance + "_99"), 1u);
}
