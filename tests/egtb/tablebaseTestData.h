#pragma once
#include <sys/stat.h>

#include <string>

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
