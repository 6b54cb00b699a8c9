#include "protocolSession.h"

using XboardSession = ProtocolSession;

// One session through the commands a front end sends, from the features to a search process that dies.
TEST_F(XboardSession, FeaturesMovesPositionsSearchesTimeControlsRacesAndALostSearchProcess) {
    start();
    expectReplies({
        {"xboard\n", "feature done=0\n"},
        {"protover 3\n",
         "feature myname=\"Talvin_v8.05_x64\"\nfeature sigint=0\nfeature sigterm=0\nfeature variants=normal\n"
         "feature ping=1\nfeature setboard=1\nfeature done=1\n"},
        {"ping 17\n", "pong 17\n"},
        {"frobnicate now\n", "Error: (unknown command):frobnicate now\n\n"},
        {"\n", "Error: (unknown command):\n\n"},
        {"accepted setboard\nrandom\nping 18\n", "pong 18\n"},
        {"hint\n", "hint: "},  // answered even with nothing in the table
        {"new\nundo\n", "Cannot undo!\n"},
        {"force\ne2e5\n", "Error (ambiguous move): e2e5\n\n"},
        {"Nf3\n", "Error: (unknown command):Nf3\n\n"},
        // Force mode: the move is made and printed, nothing is searched.
        {"e2e4\n", "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1\n"},
        {"undo\n", "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 0\n"},
        {"setboard 4k3/8/8/8/8/8/4P3/4K3 w - - 0 40\n", "4k3/8/8/8/8/8/4P3/4K3 w - - 0 *9\n"},
        {"e7e8q\n", "Error (ambiguous move): e7e8q\n\n"},
        // Rights whose rook is gone are dropped: no castling move comes of them.
        {"setboard 4k3/8/8/8/8/8/8/4K2R w KQ - 0 1\n", "4k3/8/8/8/8/8/8/4K2R w K - 0 "},
        {"e1c1\n", "Error (ambiguous move): e1c1\n"},
    });
    const char* illegal[] = {"8/8/8/8/8/8/8/8 w - - 0 1", "4k3/4R3/8/8/8/8/8/4K3 w - - 0 1",
                             "4k2P/8/8/8/8/8/8/4K3 w - - 0 1", "4k3/8/8/8/8/8/8/3KK3 w - - 0 1",
                             "4k3/8/8/8/PPPPPPPP/P7/8/4K3 w - - 0 1"};
    for (const char* fen : illegal)
        expectReply(std::string("setboard ") + fen + "\n", "tellusererror Illegal position\n");
    // The previous position stands.
    expectReply("e1f1\n", "4k3/8/8/8/8/8/8/5K1R b - - 1 ");
    EXPECT_EQ(engine->output.find("start thinkAndMakeBestMove"), std::string::npos);
    expectReplies({
        // After "new" the engine plays black and answers a move at once.
        {"new\nst 1\ne2e4\n", "\nmove "},
        // remove takes back two plies.
        {"new\nforce\ne2e4\ne7e5\nremove\n", "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 "},
        // Analysis searches the position on the board even when the table holds a move for it.
        {"st 1\ngo\n", "\nmove "},
        {"force\nundo\nanalyze\n", "Start Pondering: no ponderingmove"},
        {"exit\nping 3\n", "pong 3\n"},
    });
    // "new" during a search stops it: the old game's move neither comes out nor lands on the new board.
    expectReply("new\nst 30\ngo\n", "\n 5  ", 20000);
    size_t from = engine->output.size();
    expectReply("new\nping 7\n", "pong 7\n");
    EXPECT_FALSE(engine->waitFor("\nmove ", 1000, from));
    expectReplies({
        {"force\ne2e4\n", "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1\n"},
        // Time controls decide the time for the next move.
        {"nopost\nlevel 40 5 0\n", "moves=40 starttime=300000 inc=0\n"},
        {"level 0 2:30 1\n", "moves=0 starttime=150000 inc=1000\n"},
        // Sudden death: a 40th of what the engine's clock shows ("time" is in centiseconds); after "new" the
        // engine plays black.
        {"new\nlevel 0 5 0\nforce\ne2e4\ntime 6000\npost\ngo\n", "===========time next move: 1500 ms===========\n"},
        {"force\nst 2\ngo\n", "===========time next move: 1850 ms===========\n"},
    });
    // A depth limit: iterations count from 1 and the limit is reached after iteration 4.
    from = engine->output.size();
    expectReply("new\nst 100\nsd 3\ngo\n", "\nmove ", 20000);
    EXPECT_NE(engine->output.find("\n 4  ", from), std::string::npos);
    EXPECT_EQ(engine->output.find("\n 5  ", from), std::string::npos);
    // Analysis and new games that come with the search start, or a few milliseconds after it, are never lost.
    engine->send("nopost\n");
    std::mt19937 random(34);
    for (int round = 0; round < 150; round++) {
        const std::string ping = "ping " + std::to_string(round) + "\n";
        from = engine->output.size();
        if (round % 2) sendRacing("new\nforce\nanalyze\ne2e4\n" + ping, random);
        else sendRacing("new\nst 1\ngo\nnew\nforce\n" + ping, random);
        ASSERT_TRUE(engine->waitFor("pong " + std::to_string(round) + "\n", 10000, from)) << "round " << round;
        engine->send("exit\n");
    }
    // No move of a search that a new game stopped comes out after it.
    EXPECT_FALSE(engine->waitFor("\nmove ", 1500, engine->output.rfind("pong ")));
    // A search process that dies never leaves the engine hanging.
    expectSearchProcessLoss("post\nforce\nhard\nanalyze\n", "\n 3  ",
                            "tellusererror The search process has stopped working");
}

// "speed" searches every position of its file once: score lines, blank lines and positions the engine refuses
// are none, so each file below counts the nodes of one search.
TEST_F(XboardSession, SpeedSearchesEachPositionOfItsFileOnce) {
    const std::string fen = "r4rk1/pppbqppp/2n1p3/3n4/2B5/4PN2/PBP2PPP/R2Q1RK1 w - - 0 12\n";
    const std::string files[] = {fen, "\n" + fen + "+35\n\n", fen + " \r\n-12\n8/8/8/8/8/8/8/8 w - - 0 1\n"};
    start();
    engine->send("xboard\n");
    std::string first;
    for (const std::string& text : files) {
        scratch.write("!benchSpeed.txt", text);
        const size_t from = engine->output.size();
        expectReply("speed 4\n", "kNPS\n", 20000);
        const size_t at = engine->output.find("depth=4 nodes=", from);
        ASSERT_NE(at, std::string::npos) << engine->output.substr(from);
        const std::string nodes = engine->output.substr(at, engine->output.find(' ', at + 8) - at);
        if (first.empty()) first = nodes;
        EXPECT_EQ(nodes, first) << text;
    }
    quit();
}
