#pragma once

// Lines that are not part of the protocol (statistics, boards' result lines,
// book, tablebase and tuner reports, error messages) go out as they are to
// xboard and the console. A UCI front end must see nothing but UCI lines, so
// there each such line becomes an "info string" line and blank lines go.
// Every engine process prints through these: the user-interface process
// chooses UCI output before it starts the others, and they inherit it.

// Called once by the user-interface process when the front end chose UCI.
void setUciOutput();
bool uciOutput();

// printf-like; takes the I/O mutex. The text may hold several whole lines.
void printInfo(const char* format, ...) __attribute__((format(printf, 1, 2)));
// The same for a caller that already holds the I/O mutex or cannot take it.
void writeInfo(const char* text);

// A protocol line, printf-like, whole under the I/O mutex so that no other
// process's line cuts into it.
void printLine(const char* format, ...) __attribute__((format(printf, 1, 2)));
