#pragma once

#include <cstddef>
#include <cstdio>
#include <cstring>

// The settings file is the one channel through which start-up options reach
// the engine's objects: UCI mode writes it, and every owner of a key reads it
// again in its own constructor. There is no central settings object.

inline constexpr const char* settingsFileName = "talvin init.ini";
inline constexpr std::size_t settingsLineBufferSize = 1000;

// Calls onLine(const char* piece) for each piece of the file as read through a
// 1000-byte buffer: a line longer than 999 characters arrives in several
// pieces, and each piece is matched against the keys like a line of its own.
// A piece keeps its line end; a Windows line end ("\r\n") is handed on as
// "\n" so that a file edited on Windows reads the same everywhere.
// Returns false, printing nothing, when the file cannot be opened.
template <typename OnLine>
bool readSettingsLines(const char* fileName, OnLine&& onLine) {
    std::FILE* file = std::fopen(fileName, "r");
    if (file == nullptr) return false;
    char piece[settingsLineBufferSize];
    while (std::fgets(piece, sizeof piece, file) != nullptr) {
        const std::size_t length = std::strlen(piece);
        if (length >= 2 && piece[length - 2] == '\r' && piece[length - 1] == '\n') {
            piece[length - 2] = '\n';
            piece[length - 1] = '\0';
        }
        onLine(static_cast<const char*>(piece));
    }
    std::fclose(file);
    return true;
}

// Text after key when piece starts with key, else nullptr.
const char* settingsValue(const char* piece, const char* key);

// Plain decimal integer: leading blanks, optional sign, digits up to the first
// other character. Garbage reads as 0; out-of-range values clamp to the int range.
int settingsInt(const char* text);

// Decimal number read as a double (no hex, inf or nan forms) and then truncated
// toward zero. Garbage reads as 0; out-of-range values clamp to the int range.
int settingsDouble(const char* text);

struct pieceValueSettings {
    int pawn = 100;
    int knight = 300;
    int bishop = 300;
    int rook = 500;
    int queen = 900;
};

// Keeps material sums and the evaluation's products far from overflow.
inline constexpr int pieceValueLimit = 10000;

// The board constructor's keys: the five piece values, limited to
// ±pieceValueLimit and echoed so, when the file has switched echoing on
// before them.
void readPieceValueSettings(const char* fileName, pieceValueSettings& values);

// "pref:size-hashtable=" in MB. Returns false and leaves sizeMB alone when the
// key is absent, because the two tables sized by it have different defaults.
bool readHashSizeSetting(const char* fileName, int& sizeMB);
// The same value, 0 when the key is absent: a size that gives either table its default.
inline int readHashSizeSetting(const char* fileName) {
    int sizeMB = 0;
    readHashSizeSetting(fileName, sizeMB);
    return sizeMB;
}

int readNalimovCacheSetting(const char* fileName);        // MB, default 64
int readPrintInvertedScoreSetting(const char* fileName);  // default 0

// Tablebase directory: the value up to the line end, cut to size - 1
// characters; default "d:\chess\egtb4\".
void readEgtbPathSetting(const char* fileName, char* path, std::size_t size);

// "pref:weights-file=": the value up to the line end, cut to size - 1
// characters. False when the key is absent or empty.
bool readWeightsFileSetting(const char* fileName, char* path, std::size_t size);

inline constexpr std::size_t bookPathMaxLength = 50;

struct gameSettings {
    char bookPath[bookPathMaxLength + 1] = "bookTalvin.ctg";
    int bookBestMoveOnly = 1;
    int pondering = 0;
    int enableEGTB = 1;
    int enableNMP = 1;
    int enableLMP = 1;
    int enableFUTPRUN = 1;
    int enableBOOK = 1;
    int enableEXTENTIONS = 1;
    int processCount = 1;     // search process plus slaves, at most maxProcesses
    int moveOverheadMs = 50;  // kept back from every time budget for the way to the front end
};

// The game constructor's keys, echoed in file order once echoing is on. Always
// ends by printing the number of helper processes ("Using %d processor[s]").
void readGameSettings(const char* fileName, gameSettings& settings);

inline constexpr std::size_t optionPathMaxLength = 100;

// The UCI option values collected before the engine objects exist. Paths keep
// the newline of the line they came from; check options keep only the first
// character of their value ('t' counts as true).
struct settingsFileValues {
    int numberOfProcessors = 0;
    int hashMB = 64;
    char ownBook = 't';
    char bookBestMoveOnly = 't';
    char bookPath[optionPathMaxLength + 1] = "bookTalvin.ctg\n";
    char egtb = 't';
    char nalimovPath[optionPathMaxLength + 1] = "d:\\chess\\egtb4\\\n";
    int nalimovCacheMB = 32;
    char ponder = 'f';
    char extentions = 't';
    char nullMovePruning = 't';
    char lateMovePruning = 't';
    char futilityPruning = 't';
    char printInvertedScore = 'f';
    int drawScore = -50;
    int queen = 900;
    int rook = 500;
    int bishop = 300;
    int knight = 300;
    int pawn = 100;
};

// Creates or overwrites the file. Returns false, printing nothing, when it
// cannot be created.
bool writeSettingsFile(const char* fileName, const char* engineName, const settingsFileValues& values);
