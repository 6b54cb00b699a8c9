#include "protocolSession.h"

using UciSession = ProtocolSession;

namespace {

// After "uciok" a UCI front end may see nothing but UCI lines.
void expectOnlyUciLines(const std::string& output) {
    const size_t from = output.find("uciok\n");
    ASSERT_NE(from, std::string::npos);
    std::istringstream lines(output.substr(from));
    for (std::string line; std::getline(lines, line);) {
        const bool uci =
            line == "uciok" || line == "readyok" || line.rfind("info ", 0) == 0 || line.rfind("bestmove ", 0) == 0;
        EXPECT_TRUE(uci) << "not a UCI line: [" << line << "]";
    }
}

// The text between the last "go" sent and the bestmove that answers it.
std::string lastSearch(const std::string& output) {
    const size_t from = output.rfind("start thinkAndMakeBestMove");
    return from == std::string::npos ? "" : output.substr(from);
}

}  // namespace

// One session, in the order a front end might go: the options, the limits, pondering, odd positions, races, and
// at the end a search process that dies.
TEST_F(UciSession, OptionsLimitsPonderingOddPositionsRacesAndALostSearchProcess) {
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
        "setoption name OwnBook value false\nsetoption name Unknown value 3\n");
    expectReply("isready\n", "readyok\n");
    // Too late: the settings file is written at the first other line.
    expectReply("setoption name Hash value 128\nisready\n", "readyok\n");
    // Only the options set change; the writer's layout is checked with the settings file.
    const std::string written = file("talvin init.ini");
    for (const char* line : {"\npref:size-hashtable=16   (in MB)\n", "\npref:book-path=my book.ctg\n",
                             "\npref:enable_FUTPRUN=0\n", "\npref:pondering=1\n", "\npref:enable_NMP=1\n"})
        EXPECT_NE(written.find(line), std::string::npos) << line << written;
    // A bad move ends the move list: the rest is not played.
    expectReply("position startpos moves e2e4 e7e5 e1e3 g1f3\n", "info string Error (ambiguous move): e1e3 g1f3\n");

    // A timed search answers with the move and the expected reply. First of the searches: with a hash table
    // filled by earlier ones, a cut-short principal variation may leave no reply to give.
    size_t from = engine->output.size();
    expectReply("position startpos moves e2e4\ngo movetime 300\n", "bestmove ");
    ASSERT_TRUE(engine->waitFor(" ponder ", 10000, from));

    // Every named limit holds, alone and with a clock: the depth reached, and the one never reached.
    const struct {
        const char* commands;
        const char* move;
        const char* reached;
        const char* notReached;
    } limits[] = {
        {"position startpos\ngo depth 3\n", "bestmove ", "info depth 3 ", "info depth 4 "},
        {"go depth 2 wtime 600000 btime 600000\n", "bestmove ", "info depth 2 ", "info depth 3 "},
        {"position fen 7k/8/6K1/8/8/8/8/R7 w - - 0 1\ngo mate 1\n", "bestmove a1a8\n", "info depth 1 ",
         "info depth 3 "},
        {"position fen 7k/8/8/8/8/8/8/K7 w - - 0 1\ngo mate 2\n", "bestmove ", "info depth 4 ", "info depth 5 "},
    };
    for (const auto& limit : limits) {
        expectReply(limit.commands, limit.move);
        EXPECT_NE(lastSearch(engine->output).find(limit.reached), std::string::npos) << limit.commands;
        EXPECT_EQ(lastSearch(engine->output).find(limit.notReached), std::string::npos) << limit.commands;
    }
    // A node limit stops the search within a few nodes of it.
    expectReply("position startpos\ngo nodes 20000\n", "bestmove ", 20000);
    const std::string search = lastSearch(engine->output);
    const size_t at = search.find("Nodes=");
    ASSERT_NE(at, std::string::npos);
    EXPECT_LE(std::stoll(search.substr(at + 6)), 20500);
    // Times the clock can pay: a control kept with an increment, a movetime below the margin.
    // (The control kept is the 5000 ms a move the UCI loop starts with.)
    expectReply("go wtime 3000 btime 3000 movestogo 20 winc 1000 binc 1000\n", "time next move: 2950 ms");
    ASSERT_TRUE(engine->waitFor("bestmove ", 5000, engine->output.rfind("time next move")));
    expectReply("go movetime 100\n", "time next move: 50 ms");
    ASSERT_TRUE(engine->waitFor("bestmove ", 5000, engine->output.rfind("time next move")));

    // A ponder hit late in the budget plays the ponder result at once.
    expectReply("position startpos moves d2d4 d7d5\ngo wtime 300 btime 300\n", "bestmove ");
    expectReply("position startpos moves d2d4 d7d5 c2c4 e7e6\ngo ponder wtime 300 btime 300\n", "Start Pondering");
    expectReply("isready\n", "readyok\n");
    usleep(300 * 1000);
    from = engine->output.size();
    expectReply("ponderhit\n", "bestmove ", 3000);
    // No new search: the move follows the time line directly.
    EXPECT_NE(engine->output.find("ms===========\nbestmove ", from), std::string::npos) << engine->output.substr(from);
    // "stop" ends an infinite search at once with its move. It comes after the clock checks: an infinite search
    // leaves its time-added value in the clock for later controls.
    expectReply("position startpos\ngo infinite\n", "info depth 3");
    expectReply("stop\n", "bestmove ", 3000);
    // "stop" during "go ponder" reports the ponder search's move.
    expectReply("position startpos moves e2e4 e7e5\ngo ponder wtime 5000 btime 5000\n", "info depth 3");
    expectReply("stop\n", "\nbestmove ", 3000);
    // A mate in one ends the search at once, but the move waits for "stop".
    from = engine->output.size();
    engine->send("position fen 7k/8/6K1/8/8/8/8/R7 w - - 0 1\ngo infinite\n");
    ASSERT_TRUE(engine->waitFor("foundmove=a1a8", 10000, from));
    EXPECT_FALSE(engine->waitFor("bestmove", 700, engine->output.find("foundmove=a1a8", from)));
    // After the mate there is nothing to ponder on: no ponder part.
    expectReply("stop\n", "bestmove a1a8\n", 3000);
    // Promotions in lower case, in the thinking lines too.
    expectReply("position fen 7k/P7/8/8/8/8/8/K7 w - - 0 1\ngo depth 4\n", "bestmove a7a8q");
    EXPECT_NE(lastSearch(engine->output).find(" pv a7a8q"), std::string::npos);
    expectReplies({
        // A refused position is reported, and "go" searches nothing.
        {"position fen 8/8/8/8/8/8/8/8 w - - 0 1\n", "info string Illegal position\n"},
        {"go depth 3\n", "bestmove 0000\n"},
        // The game-end line of a position reached is an info string.
        {"position fen 7k/8/6K1/8/8/8/8/R7 w - - 0 1 moves a1a8\n", "info string 1-0 {white mates}\n"},
    });
    // A stop or a ponder hit that comes with the search start, or a few milliseconds after it, is never lost.
    std::mt19937 random(12);
    const size_t racesFrom = engine->output.size();
    for (int round = 0; round < 200; round++) {
        from = engine->output.size();
        const char* ending = random() % 2 ? "stop\n" : "ponderhit\n";
        sendRacing(std::string("position startpos moves e2e4 e7e5 g1f3\ngo ponder wtime 400 btime 400\n") + ending +
                       "isready\n",
                   random);
        ASSERT_TRUE(engine->waitFor("readyok\n", 10000, from)) << "round " << round;
        ASSERT_TRUE(engine->waitFor("bestmove ", 10000, from)) << "round " << round;
    }
    expectReply("isready\n", "readyok\n");
    EXPECT_EQ(occurrences(engine->output, "bestmove ", racesFrom), 200);
    // A search process that dies never leaves the engine hanging.
    expectSearchProcessLoss("position startpos\ngo infinite\n", "info depth 3 ",
                            "info string The search process has stopped working");
    expectOnlyUciLines(engine->output);
}
