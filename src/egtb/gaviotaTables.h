#pragma once
#include <string>
#include <vector>

#include "egtb/tableFile.h"
#include "egtb/tablePosition.h"

// Gaviota tables (distance to mate) through Debian's libgaviotatb. The
// library keeps one state per process, so there is one of these per process.
class gaviotaTables {
public:
    int pieces = 0;  // largest table found, 0 when none
    // Left out after the start-up check: files whose probe crashed, and
    // files the library could not read.
    std::vector<tableFile> damaged;
    std::vector<tableFile> unreadable;

    ~gaviotaTables();
    // Opens the tables of the compression scheme that most files found in the
    // directories use, and a cache of cacheMB MiB. False when the cache
    // cannot be had; then no table is used.
    bool start(const std::vector<std::string>& directories, const std::vector<tableFile>& files, int cacheMB);
    // The position's distance to mate as the value t of the score
    // conversion: 32767 - n when the side to move mates in n moves,
    // -32766 + n when it is mated in n (n = 0: mated now), 0 for a draw.
    // False when no table answers.
    bool probe(const tablePosition& p, int& value) const;

private:
    const char** paths = nullptr;
    bool started = false;
    bool probeFile(const tablePosition& p, unsigned& info, unsigned& plies) const;
};
