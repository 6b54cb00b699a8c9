#pragma once
#include <cstdint>

// The search process and the slaves: the shared record holds the state of
// this many processes, no more.
inline constexpr int maxProcesses = 10;

// Starts this program again with the role argument ("0" search process,
// "1".."9" slaves). Returns the child's id, or -1 after printing why.
int startRoleProcess(int role);

// First thing a role process does: end together with the process that
// started it, even when that one is killed.
void dieWithParent();

// Starts the processes of roles 0..count-1 and waits until each has opened
// every shared object (readyCount, which each raises, reaches their number),
// has died, or 10 s have passed; then the names are removed, so nothing of
// the engine can outlive its last process. Returns how many started; their
// ids are kept for the calls below.
int startRoleProcesses(int count, int32_t* readyCount);

// A role process that has opened every object it needs says so.
void announceReady(int32_t* readyCount);

// False once the search process (role 0) has ended or never started.
bool searchProcessAlive();
// Reaps the helpers (roles 1..9) that have ended, so none lingers as a zombie.
void reapEndedHelpers();
// For a search process that hangs.
void killSearchProcess();
// Waits at most boundMs for the started processes to end, reaping them.
void reapRoleProcesses(int boundMs);
