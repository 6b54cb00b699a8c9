// talvin-wac: scores the engine on an EPD test suite, a fixed time per position.
//   talvin-wac [--time MS] [--hash MB] [--post] FILE.epd
// Per-position lines and the "solved N/M" summary go to stderr; stdout keeps
// the search's own output.
//   talvin-wac --convert FILE.epd
// prints "FEN|move move" per position in UCI notation, for scoring other engines.
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "board/board.h"
#include "search/localSearch.h"
#include "tune/epdRecord.h"

namespace {

std::string uciText(int move) {
    char text[10];
    moveToText(move, text);
    for (char* c = text; *c; c++) *c = static_cast<char>(std::tolower(*c));
    return text;
}

}  // namespace

int main(int argc, char** argv) {
    int timeMs = 1000, hashMB = 32;
    bool convert = false, post = false;
    const char* path = nullptr;
    for (int i = 1; i < argc; i++) {
        const char* a = argv[i];
        if (!strcmp(a, "--time") && i + 1 < argc) timeMs = atoi(argv[++i]);
        else if (!strcmp(a, "--hash") && i + 1 < argc) hashMB = atoi(argv[++i]);
        else if (!strcmp(a, "--convert")) convert = true;
        else if (!strcmp(a, "--post")) post = true;
        else if (a[0] != '-' && !path) path = a;
        else {
            fprintf(stderr, "usage: talvin-wac [--time MS] [--hash MB] [--post] [--convert] FILE.epd\n");
            return 2;
        }
    }
    std::ifstream file(path ? path : "");
    if (!file) {
        fprintf(stderr, "cannot open %s\n", path ? path : "(no file given)");
        return 2;
    }

    board position;
    std::vector<std::pair<epdRecord, board>> suite;
    epdRecord record;
    std::string error;
    for (std::string line; std::getline(file, line);) {
        if (line.find_first_not_of(" \r") == std::string::npos) continue;
        const bool read = record.parse(line.c_str(), position, error);
        if (!read || (record.bestMoves.empty() && record.avoidMoves.empty())) {
            fprintf(stderr, "%s: %s\n", line.c_str(), read ? "no bm or am" : error.c_str());
            return 1;
        }
        suite.emplace_back(record, position);
    }

    if (convert) {
        for (const auto& [t, b] : suite) {
            std::string moves;
            for (int m : t.bestMoves) {
                if (!moves.empty()) moves += ' ';
                moves += uciText(m);
            }
            printf("%s|%s\n", t.fen.c_str(), moves.c_str());
        }
        return 0;
    }

    localSearch search(hashMB);
    search.shared->postFlag = post;
    int solved = 0;
    for (const auto& [t, b] : suite) {
        search.clearTables();
        const localSearch::result r = search.run(b, 60, timeMs);
        const bool hit = t.solvedBy(r.move);
        solved += hit;
        const std::string expected = t.bestText.empty() ? "am " + t.avoidText : t.bestText;
        fprintf(stderr, "%-8s expected %-8s found %-6s score %6d depth %2d  %s\n", t.id.c_str(), expected.c_str(),
                uciText(r.move).c_str(), r.score, r.depth, hit ? "yes" : "no");
    }
    fprintf(stderr, "solved %d/%zu\n", solved, suite.size());
    return 0;
}
