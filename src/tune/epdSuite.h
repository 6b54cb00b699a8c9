#pragma once
#include "board/board.h"
#include "parallel/sharedData.h"
#include "search/searchtree.h"

inline constexpr const char* epdSuiteFileName = "!epd_suite.epd";
inline constexpr const char* epdIncorrectFileName = "!output_incorrect.epd";

// The "benchepd" job of the search process: every position of the suite
// searched as a move would be, msPerPosition each, one line per position and
// a "solved N of M" summary; the lines of the positions it got wrong go to
// the incorrect file. A line that cannot be read is reported and skipped.
// Ends early, without the summary, when command is withdrawn.
void runEpdSuite(sharedData& shared, searchtree& tree, board& position, int command, int msPerPosition);
