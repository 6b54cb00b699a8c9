#include "tune/epdSuite.h"

#include <atomic>
#include <cstdio>
#include <cstring>
#include <string>

#include "board/san.h"
#include "eval/evalHashtable.h"
#include "platform/console.h"
#include "tune/epdRecord.h"

namespace {

std::string expectedText(const epdRecord& record) {
    std::string text;
    if (!record.bestText.empty()) text = "bm " + record.bestText;
    if (!record.avoidText.empty()) text += (text.empty() ? "am " : " am ") + record.avoidText;
    return text;
}

}  // namespace

void runEpdSuite(sharedData& shared, searchtree& tree, board& position, int command, int msPerPosition) {
    FILE* suite = std::fopen(epdSuiteFileName, "r");
    if (suite == nullptr) {
        printInfo("No %s file found.\n", epdSuiteFileName);
        return;
    }
    FILE* incorrect = std::fopen(epdIncorrectFileName, "w");
    const auto stopRequested = [&] {
        return !shared.searchLoopRunFlag || shared.searchCommand != command || shared.timer1.allottedMs == 0;
    };
    char line[10000];
    int lineNumber = 0, solved = 0, total = 0;
    bool stopped = false;
    epdRecord record;
    std::string error;
    while (!stopped && std::fgets(line, sizeof line, suite)) {
        lineNumber++;
        if (line[std::strspn(line, " \t\r\n")] == '\0') continue;
        line[std::strcspn(line, "\r\n")] = '\0';
        bool readable = record.parse(line, position, error);
        if (readable && record.bestMoves.empty() && record.avoidMoves.empty()) {
            error = "no bm or am";
            readable = false;
        }
        if (!readable) {
            printInfo("Error (epd line %d): %s: %s\n", lineNumber, error.c_str(), line);
            continue;
        }
        tree.table->reset();
        if (board::evalCache) board::evalCache->reset();
        shared.timer1.allottedMs = msPerPosition;
        shared.timer1.startTimer();
        // A stop that comes now zeroes the budget after it was set, or is seen here.
        std::atomic_thread_fence(std::memory_order_seq_cst);
        if (stopRequested()) {
            stopped = true;
            break;
        }
        const int move = tree.rootSearch(position);
        const int ms = shared.timer1.getTimePassedBy();
        if (stopRequested()) {
            stopped = true;
            break;
        }
        const bool legal = move != checkmateSentinel && move != stalemateSentinel;
        const bool hit = legal && record.solvedBy(move);
        char played[16] = "none";
        if (legal) moveToSan(position, move, played);
        total++;
        solved += hit;
        char name[16];
        std::snprintf(name, sizeof name, "#%d", lineNumber);
        printInfo("%s: expected %s; played %s; %s; %d ms\n", record.id.empty() ? name : record.id.c_str(),
                  expectedText(record).c_str(), played, hit ? "solved" : "not solved", ms);
        if (!hit && incorrect) std::fprintf(incorrect, "%s\n", line);
    }
    std::fclose(suite);
    if (incorrect) std::fclose(incorrect);
    if (!stopped) printInfo("solved %d of %d\n", solved, total);
}
