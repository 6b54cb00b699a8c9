#include "egtb/tableFile.h"

#include <dirent.h>

#include <algorithm>
#include <cctype>
#include <cstring>

namespace {

// "kqkr" (Gaviota) or "KQvKR" (Syzygy): the first side's king and pieces, then the second's.
bool parseMaterial(const std::string& text, int (&count)[2][5]) {
    static const char letters[] = "pnbrq";
    int side = -1;
    for (char c : text) {
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        if (c == 'v' && side == 0) continue;
        if (c == 'k') {
            if (++side > 1) return false;
            continue;
        }
        const char* letter = std::strchr(letters, c);
        if (side < 0 || letter == nullptr || *letter == '\0') return false;
        count[side][letter - letters]++;
    }
    return side == 1;
}

bool endsWith(const std::string& text, const char* suffix, std::string& stem) {
    const size_t n = std::strlen(suffix);
    if (text.size() <= n || text.compare(text.size() - n, n, suffix) != 0) return false;
    stem = text.substr(0, text.size() - n);
    return true;
}

bool parseName(const std::string& name, tableFile& file) {
    static const char* const gaviotaSuffixes[] = {".gtb", ".gtb.cp1", ".gtb.cp2", ".gtb.cp3", ".gtb.cp4"};
    std::string stem;
    file.scheme = 0;
    if (endsWith(name, ".rtbw", stem)) file.type = tableFile::syzygyWdl;
    else if (endsWith(name, ".rtbz", stem)) file.type = tableFile::syzygyDtz;
    else {
        int scheme = 4;
        while (scheme >= 0 && !endsWith(name, gaviotaSuffixes[scheme], stem)) scheme--;
        if (scheme < 0) return false;
        file.type = tableFile::gaviota;
        file.scheme = scheme;
    }
    return parseMaterial(stem, file.count);
}

// Counts of one colour of the position, seen as side `as` of a table.
bool reaches(const tablePosition& p, int colour, const int (&to)[5]) {
    const int pawns = p.pieceCount(colour, 0);
    if (to[0] > pawns) return false;
    int promoted = 0;
    for (int type = 1; type < 5; type++) promoted += std::max(0, to[type] - p.pieceCount(colour, type));
    return promoted <= pawns - to[0];
}

bool matches(const tablePosition& p, int colour, const int (&count)[5]) {
    for (int type = 0; type < 5; type++)
        if (p.pieceCount(colour, type) != count[type]) return false;
    return true;
}

}  // namespace

int tableFile::pieces() const {
    int n = 2;
    for (const auto& side : count)
        for (int c : side) n += c;
    return n;
}

bool tableFile::holds(const tablePosition& p) const {
    return (matches(p, 0, count[0]) && matches(p, 1, count[1])) || (matches(p, 0, count[1]) && matches(p, 1, count[0]));
}

bool tableFile::reachableFrom(const tablePosition& p) const {
    return (reaches(p, 0, count[0]) && reaches(p, 1, count[1])) || (reaches(p, 0, count[1]) && reaches(p, 1, count[0]));
}

tablePosition tableFile::checkPosition(int variant) const {
    // Kings in opposite corners, the other pieces on the second and seventh
    // ranks where none of them gives check.
    static const int kings[2][2] = {{0, 63}, {7, 56}};                                  // a1 h8, h1 a8
    static const int squares[2][2][5] = {{{10, 11, 12, 13, 14}, {49, 50, 51, 52, 53}},  // c2.. / b7..
                                         {{13, 12, 11, 10, 9}, {54, 53, 52, 51, 50}}};  // f2.. / g7..
    const int placement = variant / 2;
    tablePosition p{};
    p.whiteToMove = variant % 2 == 0;
    for (int side = 0; side < 2; side++) {
        p.pieces[side][5] = 1ULL << kings[placement][side];
        int next = 0;
        for (int type = 0; type < 5; type++)
            for (int n = 0; n < count[side][type] && next < 5; n++)
                p.pieces[side][type] |= 1ULL << squares[placement][side][next++];
    }
    return p;
}

std::vector<tableFile> tableFile::findAll(const std::vector<std::string>& directories) {
    std::vector<tableFile> files;
    std::vector<std::string> seen;
    for (const std::string& directory : directories) {
        DIR* dir = opendir(directory.c_str());
        if (dir == nullptr) continue;
        std::vector<std::string> names;
        while (const dirent* entry = readdir(dir)) names.emplace_back(entry->d_name);
        closedir(dir);
        std::sort(names.begin(), names.end());
        for (const std::string& name : names) {
            tableFile file{};
            if (!parseName(name, file) || std::find(seen.begin(), seen.end(), name) != seen.end()) continue;
            seen.push_back(name);
            file.path = directory + "/" + name;
            files.push_back(file);
        }
    }
    return files;
}

std::vector<std::string> splitPathList(const char* pathList) {
    std::vector<std::string> directories;
    std::string entry;
    for (const char* c = pathList;; c++) {
        if (*c == ':' || *c == '\0') {
            if (!entry.empty()) directories.push_back(entry);
            entry.clear();
            if (*c == '\0') break;
        } else {
            entry += *c;
        }
    }
    return directories;
}
