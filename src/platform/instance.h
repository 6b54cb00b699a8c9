#pragma once

// Every named object of the engine carries the engine name and the tag of
// this engine instance (the user-interface process's id), so that two
// engines of the same name on one machine never meet.
// The name is built from the version, so that the two cannot drift apart.
#define TALVIN_VERSION "8.05"
inline constexpr const char engineName[] = "Talvin_v" TALVIN_VERSION "_x64";
inline constexpr const char engineVersion[] = TALVIN_VERSION;
inline constexpr const char instanceVariable[] = "TALVIN_INSTANCE";

// The engine name plus this instance's tag in brackets, "Talvin_v8.05_x64(1234)",
// as used in object names (the brackets keep the tag apart from the numbers
// some names end in). The
// user-interface process makes the tag from its own id and hands it to the
// processes it starts through the environment.
const char* instanceName();

// A role process takes the tag of the process that started it.
void adoptParentInstance();

// Unlinks every shared-memory name of this instance.
void removeInstanceObjects();

// Forks a watcher that removes this instance's names once the calling
// process is gone, however it ended. Call before any object exists.
void startJanitor();
