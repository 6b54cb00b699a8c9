#include "../shell/protocolSession.h"
#include "bookFiles.h"

namespace {

class BookSession : public ProtocolSession {
protected:
    // A CTG book named book.ctg in the engine's directory, made by the writer.
    void writeBook(const std::string& games) {
        ctgWriter writer;
        writeCtgBook(directory + "/book.ctg", games, writer);
    }
    // The text after "#move=" of every probe so far.
    std::vector<std::string> bookMoves() const {
        std::vector<std::string> moves;
        for (size_t at = engine->output.find("#move="); at != std::string::npos;
             at = engine->output.find("#move=", at + 1))
            moves.push_back(engine->output.substr(at + 6, engine->output.find('\n', at) - at - 6));
        return moves;
    }
};

TEST_F(BookSession, XboardPlaysItsOpeningFromTheBookAndLeavesIt) {
    writeBook("e2e4 e7e5 g1f3 1-0\n");
    start("pref:book-path=book.ctg\n");
    engine->send("xboard\nprotover 2\nnew\nst 1\nsd 3\nnopost\n");
    expectReply("go\n", "probe TalvinBook: book.ctg\n#move=e2e4\nmove e2e4\n");
    expectReply("e7e5\n", "probe TalvinBook: book.ctg\n#move=g1f3\nmove g1f3\n");
    // Out of the book: the probe finds nothing and the engine searches.
    expectReplies("a7a6\n", {"probe TalvinBook: book.ctg\n#move=\n", "move "});
    EXPECT_EQ(bookMoves(), (std::vector<std::string>{"e2e4", "g1f3", ""}));
    quit();
}

TEST_F(BookSession, UciBookOptions) {
    writeBook("e2e4 e7e5 1-0\n");
    start();
    engine->send("uci\nsetoption name BookPath value book.ctg\n");
    expectReply("isready\n", "readyok\n");
    expectReplies("position startpos\ngo wtime 5000 btime 5000\n", {"info string #move=e2e4\n", "bestmove e2e4\n"});
    const size_t from = engine->output.size();
    expectReplies("setoption name OwnBook value false\nposition startpos\ngo movetime 200\n", {"bestmove "});
    EXPECT_EQ(engine->output.find("probe TalvinBook", from), std::string::npos);
    quit();
}

}  // namespace
