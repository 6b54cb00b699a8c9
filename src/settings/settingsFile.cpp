#include "settings/settingsFile.h"

#include <strings.h>
#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdlib>

#include "platform/console.h"
#include "platform/processLauncher.h"

const char* settingsValue(const char* piece, const char* key) {
    const std::size_t keyLength = std::strlen(key);
    return std::strncmp(piece, key, keyLength) == 0 ? piece + keyLength : nullptr;
}

static int clampToInt(long long value) {
    if (value > INT_MAX) return INT_MAX;
    if (value < INT_MIN) return INT_MIN;
    return static_cast<int>(value);
}

int settingsInt(const char* text) {
    // strtol saturates instead of overflowing, and base 10 refuses "0x" forms.
    return clampToInt(std::strtol(text, nullptr, 10));
}

int settingsDouble(const char* text) {
    // strtod would also take hex, "inf" and "nan"; only a plain decimal number
    // may get that far, so garbage reads as 0 like everywhere else.
    const char* p = text;
    while (std::isspace(static_cast<unsigned char>(*p))) ++p;
    if (*p == '+' || *p == '-') ++p;
    const bool startsDecimal = std::isdigit(static_cast<unsigned char>(p[0])) ||
                               (p[0] == '.' && std::isdigit(static_cast<unsigned char>(p[1])));
    if (!startsDecimal) return 0;
    if (p[0] == '0' && (p[1] == 'x' || p[1] == 'X')) return 0;

    const double value = std::strtod(text, nullptr);
    // Written so that an overflow to infinity clamps as well.
    if (!(value < 2147483648.0)) return INT_MAX;
    if (!(value > -2147483649.0)) return INT_MIN;
    return static_cast<int>(value);
}

// "pref:printToScreen=" turns echoing on or off from where it stands; false
// when piece holds another key.
static bool readEchoSwitch(const char* piece, bool& echo) {
    const char* value = settingsValue(piece, "pref:printToScreen=");
    if (value == nullptr) return false;
    echo = settingsInt(value) != 0;
    if (echo) printInfo("Read settings:\n");
    return true;
}

// A key whose number goes into a field of settings, echoed with echoFormat.
template <class settings>
struct echoedKey {
    const char* key;
    const char* echoFormat;
    int settings::*field;
};

// Reads piece into the field of the key it starts with, parsed by parse and
// echoed; false when it starts with none of keys.
template <class settings, std::size_t count>
static bool readEchoedKey(const char* piece, const echoedKey<settings> (&keys)[count], settings& values, bool echo,
                          int (*parse)(const char*)) {
    for (const echoedKey<settings>& key : keys) {
        if (const char* value = settingsValue(piece, key.key)) {
            values.*key.field = parse(value);
            if (echo) printInfo(key.echoFormat, values.*key.field);
            return true;
        }
    }
    return false;
}

static int pieceValueSetting(const char* text) {
    return std::clamp(settingsDouble(text), -pieceValueLimit, pieceValueLimit);
}

void readPieceValueSettings(const char* fileName, pieceValueSettings& values) {
    static constexpr echoedKey<pieceValueSettings> pieceKeys[] = {
        {"pref:VALPAWN=", "   VALPAWN:  %d\n", &pieceValueSettings::pawn},
        {"pref:VALKNIGHT=", "   VALKNIGHT:%d\n", &pieceValueSettings::knight},
        {"pref:VALBISHOP=", "   VALBISHOP:%d\n", &pieceValueSettings::bishop},
        {"pref:VALROOK=", "   VALROOK:  %d\n", &pieceValueSettings::rook},
        {"pref:VALQUEEN=", "   VALQUEEN: %d\n", &pieceValueSettings::queen},
    };
    bool echo = false;
    readSettingsLines(fileName, [&](const char* piece) {
        if (!readEchoSwitch(piece, echo)) readEchoedKey(piece, pieceKeys, values, echo, pieceValueSetting);
    });
}

bool readHashSizeSetting(const char* fileName, int& sizeMB) {
    bool found = false;
    readSettingsLines(fileName, [&](const char* piece) {
        if (const char* value = settingsValue(piece, "pref:size-hashtable=")) {
            sizeMB = settingsDouble(value);
            found = true;
        }
    });
    return found;
}

int readNalimovCacheSetting(const char* fileName) {
    int cacheMB = 64;
    readSettingsLines(fileName, [&](const char* piece) {
        if (const char* value = settingsValue(piece, "pref:NalimovCache=")) cacheMB = settingsInt(value);
    });
    return cacheMB;
}

int readPrintInvertedScoreSetting(const char* fileName) {
    int inverted = 0;
    readSettingsLines(fileName, [&](const char* piece) {
        if (const char* value = settingsValue(piece, "pref:printInvertedScore=")) inverted = settingsInt(value);
    });
    return inverted;
}

// Copies text up to its line end (or its end), cut to fit size bytes with the terminator.
static void copyUpToLineEnd(char* destination, std::size_t size, const char* text) {
    if (size == 0) return;
    std::size_t length = 0;
    while (length + 1 < size && text[length] != '\0' && text[length] != '\n') {
        destination[length] = text[length];
        ++length;
    }
    destination[length] = '\0';
}

void readEgtbPathSetting(const char* fileName, char* path, std::size_t size) {
    copyUpToLineEnd(path, size, "d:\\chess\\egtb4\\");
    readSettingsLines(fileName, [&](const char* piece) {
        if (const char* value = settingsValue(piece, "pref:egtb-path=")) copyUpToLineEnd(path, size, value);
    });
}

bool readWeightsFileSetting(const char* fileName, char* path, std::size_t size) {
    copyUpToLineEnd(path, size, "");
    readSettingsLines(fileName, [&](const char* piece) {
        if (const char* value = settingsValue(piece, "pref:weights-file=")) copyUpToLineEnd(path, size, value);
    });
    return path[0] != '\0';
}

// At most 50 characters, cut right after the first ".ctg" that starts within
// the first 45; the cut is what drops the line end. A Polyglot book's path,
// ending in ".bin", is taken up to the line end; other text stays as read.
static void takeBookPath(char (&bookPath)[bookPathMaxLength + 1], const char* text) {
    std::size_t length = 0;
    while (length < bookPathMaxLength && text[length] != '\0') {
        bookPath[length] = text[length];
        ++length;
    }
    bookPath[length] = '\0';
    char* extension = std::strstr(bookPath, ".ctg");
    if (extension != nullptr && extension - bookPath < 45) {
        extension[4] = '\0';
        return;
    }
    const std::size_t lineLength = std::strcspn(bookPath, "\n");
    if (lineLength >= 4 && strncasecmp(bookPath + lineLength - 4, ".bin", 4) == 0) bookPath[lineLength] = '\0';
}

void readGameSettings(const char* fileName, gameSettings& settings) {
    static constexpr echoedKey<gameSettings> flagKeys[] = {
        {"pref:pondering=", "   PONDERING:         %d\n", &gameSettings::pondering},
        {"pref:enable_EGTB=", "   enable_EGTB:       %d\n", &gameSettings::enableEGTB},
        {"pref:enable_NMP=", "   enable_NMP:        %d\n", &gameSettings::enableNMP},
        {"pref:enable_LMP=", "   enable_LMP:        %d\n", &gameSettings::enableLMP},
        {"pref:enable_FUTPRUN=", "   enable_FUTPRUN:    %d\n", &gameSettings::enableFUTPRUN},
        {"pref:enable_BOOK=", "   enable_BOOK:       %d\n", &gameSettings::enableBOOK},
        {"pref:enable_EXTENTIONS=", "   enable_EXTENTIONS: %d\n", &gameSettings::enableEXTENTIONS},
    };

    bool echo = false;
    readSettingsLines(fileName, [&](const char* piece) {
        if (readEchoSwitch(piece, echo)) return;
        const char* value;
        if ((value = settingsValue(piece, "pref:book-path=")) != nullptr) {
            takeBookPath(settings.bookPath, value);
            if (echo) printInfo("   Set bookpath:      %s", value);
            return;
        }
        if ((value = settingsValue(piece, "pref:BookBestMoveOnly=")) != nullptr) {
            const int mode = settingsInt(value);
            settings.bookBestMoveOnly = mode < 0 ? 0 : (mode > 1 ? 1 : mode);
            if (echo) printInfo("   BookBestMoveOnly:    %d\n", mode);
            return;
        }
        if ((value = settingsValue(piece, "pref:MAXPROCESSES=")) != nullptr) {
            // The shared record holds the state of maxProcesses processes, no more.
            const long long count = static_cast<long long>(settingsInt(value)) + 1;
            settings.processCount = static_cast<int>(std::clamp<long long>(count, 1, maxProcesses));
            if (echo && settings.processCount == 1) printInfo("   MULTIPROCESSING: DISABLED\n");
            return;
        }
        if ((value = settingsValue(piece, "pref:moveOverhead=")) != nullptr) {
            settings.moveOverheadMs = std::max(0, settingsInt(value));
            if (echo) printInfo("   moveOverhead:      %d\n", settings.moveOverheadMs);
            return;
        }
        readEchoedKey(piece, flagKeys, settings, echo, settingsInt);
    });
    printInfo("Using %d processor%s\n", settings.processCount - 1, settings.processCount > 2 ? "s" : "");
}

static int checkValue(char firstCharacter) { return firstCharacter == 't' ? 1 : 0; }

bool writeSettingsFile(const char* fileName, const char* engineName, const settingsFileValues& values) {
    std::FILE* file = std::fopen(fileName, "w");
    if (file == nullptr) return false;
    std::fprintf(file, "==== settings %s ====\n", engineName);
    std::fprintf(file, "pref:printToScreen=0     (0=disabled, 1=enabled)\n");
    std::fprintf(file, "pref:size-hashtable=%d   (in MB)\n", values.hashMB);
    std::fprintf(file, "pref:NalimovCache=%d     (in MB)\n", values.nalimovCacheMB);
    // The paths carry the newline of the option line they came from.
    std::fprintf(file, "pref:egtb-path=%s", values.nalimovPath);
    std::fprintf(file, "pref:book-path=%s", values.bookPath);
    std::fprintf(file, "pref:DRAWSCORE=%d\n", values.drawScore);
    std::fprintf(file, "pref:VALPAWN=%d\n", values.pawn);
    std::fprintf(file, "pref:VALKNIGHT=%d\n", values.knight);
    std::fprintf(file, "pref:VALBISHOP=%d\n", values.bishop);
    std::fprintf(file, "pref:VALROOK=%d\n", values.rook);
    std::fprintf(file, "pref:VALQUEEN=%d\n", values.queen);
    std::fprintf(file, "pref:MAXPROCESSES=%d\n", values.numberOfProcessors);
    std::fprintf(file, "pref:enable_EGTB=%d       (initial value, 0=disabled, 1=enabled)\n", checkValue(values.egtb));
    std::fprintf(file, "pref:enable_BOOK=%d\n", checkValue(values.ownBook));
    std::fprintf(file, "pref:BookBestMoveOnly=%d\n", checkValue(values.bookBestMoveOnly));
    std::fprintf(file, "pref:enable_FUTPRUN=%d\n", checkValue(values.futilityPruning));
    std::fprintf(file, "pref:enable_EXTENTIONS=%d\n", checkValue(values.extentions));
    std::fprintf(file, "pref:enable_NMP=%d\n", checkValue(values.nullMovePruning));
    std::fprintf(file, "pref:enable_LMP=%d\n", checkValue(values.lateMovePruning));
    std::fprintf(file, "pref:pondering=%d\n", checkValue(values.ponder));
    std::fprintf(file, "pref:printInvertedScore=%d\n", checkValue(values.printInvertedScore));
    return std::fclose(file) == 0;
}
