#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "egtb/tablePosition.h"

// A table file found along the path list, and the material it holds.
struct tableFile {
    enum kind { gaviota, syzygyWdl, syzygyDtz };
    std::string path;
    kind type;
    int scheme;       // Gaviota compression: 0 uncompressed, 1..4 for .cp1 .. .cp4
    int count[2][5];  // pieces besides the king, [WHITE/BLACK][PAWN..QUEEN]

    int pieces() const;  // kings included
    // Does the position hold this material, with either colour as the stronger side?
    bool holds(const tablePosition& p) const;
    // May a probe of the position lead into this table? Captures take pieces
    // away and promotions turn pawns into other pieces.
    bool reachableFrom(const tablePosition& p) const;
    // A legal position of this material: two placements, each side to move (variant 0..3).
    tablePosition checkPosition(int variant) const;

    // Every table file in the directories, a name found twice only once (the first).
    static std::vector<tableFile> findAll(const std::vector<std::string>& directories);
};

inline constexpr int checkVariants = 4;

// The directories of a path list, separated by ':' as in PATH; empty entries are skipped.
std::vector<std::string> splitPathList(const char* pathList);
