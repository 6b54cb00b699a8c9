#include "settings/settingsFile.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "../support/scratchDirectory.h"

namespace {

// What the game and piece readers print, then "name=value " for every setting that all readers together found
// away from its default.
std::string readBack(const char* file) {
    gameSettings g;
    pieceValueSettings p;
    int hashMB = -1;
    char egtb[101];
    testing::internal::CaptureStdout();
    readGameSettings(file, g);
    readPieceValueSettings(file, p);
    const bool hashFound = readHashSizeSetting(file, hashMB);
    readEgtbPathSetting(file, egtb, sizeof egtb);
    std::string text = testing::internal::GetCapturedStdout();
    const auto number = [](int value) { return std::to_string(value); };
    const struct {
        const char* name;
        std::string value, fallback;
    } found[] = {
        {"bookBestMoveOnly", number(g.bookBestMoveOnly), "1"},
        {"pondering", number(g.pondering), "0"},
        {"EGTB", number(g.enableEGTB), "1"},
        {"NMP", number(g.enableNMP), "1"},
        {"LMP", number(g.enableLMP), "1"},
        {"FUTPRUN", number(g.enableFUTPRUN), "1"},
        {"BOOK", number(g.enableBOOK), "1"},
        {"EXTENTIONS", number(g.enableEXTENTIONS), "1"},
        {"processes", number(g.processCount), "1"},
        {"overhead", number(g.moveOverheadMs), "50"},
        {"book", g.bookPath, "bookTalvin.ctg"},
        {"pawn", number(p.pawn), "100"},
        {"knight", number(p.knight), "300"},
        {"bishop", number(p.bishop), "300"},
        {"rook", number(p.rook), "500"},
        {"queen", number(p.queen), "900"},
        {"hash", hashFound ? number(hashMB) : "absent", "absent"},
        {"cache", number(readNalimovCacheSetting(file)), "64"},
        {"inverted", number(readPrintInvertedScoreSetting(file)), "0"},
        {"egtb", egtb, "d:\\chess\\egtb4\\"},
    };
    for (const auto& f : found)
        if (f.value != f.fallback) text += std::string(f.name) + "=" + f.value + " ";
    return text;
}

}  // namespace

TEST(settingsNumbers, decimalReadingStopsAtTextAndClampsToTheIntRange) {
    const struct {
        const char* text;
        int asInt, asDouble;
    } cases[] = {
        {"64   (in MB)\n", 64, 64},
        {" +7.9", 7, 7},
        {"-2.7", -2, -2},
        {"1e2", 1, 100},
        {"abc", 0, 0},
        {"0x10", 0, 0},
        {"nan", 0, 0},
        {"99999999999", INT_MAX, INT_MAX},
        {"1e400", 1, INT_MAX},
        {"-3e9", -3, INT_MIN},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(settingsInt(c.text), c.asInt) << c.text;
        EXPECT_EQ(settingsDouble(c.text), c.asDouble) << c.text;
    }
}

// The process count is MAXPROCESSES + 1, at most what the shared record holds. A book path is cut after a
// ".ctg" within its first 50 characters and otherwise keeps its line end, unless it names a Polyglot book.
// Later lines win; the book-move mode is clamped to 0..1, the piece values to +-10000.
TEST(settingsFile, eachKeyReadAlone) {
    const scratchDirectory directory;
    const std::string file = directory.file(settingsFileName);
    const std::string a44(44, 'a'), a45(45, 'a'), longPath(984, 'p');
    const struct {
        std::string text, found;
    } cases[] = {
        {"pref:MAXPROCESSES=-5\npref:book-path=books\\main.ctg\n", "Using 0 processor\nbook=books\\main.ctg "},
        {"pref:MAXPROCESSES=1\npref:book-path=plainbook\n", "Using 1 processor\nprocesses=2 book=plainbook\n "},
        {"pref:MAXPROCESSES=2\npref:book-path=" + a44 + ".ctgzzzz\n",
         "Using 2 processors\nprocesses=3 book=" + a44 + ".ctg "},
        {"pref:MAXPROCESSES=2147483647\npref:book-path=" + a45 + ".ctgzzzz\n",  // too late to cut: 50 taken
         "Using 9 processors\nprocesses=10 book=" + a45 + ".ctgz "},
        {"pref:book-path=/usr/share/games/gnuchess/book.bin\n",
         "Using 0 processor\nbook=/usr/share/games/gnuchess/book.bin "},
        {"pref:moveOverhead=-5\n", "Using 0 processor\noverhead=0 "},
        {"==== settings X ====\n\npref:size-hashtable=32\npref:VALPAWN=80\npref:size-hashtable=1.289e2   (in MB)\n"
         "pref:VALPAWN=1.105e2xyz\npref:BookBestMoveOnly=-3\npref:egtb-path=c:\\a\\\npref:egtb-path=e:\\tb\\\r\n",
         "Using 0 processor\nbookBestMoveOnly=0 pawn=110 hash=128 egtb=e:\\tb\\ "},
        {"pref:pondering=1\npref:enable_EGTB=3\npref:enable_NMP=0\npref:enable_LMP=0\npref:enable_FUTPRUN=0\n"
         "pref:enable_BOOK=0\npref:enable_EXTENTIONS=0\npref:VALKNIGHT=301\npref:VALBISHOP=302\npref:VALROOK=450\n"
         "pref:VALQUEEN=905\n",  // flags other than the book-move mode are kept as read
         "Using 0 processor\npondering=1 EGTB=3 NMP=0 LMP=0 FUTPRUN=0 BOOK=0 EXTENTIONS=0 knight=301 bishop=302 "
         "rook=450 "
         "queen=905 "},
        // piece values are limited to +-10000, and echoed as used
        {"pref:printToScreen=1\npref:VALQUEEN=20000\npref:VALPAWN=-1e9\npref:VALROOK=9999\n",
         "Read settings:\nUsing 0 processor\nRead settings:\n   VALQUEEN: 10000\n   VALPAWN:  -10000\n   VALROOK:  "
         "9999\n"
         "pawn=-10000 rook=9999 queen=10000 "},
        // the second piece of an overlong line starts with a key and counts as a line
        {"pref:egtb-path=" + longPath + "pref:VALPAWN=55\n",
         "Using 0 processor\npawn=55 egtb=" + longPath.substr(0, 100) + " "},
    };
    EXPECT_EQ(readBack(file.c_str()), "Using 0 processor\n");  // no file
    for (const auto& c : cases) {
        directory.write(settingsFileName, c.text);
        EXPECT_EQ(readBack(file.c_str()), c.found) << c.text;
    }
    std::string path(2000, '#');  // the whole first piece of the overlong line, then the path cut to size
    readEgtbPathSetting(file.c_str(), path.data(), path.size());
    EXPECT_EQ(path.c_str(), longPath);
    readEgtbPathSetting(file.c_str(), path.data(), 5);
    EXPECT_STREQ(path.c_str(), "pppp");
}

TEST(settingsFile, theWriterWritesWhatTheReadersReadBack) {
    const scratchDirectory directory;
    const std::string file = directory.file(settingsFileName);
    EXPECT_FALSE(writeSettingsFile("no/such/directory/x.ini", "T", settingsFileValues{}));
    settingsFileValues v;
    v.numberOfProcessors = 2, v.hashMB = 256, v.nalimovCacheMB = 16, v.drawScore = -20;
    v.pawn = 90, v.knight = 310, v.bishop = 320, v.rook = 480, v.queen = 950;
    v.egtb = 'f', v.bookBestMoveOnly = 'f', v.extentions = 'f', v.lateMovePruning = 'x';  // all but 't' is false
    v.ponder = 't', v.printInvertedScore = 't';
    std::snprintf(v.nalimovPath, sizeof v.nalimovPath, "%s", "/tb/nalimov/\n");
    std::snprintf(v.bookPath, sizeof v.bookPath, "%s", "my.ctg\n");
    ASSERT_TRUE(writeSettingsFile(file.c_str(), "Talvin_v8.05_x64", v));
    EXPECT_EQ(readBack(file.c_str()),  // echo is off
              "Using 2 processors\nbookBestMoveOnly=0 pondering=1 EGTB=0 LMP=0 EXTENTIONS=0 processes=3 book=my.ctg "
              "pawn=90 knight=310 bishop=320 rook=480 queen=950 hash=256 cache=16 inverted=1 egtb=/tb/nalimov/ ");
    EXPECT_NE(directory.read(settingsFileName).find("\npref:DRAWSCORE=-20\n"), std::string::npos);
}
