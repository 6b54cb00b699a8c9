#pragma once
#include <sys/stat.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

// Debian's 3-piece Gaviota tables (package gaviotatb), the Syzygy tables
// committed for the tests, and the full 3- and 4-piece sets with their answer
// files next to the repository when they are there.
inline const std::string gaviotaTables = "/usr/share/gaviotatb/gtb4";
inline const std::string syzygyTables = std::string(TEST_DATA) + "/tablebases/syzygy";
inline std::string sharedFile(const char* path) { return std::string(SHARED_DATA) + "/" + path; }
inline bool exists(const std::string& path) {
    struct stat s;
    return stat(path.c_str(), &s) == 0;
}

// One EPD line: the position (with a zero move clock) and its numeric opcodes.
struct epdLine {
    std::string fen, opcodes;
    int value(const char* opcode) const {
        const size_t at = opcodes.find(std::string(" ") + opcode + " ");
        return at == std::string::npos ? 0 : std::stoi(opcodes.substr(at + std::string(opcode).size() + 2));
    }
};

inline epdLine parseEpd(const std::string& line) {
    std::istringstream in(line);
    epdLine epd;
    std::string field;
    for (int n = 0; n < 4 && in >> field; n++) epd.fen += field + " ";
    epd.fen += "0 1";
    std::getline(in, epd.opcodes);  // starts with the blank after the fourth field
    return epd;
}

inline std::vector<epdLine> readEpd(const std::string& path) {
    std::vector<epdLine> lines;
    std::ifstream in(path);
    for (std::string line; std::getline(in, line);)
        if (line.find_first_not_of(" \r") != std::string::npos && line[0] != '#') lines.push_back(parseEpd(line));
    return lines;
}
