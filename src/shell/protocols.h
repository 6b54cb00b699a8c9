#pragma once
#include <cstring>

inline constexpr int lineBufferSize = 10000;

// Commands match by prefix over the prefix's whole length.
inline bool startsWith(const char* line, const char* prefix) { return strncmp(line, prefix, strlen(prefix)) == 0; }

class game;

// Reads the next command line into line (lineBufferSize bytes); false at the
// end of input. While no line comes it keeps an eye on the search process.
bool readCommandLine(game& g, char* line);

// The protocol loops of the user-interface process. Both return at "quit" or
// at the end of input, after the engine's other processes have been told to
// leave. The xboard loop starts with the line already read.
int runXboard(char* line);
int runUci();
