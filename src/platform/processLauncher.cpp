#include "platform/processLauncher.h"

#include <signal.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "platform/console.h"
#include "platform/instance.h"

extern char** environ;

int startRoleProcess(int role) {
    instanceName();  // puts the instance tag into the environment the child inherits
    // The table-building loops are the only parallel regions; their idle
    // threads must sleep, not spin against the searching processes.
    setenv("OMP_WAIT_POLICY", "passive", 1);
    char executable[4096];
    const ssize_t length = readlink("/proc/self/exe", executable, sizeof executable - 1);
    if (length <= 0) {
        printInfo("CreateProcess failed (%d).\n", errno);
        return -1;
    }
    executable[length] = 0;
    char roleText[8];
    snprintf(roleText, sizeof roleText, "%d", role);
    char* arguments[] = {executable, roleText, nullptr};
    pid_t pid;
    const int result = posix_spawn(&pid, executable, nullptr, nullptr, arguments, environ);
    if (result != 0) {
        printInfo("CreateProcess failed (%d).\n", result);
        return -1;
    }
    return pid;
}

void dieWithParent() {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    // The parent may have gone before the request was in place.
    const char* tag = std::getenv(instanceVariable);
    if (tag && getppid() != static_cast<pid_t>(std::atoi(tag))) _exit(0);
}

namespace {

int rolePids[maxProcesses];
int roleCount = 0;
bool searchProcessGone = false;

}  // namespace

int startRoleProcesses(int count, int32_t* readyCount) {
    roleCount = 0;
    for (int role = 0; role < count && role < maxProcesses; role++) {
        const int pid = startRoleProcess(role);
        if (pid > 0) rolePids[roleCount++] = pid;
    }
    if (readyCount) {
        std::atomic_ref<int32_t> ready(*readyCount);
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (ready.load() < roleCount && std::chrono::steady_clock::now() < deadline) {
            bool anyDied = false;
            for (int i = 0; i < roleCount; i++) anyDied |= waitpid(rolePids[i], nullptr, WNOHANG) == rolePids[i];
            if (anyDied) break;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    removeInstanceObjects();
    return roleCount;
}

void announceReady(int32_t* readyCount) {
    if (readyCount) std::atomic_ref<int32_t>(*readyCount).fetch_add(1);
}

bool searchProcessAlive() {
    if (searchProcessGone) return false;
    // The search process is the first started; it may have failed to start.
    if (roleCount == 0 || rolePids[0] <= 0 || waitpid(rolePids[0], nullptr, WNOHANG) != 0) {
        searchProcessGone = true;
        rolePids[0] = 0;
    }
    return !searchProcessGone;
}

void reapEndedHelpers() {
    for (int i = 1; i < roleCount; i++)
        if (rolePids[i] > 0 && waitpid(rolePids[i], nullptr, WNOHANG) == rolePids[i]) rolePids[i] = 0;
}

void killSearchProcess() {
    if (!searchProcessGone) kill(rolePids[0], SIGKILL);
}

void reapRoleProcesses(int boundMs) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(boundMs);
    int left = 0;
    for (int i = 0; i < roleCount; i++) left += rolePids[i] > 0;
    while (left > 0 && std::chrono::steady_clock::now() < deadline) {
        for (int i = 0; i < roleCount; i++)
            if (rolePids[i] > 0 && waitpid(rolePids[i], nullptr, WNOHANG) == rolePids[i]) {
                rolePids[i] = 0;
                left--;
            }
        if (left > 0) std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}
