#include "protocolSession.h"

using UciSession = ProtocolSession;

TEST_F(UciSession, OptionsAreAnnouncedAndWrittenToTheSettingsFile) {
    start();
    engine->send("uci\n");
    ASSERT_TRUE(engine->waitFor("uciok\n"));
    const std::string announced = engine->output.substr(engine->output.find("id name"));
    EXPECT_EQ(announced,
              "id name Talvin_v8.05_x64_UCI\n"
              "id author the Talvin team\n"
              "option name number_of_processors type spin min 0 max 8 default 0\n"
              "option name Hash type spin min 1 max 4096 default 64\n"
              "option name OwnBook type check default true\n"
              "option name BookBestMoveOnly type check default true\n"
              "option name BookPath type string default bookTalvin.ctg\n"
              "option name EGTB type check default true\n"
              "option name NalimovPath type string default d:\\chess\\egtb4\\\n"
              "option name NalimovCache type spin 1 min 1 max 256 default 32\n"
              "option name Ponder type check default false\n"
              "option name Extentions type check default true\n"
              "option name Null-move Pruning type check default true\n"
              "option name Late-move Pruning type check default true\n"
              "option name Futility Pruning type check default true\n"
              "option name print_Inverted_Score type check default false\n"
              "option name DrawScore type spin min -900 max 900 default -50\n"
              "option name Queen type spin min -100 max 2000 default 900\n"
              "option name Rook type spin min -100 max 1000 default 500\n"
              "option name Bishop type spin min -100 max 900 default 300\n"
              "option name Knight type spin min -100 max 900 default 300\n"
              "option name Pawn type spin min -100 max 900 default 100\n"
              "uciok\n");
    engine->send(
        "setoption name Hash value 16\nsetoption name BookPath value my book.ctg\n"
        "setoption name Ponder value true\nsetoption name Futility Pruning value false\n"
        "setoption name Unknown value 3\n");
    expectReply("isready\n", "readyok\n");
    // Too late: the settings file is written at the first other line.
    expectReply("setoption name Hash value 128\nisready\n", "readyok\n");
    EXPECT_EQ(file("talvin init.ini"),
              "==== settings Talvin_v8.05_x64 ====\n"
              "pref:printToScreen=0     (0=disabled, 1=enabled)\n"
              "pref:size-hashtable=16   (in MB)\n"
              "pref:NalimovCache=32     (in MB)\n"
              "pref:egtb-path=d:\\chess\\egtb4\\\n"
              "pref:book-path=my book.ctg\n"
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
              "pref:enable_FUTPRUN=0\n"
              "pref:enable_EXTENTIONS=1\n"
              "pref:enable_NMP=1\n"
              "pref:enable_LMP=1\n"
              "pref:pondering=1\n"
              "pref:printInvertedScore=0\n");
    engine->closeInput();
    EXPECT_EQ(engine->exitStatus(), 0);
}

TEST_F(UciSession, GoStopPonderAndPonderhit) {
    start();
    engine->send("uci\nsetoption name Ponder value true\nisready\n");
    ASSERT_TRUE(engine->waitFor("readyok\n"));
    // A timed search answers with the move and the expected reply.
    expectReply("position startpos moves e2e4\ngo movetime 300\n", "bestmove ");
    ASSERT_TRUE(engine->waitFor(" ponder "));
    // A ponder hit late in the budget plays the ponder result at once.
    expectReply("position startpos moves d2d4 d7d5\ngo wtime 300 btime 300\n", "bestmove ");
    expectReply("position startpos moves d2d4 d7d5 c2c4 e7e6\ngo ponder wtime 300 btime 300\n", "Start Pondering");
    engine->send("isready\n");
    ASSERT_TRUE(engine->waitFor("readyok\n"));
    usleep(300 * 1000);
    const size_t from = engine->output.size();
    expectReply("ponderhit\n", "bestmove ", 3000);
    // No new search: the move follows the time line directly.
    EXPECT_NE(engine->output.find("ms===========\nbestmove ", from), std::string::npos) << engine->output.substr(from);
    // "stop" ends an infinite search at once with its move. It comes last: an
    // infinite search leaves its time-added value in the clock for later controls.
    expectReply("position startpos\ngo infinite\n", "info depth 3");
    expectReply("stop\n", "bestmove ", 3000);
    // "stop" during "go ponder" reports the ponder search's move.
    expectReply("position startpos moves e2e4 e7e5\ngo ponder wtime 5000 btime 5000\n", "info depth 3");
    expectReply("stop\n", "\nbestmove ", 3000);
    expectReply("quit\n", "Getting rid of handle");
    EXPECT_EQ(engine->exitStatus(), 0);
}

TEST_F(UciSession, PositionMovesStopAtTheFirstBadMove) {
    start();
    engine->send("uci\nisready\n");
    expectReply("position startpos moves e2e4 e7e5 e1e3 g1f3\n", "info string Error (ambiguous move): e1e3 g1f3\n");
    engine->closeInput();
    EXPECT_EQ(engine->exitStatus(), 0);
}
