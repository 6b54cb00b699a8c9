#include "platform/instance.h"

#include <dirent.h>
#include <signal.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

static char instance[96];

const char* instanceName() {
    if (instance[0] == 0) {
        char own[24];
        snprintf(own, sizeof own, "%d", static_cast<int>(getpid()));
        setenv(instanceVariable, own, 1);
        snprintf(instance, sizeof instance, "%s(%s)", engineName, own);
    }
    return instance;
}

void adoptParentInstance() {
    const char* tag = std::getenv(instanceVariable);
    if (tag && *tag) snprintf(instance, sizeof instance, "%s(%.20s)", engineName, tag);
}

void removeInstanceObjects() {
    instanceName();
    DIR* dir = opendir("/dev/shm");
    if (dir == nullptr) return;
    char path[384];
    while (dirent* entry = readdir(dir)) {
        if (std::strstr(entry->d_name, instance) == nullptr) continue;
        snprintf(path, sizeof path, "/dev/shm/%s", entry->d_name);
        unlink(path);
    }
    closedir(dir);
}

void startJanitor() {
    instanceName();
    int lifeline[2];
    if (pipe(lifeline) != 0) return;
    const pid_t pid = fork();
    if (pid != 0) {
        close(lifeline[0]);  // the write end stays open, unused, until this process is gone
        return;
    }
    // The watcher: holds nothing of the engine's but the read end, and waits
    // for it to report end of file, which happens when the engine has ended.
    signal(SIGINT, SIG_IGN);
    signal(SIGTERM, SIG_IGN);
    signal(SIGHUP, SIG_IGN);
    signal(SIGPIPE, SIG_IGN);
    for (int fd = 0; fd < 1024; fd++)
        if (fd != lifeline[0]) close(fd);
    char title[16];
    snprintf(title, sizeof title, "janitor-%d", static_cast<int>(getppid()));
    prctl(PR_SET_NAME, title);
    char byte;
    for (;;) {
        const ssize_t n = read(lifeline[0], &byte, 1);
        if (n == 0 || (n < 0 && errno != EINTR)) break;
    }
    removeInstanceObjects();
    _exit(0);
}
