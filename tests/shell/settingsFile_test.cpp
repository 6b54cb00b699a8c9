#include "shell/settingsFile.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <string>

namespace {

class settingsFileTest : public ::testing::Test {
protected:
    // One file per test: ctest runs tests of this fixture side by side.
    std::string fileNameText =
        std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()) + ".ini";
    const char* fileName = fileNameText.c_str();

    void TearDown() override { std::remove(fileName); }

    void writeFile(const std::string& text) {
        std::FILE* file = std::fopen(fileName, "wb");
        ASSERT_NE(file, nullptr);
        std::fwrite(text.data(), 1, text.size(), file);
        std::fclose(file);
    }

    std::string readFile() {
        std::string text;
        if (std::FILE* file = std::fopen(fileName, "rb")) {
            for (int c; (c = std::fgetc(file)) != EOF;) text += static_cast<char>(c);
            std::fclose(file);
        }
        return text;
    }

    std::string gameOutput(gameSettings& settings) {
        testing::internal::CaptureStdout();
        readGameSettings(fileName, settings);
        return testing::internal::GetCapturedStdout();
    }
};

const char* const defaultFileText =
    "==== settings Talvin_v8.05_x64 ====\n"
    "pref:printToScreen=0     (0=disabled, 1=enabled)\n"
    "pref:size-hashtable=64   (in MB)\n"
    "pref:NalimovCache=32     (in MB)\n"
    "pref:egtb-path=d:\\chess\\egtb4\\\n"
    "pref:book-path=bookTalvin.ctg\n"
    "pref:DRAWSCORE=-50\n"
    "pref:VALPAWN=100\n"
    "pref:VALKNIGHT=300\n"
    "pref:VALBISHOP=300\n"
    "pref:VALROOK=500\n"
    "pref:VALQUEEN=900\n"
    "pref:MAXPROCESSES=0\n"
    "pref:enable_EGTB=1       (initial value, 0=disabled, 1=enabled)\n"
    "pref:enable_BOOK=1\n"
    "pref:BookBestMoveOnly=1\n"
    "pref:enable_FUTPRUN=1\n"
    "pref:enable_EXTENTIONS=1\n"
    "pref:enable_NMP=1\n"
    "pref:enable_LMP=1\n"
    "pref:pondering=0\n"
    "pref:printInvertedScore=0\n";

TEST(settingsNumbers, decimalReadingStopsAtTextAndNeverOverflows) {
    EXPECT_EQ(settingsInt("64   (in MB)\n"), 64);
    EXPECT_EQ(settingsInt("-5"), -5);
    EXPECT_EQ(settingsInt("abc"), 0);
    EXPECT_EQ(settingsInt("0x10"), 0);
    EXPECT_EQ(settingsInt("99999999999"), INT_MAX);
    EXPECT_EQ(settingsDouble("300.9 centipawns"), 300);
    EXPECT_EQ(settingsDouble("-2.7"), -2);
    EXPECT_EQ(settingsDouble("1e2"), 100);
    for (const char* garbage : {"nan", "-inf", "0x10", "."}) EXPECT_EQ(settingsDouble(garbage), 0) << garbage;
    EXPECT_EQ(settingsDouble("1e400"), INT_MAX);
    EXPECT_EQ(settingsDouble("-3e9"), INT_MIN);
}

TEST_F(settingsFileTest, writesTheDefaultFileExactly) {
    ASSERT_TRUE(writeSettingsFile(fileName, "Talvin_v8.05_x64", settingsFileValues{}));
    EXPECT_EQ(readFile(), defaultFileText);
}

TEST_F(settingsFileTest, writtenFileReadsBackAsTheSameSettings) {
    settingsFileValues values;
    values.numberOfProcessors = 2;
    values.hashMB = 256;
    values.nalimovCacheMB = 16;
    values.pawn = 90;
    values.nullMovePruning = 'f';
    values.ponder = 't';
    values.printInvertedScore = 'x';  // anything but 't' is false
    std::snprintf(values.nalimovPath, sizeof values.nalimovPath, "%s", "/tb/nalimov/\n");
    std::snprintf(values.bookPath, sizeof values.bookPath, "%s", "my.ctg\n");
    ASSERT_TRUE(writeSettingsFile(fileName, "Talvin_v8.05_x64", values));

    gameSettings game;
    EXPECT_EQ(gameOutput(game), "Using 2 processors\n");  // the writer switches echo off
    EXPECT_STREQ(game.bookPath, "my.ctg");
    EXPECT_EQ(game.processCount, 3);
    EXPECT_EQ(game.enableNMP, 0);
    EXPECT_EQ(game.pondering, 1);
    EXPECT_EQ(game.bookBestMoveOnly + game.enableEGTB + game.enableLMP + game.enableFUTPRUN + game.enableBOOK +
                  game.enableEXTENTIONS, 6);

    pieceValueSettings pieces;
    testing::internal::CaptureStdout();
    readPieceValueSettings(fileName, pieces);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(pieces.pawn, 90);
    EXPECT_EQ(pieces.queen, 900);
    int hashMB = 0;
    EXPECT_TRUE(readHashSizeSetting(fileName, hashMB));
    EXPECT_EQ(hashMB, 256);
    EXPECT_EQ(readNalimovCacheSetting(fileName), 16);
    EXPECT_EQ(readPrintInvertedScoreSetting(fileName), 0);
    char path[101];
    readEgtbPathSetting(fileName, path, sizeof path);
    EXPECT_STREQ(path, "/tb/nalimov/");
}

TEST_F(settingsFileTest, processCountIsMaxProcessesPlusOneAtLeastOne) {
    const struct { const char* line; int count; const char* output; } cases[] = {
        {"pref:MAXPROCESSES=-5\n", 1, "Using 0 processor\n"},
        {"pref:MAXPROCESSES=1\n", 2, "Using 1 processor\n"},
        {"pref:MAXPROCESSES=2\n", 3, "Using 2 processors\n"},
    };
    for (const auto& c : cases) {
        writeFile(c.line);
        gameSettings settings;
        EXPECT_EQ(gameOutput(settings), c.output) << c.line;
        EXPECT_EQ(settings.processCount, c.count) << c.line;
    }
}

TEST_F(settingsFileTest, bookPathIsCutAfterAnEarlyCtgOtherwiseKeptAsRead) {
    const struct { std::string value, path; } cases[] = {
        {"books\\main.ctg\n", "books\\main.ctg"},
        {"plainbook\n", "plainbook\n"},
        {std::string(44, 'a') + ".ctgzzzz\n", std::string(44, 'a') + ".ctg"},
        {std::string(45, 'a') + ".ctgzzzz\n", std::string(45, 'a') + ".ctgz"},  // too late to cut; 50 taken
    };
    for (const auto& c : cases) {
        writeFile("pref:book-path=" + c.value);
        gameSettings settings;
        gameOutput(settings);
        EXPECT_EQ(std::string(settings.bookPath), c.path);
    }
}

TEST_F(settingsFileTest, echoFollowsPrintToScreenInFileOrder) {
    writeFile("pref:enable_NMP=0\n"  // before the switch: not echoed
              "pref:printToScreen=1\n"
              "pref:book-path=b.ctg\n"
              "pref:BookBestMoveOnly=7\n"
              "pref:pondering=1\n"
              "pref:enable_EGTB=3\n"
              "pref:MAXPROCESSES=0\n"
              "pref:VALROOK=450\n"
              "pref:printToScreen=0\n"
              "pref:enable_NMP=2\n");
    gameSettings settings;
    EXPECT_EQ(gameOutput(settings),
              "Read settings:\n"
              "   Set bookpath:      b.ctg\n"
              "   BookBestMoveOnly:    7\n"
              "   PONDERING:         1\n"
              "   enable_EGTB:       3\n"
              "   MULTIPROCESSING: DISABLED\n"
              "Using 0 processor\n");
    EXPECT_EQ(settings.bookBestMoveOnly, 1);
    EXPECT_EQ(settings.enableEGTB, 3);  // flags are kept as read
    EXPECT_EQ(settings.enableNMP, 2);

    pieceValueSettings pieces;
    testing::internal::CaptureStdout();
    readPieceValueSettings(fileName, pieces);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Read settings:\n   VALROOK:  450\n");
    EXPECT_EQ(pieces.rook, 450);
}

TEST_F(settingsFileTest, laterLineWinsAndOtherLinesAreIgnored) {
    writeFile("==== settings X ====\n\n"
              "pref:size-hashtable=32\n"
              "pref:VALPAWN=80\n"
              "pref:size-hashtable=128.9   (in MB)\n"
              "pref:VALPAWN=110.5xyz\n"
              "pref:BookBestMoveOnly=-3\n"
              "pref:egtb-path=c:\\a\\\n"
              "pref:egtb-path=e:\\tb\\\r\n");
    int hashMB = 0;
    EXPECT_TRUE(readHashSizeSetting(fileName, hashMB));
    EXPECT_EQ(hashMB, 128);
    pieceValueSettings pieces;
    readPieceValueSettings(fileName, pieces);
    EXPECT_EQ(pieces.pawn, 110);
    gameSettings settings;
    gameOutput(settings);
    EXPECT_EQ(settings.bookBestMoveOnly, 0);
    char path[101];
    readEgtbPathSetting(fileName, path, sizeof path);
    EXPECT_STREQ(path, "e:\\tb\\");  // a Windows line end is a line end too
}

TEST_F(settingsFileTest, longLinesAreReadInPiecesOf999) {
    // The second piece of an overlong line starts with a key and counts as a line.
    writeFile("pref:egtb-path=" + std::string(984, 'p') + "pref:VALPAWN=55\n");
    pieceValueSettings pieces;
    readPieceValueSettings(fileName, pieces);
    EXPECT_EQ(pieces.pawn, 55);
    char path[2000], shortPath[5];
    readEgtbPathSetting(fileName, path, sizeof path);
    EXPECT_EQ(std::string(path), std::string(984, 'p'));
    readEgtbPathSetting(fileName, shortPath, sizeof shortPath);
    EXPECT_STREQ(shortPath, "pppp");
}

TEST_F(settingsFileTest, missingFileKeepsDefaultsAndPrintsOnlyTheProcessLine) {
    std::remove(fileName);
    gameSettings settings;
    EXPECT_EQ(gameOutput(settings), "Using 0 processor\n");
    EXPECT_STREQ(settings.bookPath, "bookTalvin.ctg");

    testing::internal::CaptureStdout();
    pieceValueSettings pieces;
    readPieceValueSettings(fileName, pieces);
    int hashMB = 17;
    EXPECT_FALSE(readHashSizeSetting(fileName, hashMB));
    EXPECT_EQ(readNalimovCacheSetting(fileName), 64);
    EXPECT_EQ(readPrintInvertedScoreSetting(fileName), 0);
    char path[101];
    readEgtbPathSetting(fileName, path, sizeof path);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(hashMB, 17);
    EXPECT_EQ(pieces.queen, 900);
    EXPECT_STREQ(path, "d:\\chess\\egtb4\\");
}

}  // namespace
