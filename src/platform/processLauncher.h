#pragma once

struct sharedData;

// Starts this program again with the role argument ("0" search process,
// "1".."9" slaves). Returns the child's id, or -1 after printing why.
int startRoleProcess(int role);

// First thing a role process does: end together with the process that
// started it, even when that one is killed.
void dieWithParent();

// Starts the processes of roles 0..count-1 and waits until each has opened
// every shared object (or has died, or 10 s have passed); then the names are
// removed, so nothing of the engine can outlive its last process. The ids of
// the started processes go into pids; returns how many started.
int startRoleProcesses(int count, sharedData* shared, int* pids);

// A role process that has opened every object it needs says so.
void announceReady(sharedData* shared);
