#include "protocolSession.h"

using XboardSession = ProtocolSession;

TEST_F(XboardSession, StartUpFeaturesPingUnknownCommandsAndEndOfInput) {
    start();  // the banner is checked at start-up
    expectReply("xboard\n", "feature done=0\n");
    expectReply("protover 3\n",
                "feature myname=\"Talvin_v8.05_x64\"\nfeature sigint=0\nfeature sigterm=0\nfeature variants=normal\n"
                "feature ping=1\nfeature setboard=1\nfeature done=1\n");
    expectReply("ping 17\n", "pong 17\n");
    expectReply("frobnicate now\n", "Error: (unknown command):frobnicate now\n\n");
    expectReply("\n", "Error: (unknown command):\n\n");
    expectReply("accepted setboard\nrandom\nping 18\n", "pong 18\n");
    engine->closeInput();
    EXPECT_EQ(engine->exitStatus(), 0);
}

TEST_F(XboardSession, TimeControlsDecideTheTimeForTheNextMoveAndDepthLimitsEndTheSearch) {
    start();
    engine->send("xboard\nprotover 2\nnopost\n");
    expectReply("level 40 5 0\n", "moves=40 starttime=300000 inc=0\n");
    expectReply("level 0 2:30 1\n", "moves=0 starttime=150000 inc=1000\n");
    // Sudden death: a 40th of what the engine's clock shows ("time" is in
    // centiseconds); after "new" the engine plays black.
    expectReply("new\nlevel 0 5 0\nforce\ne2e4\ntime 6000\npost\ngo\n",
                "===========time next move: 1500 ms===========\n");
    expectReply("force\nst 2\ngo\n", "===========time next move: 1850 ms===========\n");
    // A depth limit: iterations count from 1 and the limit is reached after iteration 4.
    const size_t from = engine->output.size();
    expectReply("new\nst 100\nsd 3\ngo\n", "\nmove ", 20000);
    EXPECT_NE(engine->output.find("\n 4  ", from), std::string::npos);
    EXPECT_EQ(engine->output.find("\n 5  ", from), std::string::npos);
    quit();
}

TEST_F(XboardSession, MovesSetboardUndoAndErrors) {
    start();
    engine->send("xboard\nprotover 2\n");
    expectReply("new\nundo\n", "Cannot undo!\n");
    expectReply("force\ne2e5\n", "Error (ambiguous move): e2e5\n\n");
    expectReply("Nf3\n", "Error: (unknown command):Nf3\n\n");
    // Force mode: the move is made and printed, nothing is searched.
    expectReply("e2e4\n", "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1\n");
    expectReply("undo\n", "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 0\n");
    expectReply("setboard 4k3/8/8/8/8/8/4P3/4K3 w - - 0 40\n", "4k3/8/8/8/8/8/4P3/4K3 w - - 0 *9\n");
    expectReply("e7e8q\n", "Error (ambiguous move): e7e8q\n\n");
    EXPECT_EQ(engine->output.find("start thinkAndMakeBestMove"), std::string::npos);
    // After "new" the engine plays black and answers a move at once.
    expectReply("new\nst 1\ne2e4\n", "\nmove ", 10000);
    quit();
}

TEST_F(XboardSession, RefusedPositionsCastlingRightsRemoveAnalyzeHintAndNewDuringASearch) {
    start();
    engine->send("xboard\nprotover 2\nforce\n");
    expectReply("hint\n", "hint: ");  // answered even with nothing in the table
    // Rights whose rook is gone are dropped: no castling move comes of them.
    expectReply("setboard 4k3/8/8/8/8/8/8/4K2R w KQ - 0 1\n", "4k3/8/8/8/8/8/8/4K2R w K - 0 ");
    expectReply("e1c1\n", "Error (ambiguous move): e1c1\n");
    const char* illegal[] = {"8/8/8/8/8/8/8/8 w - - 0 1", "4k3/4R3/8/8/8/8/8/4K3 w - - 0 1",
                             "4k2P/8/8/8/8/8/8/4K3 w - - 0 1", "4k3/8/8/8/8/8/8/3KK3 w - - 0 1",
                             "4k3/8/8/8/PPPPPPPP/P7/8/4K3 w - - 0 1"};
    for (const char* fen : illegal)
        expectReply(std::string("setboard ") + fen + "\n", "tellusererror Illegal position\n");
    // The previous position stands.
    expectReply("e1f1\n", "4k3/8/8/8/8/8/8/5K1R b - - 1 ");
    // remove takes back two plies.
    expectReply("new\nforce\ne2e4\ne7e5\nremove\n", "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 ");
    // Analysis searches the position on the board even when the table holds a move for it.
    expectReply("st 1\ngo\n", "\nmove ", 10000);
    expectReply("force\nundo\nanalyze\n", "Start Pondering: no ponderingmove");
    expectReply("exit\nping 3\n", "pong 3\n");
    // "new" during a search stops it: the old game's move neither comes out nor lands on the new board.
    expectReply("new\nst 30\ngo\n", "\n 5  ", 20000);
    const size_t from = engine->output.size();
    expectReply("new\nping 7\n", "pong 7\n");
    EXPECT_FALSE(engine->waitFor("\nmove ", 1000, from));
    expectReply("force\ne2e4\n", "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1\n");
    quit();
}
