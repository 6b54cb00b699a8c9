#include "settings/settingsFile.h"
#include "../support/process.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <string>
#include <utility>

#include "../support/scratchDirectory.h"

namespace {

class settingsFileTest : public ::testing::Test {
protected:
    const scratchDirectory directory;
    const std::string name = directory.file("settings.ini");
    const char* file = name.c_str();

    void write(const std::string& text) const { directory.write("settings.ini", text); }
    std::string read() const { return directory.read("settings.ini"); }
    // What the game and piece readers print, then what all readers found: the game flags in
    // declaration order, the process count, [book path], pawn to queen, hash size, cache, inverted, egtb path.
    std::string readAll() const {
        gameSettings g;
        pieceValueSettings p;
        int hashMB = 17;
        testing::internal::CaptureStdout();
        readGameSettings(file, g);
        readPieceValueSettings(file, p);
        const bool hashFound = readHashSizeSetting(file, hashMB);
        char found[300];
        std::snprintf(
            found, sizeof found, "%d %d %d %d %d %d %d %d %d [%s] %d %d %d %d %d hash %s%d cache %d inverted %d egtb ",
            g.bookBestMoveOnly, g.pondering, g.enableEGTB, g.enableNMP, g.enableLMP, g.enableFUTPRUN, g.enableBOOK,
            g.enableEXTENTIONS, g.processCount, g.bookPath, p.pawn, p.knight, p.bishop, p.rook, p.queen,
            hashFound ? "" : "absent ", hashMB, readNalimovCacheSetting(file), readPrintInvertedScoreSetting(file));
        return testing::internal::GetCapturedStdout().append(found).append(egtbPath());
    }
    std::string egtbPath(std::size_t size = 101) const {
        std::string path(size, '#');
        readEgtbPathSetting(file, path.data(), size);
        return path.c_str();
    }
};

// What the other readers find in a file without their keys.
const std::string otherDefaults = " hash absent 17 cache 64 inverted 0 egtb d:\\chess\\egtb4\\";

TEST(settingsNumbers, decimalReadingStopsAtTextAndClampsToTheIntRange) {
    const struct {
        const char* text;
        int asInt, asDouble;
    } cases[] = {
        {"64   (in MB)\n", 64, 64},
        {" +7.9", 7, 7},
        {"-2.7", -2, -2},
        {"300.9 centipawns", 300, 300},
        {"1e2", 1, 100},
        {"abc", 0, 0},
        {"0x10", 0, 0},
        {"nan", 0, 0},
        {"-inf", 0, 0},
        {".", 0, 0},
        {"99999999999", INT_MAX, INT_MAX},
        {"-99999999999", INT_MIN, INT_MIN},
        {"1e400", 1, INT_MAX},
        {"-3e9", -3, INT_MIN},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(settingsInt(c.text), c.asInt) << c.text;
        EXPECT_EQ(settingsDouble(c.text), c.asDouble) << c.text;
    }
}

TEST_F(settingsFileTest, readersKeepDefaultsWithoutAFileAndReadBackWhatTheWriterWrote) {
    EXPECT_EQ(readAll(), "Using 0 processor\n1 0 1 1 1 1 1 1 1 [bookTalvin.ctg] 100 300 300 500 900" + otherDefaults);
    EXPECT_FALSE(writeSettingsFile("no/such/directory/x.ini", "T", settingsFileValues{}));
    ASSERT_TRUE(writeSettingsFile(file, "Talvin_v8.05_x64", settingsFileValues{}));
    EXPECT_EQ(read(),
              "==== settings Talvin_v8.05_x64 ====\npref:printToScreen=0     (0=disabled, 1=enabled)\n"
              "pref:size-hashtable=64   (in MB)\npref:NalimovCache=32     (in MB)\npref:egtb-path=d:\\chess\\egtb4\\\n"
              "pref:book-path=bookTalvin.ctg\npref:DRAWSCORE=-50\npref:VALPAWN=100\npref:VALKNIGHT=300\n"
              "pref:VALBISHOP=300\npref:VALROOK=500\npref:VALQUEEN=900\npref:MAXPROCESSES=0\n"
              "pref:enable_EGTB=1       (initial value, 0=disabled, 1=enabled)\npref:enable_BOOK=1\n"
              "pref:BookBestMoveOnly=1\npref:enable_FUTPRUN=1\npref:enable_EXTENTIONS=1\npref:enable_NMP=1\n"
              "pref:enable_LMP=1\npref:pondering=0\npref:printInvertedScore=0\n");

    settingsFileValues v;
    v.numberOfProcessors = 2, v.hashMB = 256, v.nalimovCacheMB = 16, v.drawScore = -20;
    v.pawn = 90, v.knight = 310, v.bishop = 320, v.rook = 480, v.queen = 950;
    v.egtb = 'f', v.bookBestMoveOnly = 'f', v.extentions = 'f', v.lateMovePruning = 'x';  // all but 't' is false
    v.ponder = 't', v.printInvertedScore = 't';
    std::snprintf(v.nalimovPath, sizeof v.nalimovPath, "%s", "/tb/nalimov/\n");
    std::snprintf(v.bookPath, sizeof v.bookPath, "%s", "my.ctg\n");
    ASSERT_TRUE(writeSettingsFile(file, "Talvin_v8.05_x64", v));

    EXPECT_EQ(readAll(),
              "Using 2 processors\n0 1 0 1 0 1 1 0 3 [my.ctg] 90 310 320 480 950 "  // echo is off
              "hash 256 cache 16 inverted 1 egtb /tb/nalimov/");
    EXPECT_NE(read().find("\npref:DRAWSCORE=-20\n"), std::string::npos);
}

TEST_F(settingsFileTest, echoFollowsPrintToScreenInFileOrderAndShowsValuesAsRead) {
    write(
        "pref:enable_NMP=1\npref:VALPAWN=70\n"  // before the switch: not echoed
        "pref:printToScreen=1\npref:book-path=b.ctg (x)\npref:BookBestMoveOnly=7\npref:pondering=1\n"
        "pref:enable_EGTB=3\npref:enable_NMP=0\npref:enable_LMP=0\npref:enable_FUTPRUN=0\npref:enable_BOOK=0\n"
        "pref:enable_EXTENTIONS=0\npref:MAXPROCESSES=0\npref:VALPAWN=101\npref:VALKNIGHT=301\n"
        "pref:VALBISHOP=302\npref:VALROOK=450\npref:VALQUEEN=901\n"
        "pref:printToScreen=0\npref:enable_NMP=2\npref:VALQUEEN=905\n");  // after it: not echoed
    EXPECT_EQ(readAll(),
              "Read settings:\n   Set bookpath:      b.ctg (x)\n   BookBestMoveOnly:    7\n"
              "   PONDERING:         1\n   enable_EGTB:       3\n   enable_NMP:        0\n"
              "   enable_LMP:        0\n   enable_FUTPRUN:    0\n   enable_BOOK:       0\n"
              "   enable_EXTENTIONS: 0\n   MULTIPROCESSING: DISABLED\nUsing 0 processor\n"
              "Read settings:\n   VALPAWN:  101\n   VALKNIGHT:301\n   VALBISHOP:302\n   VALROOK:  450\n"
              "   VALQUEEN: 901\n"  // the book-move mode is clamped to 0..1, other flags kept as read
              "1 1 3 2 0 0 0 0 1 [b.ctg] 101 301 302 450 905" +
                  otherDefaults);
}

TEST_F(settingsFileTest, processCountIsMaxProcessesPlusOneAndBookPathIsCutAfterAnEarlyCtgOrItsLineEnd) {
    const std::string a44(44, 'a'), a45(45, 'a');
    const struct {
        const char* maxProcesses;
        std::string book, expected;
    } cases[] = {
        {"-5", "books\\main.ctg\n", "Using 0 processor\n1 0 1 1 1 1 1 1 1 [books\\main.ctg]"},
        {"1", "plainbook\n", "Using 1 processor\n1 0 1 1 1 1 1 1 2 [plainbook\n]"},
        {"2", a44 + ".ctgzzzz\n", "Using 2 processors\n1 0 1 1 1 1 1 1 3 [" + a44 + ".ctg]"},
        {"2147483647",
         a45 + ".ctgzzzz\n",  // too late to cut: 50 characters taken; no more processes than the record holds
         "Using 9 processors\n1 0 1 1 1 1 1 1 10 [" + a45 + ".ctgz]"},
        // a Polyglot book's path loses only its line end
        {"0", "/usr/share/games/gnuchess/book.bin\n",
         "Using 0 processor\n1 0 1 1 1 1 1 1 1 [/usr/share/games/gnuchess/book.bin]"},
        {"0", "my.BIN (x)\n", "Using 0 processor\n1 0 1 1 1 1 1 1 1 [my.BIN (x)\n]"},
    };
    for (const auto& c : cases) {
        write(std::string("pref:MAXPROCESSES=") + c.maxProcesses + "\npref:book-path=" + c.book);
        EXPECT_EQ(readAll(), c.expected + " 100 300 300 500 900" + otherDefaults);
    }
}

TEST_F(settingsFileTest, moveOverheadIsReadAndNeverNegative) {
    for (const auto& [text, overhead] :
         {std::pair{"", 50}, {"pref:moveOverhead=120\n", 120}, {"pref:moveOverhead=-5\n", 0}}) {
        write(text);
        gameSettings g;
        printed([&] { readGameSettings(file, g); });
        EXPECT_EQ(g.moveOverheadMs, overhead) << text;
    }
}

TEST_F(settingsFileTest, laterLinesWinOthersAreIgnoredAndLongLinesArriveInPiecesOf999) {
    write(
        "==== settings X ====\n\npref:size-hashtable=32\npref:VALPAWN=80\npref:size-hashtable=1.289e2   (in MB)\n"
        "pref:VALPAWN=1.105e2xyz\npref:BookBestMoveOnly=-3\npref:egtb-path=c:\\a\\\npref:egtb-path=e:\\tb\\\r\n");
    EXPECT_EQ(readAll(),
              "Using 0 processor\n0 0 1 1 1 1 1 1 1 [bookTalvin.ctg] 110 300 300 500 900 hash 128 "
              "cache 64 inverted 0 egtb e:\\tb\\");  // a Windows line end is a line end too

    // The second piece of an overlong line starts with a key and counts as a line.
    write("pref:egtb-path=" + std::string(984, 'p') + "pref:VALPAWN=55\n");
    EXPECT_NE(readAll().find("] 55 300 300 500 900 "), std::string::npos);
    EXPECT_EQ(egtbPath(2000), std::string(984, 'p'));
    EXPECT_EQ(egtbPath(5), "pppp");
}

}  // namespace
