#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <thread>

#include "../support/process.h"
#include "platform/mutex.h"
#include "platform/namedEvent.h"

namespace {

// An object name of this test process's own; the instance part without the slash.
std::string uniqueName(const char* what) { return "/Test" + std::string(what) + "-" + std::to_string(getpid()); }

std::string waitOn(namedMutex& handle, int timeoutMs) {
    return printed([&] { mutex::waitWithHandle(handle, timeoutMs); });
}

}  // namespace

TEST(NamedObjects, OpenerWaitsUntilTheMutexesExist) {
    const std::string instance = uniqueName("Open").substr(1);
    int status = 0;
    std::thread creator([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(150));
        // The opener's second open must find its mutex however late this thread runs.
        namedMutex io, mt;
        mt.create(("/handleMutex_MT_" + instance).c_str());
        io.create(("/handleMutex_IO_" + instance).c_str());
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
    });
    const std::string text = inChild([&] { mutex::init(instance.c_str(), true, 20); }, &status);
    creator.join();
    EXPECT_EQ(status, 0);
    EXPECT_EQ(text.rfind("WAIT- no handle, ERROR= 2\nhandleMutex_IO_" + instance + "\n", 0), 0u) << text;
    EXPECT_EQ(text.find("MT"), std::string::npos);  // the second one was there by then
    shm_unlink(("/handleMutex_IO_" + instance).c_str());
    shm_unlink(("/handleMutex_MT_" + instance).c_str());
}

TEST(NamedObjects, AbandonedTimedOutAndFailedWaits) {
    const std::string name = uniqueName("Lock");
    namedMutex lock;
    ASSERT_TRUE(lock.create(name.c_str()));

    // The owner dies holding it: the next waiter is told and owns it.
    inChild([&] {
        namedMutex opened;
        if (!opened.open(name.c_str())) _exit(3);
        pthread_mutex_lock(opened.lock());
        _exit(0);
    });
    EXPECT_EQ(waitOn(lock, 2000), "\n@mutex timeout:  WAIT_ABANDONED\n");
    EXPECT_EQ(printed([&] { mutex::releaseWithHandle(lock); }), "");

    // Another process holds it: the wait times out and the caller goes on.
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t holder = fork();
    if (holder == 0) {
        namedMutex opened;
        opened.open(name.c_str());
        pthread_mutex_lock(opened.lock());
        (void)!write(ready[1], "x", 1);
        sleep(5);
        _exit(0);
    }
    char byte;
    ASSERT_EQ(read(ready[0], &byte, 1), 1);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(waitOn(lock, 200), "\n@mutex timeout:  WAIT_TIMEOUT\n");
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(190));
    kill(holder, SIGKILL);
    waitpid(holder, nullptr, 0);

    // Releasing a mutex this process does not hold fails and says so.
    EXPECT_EQ(printed([&] { mutex::releaseWithHandle(lock); }), "failed to release mutex! ERROR=1\n");

    // A mutex that could not be created: every wait fails, with five retries.
    namedMutex missing;
    EXPECT_EQ(waitOn(missing, 10), "\n@mutex timeout:  WAIT_FAILED ERRORCODE=22\nX1 X2 X3 X4 X5 \n");
    shm_unlink(name.c_str());
}

TEST(NamedObjects, EventsResetAutomaticallyAndWakeOtherProcesses) {
    const std::string name = uniqueName("Event");
    namedEvent event;
    ASSERT_TRUE(event.create(name.c_str()));
    EXPECT_FALSE(event.wait(0));
    event.set();
    event.set();
    EXPECT_TRUE(event.wait(0));
    EXPECT_FALSE(event.wait(20));  // one set releases one wait

    namedEvent reply;
    ASSERT_TRUE(reply.create((name + "reply").c_str()));
    const pid_t child = fork();
    if (child == 0) {
        namedEvent opened, answer;
        opened.openWhenCreated(name.c_str(), 10);
        answer.openWhenCreated((name + "reply").c_str(), 10);
        // Woken once while watching the event, once while asleep on it.
        if (!opened.wait(5000, 5000000)) _exit(1);
        answer.set();
        if (!opened.wait(5000, 100)) _exit(2);
        answer.set();
        _exit(0);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    event.set();
    EXPECT_TRUE(reply.wait(5000));
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    event.set();
    EXPECT_TRUE(reply.wait(5000));
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(WEXITSTATUS(status), 0);
    // Watching never outlasts the time-out.
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(event.wait(30, 10000000));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
    shm_unlink(name.c_str());
    shm_unlink((name + "reply").c_str());
}

// A helper killed while asleep on an event must not take the event with it: sets still return and wake the
// next waiter (a shared condition variable once hung the second set for ever).
TEST(NamedObjects, AnEventOutlivesAWaiterKilledAsleepOnIt) {
    const std::string name = uniqueName("Event");
    namedEvent event, reply;
    ASSERT_TRUE(event.create(name.c_str()));
    ASSERT_TRUE(reply.create((name + "reply").c_str()));
    const pid_t sleeper = fork();
    if (sleeper == 0) {
        event.wait(60000);
        _exit(0);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    kill(sleeper, SIGKILL);
    waitpid(sleeper, nullptr, 0);
    const pid_t next = fork();
    if (next == 0) {
        for (int round = 0; round < 3; round++) {
            if (!event.wait(5000)) _exit(1);
            reply.set();
        }
        _exit(0);
    }
    for (int round = 0; round < 3; round++) {
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        event.set();
        EXPECT_TRUE(reply.wait(1000)) << round;
    }
    int status = 0;
    waitpid(next, &status, 0);
    EXPECT_EQ(WEXITSTATUS(status), 0);
    shm_unlink(name.c_str());
    shm_unlink((name + "reply").c_str());
}
