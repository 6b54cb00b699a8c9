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
#include <sstream>
#include <string>
#include <vector>

#include "board/board.h"
#include "board/san.h"
#include "search/localSearch.h"

namespace {

struct testPosition {
    std::string fen, id, bmText, bmUci;
    std::vector<int> bm;
};

std::string trim(const std::string& s) {
    const size_t b = s.find_first_not_of(' '), e = s.find_last_not_of(' ');
    return b == std::string::npos ? "" : s.substr(b, e - b + 1);
}

std::string uciText(int move) {
    char text[10];
    moveToText(move, text);
    for (char* c = text; *c; c++) *c = static_cast<char>(std::tolower(*c));
    return text;
}

// EPD: four FEN fields, then "opcode operands;" pairs.
bool parseEpd(const std::string& line, board& position, testPosition& t) {
    std::istringstream in(line);
    std::string fields[4];
    for (auto& f : fields)
        if (!(in >> f)) return false;
    t.fen = fields[0] + " " + fields[1] + " " + fields[2] + " " + fields[3] + " 0 1";
    position.setupPosition(t.fen.c_str());
    std::string rest, op;
    std::getline(in, rest);
    std::istringstream ops(rest);
    while (std::getline(ops, op, ';')) {
        op = trim(op);
        const std::string code = op.substr(0, op.find(' '));
        const std::string operands = op.size() > code.size() ? trim(op.substr(code.size())) : "";
        if (code == "id") {
            t.id = operands;
            std::erase(t.id, '"');
        } else if (code == "bm") {
            t.bmText = operands;
            std::istringstream sans(operands);
            for (std::string san; sans >> san;) {
                const int m = sanToMove(position, san.c_str());
                if (!m) fprintf(stderr, "%s: cannot read bm %s\n", line.c_str(), san.c_str());
                if (!m) continue;
                t.bm.push_back(m);
                if (!t.bmUci.empty()) t.bmUci += ' ';
                t.bmUci += uciText(m);
            }
        }
    }
    return !t.bm.empty();
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
    std::vector<std::pair<testPosition, board>> suite;
    for (std::string line; std::getline(file, line);) {
        testPosition t;
        if (trim(line).empty()) continue;
        if (!parseEpd(line, position, t)) return 1;
        suite.emplace_back(t, position);
    }

    if (convert) {
        for (const auto& [t, b] : suite) printf("%s|%s\n", t.fen.c_str(), t.bmUci.c_str());
        return 0;
    }

    localSearch search(hashMB);
    search.shared->postFlag = post;
    int solved = 0;
    for (const auto& [t, b] : suite) {
        search.clearTables();
        const localSearch::result r = search.run(b, 60, timeMs);
        bool hit = false;
        for (int m : t.bm) hit |= (m & 0x7FFF) == (r.move & 0x7FFF);
        solved += hit;
        fprintf(stderr, "%-8s expected %-8s (%-9s) found %-6s score %6d depth %2d  %s\n", t.id.c_str(),
                t.bmText.c_str(), t.bmUci.c_str(), uciText(r.move).c_str(), r.score, r.depth, hit ? "yes" : "no");
    }
    fprintf(stderr, "solved %d/%zu\n", solved, suite.size());
    return 0;
}
